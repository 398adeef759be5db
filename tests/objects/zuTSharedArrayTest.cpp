// Shared typed arrays: the persisted type names and element sizes of every instantiation,
// the exact bytes of a record, tolerant and exact equality, deep copies, clones, and loads
// of hostile quantities.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace zu::test {
namespace {

class SharedArray : public ::testing::Test {
protected:
    zuTestFactories factories;
};

uint64_t id(const void* object)
{
    return reinterpret_cast<uintptr_t>(object);
}

void f64(zuBytes& bytes, double value)
{
    bytes.raw(&value, 8);
}

// A new array owning a copy of `values`.
template <class T>
zuTSharedArray<T>* makeArray(const std::vector<T>& values)
{
    T* data = values.empty() ? nullptr : new T[values.size()];
    for (size_t i = 0; i < values.size(); ++i)
        data[i] = values[i];
    return new zuTSharedArray<T>(static_cast<int>(values.size()), data);
}

// The record header of an array at 6.x: type name, size, identity, empty name, no controllers.
void arrayHeader(zuBytes& bytes, const std::string& type, const void* object, int quantity, int elementBytes)
{
    const int size = 4 + static_cast<int>(type.size()) + 4 + 8 + 4 + 4 + 4 + quantity * elementBytes;
    bytes.str("Top Level").str(type).i32(size).u64(id(object)).str("").i32(0).i32(quantity);
}

zuPointer<zuRttiInterface> loadOne(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    if (!stream.Load(bytes.data(), bytes.size()) || stream.GetObjectCount() != 1)
        return nullptr;
    return stream.GetObjectAt(0);
}

template <class T>
bool sameBytes(const zuTSharedArray<T>& a, const zuTSharedArray<T>& b)
{
    return a.GetQuantity() == b.GetQuantity()
        && (a.GetQuantity() == 0 || std::memcmp(a.GetData(), b.GetData(), sizeof(T) * a.GetQuantity()) == 0);
}

// ---------------------------------------------------------------------------------------
// Instantiations

struct Instantiation {
    const zuRtti* type;
    const char* name;
    int elementBytes;
    int emptyDiskUsed;    // GetDiskUsed of an empty array at 6.32
    int threeDiskUsed;    // GetDiskUsed of an array of three elements at 6.32
    zuRttiInterface* (*create)();
};

template <class T>
Instantiation describe(const char* name, int elementBytes)
{
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
    zuPointer<zuTSharedArray<T>> empty = new zuTSharedArray<T>;
    zuPointer<zuTSharedArray<T>> three = new zuTSharedArray<T>(3, new T[3]);
    return {&zuTSharedArray<T>::TYPE, name, elementBytes, empty->GetDiskUsed(stream), three->GetDiskUsed(stream),
            zuRttiInterface::GetCreateFunction(name)};
}

std::vector<Instantiation> allInstantiations()
{
    return {
        describe<float>("zuCore.zuFloatArray", 4),
        describe<double>("zuCore.zuDoubleArray", 8),
        describe<int>("zuCore.zuIntArray", 4),
        describe<Wm4::ColorRGB>("zuCore.zuColorRGBArray", 12),
        describe<Wm4::ColorRGBA>("zuCore.zuColorRGBAArray", 16),
        describe<Wm4::Vector2<float>>("zuCore.zuVector2fArray", 8),
        describe<Wm4::Vector2<double>>("zuCore.zuVector2dArray", 16),
        describe<Wm4::Vector3<float>>("zuCore.zuVector3fArray", 12),
        describe<Wm4::Vector3<double>>("zuCore.zuVector3dArray", 24),
        describe<Wm4::Vector4<float>>("zuCore.zuVector4fArray", 16),
        describe<Wm4::Vector4<double>>("zuCore.zuVector4dArray", 32),
        describe<Wm4::Quaternion<float>>("zuCore.zuQuaternionfArray", 16),
        describe<Wm4::Quaternion<double>>("zuCore.zuQuaterniondArray", 32),
        describe<Wm4::Matrix2<float>>("zuCore.zuMatrix2fArray", 16),
        describe<Wm4::Matrix2<double>>("zuCore.zuMatrix2dArray", 32),
        describe<Wm4::Matrix3<float>>("zuCore.zuMatrix3fArray", 36),
        describe<Wm4::Matrix3<double>>("zuCore.zuMatrix3dArray", 72),
        describe<Wm4::Matrix4<float>>("zuCore.zuMatrix4fArray", 64),
        describe<Wm4::Matrix4<double>>("zuCore.zuMatrix4dArray", 128),
        describe<Wm4::Plane3<float>>("zuCore.zuPlane3fArray", 16),
        describe<Wm4::Plane3<double>>("zuCore.zuPlane3dArray", 32),
    };
}

TEST_F(SharedArray, EveryInstantiationHasItsTypeNameElementSizeAndRegisteredFactory)
{
    const std::vector<Instantiation> all = allInstantiations();
    ASSERT_EQ(all.size(), 21u);
    for (const Instantiation& entry : all) {
        SCOPED_TRACE(entry.name);
        EXPECT_STREQ(entry.type->GetName(), entry.name);
        EXPECT_EQ(entry.type->GetBaseType(), &zuObject::TYPE);
        // Header: name field, size field, identity, empty name, controller count, quantity.
        const int header = 4 + static_cast<int>(std::strlen(entry.name)) + 4 + 8 + 4 + 4;
        EXPECT_EQ(entry.emptyDiskUsed, header + 4);
        EXPECT_EQ(entry.threeDiskUsed - entry.emptyDiskUsed, 3 * entry.elementBytes);
        ASSERT_NE(zuRttiInterface::GetFactory(entry.name), nullptr);
        ASSERT_NE(entry.create, nullptr);
        zuPointer<zuRttiInterface> made = entry.create();
        EXPECT_TRUE(made->IsExactly(*entry.type));
        EXPECT_EQ(made->GetReferences(), 1);
        for (const Instantiation& other : all) {
            if (&other != &entry) {
                EXPECT_FALSE(made->IsDerived(*other.type)) << other.name;
            }
        }
    }
}

// ---------------------------------------------------------------------------------------
// Exact bytes at 6.32

TEST_F(SharedArray, RecordsOfScalarArraysHoldTheQuantityThenTheElements)
{
    zuPointer<zuFloatArray> floats = makeArray<float>({1.5f, -2.0f, 0.1f});
    zuBytes expected;
    arrayHeader(expected, "zuCore.zuFloatArray", floats, 3, 4);
    expected.f32(1.5f).f32(-2.0f).f32(0.1f);
    EXPECT_EQ(saveToBytes({floats}, zuStreamVersion(6, 32)), expected.bytes());

    zuPointer<zuIntArray> ints = makeArray<int>({1, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()});
    zuBytes expectedInts;
    arrayHeader(expectedInts, "zuCore.zuIntArray", ints, 4, 4);
    expectedInts.i32(1).i32(-1).i32(0x7fffffff).i32(static_cast<int32_t>(0x80000000u));
    EXPECT_EQ(saveToBytes({ints}, zuStreamVersion(6, 32)), expectedInts.bytes());

    zuPointer<zuDoubleArray> doubles = makeArray<double>({0.1, -1e300});
    zuBytes expectedDoubles;
    arrayHeader(expectedDoubles, "zuCore.zuDoubleArray", doubles, 2, 8);
    f64(expectedDoubles, 0.1);
    f64(expectedDoubles, -1e300);
    EXPECT_EQ(saveToBytes({doubles}, zuStreamVersion(6, 32)), expectedDoubles.bytes());
}

TEST_F(SharedArray, RecordsOfValueArraysWriteEachElementsComponentsInOrder)
{
    zuPointer<zuVector3fArray> vectors =
        makeArray<Wm4::Vector3<float>>({Wm4::Vector3<float>(1, 2, 3), Wm4::Vector3<float>(-4, 5.5f, 0)});
    zuBytes expectedVectors;
    arrayHeader(expectedVectors, "zuCore.zuVector3fArray", vectors, 2, 12);
    expectedVectors.f32(1).f32(2).f32(3).f32(-4).f32(5.5f).f32(0);
    EXPECT_EQ(saveToBytes({vectors}, zuStreamVersion(6, 32)), expectedVectors.bytes());

    // Row-major entries 0.5, 1.5, ..., 15.5.
    Wm4::Matrix4<double> matrix;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            matrix[row][column] = 4 * row + column + 0.5;
    zuPointer<zuMatrix4dArray> matrices = makeArray<Wm4::Matrix4<double>>({matrix});
    zuBytes expectedMatrices;
    arrayHeader(expectedMatrices, "zuCore.zuMatrix4dArray", matrices, 1, 128);
    for (int i = 0; i < 16; ++i)
        f64(expectedMatrices, i + 0.5);
    EXPECT_EQ(saveToBytes({matrices}, zuStreamVersion(6, 32)), expectedMatrices.bytes());

    // A plane is its normal, then its constant.
    zuPointer<zuPlane3fArray> planes =
        makeArray<Wm4::Plane3<float>>({Wm4::Plane3<float>(Wm4::Vector3<float>(0, 0.6f, 0.8f), -2.5f)});
    zuBytes expectedPlanes;
    arrayHeader(expectedPlanes, "zuCore.zuPlane3fArray", planes, 1, 16);
    expectedPlanes.f32(0).f32(0.6f).f32(0.8f).f32(-2.5f);
    EXPECT_EQ(saveToBytes({planes}, zuStreamVersion(6, 32)), expectedPlanes.bytes());

    zuPointer<zuColorRGBAArray> colours = makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(0.1f, 0.2f, 0.3f, 1.0f)});
    zuBytes expectedColours;
    arrayHeader(expectedColours, "zuCore.zuColorRGBAArray", colours, 1, 16);
    expectedColours.f32(0.1f).f32(0.2f).f32(0.3f).f32(1.0f);
    EXPECT_EQ(saveToBytes({colours}, zuStreamVersion(6, 32)), expectedColours.bytes());
}

