// Shared typed arrays: the persisted type names and element sizes of every instantiation,
// tolerant and exact equality, deep copies, clones, and loads of hostile quantities.

#include "support/zuFactoryTest.h"
#include "support/zuRecordPins.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace zu::test {
namespace {

using V3f = Wm4::Vector3<float>;

using SharedArray = zuFactoryTest;

// A new array owning a copy of `values`.
template <class T>
zuTSharedArray<T>* makeArray(const std::vector<T>& values)
{
    T* data = values.empty() ? nullptr : new T[values.size()];
    for (size_t i = 0; i < values.size(); ++i)
        data[i] = values[i];
    return new zuTSharedArray<T>(static_cast<int>(values.size()), data);
}

template <class T>
bool sameBytes(const zuTSharedArray<T>& a, const zuTSharedArray<T>& b)
{
    return a.GetQuantity() == b.GetQuantity()
        && (a.GetQuantity() == 0 || std::memcmp(a.GetData(), b.GetData(), sizeof(T) * a.GetQuantity()) == 0);
}

struct Instantiation {
    const zuRtti* type;
    const char* name;
    int elementBytes;
    int emptyDiskUsed;  // GetDiskUsed of an empty array at 6.32
    int threeDiskUsed;  // GetDiskUsed of an array of three elements at 6.32
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

TEST_F(SharedArray, EveryInstantiationHasItsTypeNameElementSizeAndRegisteredFactory)
{
    const std::vector<Instantiation> all = {
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
    for (const Instantiation& entry : all) {
        SCOPED_TRACE(entry.name);
        EXPECT_STREQ(entry.type->GetName(), entry.name);
        EXPECT_EQ(entry.type->GetBaseType(), &zuObject::TYPE);
        // Header: name field, size field, identity, empty name, controller count, quantity.
        EXPECT_EQ(entry.emptyDiskUsed, 4 + static_cast<int>(std::strlen(entry.name)) + 4 + 8 + 4 + 4 + 4);
        EXPECT_EQ(entry.threeDiskUsed - entry.emptyDiskUsed, 3 * entry.elementBytes);
        ASSERT_NE(entry.create, nullptr);
        EXPECT_TRUE(zuPointer<zuRttiInterface>(entry.create())->IsExactly(*entry.type));
    }
}

// Floating-point components are equal when they differ by less than 1e-6 (compared in
// double), every component counts, integers compare exactly, NaN is never equal.
TEST_F(SharedArray, EqualityIsWithinOneMillionthForEveryFloatingPointComponent)
{
    using M4f = Wm4::Matrix4<float>;
    M4f farEntry;
    farEntry[3][3] = 2e-6f;
    // The float nearest to 1e-6 lies just below it: in double it is within the tolerance (a
    // comparison in float would find it equal to the bound, hence not below it).
    ASSERT_LT(static_cast<double>(1e-6f), 1e-6);
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const Wm4::Vector3<double> normal(0, 0, 1);
    struct Case {
        const char* what;
        zuPointer<zuRttiInterface> a, b;
        bool equal;
    };
    const Case cases[] = {
        {"2e-6 apart", makeArray<float>({0.0f, 10.0f}), makeArray<float>({2e-6f, 10.0f}), false},
        {"the float nearest 1e-6", makeArray<float>({0.0f, 10.0f}), makeArray<float>({1e-6f, 10.0f}), true},
        {"the bound itself", makeArray<double>({0.0}), makeArray<double>({1e-6}), false},
        {"just below the bound", makeArray<double>({0.0}), makeArray<double>({0.999999e-6}), true},
        {"NaN", makeArray<float>({nan, 10.0f}), makeArray<float>({nan, 10.0f}), false},
        {"last matrix entry far", makeArray<M4f>({M4f(), M4f()}), makeArray<M4f>({M4f(), farEntry}), false},
        {"plane constant", makeArray<Wm4::Plane3<double>>({Wm4::Plane3<double>(normal, 1.0)}),
         makeArray<Wm4::Plane3<double>>({Wm4::Plane3<double>(normal, 1.00001)}), false},
        {"colour alpha", makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(1, 1, 1, 1)}),
         makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(1, 1, 1, 0)}), false},
        {"quaternion 9e-7", makeArray<Wm4::Quaternion<double>>({Wm4::Quaternion<double>(1, 0, 0, 0)}),
         makeArray<Wm4::Quaternion<double>>({Wm4::Quaternion<double>(1, 0, 0, 9e-7)}), true},
        {"integers one apart", makeArray<int>({1000000, 5}), makeArray<int>({1000001, 5}), false},
        {"equal integers", makeArray<int>({1000000, 5}), makeArray<int>({1000000, 5}), true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_TRUE(c.a->Equals(c.b) == c.equal && c.b->Equals(c.a) == c.equal);
    }
}

