#pragma once

#include <Wm4/Wm4Box3.h>
#include <Wm4/Wm4Math.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Vector3.h>

#include <cmath>
#include <limits>

namespace zu {

class zuBaseStream;
class zuFieldVisitor;
class zuLegacyBoundingVolume;
class zuVertexBuffer;
template <class T> class zuGenericTransformation;
template <class T> class zuTSharedArray;

// The bound of a spatial object: a box along the world axes (a centre and three
// half-sizes) with its circumscribed sphere, whose radius is the length of the extents.
//
// A bound is valid when the radius and the three extents are all >= 0. The default bound
// is invalid (radius and extents -1, centre zero): an object with no geometry yet. Every
// operation that changes the box recomputes the radius, and a box that is not finite or
// has a negative extent gets radius -1, so "radius >= 0" and "valid" mean the same for
// bounds built through this class.
//
// Persisted form from stream version 6.28 on: radius, extents (3 floats), centre
// (3 floats), 28 bytes. Older streams hold the legacy record: a bool "is a sphere", the
// centre, then a radius (a sphere) or three axes and three extents (a box).
class zuBoundingVolume {
public:
    zuBoundingVolume() = default;
    // The box around `center` with the half-sizes `extents` along x, y and z.
    zuBoundingVolume(const Wm4::Vector3<float>& center, const Wm4::Vector3<float>& extents);

    bool isValid() const
    {
        return mRadius >= 0.0f && mExtents[0] >= 0.0f && mExtents[1] >= 0.0f && mExtents[2] >= 0.0f;
    }
    float GetRadius() const { return mRadius; }
    const Wm4::Vector3<float>& GetCenter() const { return mCenter; }
    const Wm4::Vector3<float>& GetExtents() const { return mExtents; }
    // The box with the world axes.
    Wm4::Box3<float> GetBox() const;

    void setCenter(const Wm4::Vector3<float>& center) { mCenter = center; }
    // The radius follows the extents.
    void setExtents(const Wm4::Vector3<float>& extents)
    {
        mExtents = extents;
        updateRadius();
    }
    // setCenter and setExtents at once.
    void setBox(const Wm4::Vector3<float>& center, const Wm4::Vector3<float>& extents)
    {
        mCenter = center;
        setExtents(extents);
    }
    // Back to the default, invalid bound.
    void invalidate();

    // Copies every field, but only from a valid bound: an invalid one leaves this as it was.
    void copyFrom(const zuBoundingVolume& bv);
    // The centre of the legacy volume; a box gives its extents, a sphere of radius r the
    // cube of half-size r (so the radius becomes r·√3). Null leaves this unchanged.
    void assign(const zuLegacyBoundingVolume* legacy);
    // A new zuLegacySphereBV with this centre and radius (the caller takes the first
    // reference), or null for an invalid bound.
    zuLegacyBoundingVolume* createLegacyVolume() const;

    // The oriented box that fits the points (Wm4::ContOrientedBox), with its axes dropped:
    // its centre and extents are taken along the world axes. This is deliberate and cheap,
    // and it is not a conservative bound for points whose principal axes are rotated
    // against the world axes. No points give an invalid bound; a null array changes nothing.
    void computeFromDataBox(const zuTSharedArray<Wm4::Vector3<float>>* points);
    // The axis-aligned min/max box of the buffer's positions (2D positions have z = 0). A
    // null or empty buffer, or one without positions, gives an invalid bound; a buffer whose
    // block is not in memory leaves the bound as it is. Declared here, defined with the
    // vertex buffer (in the resources layer), which is the only code that knows its layout.
    void computeFromDataBox(const zuVertexBuffer* vertices);

    // `out` becomes the world-axis box of the eight corners mapped by `transformation`,
    // centred on the mapped centre. An invalid bound leaves `out` unchanged.
    void transformBoxBy(const zuGenericTransformation<float>& transformation, zuBoundingVolume& out) const;

    // +1 when the box lies on the positive side of the plane (touching it counts), -1 on
    // the negative side (touching counts too), 0 when it straddles it or is invalid.
    int whichBoxSide(const Wm4::Plane3<float>& plane) const
    {
        if (!isValid())
            return 0;
        const Wm4::Vector3<float>& n = plane.Normal;
        const float r = Wm4::Math<float>::FAbs(n[0]) * mExtents[0] + Wm4::Math<float>::FAbs(n[1]) * mExtents[1]
            + Wm4::Math<float>::FAbs(n[2]) * mExtents[2];
        const float d = n[0] * mCenter[0] + n[1] * mCenter[1] + n[2] * mCenter[2] - plane.Constant;
        if (d >= r)
            return +1;
        if (d <= -r)
            return -1;
        return 0;
    }

    // Whether the solid box meets a line (tmin = -MAX_REAL), else the segment from origin
    // to origin + tmax·direction (tmax below MAX_REAL; tmin is not used as a start), else
    // the ray from origin. Invalid bounds meet nothing.
    bool testIntersectionBox(const Wm4::Vector3<float>& origin, const Wm4::Vector3<float>& direction, float tmin,
                             float tmax) const;
    // Whether this solid box and `bv` overlap (touching counts); false when either is
    // invalid.
    bool testIntersectionBox(const zuBoundingVolume& bv) const;
    // Grows this box to hold `bv` as well, by Wm4::MergeBoxes of the two world-axis boxes
    // (its axes dropped). An invalid argument changes nothing; an invalid self takes the
    // argument.
    void growToContainBox(const zuBoundingVolume& bv);
    // Whether the point lies in the box (the faces thickened by Wm4's zero tolerance).
    bool containsBox(const Wm4::Vector3<float>& point) const;

    // Reads the form of the stream's version. True unless a legacy sphere was read.
    bool readFromStream(zuBaseStream& stream);
    // Writes the current form from 6.28 on. Older streams get the legacy record of a box
    // (the world axes and the extents), which keeps the box exactly; so writers size the
    // record with getDiskUsed(stream, true).
    void writeToStream(zuBaseStream& stream) const;
    // The bytes writeToStream writes to `stream`: 28 from 6.28 on; before, 61 for a
    // legacy box record (`isBox`) and 17 for a sphere record.
    int getDiskUsed(const zuBaseStream& stream, bool isBox) const;

    // Reports the radius, the extents and the centre as the group `name`.
    void DescribeFields(const char* name, zuFieldVisitor& visitor) const;

    // The fields bit for bit.
    bool operator==(const zuBoundingVolume& other) const
    {
        return mRadius == other.mRadius && mExtents == other.mExtents && mCenter == other.mCenter;
    }
    bool operator!=(const zuBoundingVolume& other) const { return !(*this == other); }

private:
    // The vector form of the box operations, in the source.
    struct Lanes;

    // The sphere through the box corners; -1 (invalid) for a negative or non-finite extent
    // or length. Inline: the update pass sets a bound per object.
    void updateRadius()
    {
        const float x = mExtents[0], y = mExtents[1], z = mExtents[2];
        // Written so that a NaN fails every comparison.
        const float largest = std::numeric_limits<float>::max();
        if (!(x >= 0.0f && y >= 0.0f && z >= 0.0f && x <= largest && y <= largest && z <= largest)) {
            mRadius = -1.0f;
            return;
        }
        const float length = std::sqrt(x * x + y * y + z * z);
        mRadius = length <= largest ? length : -1.0f;
    }

    float mRadius = -1.0f;
    Wm4::Vector3<float> mExtents{-1.0f, -1.0f, -1.0f};
    Wm4::Vector3<float> mCenter;
};

} // namespace zu
