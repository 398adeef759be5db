// Value texts shared by the field printers, and the printers of values that several
// classes hold (the object part of named objects, transformations).

#include "zusgFields.h"

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuObject.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>

namespace zusg {

namespace {

template <class Real>
std::string shortest(Real value)
{
    char text[64];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, value);
    return std::string(text, result.ptr);
}

// "(a b c)". (Built by appending: GCC 12 warns wrongly about `"(" + std::string`.)
std::string triple(float a, float b, float c)
{
    std::string text(1, '(');
    text += shortest(a);
    text += ' ';
    text += shortest(b);
    text += ' ';
    text += shortest(c);
    text += ')';
    return text;
}

} // namespace

std::string number(float value)
{
    return shortest(value);
}

std::string number(double value)
{
    return shortest(value);
}

std::string flag(bool value)
{
    return value ? "true" : "false";
}

std::string enumerator(const char* name, int value)
{
    if (name && std::strcmp(name, "UNKNOWN") != 0)
        return name;
    std::string text = "UNKNOWN (";
    text += std::to_string(value);
    text += ')';
    return text;
}

std::string vector3(const Wm4::Vector3<float>& value)
{
    return triple(value[0], value[1], value[2]);
}

std::string colour(const Wm4::ColorRGB& value)
{
    return triple(value[0], value[1], value[2]);
}

std::string quotedText(const std::string& text, size_t maxLength)
{
    std::string result = "\"";
    const size_t shown = std::min(text.size(), maxLength);
    for (size_t i = 0; i < shown; ++i) {
        const unsigned char c = static_cast<unsigned char>(text[i]);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += static_cast<char>(c);
        } else if (c < ' ' || c >= 127) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", c);
            result += escaped;
        } else {
            result += static_cast<char>(c);
        }
    }
    result += '"';
    if (shown < text.size())
        result += "...";
    return result;
}

void printNamedObjectPart(const zu::zuObject& object, std::ostream& out)
{
    const int quantity = object.GetControllerQuantity();
    int null = 0;
    for (int i = 0; i < quantity; ++i)
        if (!object.GetController(i))
            ++null;
    out << "name " << quotedText(object.GetName()) << ", controllers " << quantity;
    if (null > 0)
        out << " (" << null << " null: a record loaded on its own reaches no other record)";
    out << "\n";
}

void printTransformation(const zu::zuGenericTransformation<float>& transformation, const std::string& label,
                         std::ostream& out)
{
    out << label << ": IsIdentity " << flag(transformation.IsIdentity()) << ", IsRSMatrix "
        << flag(transformation.IsRSMatrix()) << ", IsUniformScale " << flag(transformation.IsUniformScale()) << "\n";
    const Wm4::Matrix3<float>& matrix = transformation.GetMatrix();
    for (int row = 0; row < 3; ++row)
        out << "  matrix row " << row << ": " << number(matrix(row, 0)) << " " << number(matrix(row, 1)) << " "
            << number(matrix(row, 2)) << "\n";
    out << "  translate " << vector3(transformation.GetTranslate()) << "\n";
    out << "  scale " << vector3(transformation.GetScale()) << "\n";
}

} // namespace zusg
