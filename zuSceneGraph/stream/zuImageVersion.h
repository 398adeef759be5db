#pragma once

namespace zu {

// The version of image data: major and minor, compared as major * 100 + minor.
class zuImageVersion {
public:
    zuImageVersion(int major = 0, int minor = 0) : mMajor(major), mMinor(minor) {}

    int getMajor() const { return mMajor; }
    int getMinor() const { return mMinor; }
    bool isValid() const { return mMajor >= 1 && mMinor <= 99; }
    int getCombinedVersion() const { return mMajor * 100 + mMinor; }

    bool operator==(const zuImageVersion& o) const { return getCombinedVersion() == o.getCombinedVersion(); }
    bool operator!=(const zuImageVersion& o) const { return getCombinedVersion() != o.getCombinedVersion(); }
    bool operator<(const zuImageVersion& o) const { return getCombinedVersion() < o.getCombinedVersion(); }
    bool operator<=(const zuImageVersion& o) const { return getCombinedVersion() <= o.getCombinedVersion(); }
    bool operator>(const zuImageVersion& o) const { return getCombinedVersion() > o.getCombinedVersion(); }
    bool operator>=(const zuImageVersion& o) const { return getCombinedVersion() >= o.getCombinedVersion(); }

private:
    int mMajor;
    int mMinor;
};

} // namespace zu
