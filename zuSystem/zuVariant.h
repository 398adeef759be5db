#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace zu {

// A tagged value: bool, 32/64-bit integer, double, string, pointer, map or list.
// Copies are deep (a copied map owns its own entries).
class zuVariant {
public:
    class zuVariantMapImpl;
    class zuVariantListImpl;

    enum Type { Invalid, Bool, Int, Int64, Double, String, Pointer, Map, List };

    zuVariant();
    zuVariant(bool value);
    zuVariant(int value);
    zuVariant(int64_t value);
    zuVariant(double value);
    zuVariant(const char* value);
    zuVariant(const std::string& value);
    zuVariant(void* value);
    zuVariant(const zuVariantMapImpl& value);
    zuVariant(const zuVariantListImpl& value);
    zuVariant(const zuVariant& other);
    zuVariant(zuVariant&& other) noexcept;
    zuVariant& operator=(const zuVariant& other);
    zuVariant& operator=(zuVariant&& other) noexcept;
    ~zuVariant();

    Type getType() const { return mType; }
    bool isValid() const { return mType != Invalid; }

    // Conversions between the scalar kinds follow the usual rules (numbers convert to each
    // other and to bool; "true"/"false" and decimal strings convert to bool and numbers);
    // anything else gives the default value, and so does a number outside the target range
    // (a double converts to an integer by truncation toward zero).
    bool toBool(bool defaultValue = false) const;
    int toInt(int defaultValue = 0) const;
    int64_t toInt64(int64_t defaultValue = 0) const;
    double toDouble(double defaultValue = 0.0) const;
    // Numbers in decimal (a double with the fewest digits that read back to the same value),
    // bools as "true"/"false", a pointer in hexadecimal; "" for invalid, map and list.
    std::string toString() const;
    void* toPointer() const;
    // Null when the variant holds no map (list).
    const zuVariantMapImpl* toMap() const;
    zuVariantMapImpl* toMap();
    const zuVariantListImpl* toList() const;
    zuVariantListImpl* toList();

    // Equal when of the same type and value; maps and lists compare element by element.
    bool operator==(const zuVariant& other) const;
    bool operator!=(const zuVariant& other) const { return !(*this == other); }

private:
    void clear();
    void copyFrom(const zuVariant& other);

    Type mType = Invalid;
    union {
        bool mBool;
        int32_t mInt;
        int64_t mInt64 = 0;
        double mDouble;
        void* mPointer;
    };
    std::string mString;
    std::unique_ptr<zuVariantMapImpl> mMap;
    std::unique_ptr<zuVariantListImpl> mList;
};

class zuVariant::zuVariantMapImpl : public std::map<std::string, zuVariant> {
public:
    using std::map<std::string, zuVariant>::map;
    // The value of key, or an invalid variant when absent.
    zuVariant value(const std::string& key) const;
    bool contains(const std::string& key) const { return find(key) != end(); }
};

class zuVariant::zuVariantListImpl : public std::vector<zuVariant> {
public:
    using std::vector<zuVariant>::vector;
};

} // namespace zu
