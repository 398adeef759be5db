#pragma once

#include <zuSceneGraph/objects/zuUnnamedObject.h>

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>
#include <Wm4/Wm4Matrix2.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>

namespace zu {

// A persistable, reference-counted array of plain values. Several objects share one
// array by holding a zuPointer to it; the stream writes it once and links every holder
// to the same loaded array. Only the instantiations declared below exist (each has its
// own persisted type name); they are compiled once, in the library.
//
// Record: the object part (always an empty name and no controllers), the quantity as an
// int, then the elements back to back with no count of their own.
template <class T>
class zuTSharedArray : public zuUnnamedObject {
public:
    static const zuRtti TYPE;

    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory() { RegisterClass<zuTSharedArray>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    // The quantity and the first elements.
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Takes ownership of `data` itself (allocated with new[]); nothing is copied. Without
    // data the array is empty whatever `quantity` says.
    explicit zuTSharedArray(int quantity = 0, T* data = nullptr);
    // Deep copies: the elements are copied into a new array of the other's quantity.
    zuTSharedArray(const zuTSharedArray& other);
    zuTSharedArray& operator=(const zuTSharedArray& other);
    ~zuTSharedArray() override;

    int GetQuantity() const { return mQuantity; }
    T* GetData() { return mData; }
    const T* GetData() const { return mData; }
    operator T*() { return mData; }
    operator const T*() const { return mData; }
    // No bounds check.
    T& operator[](int i) { return mData[i]; }
    const T& operator[](int i) const { return mData[i]; }
    // Shortens the visible part of the array without touching the elements, so that a
    // caller can fill a larger array and keep only what it used. The quantity stays
    // within 0 and the allocated length.
    void SetActiveQuantity(int quantity);

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // Elements are compared in index order: integers exactly, every floating-point
    // component in double precision as equal when they differ by less than 1e-6.
    bool Equals(const zuRttiInterface* other) const override;
    // Into a null target, a new array of the same instantiation is created. An array the
    // target held is freed and replaced by a copy of the elements.
    bool Clone(zuRttiInterface*& target) const override;

private:
    void replaceData(int quantity, T* data);

    int mQuantity;
    T* mData;
    // The length of mData, the upper bound of SetActiveQuantity.
    int mAllocated;
};

// The instantiations and their persisted type names (defined in zuTSharedArray.cpp).
template <> const zuRtti zuTSharedArray<float>::TYPE;
template <> const zuRtti zuTSharedArray<double>::TYPE;
template <> const zuRtti zuTSharedArray<int>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::ColorRGB>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::ColorRGBA>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Vector2<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Vector2<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Vector3<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Vector3<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Vector4<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Vector4<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Quaternion<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Quaternion<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Matrix2<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Matrix2<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Matrix3<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Matrix3<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Matrix4<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Matrix4<double>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Plane3<float>>::TYPE;
template <> const zuRtti zuTSharedArray<Wm4::Plane3<double>>::TYPE;

extern template class zuTSharedArray<float>;
extern template class zuTSharedArray<double>;
extern template class zuTSharedArray<int>;
extern template class zuTSharedArray<Wm4::ColorRGB>;
extern template class zuTSharedArray<Wm4::ColorRGBA>;
extern template class zuTSharedArray<Wm4::Vector2<float>>;
extern template class zuTSharedArray<Wm4::Vector2<double>>;
extern template class zuTSharedArray<Wm4::Vector3<float>>;
extern template class zuTSharedArray<Wm4::Vector3<double>>;
extern template class zuTSharedArray<Wm4::Vector4<float>>;
extern template class zuTSharedArray<Wm4::Vector4<double>>;
extern template class zuTSharedArray<Wm4::Quaternion<float>>;
extern template class zuTSharedArray<Wm4::Quaternion<double>>;
extern template class zuTSharedArray<Wm4::Matrix2<float>>;
extern template class zuTSharedArray<Wm4::Matrix2<double>>;
extern template class zuTSharedArray<Wm4::Matrix3<float>>;
extern template class zuTSharedArray<Wm4::Matrix3<double>>;
extern template class zuTSharedArray<Wm4::Matrix4<float>>;
extern template class zuTSharedArray<Wm4::Matrix4<double>>;
extern template class zuTSharedArray<Wm4::Plane3<float>>;
extern template class zuTSharedArray<Wm4::Plane3<double>>;

using zuFloatArray = zuTSharedArray<float>;
using zuDoubleArray = zuTSharedArray<double>;
using zuIntArray = zuTSharedArray<int>;
using zuColorRGBArray = zuTSharedArray<Wm4::ColorRGB>;
using zuColorRGBAArray = zuTSharedArray<Wm4::ColorRGBA>;
using zuVector2fArray = zuTSharedArray<Wm4::Vector2<float>>;
using zuVector2dArray = zuTSharedArray<Wm4::Vector2<double>>;
using zuVector3fArray = zuTSharedArray<Wm4::Vector3<float>>;
using zuVector3dArray = zuTSharedArray<Wm4::Vector3<double>>;
using zuVector4fArray = zuTSharedArray<Wm4::Vector4<float>>;
using zuVector4dArray = zuTSharedArray<Wm4::Vector4<double>>;
using zuQuaternionfArray = zuTSharedArray<Wm4::Quaternion<float>>;
using zuQuaterniondArray = zuTSharedArray<Wm4::Quaternion<double>>;
using zuMatrix2fArray = zuTSharedArray<Wm4::Matrix2<float>>;
using zuMatrix2dArray = zuTSharedArray<Wm4::Matrix2<double>>;
using zuMatrix3fArray = zuTSharedArray<Wm4::Matrix3<float>>;
using zuMatrix3dArray = zuTSharedArray<Wm4::Matrix3<double>>;
using zuMatrix4fArray = zuTSharedArray<Wm4::Matrix4<float>>;
using zuMatrix4dArray = zuTSharedArray<Wm4::Matrix4<double>>;
using zuPlane3fArray = zuTSharedArray<Wm4::Plane3<float>>;
using zuPlane3dArray = zuTSharedArray<Wm4::Plane3<double>>;

} // namespace zu
