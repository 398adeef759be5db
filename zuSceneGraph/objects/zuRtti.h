#pragma once

namespace zu {

// The run-time type record of one class: its persisted type name and its base's record.
// Records are compared by identity, never by name.
class zuRtti {
public:
    constexpr zuRtti(const char* name, const zuRtti* base) : mName(name), mBase(base) {}
    zuRtti(const zuRtti&) = delete;
    zuRtti& operator=(const zuRtti&) = delete;

    const char* GetName() const { return mName; }
    const zuRtti* GetBaseType() const { return mBase; }

    // True when this record is `other` or derives from it.
    bool IsDerived(const zuRtti& other) const
    {
        for (const zuRtti* type = this; type; type = type->mBase)
            if (type == &other)
                return true;
        return false;
    }

private:
    const char* mName;
    const zuRtti* mBase;
};

} // namespace zu