TEST_F(SharedArray, AnEmptyArrayIsItsQuantityZeroAndNoElements)
{
    zuPointer<zuMatrix3dArray> empty = new zuMatrix3dArray;
    zuBytes expected;
    arrayHeader(expected, "zuCore.zuMatrix3dArray", empty, 0, 72);
    EXPECT_EQ(saveToBytes({empty}, zuStreamVersion(6, 32)), expected.bytes());

    zuPointer<zuRttiInterface> loaded = loadOne(expected.bytes(), zuStreamVersion(6, 32));
    ASSERT_NE(loaded, nullptr);
    ASSERT_TRUE(loaded->IsExactly(zuMatrix3dArray::TYPE));
    EXPECT_EQ(static_cast<zuMatrix3dArray*>(loaded.get())->GetQuantity(), 0);
    EXPECT_EQ(static_cast<zuMatrix3dArray*>(loaded.get())->GetData(), nullptr);
    EXPECT_TRUE(loaded->Equals(empty));
}

TEST_F(SharedArray, RecordsBeforeVersion6HaveNoSizeField)
{
    zuPointer<zuIntArray> ints = makeArray<int>({7});
    zuBytes expected;
    expected.str("Top Level").str("zuCore.zuIntArray").u64(id(ints)).str("").i32(0).i32(1).i32(7);
    const std::vector<char> saved = saveToBytes({ints}, zuStreamVersion(5, 20));
    EXPECT_EQ(saved, expected.bytes());
    zuPointer<zuRttiInterface> loaded = loadOne(saved, zuStreamVersion(5, 20));
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(sameBytes(*static_cast<zuIntArray*>(loaded.get()), *ints));
}

