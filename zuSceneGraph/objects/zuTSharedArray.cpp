#include <zuSceneGraph/objects/zuTSharedArray.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace zu {

namespace {

// How an element breaks into the numbers the stream writes and equality compares.
template <class T> struct Element;

template <class Scalar> struct ScalarElement {
    using Component = Scalar;
    static constexpr int COUNT = 1;
    static Component get(const Scalar& value, int) { return value; }
};

template <class Value, class Real, int N, int ROW = N> struct TupleElement {
    using Component = Real;
    static constexpr int COUNT = N;
    static constexpr int ROW_LENGTH = ROW;
    static Component get(const Value& value, int i) { return static_cast<const Real*>(value)[i]; }
};

template <> struct Element<float> : ScalarElement<float> {};
template <> struct Element<double> : ScalarElement<double> {};
template <> struct Element<int> : ScalarElement<int> {};
template <> struct Element<Wm4::ColorRGB> : TupleElement<Wm4::ColorRGB, float, 3> {};
template <> struct Element<Wm4::ColorRGBA> : TupleElement<Wm4::ColorRGBA, float, 4> {};
template <class Real> struct Element<Wm4::Vector2<Real>> : TupleElement<Wm4::Vector2<Real>, Real, 2> {};
template <class Real> struct Element<Wm4::Vector3<Real>> : TupleElement<Wm4::Vector3<Real>, Real, 3> {};
template <class Real> struct Element<Wm4::Vector4<Real>> : TupleElement<Wm4::Vector4<Real>, Real, 4> {};
template <class Real> struct Element<Wm4::Quaternion<Real>> : TupleElement<Wm4::Quaternion<Real>, Real, 4> {};
template <class Real> struct Element<Wm4::Matrix2<Real>> : TupleElement<Wm4::Matrix2<Real>, Real, 4, 2> {};
template <class Real> struct Element<Wm4::Matrix3<Real>> : TupleElement<Wm4::Matrix3<Real>, Real, 9, 3> {};
template <class Real> struct Element<Wm4::Matrix4<Real>> : TupleElement<Wm4::Matrix4<Real>, Real, 16, 4> {};

// A plane is its normal, then its constant.
template <class Real> struct Element<Wm4::Plane3<Real>> {
    using Component = Real;
    static constexpr int COUNT = 4;
    static constexpr int ROW_LENGTH = 3;
    static Component get(const Wm4::Plane3<Real>& plane, int i) { return i < 3 ? plane.Normal[i] : plane.Constant; }
};

// The bytes one element takes on disk: its components back to back, no padding.
template <class T> constexpr int diskBytes()
{
    constexpr int bytes = Element<T>::COUNT * static_cast<int>(sizeof(typename Element<T>::Component));
    // The stream's array primitive writes the element's memory as its components.
    static_assert(bytes == sizeof(T));
    return bytes;
}

template <class T> bool elementsEqual(const T& a, const T& b)
{
    using E = Element<T>;
    for (int i = 0; i < E::COUNT; ++i) {
        if constexpr (std::is_floating_point_v<typename E::Component>) {
            // In double, so that float and double arrays share one tolerance.
            if (!(std::fabs(static_cast<double>(E::get(a, i)) - static_cast<double>(E::get(b, i))) < 1e-6))
                return false;
        } else if (E::get(a, i) != E::get(b, i)) {
            return false;
        }
    }
    return true;
}

// A number, or the components of a compound element in rows.
template <class T> void describeElement(zuFieldVisitor& visitor, const T& value)
{
    using E = Element<T>;
    if constexpr (std::is_integral_v<T>) {
        visitor.Integer(nullptr, value);
    } else if constexpr (E::COUNT == 1) {
        visitor.Number(nullptr, value);
    } else {
        typename E::Component components[E::COUNT];
        for (int i = 0; i < E::COUNT; ++i)
            components[i] = E::get(value, i);
        visitor.Numbers(nullptr, components, E::COUNT, E::ROW_LENGTH);
    }
}

template <class T> T* copyElements(int quantity, const T* data)
{
    if (quantity <= 0 || !data)
        return nullptr;
    T* copy = new T[static_cast<size_t>(quantity)];
    std::copy(data, data + quantity, copy);
    return copy;
}

} // namespace

// ---------------------------------------------------------------------------------------
// The persisted type names of the instantiations

