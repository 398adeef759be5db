#pragma once

#include <cstdint>

namespace zu {

// The version of an object stream: major in the high 16 bits, minor in the low 16 bits,
// compared as one 32-bit number. 0.0 is the invalid version.
class zuStreamVersion {
public:
    // The length of the NUL-terminated header text of version 6 streams ("MVK 6.00").
    static constexpr int LENGTH_V6 = 9;
    // The length of the older, longer header field.
    static constexpr int LENGTH_V4 = 28;

    constexpr zuStreamVersion() = default;
    // Both numbers are kept when each is below 65536, else the version is 0.0.
    constexpr zuStreamVersion(int major, int minor) { SetVersion(major, minor); }
    // Parses "MVK 6.32" or "6.32"; a text that does not parse leaves 0.0 (and is logged).
    zuStreamVersion(const char* text, int length);

    int GetMajor() const { return static_cast<int>(mVersion >> 16); }
    int GetMinor() const { return static_cast<int>(mVersion & 0xFFFFu); }
    uint32_t GetCombined() const { return mVersion; }
    bool IsValid() const { return mVersion != 0; }

    void SetMajor(int major)
    {
        const uint32_t value = major >= 0 && major < 65536 ? static_cast<uint32_t>(major) : 0u;
        mVersion = (value << 16) | (mVersion & 0xFFFFu);
    }
    void SetMinor(int minor)
    {
        const uint32_t value = minor >= 0 && minor < 65536 ? static_cast<uint32_t>(minor) : 0u;
        mVersion = (mVersion & 0xFFFF0000u) | value;
    }
    constexpr void SetVersion(int major, int minor)
    {
        if (major >= 0 && major < 65536 && minor >= 0 && minor < 65536)
            mVersion = (static_cast<uint32_t>(major) << 16) | static_cast<uint32_t>(minor);
        else
            mVersion = 0;
    }

    bool operator==(const zuStreamVersion& other) const { return mVersion == other.mVersion; }
    bool operator!=(const zuStreamVersion& other) const { return mVersion != other.mVersion; }
    bool operator<(const zuStreamVersion& other) const { return mVersion < other.mVersion; }
    bool operator<=(const zuStreamVersion& other) const { return mVersion <= other.mVersion; }
    bool operator>(const zuStreamVersion& other) const { return mVersion > other.mVersion; }
    bool operator>=(const zuStreamVersion& other) const { return mVersion >= other.mVersion; }

private:
    uint32_t mVersion = 0;
};

} // namespace zu