TEST_F(SharedArray, LoadingTheBytesGivesBackEveryBit)
{
    Wm4::Matrix4<double> matrix;
    for (int i = 0; i < 16; ++i)
        matrix[i / 4][i % 4] = 1.0 / (i + 3);
    zuPointer<zuMatrix4dArray> matrices = makeArray<Wm4::Matrix4<double>>({matrix, Wm4::Matrix4<double>()});
    zuPointer<zuQuaternionfArray> quaternions =
        makeArray<Wm4::Quaternion<float>>({Wm4::Quaternion<float>(0.5f, -0.5f, 0.25f, 1e-30f)});
    zuPointer<zuPlane3dArray> planes =
        makeArray<Wm4::Plane3<double>>({Wm4::Plane3<double>(Wm4::Vector3<double>(1, 0, 0), 1e-12)});

    for (zuRttiInterface* array : std::vector<zuRttiInterface*>{matrices, quaternions, planes}) {
        SCOPED_TRACE(array->GetType().GetName());
        zuPointer<zuRttiInterface> loaded = loadOne(saveToBytes({array}, zuStreamVersion(6, 32)), zuStreamVersion(6, 32));
        ASSERT_NE(loaded, nullptr);
        ASSERT_TRUE(loaded->IsExactly(array->GetType()));
        EXPECT_TRUE(loaded->Equals(array));
    }
    zuPointer<zuRttiInterface> loaded = loadOne(saveToBytes({matrices}, zuStreamVersion(6, 32)), zuStreamVersion(6, 32));
    ASSERT_NE(loaded, nullptr);
    EXPECT_TRUE(sameBytes(*static_cast<zuMatrix4dArray*>(loaded.get()), *matrices));
}

