#include <zuSystem/zuVariant.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace zu {

namespace {

// Parses the whole of text (surrounding blanks allowed) as a decimal number of type T, with
// the from_chars `format` arguments; independent of the locale, so "1.5" reads the same
// everywhere.
template <class T, class... Format> bool parseNumber(const std::string& text, T& result, Format... format)
{
    const char* first = text.data();
    const char* last = first + text.size();
    while (first < last && (*first == ' ' || *first == '\t'))
        ++first;
    while (last > first && (last[-1] == ' ' || last[-1] == '\t'))
        --last;
    if (first < last && *first == '+' && last - first > 1 && first[1] != '-')
        ++first;
    if (first == last)
        return false;
    const auto [end, error] = std::from_chars(first, last, result, format...);
    return error == std::errc() && end == last;
}

bool parseInteger(const std::string& text, int64_t& result)
{
    return parseNumber(text, result);
}

bool parseDouble(const std::string& text, double& result)
{
    return parseNumber(text, result, std::chars_format::general);
}

// The value of a bool, number or string as a double; false when it has none.
bool numericValue(const zuVariant& variant, double& result)
{
    switch (variant.getType()) {
    case zuVariant::Bool:
    case zuVariant::Int:
    case zuVariant::Int64:
    case zuVariant::Double:
        result = variant.toDouble();
        return true;
    case zuVariant::String: {
        const std::string text = variant.toString();
        if (text == "true" || text == "false") {
            result = text == "true" ? 1.0 : 0.0;
            return true;
        }
        return parseDouble(text, result);
    }
    default:
        return false;
    }
}

// Truncates toward zero when the result fits in T.
template <typename T>
bool doubleToInteger(double value, T& result)
{
    if (!std::isfinite(value))
        return false;
    const double truncated = std::trunc(value);
    // 2^63 is exact as a double, and so is the lower limit; the upper limit itself is not.
    if (truncated < static_cast<double>(std::numeric_limits<T>::min())
        || truncated >= -static_cast<double>(std::numeric_limits<T>::min()))
        return false;
    result = static_cast<T>(truncated);
    return true;
}

// An integer value of the variant when it has one, without the rounding of a double for
// large 64-bit values.
bool integerValue(const zuVariant& variant, int64_t& result)
{
    switch (variant.getType()) {
    case zuVariant::Bool:
        result = variant.toBool() ? 1 : 0;
        return true;
    case zuVariant::Int:
    case zuVariant::Int64:
        result = variant.toInt64();
        return true;
    case zuVariant::String:
        if (parseInteger(variant.toString(), result))
            return true;
        [[fallthrough]];
    default: {
        double value = 0.0;
        return numericValue(variant, value) && doubleToInteger(value, result);
    }
    }
}

} // namespace

zuVariant::zuVariant() = default;

zuVariant::zuVariant(bool value) : mType(Bool)
{
    mBool = value;
}

zuVariant::zuVariant(int value) : mType(Int)
{
    mInt = value;
}

zuVariant::zuVariant(int64_t value) : mType(Int64)
{
    mInt64 = value;
}

zuVariant::zuVariant(double value) : mType(Double)
{
    mDouble = value;
}

zuVariant::zuVariant(const char* value) : mType(String), mString(value ? value : "")
{
}

zuVariant::zuVariant(const std::string& value) : mType(String), mString(value)
{
}

zuVariant::zuVariant(void* value) : mType(Pointer)
{
    mPointer = value;
}

zuVariant::zuVariant(const zuVariantMapImpl& value) : mType(Map), mMap(std::make_unique<zuVariantMapImpl>(value))
{
}

zuVariant::zuVariant(const zuVariantListImpl& value) : mType(List), mList(std::make_unique<zuVariantListImpl>(value))
{
}

zuVariant::zuVariant(const zuVariant& other)
{
    copyFrom(other);
}

zuVariant::zuVariant(zuVariant&& other) noexcept
    : mType(other.mType), mString(std::move(other.mString)), mMap(std::move(other.mMap)), mList(std::move(other.mList))
{
    // The scalar union as raw bytes, whichever member is in use.
    std::memcpy(&mInt64, &other.mInt64, sizeof(mInt64));
    other.mType = Invalid;
}

zuVariant& zuVariant::operator=(const zuVariant& other)
{
    if (this != &other) {
        // Through a copy: other may live inside this variant's own map or list.
        zuVariant copy(other);
        *this = std::move(copy);
    }
    return *this;
}

