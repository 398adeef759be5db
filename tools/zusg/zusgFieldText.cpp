#include "zusgFieldText.h"

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

} // namespace

std::string number(float value)
{
    return shortest(value);
}

std::string number(double value)
{
    return shortest(value);
}

std::string vector3(const Wm4::Vector3<float>& value)
{
    // Built by appending: GCC 12 warns wrongly about `"(" + std::string`.
    std::string text(1, '(');
    text.append(number(value[0])).append(" ").append(number(value[1])).append(" ").append(number(value[2]));
    return text.append(")");
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

std::string enumerator(const char* name, int value)
{
    if (name && std::strcmp(name, "UNKNOWN") != 0)
        return name;
    std::string text = "UNKNOWN (";
    text += std::to_string(value);
    text += ')';
    return text;
}

void FieldText::separate()
{
    if (mScopes.empty())
        return;
    Scope& scope = mScopes.back();
    if (scope.list)
        mOut << ' ';
    else if (!scope.first)
        mOut << ", ";
    scope.first = false;
}

void FieldText::endLineIfOutermost()
{
    if (mScopes.empty())
        mOut << '\n';
}

void FieldText::field(const char* name, const std::string& value)
{
    separate();
    if (name)
        mOut << name << ' ';
    mOut << value;
    endLineIfOutermost();
}

void FieldText::BeginGroup(const char* name)
{
    if (mScopes.size() == 1 && mScopes.back().list) {
        // The elements of a list of groups take a line each.
        Scope& list = mScopes.back();
        list.linePerElement = true;
        mOut << "\n  [" << list.elements++ << "] ";
        mScopes.emplace_back();
        return;
    }
    const bool inLine = !mScopes.empty();
    separate();
    if (name)
        mOut << name << (inLine ? " " : ": ");
    if (inLine)
        mOut << '(';
    mScopes.emplace_back();
    mScopes.back().inParentheses = inLine;
}

void FieldText::EndGroup()
{
    if (mScopes.empty())
        return;
    if (mScopes.back().inParentheses)
        mOut << ')';
    mScopes.pop_back();
    endLineIfOutermost();
}

int64_t FieldText::BeginList(const char* name, int64_t quantity)
{
    separate();
    if (name)
        mOut << name << ' ';
    mOut << quantity;
    Scope list;
    list.list = true;
    list.quantity = quantity;
    list.shown = std::clamp<int64_t>(quantity, 0, SHOWN_ELEMENTS);
    if (list.shown > 0)
        mOut << ':';
    mScopes.push_back(list);
    return list.shown;
}

void FieldText::EndList()
{
    if (mScopes.empty())
        return;
    const Scope list = mScopes.back();
    mScopes.pop_back();
    if (list.quantity > list.shown) {
        if (list.linePerElement)
            mOut << "\n  ... (" << list.quantity - list.shown << " more)";
        else
            mOut << " ...";
    }
    endLineIfOutermost();
}

void FieldText::Flag(const char* name, bool value)
{
    field(name, value ? "true" : "false");
}

void FieldText::Integer(const char* name, int64_t value)
{
    field(name, std::to_string(value));
}

void FieldText::Mask(const char* name, uint64_t value, int bits)
{
    char text[32];
    std::snprintf(text, sizeof text, "0x%0*llX", std::clamp((bits + 3) / 4, 1, 16),
                  static_cast<unsigned long long>(value));
    field(name, text);
}

void FieldText::Number(const char* name, float value)
{
    field(name, number(value));
}

void FieldText::Number(const char* name, double value)
{
    field(name, number(value));
}

void FieldText::Text(const char* name, const std::string& value)
{
    // Long enough for the paths of files that hold blocks.
    field(name, quotedText(value, 256));
}

void FieldText::Enumerator(const char* name, int value, const char* enumeratorName)
{
    field(name, enumerator(enumeratorName, value));
}

template <class Real>
void FieldText::numbers(const char* name, const Real* values, int count, int rowLength)
{
    std::string text(1, '(');
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            text += rowLength > 0 && i % rowLength == 0 ? "; " : " ";
        text += number(values[i]);
    }
    text += ')';
    field(name, text);
}

void FieldText::Numbers(const char* name, const float* values, int count, int rowLength)
{
    numbers(name, values, count, rowLength);
}

void FieldText::Numbers(const char* name, const double* values, int count, int rowLength)
{
    numbers(name, values, count, rowLength);
}

void FieldText::Reference(const char* name, const zu::zuRttiInterface* object)
{
    field(name, mLabel ? mLabel(object) : object ? "(object)" : "null");
}

void FieldText::Channel(const char* name, int unit, int channels, int offset)
{
    std::string label = name ? name : "";
    if (unit >= 0)
        label.append("[").append(std::to_string(unit)).append("]");
    field(label.c_str(), std::to_string(channels) + " at " + std::to_string(offset));
}

} // namespace zusg