// Saves with a zuFileStream whose 16-byte block splits the elements, and loads it back.
TEST_F(SharedArray, RoundTripsThroughAFileStreamWithElementsAcrossBlocks)
{
    std::vector<Wm4::Vector3<double>> points;
    for (int i = 0; i < 50; ++i)
        points.emplace_back(i * 0.1, -i * 1e-9, 1e20 / (i + 1));
    zuPointer<zuVector3dArray> vectors = makeArray(points);
    zuPointer<zuIntArray> ints = makeArray<int>({3, 1, 4, 1, 5, 9, 2, 6});
    zuPointer<zuColorRGBArray> colours = new zuColorRGBArray;

    zuMemoryIoDevice device;
    {
        zuFileStream out(16);
        out.SetVersion(zuStreamVersion(6, 32));
        out.InsertTopLevel(vectors);
        out.InsertTopLevel(ints);
        out.InsertTopLevel(colours);
        ASSERT_TRUE(out.Save(device, "arrays.mvk", false));
    }
    // The file is the header, then exactly the records the plain stream writes.
    std::vector<char> expected = {'M', 'V', 'K', ' ', '6', '.', '3', '2', '\0'};
    const std::vector<char> records = saveToBytes({vectors, ints, colours}, zuStreamVersion(6, 32));
    expected.insert(expected.end(), records.begin(), records.end());
    EXPECT_EQ(device.data(), expected);

    zuMemoryIoDevice input(device.data());
    zuFileStream in(16);
    ASSERT_TRUE(in.Load(input, "arrays.mvk"));
    EXPECT_EQ(in.GetVersion(), zuStreamVersion(6, 32));
    ASSERT_EQ(in.GetObjectCount(), 3);
    ASSERT_TRUE(in.GetObjectAt(0)->IsExactly(zuVector3dArray::TYPE));
    ASSERT_TRUE(in.GetObjectAt(1)->IsExactly(zuIntArray::TYPE));
    ASSERT_TRUE(in.GetObjectAt(2)->IsExactly(zuColorRGBArray::TYPE));
    EXPECT_TRUE(sameBytes(*static_cast<zuVector3dArray*>(in.GetObjectAt(0)), *vectors));
    EXPECT_TRUE(sameBytes(*static_cast<zuIntArray*>(in.GetObjectAt(1)), *ints));
    EXPECT_EQ(static_cast<zuColorRGBArray*>(in.GetObjectAt(2))->GetQuantity(), 0);
}