template <> const zuRtti zuTSharedArray<float>::TYPE("zuCore.zuFloatArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<double>::TYPE("zuCore.zuDoubleArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<int>::TYPE("zuCore.zuIntArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::ColorRGB>::TYPE("zuCore.zuColorRGBArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::ColorRGBA>::TYPE("zuCore.zuColorRGBAArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Vector2<float>>::TYPE("zuCore.zuVector2fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Vector2<double>>::TYPE("zuCore.zuVector2dArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Vector3<float>>::TYPE("zuCore.zuVector3fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Vector3<double>>::TYPE("zuCore.zuVector3dArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Vector4<float>>::TYPE("zuCore.zuVector4fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Vector4<double>>::TYPE("zuCore.zuVector4dArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Quaternion<float>>::TYPE("zuCore.zuQuaternionfArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Quaternion<double>>::TYPE("zuCore.zuQuaterniondArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Matrix2<float>>::TYPE("zuCore.zuMatrix2fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Matrix2<double>>::TYPE("zuCore.zuMatrix2dArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Matrix3<float>>::TYPE("zuCore.zuMatrix3fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Matrix3<double>>::TYPE("zuCore.zuMatrix3dArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Matrix4<float>>::TYPE("zuCore.zuMatrix4fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Matrix4<double>>::TYPE("zuCore.zuMatrix4dArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Plane3<float>>::TYPE("zuCore.zuPlane3fArray", &zuObject::TYPE);
template <> const zuRtti zuTSharedArray<Wm4::Plane3<double>>::TYPE("zuCore.zuPlane3dArray", &zuObject::TYPE);

template <class T>
zuRttiInterface* zuTSharedArray<T>::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuTSharedArray>(stream);
}

template <class T>
zuTSharedArray<T>::zuTSharedArray(int quantity, T* data)
    : mQuantity(data ? std::max(quantity, 0) : 0), mData(data), mAllocated(mQuantity)
{
}

template <class T>
zuTSharedArray<T>::zuTSharedArray(const zuTSharedArray& other)
    : zuUnnamedObject(other), mQuantity(0), mData(nullptr), mAllocated(0)
{
    replaceData(other.mQuantity, copyElements(other.mQuantity, other.mData));
}

template <class T>
zuTSharedArray<T>& zuTSharedArray<T>::operator=(const zuTSharedArray& other)
{
    if (this == &other)
        return *this;
    zuUnnamedObject::operator=(other);
    replaceData(other.mQuantity, copyElements(other.mQuantity, other.mData));
    return *this;
}

template <class T>
zuTSharedArray<T>::~zuTSharedArray()
{
    delete[] mData;
}

template <class T>
void zuTSharedArray<T>::SetActiveQuantity(int quantity)
{
    mQuantity = std::clamp(quantity, 0, mAllocated);
}

template <class T>
void zuTSharedArray<T>::replaceData(int quantity, T* data)
{
    delete[] mData;
    mData = data;
    mQuantity = data ? quantity : 0;
    mAllocated = mQuantity;
}

// ---------------------------------------------------------------------------------------
// Persistence

template <class T>
int zuTSharedArray<T>::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuUnnamedObject::GetDiskUsed(stream) + 4 + mQuantity * diskBytes<T>();
}

template <class T>
void zuTSharedArray<T>::Save(zuBaseStream& stream) const
{
    zuUnnamedObject::Save(stream);
    stream.Write(mQuantity);
    stream.Write(mQuantity, mData);
}

template <class T>
void zuTSharedArray<T>::Load(zuBaseStream& stream, zuLink* link)
{
    zuUnnamedObject::Load(stream, link);
    replaceData(0, nullptr);
    int quantity = 0;
    stream.Read(quantity);
    // A quantity the data cannot hold is refused before anything is allocated; the
    // array stays empty.
    if (!stream.CheckCount(quantity, diskBytes<T>()) || quantity == 0)
        return;
    T* data = new T[static_cast<size_t>(quantity)];
    stream.Read(quantity, data);
    replaceData(quantity, data);
}

template <class T>
bool zuTSharedArray<T>::Equals(const zuRttiInterface* other) const
{
    // An array carries no name, so only the interface part of the check applies.
    if (!zuRttiInterface::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuTSharedArray* array = static_cast<const zuTSharedArray*>(other);
    if (mQuantity != array->mQuantity)
        return false;
    for (int i = 0; i < mQuantity; ++i)
        if (!elementsEqual(mData[i], array->mData[i]))
            return false;
    return true;
}

template <class T>
bool zuTSharedArray<T>::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTSharedArray;
    if (!target->IsDerived(TYPE) || !zuUnnamedObject::Clone(target))
        return false;
    if (target == this)
        return true;
    // The target's own array is freed: keeping it would leak it.
    static_cast<zuTSharedArray*>(target)->replaceData(mQuantity, copyElements(mQuantity, mData));
    return true;
}

// The instantiations, compiled here once for the whole library.

template <class T>
void zuTSharedArray<T>::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuUnnamedObject::DescribeFields(object, visitor);
    const auto& array = static_cast<const zuTSharedArray&>(object);
    visitor.List("quantity", array.mQuantity, [&](int64_t i) { describeElement(visitor, array.mData[i]); });
}

template class zuTSharedArray<float>;
template class zuTSharedArray<double>;
template class zuTSharedArray<int>;
template class zuTSharedArray<Wm4::ColorRGB>;
template class zuTSharedArray<Wm4::ColorRGBA>;
template class zuTSharedArray<Wm4::Vector2<float>>;
template class zuTSharedArray<Wm4::Vector2<double>>;
template class zuTSharedArray<Wm4::Vector3<float>>;
template class zuTSharedArray<Wm4::Vector3<double>>;
template class zuTSharedArray<Wm4::Vector4<float>>;
template class zuTSharedArray<Wm4::Vector4<double>>;
template class zuTSharedArray<Wm4::Quaternion<float>>;
template class zuTSharedArray<Wm4::Quaternion<double>>;
template class zuTSharedArray<Wm4::Matrix2<float>>;
template class zuTSharedArray<Wm4::Matrix2<double>>;
template class zuTSharedArray<Wm4::Matrix3<float>>;
template class zuTSharedArray<Wm4::Matrix3<double>>;
template class zuTSharedArray<Wm4::Matrix4<float>>;
template class zuTSharedArray<Wm4::Matrix4<double>>;
template class zuTSharedArray<Wm4::Plane3<float>>;
template class zuTSharedArray<Wm4::Plane3<double>>;

} // namespace zu