TEST_F(SharedArray, ArraysOfDifferentKindsOrLengthsNeverCompareEqual)
{
    // Equal bytes: 1.0f is 0x3f800000.
    zuPointer<zuFloatArray> floats = makeArray<float>({1.0f});
    zuPointer<zuIntArray> ints = makeArray<int>({0x3f800000});
    EXPECT_FALSE(floats->Equals(ints) || ints->Equals(floats));

    // Four floats under four kinds.
    zuPointer<zuVector4fArray> vectors = makeArray<Wm4::Vector4<float>>({Wm4::Vector4<float>(1, 2, 3, 4)});
    zuPointer<zuQuaternionfArray> quaternions = makeArray<Wm4::Quaternion<float>>({Wm4::Quaternion<float>(1, 2, 3, 4)});
    zuPointer<zuColorRGBAArray> colours = makeArray<Wm4::ColorRGBA>({Wm4::ColorRGBA(1, 2, 3, 4)});
    zuPointer<zuPlane3fArray> planes = makeArray<Wm4::Plane3<float>>({Wm4::Plane3<float>(V3f(1, 2, 3), 4)});
    const std::vector<zuRttiInterface*> kinds = {vectors, quaternions, colours, planes};
    for (zuRttiInterface* a : kinds)
        for (zuRttiInterface* b : kinds)
            EXPECT_EQ(a->Equals(b), a == b) << a->GetType().GetName() << " vs " << b->GetType().GetName();

    zuPointer<zuFloatArray> empty = new zuFloatArray;
    EXPECT_TRUE(empty->Equals(zuPointer<zuFloatArray>(new zuFloatArray)));
    EXPECT_FALSE(empty->Equals(zuPointer<zuIntArray>(new zuIntArray)) || floats->Equals(empty)
                 || floats->Equals(nullptr));
}

TEST_F(SharedArray, CopiesAndClonesAreDeep)
{
    using V2f = Wm4::Vector2<float>;
    zuPointer<zuVector2fArray> original = makeArray<V2f>({V2f(1, 2), V2f(3, 4)});
    zuPointer<zuVector2fArray> copy = new zuVector2fArray(*original);
    EXPECT_TRUE(copy->GetID() != original->GetID() && copy->GetData() != original->GetData());
    EXPECT_TRUE(sameBytes(*copy, *original));

    // Assigning over a filled array frees its elements (the sanitizer build sees a leak) and
    // keeps its identity; assigning an array to itself keeps its elements.
    zuPointer<zuVector2fArray> target = makeArray<V2f>({V2f(5, 5)});
    const unsigned int targetID = target->GetID();
    *target = *original;
    EXPECT_TRUE(target->GetID() == targetID && target->GetData() != original->GetData());
    EXPECT_TRUE(sameBytes(*target, *original));
    const V2f* before = original->GetData();
    zuVector2fArray& self = *original;
    *original = self;
    EXPECT_TRUE(original->GetData() == before && (*original)[1] == V2f(3, 4));

    // Cloning into null creates the target with its own copy; into an array of the kind
    // replaces its elements; other kinds are refused and keep theirs; into itself keeps them.
    zuRttiInterface* created = nullptr;
    ASSERT_TRUE(original->Clone(created));
    zuPointer<zuRttiInterface> holder = created;
    ASSERT_TRUE(created->IsExactly(zuVector2fArray::TYPE));
    auto* createdArray = static_cast<zuVector2fArray*>(created);
    EXPECT_TRUE(createdArray->GetData() != original->GetData() && sameBytes(*createdArray, *original));
    zuPointer<zuIntArray> ints = makeArray<int>({1, 2});
    zuPointer<zuIntArray> filled = makeArray<int>({7, 8, 9});
    zuRttiInterface* into = filled.get();
    ASSERT_TRUE(ints->Clone(into));
    EXPECT_TRUE(into == filled.get() && sameBytes(*filled, *ints));
    zuPointer<zuFloatArray> floats = makeArray<float>({5.0f});
    into = floats.get();
    EXPECT_TRUE(!ints->Clone(into) && (*floats)[0] == 5.0f);
    into = ints.get();
    ASSERT_TRUE(ints->Clone(into));
    EXPECT_TRUE(ints->GetQuantity() == 2 && (*ints)[1] == 2);
}