// ---------------------------------------------------------------------------------------
// Equality

TEST_F(SharedArray, FloatingPointElementsAreEqualWithinOneMillionth)
{
    zuPointer<zuFloatArray> base = makeArray<float>({0.0f, 10.0f});
    zuPointer<zuFloatArray> close = makeArray<float>({5e-7f, 10.0f});
    zuPointer<zuFloatArray> far = makeArray<float>({2e-6f, 10.0f});
    EXPECT_TRUE(base->Equals(close));
    EXPECT_TRUE(close->Equals(base));
    EXPECT_FALSE(base->Equals(far));
    EXPECT_FALSE(far->Equals(base));

    // The float nearest to 1e-6 lies just below it: in double it is within the tolerance
    // (a comparison in float would find it equal to the bound, hence not below it).
    zuPointer<zuFloatArray> nearest = makeArray<float>({1e-6f, 10.0f});
    ASSERT_LT(static_cast<double>(1e-6f), 1e-6);
    EXPECT_TRUE(base->Equals(nearest));

    // The bound itself is not below the tolerance.
    zuPointer<zuDoubleArray> zero = makeArray<double>({0.0});
    zuPointer<zuDoubleArray> bound = makeArray<double>({1e-6});
    zuPointer<zuDoubleArray> below = makeArray<double>({0.999999e-6});
    EXPECT_FALSE(zero->Equals(bound));
    EXPECT_TRUE(zero->Equals(below));

    // Not-a-number is never within the tolerance.
    zuPointer<zuFloatArray> nan = makeArray<float>({std::numeric_limits<float>::quiet_NaN(), 10.0f});
    EXPECT_FALSE(nan->Equals(nan));
}

TEST_F(SharedArray, EveryComponentOfAValueIsCompared)
{
    Wm4::Matrix4<float> matrix;
    zuPointer<zuMatrix4fArray> a = makeArray<Wm4::Matrix4<float>>({matrix, matrix});
    matrix[3][3] = 2e-6f;
    zuPointer<zuMatrix4fArray> lastEntry = makeArray<Wm4::Matrix4<float>>({Wm4::Matrix4<float>(), matrix});
    EXPECT_FALSE(a->Equals(lastEntry));
    matrix[3][3] = 5e-7f;
    zuPointer<zuMatrix4fArray> withinTolerance = makeArray<Wm4::Matrix4<float>>({Wm4::Matrix4<float>(), matrix});
    EXPECT_TRUE(a->Equals(withinTolerance));

    const Wm4::Vector3<double> normal(0, 0, 1);
    zuPointer<zuPlane3dArray> plane = makeArray<Wm4::Plane3<double>>({Wm4::Plane3<double>(normal, 1.0)});
    zuPointer<zuPlane3dArray> otherConstant = makeArray<Wm4::Plane3<double>>({Wm4::Plane3<double>(normal, 1.00001)});
    EXPECT_FALSE(plane->Equals(otherConstant));

    zuPointer<zuColorRGBAArray> opaque = makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(1, 1, 1, 1)});
    zuPointer<zuColorRGBAArray> clear = makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(1, 1, 1, 0)});
    EXPECT_FALSE(opaque->Equals(clear));

    zuPointer<zuQuaterniondArray> q = makeArray<Wm4::Quaternion<double>>({Wm4::Quaternion<double>(1, 0, 0, 0)});
    zuPointer<zuQuaterniondArray> qClose = makeArray<Wm4::Quaternion<double>>({Wm4::Quaternion<double>(1, 0, 0, 9e-7)});
    EXPECT_TRUE(q->Equals(qClose));
}

