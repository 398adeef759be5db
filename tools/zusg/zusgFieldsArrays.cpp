// Field printers of the shared arrays: the quantity and the first elements.

#include "zusgFields.h"

#include <zuSceneGraph/objects/zuTSharedArray.h>

#include <algorithm>

namespace zusg {

namespace {

// Elements shown before "...": enough to recognise the data, short enough for one line.
constexpr int SHOWN_ELEMENTS = 8;

std::string element(float value) { return number(value); }
std::string element(double value) { return number(value); }
std::string element(int value) { return std::to_string(value); }

// Compound elements in parentheses, their components in memory order; the rows of a
// matrix and the constant of a plane are set apart by "; ".
// (Texts are built by appending: GCC 12 warns wrongly about `"(" + std::string`.)
template <class Value>
void appendComponents(std::string& text, const Value& value, int count)
{
    for (int i = 0; i < count; ++i) {
        if (i)
            text += ' ';
        text += number(value[i]);
    }
}

template <class Value>
std::string tuple(const Value& value, int count)
{
    std::string text(1, '(');
    appendComponents(text, value, count);
    text += ')';
    return text;
}

std::string element(const Wm4::ColorRGB& value) { return tuple(value, 3); }
std::string element(const Wm4::ColorRGBA& value) { return tuple(value, 4); }
template <class Real> std::string element(const Wm4::Vector2<Real>& value) { return tuple(value, 2); }
template <class Real> std::string element(const Wm4::Vector3<Real>& value) { return tuple(value, 3); }
template <class Real> std::string element(const Wm4::Vector4<Real>& value) { return tuple(value, 4); }
// W, X, Y, Z: the order of the quaternion's storage and of the stream.
template <class Real> std::string element(const Wm4::Quaternion<Real>& value) { return tuple(value, 4); }

template <class Matrix>
std::string matrixElement(const Matrix& value, int size)
{
    std::string text(1, '(');
    for (int row = 0; row < size; ++row) {
        if (row)
            text += "; ";
        appendComponents(text, value[row], size);
    }
    text += ')';
    return text;
}

template <class Real> std::string element(const Wm4::Matrix2<Real>& value) { return matrixElement(value, 2); }
template <class Real> std::string element(const Wm4::Matrix3<Real>& value) { return matrixElement(value, 3); }
template <class Real> std::string element(const Wm4::Matrix4<Real>& value) { return matrixElement(value, 4); }
template <class Real> std::string element(const Wm4::Plane3<Real>& value)
{
    std::string text(1, '(');
    appendComponents(text, value.Normal, 3);
    text += "; ";
    text += number(value.Constant);
    text += ')';
    return text;
}

// "quantity 3: 1 2.5 -4", "..." after the first SHOWN_ELEMENTS.
template <class T>
void printArray(const zu::zuRttiInterface& object, std::ostream& out)
{
    const auto& array = static_cast<const zu::zuTSharedArray<T>&>(object);
    const int quantity = array.GetQuantity();
    out << "quantity " << quantity;
    if (quantity > 0 && array.GetData()) {
        out << ":";
        const int shown = std::min(quantity, SHOWN_ELEMENTS);
        for (int i = 0; i < shown; ++i)
            out << " " << element(array[i]);
        if (quantity > shown)
            out << " ...";
    }
    out << "\n";
}

template <class T>
void addArray(FieldRegistry& registry)
{
    registry.add(zu::zuTSharedArray<T>::TYPE, printArray<T>);
}

} // namespace

void addArrayFields(FieldRegistry& registry)
{
    addArray<float>(registry);
    addArray<double>(registry);
    addArray<int>(registry);
    addArray<Wm4::ColorRGB>(registry);
    addArray<Wm4::ColorRGBA>(registry);
    addArray<Wm4::Vector2<float>>(registry);
    addArray<Wm4::Vector2<double>>(registry);
    addArray<Wm4::Vector3<float>>(registry);
    addArray<Wm4::Vector3<double>>(registry);
    addArray<Wm4::Vector4<float>>(registry);
    addArray<Wm4::Vector4<double>>(registry);
    addArray<Wm4::Quaternion<float>>(registry);
    addArray<Wm4::Quaternion<double>>(registry);
    addArray<Wm4::Matrix2<float>>(registry);
    addArray<Wm4::Matrix2<double>>(registry);
    addArray<Wm4::Matrix3<float>>(registry);
    addArray<Wm4::Matrix3<double>>(registry);
    addArray<Wm4::Matrix4<float>>(registry);
    addArray<Wm4::Matrix4<double>>(registry);
    addArray<Wm4::Plane3<float>>(registry);
    addArray<Wm4::Plane3<double>>(registry);
}

} // namespace zusg