TEST_F(SharedArray, TheActiveQuantityShortensWhatIsSavedAndCompared)
{
    zuPointer<zuFloatArray> array = makeArray<float>({1.0f, 2.0f, 3.0f, 4.0f});
    const float* data = array->GetData();
    array->SetActiveQuantity(2);
    EXPECT_TRUE(array->GetQuantity() == 2 && array->GetData() == data);
    EXPECT_TRUE(array->Equals(zuPointer<zuFloatArray>(makeArray<float>({1.0f, 2.0f}))));
    EXPECT_EQ(pinOf({array.get()}, {6, 32}), "'Top Level' 'zuCore.zuFloatArray' #55 <0> #0 #0 #2 ~1 ~2 |\n");

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

// One top-level array record at 6.32 that claims `quantity` elements and carries
// `elementBytes` bytes of them.
std::vector<char> claimedArray(const std::string& type, int quantity, int elementBytes)
{
    zuBytes bytes;
    const int size = 4 + static_cast<int>(type.size()) + 4 + 8 + 4 + 4 + 4 + elementBytes;
    bytes.str("Top Level").str(type).i32(size).u64(0x1000).str("").i32(0).i32(quantity);
    return bytes.raw(std::vector<char>(static_cast<size_t>(elementBytes), '\x11').data(), elementBytes).bytes();
}

void expectRefused(std::vector<char> bytes, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    EXPECT_FALSE(stream.Load(bytes.data(), bytes.size()));
    EXPECT_EQ(stream.GetObjectCount(), 0);
}

TEST_F(SharedArray, HugeNegativeOrShortQuantitiesFailTheLoad)
{
    // Were the element arrays allocated, the huge ones would ask for up to 256 GiB: the
    // sanitizer build aborts on such a request, the release build throws.
    struct Case {
        const char* type;
        int quantity;
        int elementBytes;
    };
    for (const Case& bad : {Case{"zuCore.zuFloatArray", 0x7fffffff, 4}, Case{"zuCore.zuMatrix4dArray", 0x7fffffff, 4},
                            Case{"zuCore.zuIntArray", -1, 0}, Case{"zuCore.zuIntArray", std::numeric_limits<int>::min(), 0},
                            Case{"zuCore.zuIntArray", 3, 8}, Case{"zuCore.zuIntArray", 1, 0}}) {
        SCOPED_TRACE(std::string(bad.type) + " " + std::to_string(bad.quantity));
        expectRefused(claimedArray(bad.type, bad.quantity, bad.elementBytes), zuStreamVersion(6, 32));
    }

    // Before 6.0 there is no size field to disagree with: the count check alone refuses it.
    zuBytes old;
    old.str("Top Level").str("zuCore.zuVector4dArray").u64(0x1000).str("").i32(0).i32(0x7fffffff).i32(0);
    expectRefused(old.bytes(), zuStreamVersion(5, 20));
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
    EXPECT_TRUE(loader.isStreamError() && array->GetQuantity() == 0 && array->GetData() == nullptr);
}

} // namespace
} // namespace zu::test