TEST_F(SharedArray, IntegersAreComparedExactly)
{
    zuPointer<zuIntArray> a = makeArray<int>({1000000, 5});
    zuPointer<zuIntArray> b = makeArray<int>({1000001, 5});
    zuPointer<zuIntArray> same = makeArray<int>({1000000, 5});
    EXPECT_FALSE(a->Equals(b));
    EXPECT_TRUE(a->Equals(same));
}

TEST_F(SharedArray, ArraysOfDifferentKindsOrLengthsNeverCompareEqual)
{
    // Equal bytes: 1.0f is 0x3f800000.
    zuPointer<zuFloatArray> floats = makeArray<float>({1.0f});
    zuPointer<zuIntArray> ints = makeArray<int>({0x3f800000});
    EXPECT_FALSE(floats->Equals(ints));
    EXPECT_FALSE(ints->Equals(floats));

    // Four floats under four kinds.
    zuPointer<zuVector4fArray> vectors = makeArray<Wm4::Vector4<float>>({Wm4::Vector4<float>(1, 2, 3, 4)});
    zuPointer<zuQuaternionfArray> quaternions = makeArray<Wm4::Quaternion<float>>({Wm4::Quaternion<float>(1, 2, 3, 4)});
    zuPointer<zuColorRGBAArray> colours = makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(1, 2, 3, 4)});
    zuPointer<zuPlane3fArray> planes =
        makeArray<Wm4::Plane3<float>>({Wm4::Plane3<float>(Wm4::Vector3<float>(1, 2, 3), 4)});
    const std::vector<zuRttiInterface*> kinds = {vectors, quaternions, colours, planes};
    for (zuRttiInterface* a : kinds)
        for (zuRttiInterface* b : kinds)
            EXPECT_EQ(a->Equals(b), a == b) << a->GetType().GetName() << " vs " << b->GetType().GetName();

    zuPointer<zuFloatArray> empty = new zuFloatArray;
    zuPointer<zuFloatArray> otherEmpty = new zuFloatArray;
    zuPointer<zuIntArray> emptyInts = new zuIntArray;
    EXPECT_TRUE(empty->Equals(otherEmpty));
    EXPECT_FALSE(empty->Equals(emptyInts));
    EXPECT_FALSE(empty->Equals(floats));
    EXPECT_FALSE(floats->Equals(empty));
    EXPECT_FALSE(floats->Equals(nullptr));

    zuPointer<zuCoreSettings> settings = new zuCoreSettings;
    EXPECT_FALSE(empty->Equals(settings));
}

// ---------------------------------------------------------------------------------------
// Copies, clones and the active quantity

TEST_F(SharedArray, CopiesAreDeepAndSelfAssignmentKeepsTheElements)
{
    zuPointer<zuVector2fArray> original =
        makeArray<Wm4::Vector2<float>>({Wm4::Vector2<float>(1, 2), Wm4::Vector2<float>(3, 4)});
    zuPointer<zuVector2fArray> copy = new zuVector2fArray(*original);
    EXPECT_NE(copy->GetID(), original->GetID());
    EXPECT_NE(copy->GetData(), original->GetData());
    EXPECT_TRUE(sameBytes(*copy, *original));
    (*copy)[0] = Wm4::Vector2<float>(9, 9);
    EXPECT_EQ((*original)[0], Wm4::Vector2<float>(1, 2));

    // Assigning over a filled array frees its elements (the sanitizer build sees a leak).
    zuPointer<zuVector2fArray> target = makeArray<Wm4::Vector2<float>>({Wm4::Vector2<float>(5, 5)});
    const unsigned int targetID = target->GetID();
    *target = *original;
    EXPECT_EQ(target->GetID(), targetID);
    EXPECT_TRUE(sameBytes(*target, *original));
    EXPECT_NE(target->GetData(), original->GetData());

    const Wm4::Vector2<float>* before = original->GetData();
    zuVector2fArray& self = *original;
    *original = self;
    EXPECT_EQ(original->GetData(), before);
    EXPECT_EQ(original->GetQuantity(), 2);
    EXPECT_EQ((*original)[1], Wm4::Vector2<float>(3, 4));

    *target = zuVector2fArray();
    EXPECT_EQ(target->GetQuantity(), 0);
    EXPECT_EQ(target->GetData(), nullptr);
}