zuVariant& zuVariant::operator=(zuVariant&& other) noexcept
{
    if (this != &other) {
        // Take other's parts before clearing: other may live inside this variant's own map
        // or list.
        const Type type = other.mType;
        int64_t bits = 0;
        std::memcpy(&bits, &other.mInt64, sizeof(bits));
        std::string text = std::move(other.mString);
        std::unique_ptr<zuVariantMapImpl> map = std::move(other.mMap);
        std::unique_ptr<zuVariantListImpl> list = std::move(other.mList);
        other.mType = Invalid;
        mType = type;
        std::memcpy(&mInt64, &bits, sizeof(bits));
        mString = std::move(text);
        mMap = std::move(map);
        mList = std::move(list);
    }
    return *this;
}

zuVariant::~zuVariant() = default;

void zuVariant::clear()
{
    mType = Invalid;
    mInt64 = 0;
    mString.clear();
    mMap.reset();
    mList.reset();
}

void zuVariant::copyFrom(const zuVariant& other)
{
    clear();
    mType = other.mType;
    switch (other.mType) {
    case Bool: mBool = other.mBool; break;
    case Int: mInt = other.mInt; break;
    case Int64: mInt64 = other.mInt64; break;
    case Double: mDouble = other.mDouble; break;
    case Pointer: mPointer = other.mPointer; break;
    case String: mString = other.mString; break;
    case Map: mMap = std::make_unique<zuVariantMapImpl>(*other.mMap); break;
    case List: mList = std::make_unique<zuVariantListImpl>(*other.mList); break;
    case Invalid: break;
    }
}

bool zuVariant::toBool(bool defaultValue) const
{
    switch (mType) {
    case Bool: return mBool;
    case Int: return mInt != 0;
    case Int64: return mInt64 != 0;
    case Double: return mDouble != 0.0;
    case String: {
        if (mString == "true")
            return true;
        if (mString == "false")
            return false;
        double value = 0.0;
        return parseDouble(mString, value) ? value != 0.0 : defaultValue;
    }
    default: return defaultValue;
    }
}

int zuVariant::toInt(int defaultValue) const
{
    if (mType == Int)
        return mInt;
    int64_t value = 0;
    if (!integerValue(*this, value) || value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        return defaultValue;
    return static_cast<int>(value);
}

int64_t zuVariant::toInt64(int64_t defaultValue) const
{
    switch (mType) {
    case Int: return mInt;
    case Int64: return mInt64;
    default: {
        int64_t value = 0;
        return integerValue(*this, value) ? value : defaultValue;
    }
    }
}

double zuVariant::toDouble(double defaultValue) const
{
    switch (mType) {
    case Bool: return mBool ? 1.0 : 0.0;
    case Int: return mInt;
    case Int64: return static_cast<double>(mInt64);
    case Double: return mDouble;
    case String: {
        double value = 0.0;
        return numericValue(*this, value) ? value : defaultValue;
    }
    default: return defaultValue;
    }
}

std::string zuVariant::toString() const
{
    switch (mType) {
    case Bool: return mBool ? "true" : "false";
    case Int: return std::to_string(mInt);
    case Int64: return std::to_string(mInt64);
    case Double: {
        // The shortest text that reads back to the same double.
        char buffer[32];
        const auto [end, error] = std::to_chars(buffer, buffer + sizeof(buffer), mDouble);
        return error == std::errc() ? std::string(buffer, end) : std::string();
    }
    case String: return mString;
    case Pointer: {
        char buffer[32];
        std::snprintf(buffer, sizeof(buffer), "0x%llx",
                      static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(mPointer)));
        return buffer;
    }
    default: return std::string();
    }
}

void* zuVariant::toPointer() const
{
    return mType == Pointer ? mPointer : nullptr;
}

const zuVariant::zuVariantMapImpl* zuVariant::toMap() const
{
    return mType == Map ? mMap.get() : nullptr;
}

zuVariant::zuVariantMapImpl* zuVariant::toMap()
{
    return mType == Map ? mMap.get() : nullptr;
}

const zuVariant::zuVariantListImpl* zuVariant::toList() const
{
    return mType == List ? mList.get() : nullptr;
}

zuVariant::zuVariantListImpl* zuVariant::toList()
{
    return mType == List ? mList.get() : nullptr;
}

bool zuVariant::operator==(const zuVariant& other) const
{
    if (mType != other.mType)
        return false;
    switch (mType) {
    case Invalid: return true;
    case Bool: return mBool == other.mBool;
    case Int: return mInt == other.mInt;
    case Int64: return mInt64 == other.mInt64;
    case Double: return mDouble == other.mDouble;
    case String: return mString == other.mString;
    case Pointer: return mPointer == other.mPointer;
    case Map: return *mMap == *other.mMap;
    case List: return *mList == *other.mList;
    }
    return false;
}

zuVariant zuVariant::zuVariantMapImpl::value(const std::string& key) const
{
    const auto it = find(key);
    return it == end() ? zuVariant() : it->second;
}

} // namespace zu