TEST_F(SharedArray, CloningIntoNullCreatesTheTargetWithItsOwnCopy)
{
    zuPointer<zuDoubleArray> original = makeArray<double>({1.0, 2.0, 3.0});
    zuRttiInterface* target = nullptr;
    ASSERT_TRUE(original->Clone(target));
    ASSERT_NE(target, nullptr);
    zuPointer<zuRttiInterface> holder = target;
    ASSERT_TRUE(target->IsExactly(zuDoubleArray::TYPE));
    zuDoubleArray* clone = static_cast<zuDoubleArray*>(target);
    EXPECT_NE(clone->GetData(), original->GetData());
    EXPECT_TRUE(sameBytes(*clone, *original));
    (*clone)[0] = 42.0;
    EXPECT_EQ((*original)[0], 1.0);
}

TEST_F(SharedArray, CloningIntoAnArrayReplacesItsElementsAndRefusesOtherKinds)
{
    zuPointer<zuIntArray> original = makeArray<int>({1, 2});
    zuPointer<zuIntArray> filled = makeArray<int>({7, 8, 9});
    zuRttiInterface* target = filled.get();
    ASSERT_TRUE(original->Clone(target));
    EXPECT_EQ(target, filled.get());
    EXPECT_TRUE(sameBytes(*filled, *original));

    zuPointer<zuFloatArray> floats = makeArray<float>({5.0f});
    target = floats.get();
    EXPECT_FALSE(original->Clone(target));
    EXPECT_EQ(floats->GetQuantity(), 1);
    EXPECT_EQ((*floats)[0], 5.0f);

    zuPointer<zuCoreSettings> settings = new zuCoreSettings;
    target = settings.get();
    EXPECT_FALSE(original->Clone(target));

    // Cloning into itself keeps the elements.
    target = original.get();
    ASSERT_TRUE(original->Clone(target));
    EXPECT_EQ(original->GetQuantity(), 2);
    EXPECT_EQ((*original)[1], 2);
}

TEST_F(SharedArray, TheActiveQuantityShortensWhatIsSavedAndCompared)
{
    zuPointer<zuFloatArray> array = makeArray<float>({1.0f, 2.0f, 3.0f, 4.0f});
    const float* data = array->GetData();
    array->SetActiveQuantity(2);
    EXPECT_EQ(array->GetQuantity(), 2);
    EXPECT_EQ(array->GetData(), data);
    EXPECT_TRUE(array->Equals(zuPointer<zuFloatArray>(makeArray<float>({1.0f, 2.0f}))));

    zuBytes expected;
    arrayHeader(expected, "zuCore.zuFloatArray", array, 2, 4);
    expected.f32(1.0f).f32(2.0f);
    EXPECT_EQ(saveToBytes({array}, zuStreamVersion(6, 32)), expected.bytes());

    // The hidden elements are still there, up to the allocated length and no further.
    array->SetActiveQuantity(4);
    EXPECT_EQ((*array)[3], 4.0f);
    array->SetActiveQuantity(1000);
    EXPECT_EQ(array->GetQuantity(), 4);
    array->SetActiveQuantity(-1);
    EXPECT_EQ(array->GetQuantity(), 0);

    // A copy holds only the active elements.
    array->SetActiveQuantity(3);
    zuFloatArray copy(*array);
    EXPECT_EQ(copy.GetQuantity(), 3);
    copy.SetActiveQuantity(4);
    EXPECT_EQ(copy.GetQuantity(), 3);
}

TEST_F(SharedArray, TheConstructorTakesTheDataItselfAndNeedsDataForElements)
{
    float* data = new float[2]{1.0f, 2.0f};
    zuPointer<zuFloatArray> array = new zuFloatArray(2, data);
    EXPECT_EQ(array->GetData(), data);
    const float* view = *array;
    EXPECT_EQ(view, data);
    zuPointer<zuFloatArray> noData = new zuFloatArray(5, nullptr);
    EXPECT_EQ(noData->GetQuantity(), 0);
}

// ---------------------------------------------------------------------------------------
// Hostile and broken records

// One top-level array record at 6.32 that claims `quantity` elements and carries
// `elementBytes` bytes of them.
std::vector<char> claimedArray(const std::string& type, int quantity, int elementBytes)
{
    zuBytes bytes;
    const int size = 4 + static_cast<int>(type.size()) + 4 + 8 + 4 + 4 + 4 + elementBytes;
    bytes.str("Top Level").str(type).i32(size).u64(0x1000).str("").i32(0).i32(quantity);
    std::vector<char> filler(static_cast<size_t>(elementBytes), '\x11');
    bytes.raw(filler.data(), filler.size());
    return bytes.bytes();
}

TEST_F(SharedArray, AHugeQuantityFailsTheLoadBeforeAnythingIsAllocated)
{
    // Were the element arrays allocated, the second would ask for 256 GiB: the sanitizer
    // build aborts on such a request, the release build throws.
    for (const char* type : {"zuCore.zuFloatArray", "zuCore.zuMatrix4dArray"}) {
        SCOPED_TRACE(type);
        std::vector<char> bytes = claimedArray(type, 0x7fffffff, 4);
        EXPECT_LT(bytes.size(), 70u);
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        EXPECT_FALSE(stream.Load(bytes.data(), bytes.size()));
        EXPECT_EQ(stream.GetObjectCount(), 0);
    }
}

TEST_F(SharedArray, NegativeOrShortQuantitiesFailTheLoad)
{
    struct Case {
        int quantity;
        int elementBytes;
    };
    for (const Case& bad : {Case{-1, 0}, Case{std::numeric_limits<int>::min(), 0}, Case{3, 8}, Case{1, 0}}) {
        SCOPED_TRACE(bad.quantity);
        std::vector<char> bytes = claimedArray("zuCore.zuIntArray", bad.quantity, bad.elementBytes);
        zuBaseStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        EXPECT_FALSE(stream.Load(bytes.data(), bytes.size()));
        EXPECT_EQ(stream.GetObjectCount(), 0);
    }

    // Before 6.0 there is no size field to disagree with: the count check alone refuses it.
    zuBytes old;
    old.str("Top Level").str("zuCore.zuVector4dArray").u64(0x1000).str("").i32(0).i32(0x7fffffff).i32(0);
    std::vector<char> bytes = old.bytes();
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(5, 20));
    EXPECT_FALSE(stream.Load(bytes.data(), bytes.size()));
    EXPECT_EQ(stream.GetObjectCount(), 0);
}

TEST_F(SharedArray, AnArrayLeftByAFailedLoadIsEmptyAndDestructible)
{
    // A filled array reads the fields of a record whose elements are missing, as a
    // factory's object would, and is dropped afterwards.
    zuPointer<zuDoubleArray> array = makeArray<double>({1.0});
    zuBytes record;
    record.u64(0x2000).str("").i32(0).i32(1000).i32(0);
    std::vector<char> fields = record.bytes();
    struct Loader : zuBaseStream {
        void run(zuRttiInterface* object, std::vector<char>& data)
        {
            setWindow(data.data(), 0, data.size());
            setDataEnd(data.size());
            object->Load(*this, newLink(object));
        }
    } loader;
    loader.SetVersion(zuStreamVersion(5, 20));
    loader.run(array, fields);
    EXPECT_TRUE(loader.isStreamError());
    EXPECT_EQ(array->GetQuantity(), 0);
    EXPECT_EQ(array->GetData(), nullptr);
}

} // namespace
} // namespace zu::test
