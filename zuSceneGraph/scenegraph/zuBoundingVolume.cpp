#include <zuSceneGraph/scenegraph/zuBoundingVolume.h>

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/math/zuSse.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoxBV.h>
#include <zuSceneGraph/scenegraph/zuLegacySphereBV.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4ContBox3.h>
#include <Wm4/Wm4IntrBox3Box3.h>
#include <Wm4/Wm4IntrLine3Box3.h>
#include <Wm4/Wm4IntrRay3Box3.h>
#include <Wm4/Wm4IntrSegment3Box3.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>

namespace zu {

namespace {

using sse::broadcast;

inline __m128 absolute(__m128 v)
{
    return _mm_andnot_ps(_mm_set1_ps(-0.0f), v);
}

} // namespace

// The bound's vectors are handled in lanes 1-3 of SSE registers, where the extents lie when
// the radius and the extents are read as one run of four floats. The centre is read and
// written as two floats and one, so that every load matches the store that wrote it and the
// processor hands over the value without waiting for the store to reach the cache (the update
// pass reads each bound right after writing it). Every result is computed with the same
// operations in the same order as the scalar formulas, so it carries the same bits.
struct zuBoundingVolume::Lanes {
    static __m128 extents(const zuBoundingVolume& bv) { return _mm_loadu_ps(&bv.mRadius); }
    // isValid() of the bound whose (radius, extents) these are.
    static bool valid(__m128 extents) { return _mm_movemask_ps(_mm_cmpge_ps(extents, _mm_setzero_ps())) == 0xF; }
    static __m128 center(const zuBoundingVolume& bv)
    {
        const float* c = bv.mCenter;
        const __m128 xy = _mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(c));
        const __m128 xyz = _mm_movelh_ps(xy, _mm_load_ss(c + 2));
        return _mm_shuffle_ps(xyz, xyz, _MM_SHUFFLE(2, 1, 0, 0));
    }
    static void setCenter(zuBoundingVolume& bv, __m128 center)
    {
        float* c = bv.mCenter;
        const __m128 xyz = _mm_shuffle_ps(center, center, _MM_SHUFFLE(3, 3, 2, 1));
        _mm_storel_pi(reinterpret_cast<__m64*>(c), xyz);
        _mm_store_ss(c + 2, _mm_movehl_ps(xyz, xyz));
    }
    // Stores both with the radius that updateRadius gives.
    static void setBox(zuBoundingVolume& bv, __m128 center, __m128 extents)
    {
        const float largest = std::numeric_limits<float>::max();
        // Lanes 1-3 within [0, largest] (a NaN fails both comparisons).
        const __m128 inRange = _mm_and_ps(_mm_cmpge_ps(extents, _mm_setzero_ps()), _mm_cmple_ps(extents, _mm_set1_ps(largest)));
        float radius = -1.0f;
        if ((_mm_movemask_ps(inRange) & 0xE) == 0xE) {
            const __m128 squares = _mm_mul_ps(extents, extents);
            const __m128 sum = _mm_add_ss(_mm_add_ss(broadcast<1>(squares), broadcast<2>(squares)), broadcast<3>(squares));
            const float length = _mm_cvtss_f32(_mm_sqrt_ss(sum));
            if (length <= largest)
                radius = length;
        }
        _mm_storeu_ps(&bv.mRadius, _mm_move_ss(extents, _mm_set_ss(radius)));
        setCenter(bv, center);
    }
};

zuBoundingVolume::zuBoundingVolume(const Wm4::Vector3<float>& center, const Wm4::Vector3<float>& extents)
    : mExtents(extents), mCenter(center)
{
    updateRadius();
}

Wm4::Box3<float> zuBoundingVolume::GetBox() const
{
    return Wm4::Box3<float>(mCenter, Wm4::Vector3<float>::UNIT_X, Wm4::Vector3<float>::UNIT_Y,
                            Wm4::Vector3<float>::UNIT_Z, mExtents[0], mExtents[1], mExtents[2]);
}

void zuBoundingVolume::invalidate()
{
    *this = zuBoundingVolume();
}

void zuBoundingVolume::copyFrom(const zuBoundingVolume& bv)
{
    if (bv.isValid()) {
        _mm_storeu_ps(&mRadius, Lanes::extents(bv));
        Lanes::setCenter(*this, Lanes::center(bv));
    }
}

void zuBoundingVolume::assign(const zuLegacyBoundingVolume* legacy)
{
    if (!legacy)
        return;
    mCenter = legacy->GetCenter();
    if (legacy->IsDerived(zuLegacyBoxBV::TYPE)) {
        const Wm4::Box3<float>& box = static_cast<const zuLegacyBoxBV*>(legacy)->GetBox();
        setExtents(Wm4::Vector3<float>(box.Extent[0], box.Extent[1], box.Extent[2]));
    } else if (legacy->IsDerived(zuLegacySphereBV::TYPE)) {
        const float r = static_cast<const zuLegacySphereBV*>(legacy)->GetRadius();
        setExtents(Wm4::Vector3<float>(r, r, r));
    }
}

zuLegacyBoundingVolume* zuBoundingVolume::createLegacyVolume() const
{
    if (!isValid())
        return nullptr;
    return new zuLegacySphereBV(mCenter, mRadius);
}

void zuBoundingVolume::computeFromDataBox(const zuTSharedArray<Wm4::Vector3<float>>* points)
{
    if (!points)
        return;
    const Wm4::Box3<float> box = Wm4::ContOrientedBox(points->GetQuantity(), points->GetData());
    // The axes are dropped on purpose: the box is read along the world axes.
    setBox(box.Center, Wm4::Vector3<float>(box.Extent[0], box.Extent[1], box.Extent[2]));
}

void zuBoundingVolume::transformBoxBy(const zuGenericTransformation<float>& transformation, zuBoundingVolume& out) const
{
    __m128 extents = Lanes::extents(*this);
    if (!Lanes::valid(extents))
        return;
    if (transformation.IsIdentity()) {
        out = *this;
        return;
    }
    // Corner ±e0 ±e1 ±e2 maps to the mapped centre plus ±a0 ±a1 ±a2, a_j being column j of
    // the linear part times e_j; so the min/max box of the eight mapped corners has
    // half-size Σ_j |a_j| in each coordinate and the mapped centre as its centre. This is
    // the corner box without mapping eight points, once per object in the bound pass.
    // The transformation holds its matrix (row-major) and translation as 12 consecutive
    // floats, read as the product wrote them: (m00 m01 m02 m10) (m11 m12 m20 m21)
    // (m22 t0 t1 t2).
    const float* m = transformation.GetMatrix();
    const __m128 m0 = _mm_loadu_ps(m), m1 = _mm_loadu_ps(m + 4), translate = _mm_loadu_ps(m + 8);
    // Column j of the matrix in lanes 1-3.
    const __m128 column0 = _mm_shuffle_ps(m0, _mm_shuffle_ps(m0, m1, _MM_SHUFFLE(2, 2, 3, 3)), _MM_SHUFFLE(2, 0, 0, 0));
    const __m128 column1 = _mm_shuffle_ps(m0, m1, _MM_SHUFFLE(3, 0, 1, 1));
    const __m128 column2 = _mm_shuffle_ps(m0, _mm_shuffle_ps(m1, translate, _MM_SHUFFLE(0, 0, 1, 1)), _MM_SHUFFLE(2, 0, 2, 2));
    __m128 center = Lanes::center(*this);
    if (transformation.IsRSMatrix()) {
        const Wm4::Vector3<float>& s = transformation.GetScale();
        const __m128 scale = _mm_set_ps(s[2], s[1], s[0], 1.0f);
        extents = _mm_mul_ps(scale, extents);
        center = _mm_mul_ps(scale, center);
    }
    const __m128 mappedExtents = _mm_add_ps(_mm_add_ps(absolute(_mm_mul_ps(column0, broadcast<1>(extents))),
                                                       absolute(_mm_mul_ps(column1, broadcast<2>(extents)))),
                                            absolute(_mm_mul_ps(column2, broadcast<3>(extents))));
    const __m128 mappedCenter = _mm_add_ps(_mm_add_ps(_mm_add_ps(_mm_mul_ps(column0, broadcast<1>(center)),
                                                                 _mm_mul_ps(column1, broadcast<2>(center))),
                                                      _mm_mul_ps(column2, broadcast<3>(center))),
                                           translate);
    Lanes::setBox(out, mappedCenter, mappedExtents);
}

bool zuBoundingVolume::testIntersectionBox(const Wm4::Vector3<float>& origin, const Wm4::Vector3<float>& direction,
                                           float tmin, float tmax) const
{
    if (!isValid())
        return false;
    if (tmin == -Wm4::Math<float>::MAX_REAL)
        return Wm4::IntrLine3Box3<float>(Wm4::Line3<float>(origin, direction), GetBox()).Test();
    if (tmax != Wm4::Math<float>::MAX_REAL) {
        // The segment starts at the origin whatever tmin says.
        const float half = 0.5f * tmax;
        const Wm4::Segment3<float> segment(origin + direction * half, direction, half);
        return Wm4::IntrSegment3Box3<float>(segment, GetBox()).Test();
    }
    return Wm4::IntrRay3Box3<float>(Wm4::Ray3<float>(origin, direction), GetBox()).Test();
}

bool zuBoundingVolume::testIntersectionBox(const zuBoundingVolume& bv) const
{
    if (!isValid() || !bv.isValid())
        return false;
    return Wm4::IntrBox3Box3<float>(GetBox(), bv.GetBox()).Test();
}

void zuBoundingVolume::growToContainBox(const zuBoundingVolume& bv)
{
    const __m128 extents = Lanes::extents(*this), otherExtents = Lanes::extents(bv);
    if (!Lanes::valid(otherExtents))
        return;
    if (!Lanes::valid(extents)) {
        copyFrom(bv);
        return;
    }
    // Wm4::MergeBoxes of two boxes along the world axes keeps the world axes (the mean of
    // two identity orientations), centres the result at the mean of the centres and fits
    // the sixteen corners along the axes. That is computed here directly, with the same
    // operations, since the bound pass merges once per child: the corners of box k along
    // axis i are c_k ± e_k, and each one is measured from the mean centre. The minimum and
    // maximum take their operands in the order that gives std::min and std::max's results
    // (the first operand when they compare equal or unordered).
    const __m128 center = Lanes::center(*this), otherCenter = Lanes::center(bv);
    const __m128 half = _mm_set1_ps(0.5f);
    const __m128 mid = _mm_mul_ps(_mm_add_ps(center, otherCenter), half);
    const __m128 a0 = _mm_sub_ps(_mm_sub_ps(center, extents), mid), a1 = _mm_sub_ps(_mm_add_ps(center, extents), mid);
    const __m128 b0 = _mm_sub_ps(_mm_sub_ps(otherCenter, otherExtents), mid);
    const __m128 b1 = _mm_sub_ps(_mm_add_ps(otherCenter, otherExtents), mid);
    const __m128 low = _mm_min_ps(_mm_min_ps(b1, b0), _mm_min_ps(a1, a0));
    const __m128 high = _mm_max_ps(_mm_max_ps(b1, b0), _mm_max_ps(a1, a0));
    Lanes::setBox(*this, _mm_add_ps(mid, _mm_mul_ps(half, _mm_add_ps(low, high))), _mm_mul_ps(half, _mm_sub_ps(high, low)));
}

bool zuBoundingVolume::containsBox(const Wm4::Vector3<float>& point) const
{
    if (!isValid())
        return false;
    return Wm4::InBox(point, GetBox());
}

// ---------------------------------------------------------------------------------------
// Persistence

int zuBoundingVolume::getDiskUsed(const zuBaseStream& stream, bool isBox) const
{
    if (stream.GetVersion() >= zuStreamVersion(6, 28))
        return 28;
    // The legacy record: the sphere flag, the centre, then a radius or three axes and
    // three extents.
    return isBox ? 1 + 12 + 36 + 12 : 1 + 12 + 4;
}

void zuBoundingVolume::writeToStream(zuBaseStream& stream) const
{
    if (stream.GetVersion() >= zuStreamVersion(6, 28)) {
        stream.Write(mRadius);
        stream.Write(mExtents);
        stream.Write(mCenter);
        return;
    }
    stream.Write(false);
    stream.Write(mCenter);
    stream.Write(Wm4::Vector3<float>::UNIT_X);
    stream.Write(Wm4::Vector3<float>::UNIT_Y);
    stream.Write(Wm4::Vector3<float>::UNIT_Z);
    stream.Write(mExtents);
}

bool zuBoundingVolume::readFromStream(zuBaseStream& stream)
{
    if (stream.GetVersion() >= zuStreamVersion(6, 28)) {
        // Kept as written: a file marks an invalid bound by a negative radius.
        stream.Read(mRadius);
        stream.Read(mExtents);
        stream.Read(mCenter);
        return true;
    }
    bool isSphere = false;
    stream.Read(isSphere);
    stream.Read(mCenter);
    Wm4::Vector3<float> extents;
    if (isSphere) {
        float radius = 0.0f;
        stream.Read(radius);
        extents = Wm4::Vector3<float>(radius, radius, radius);
    } else {
        // A legacy box's axes are dropped: the box is taken along the world axes.
        Wm4::Vector3<float> axes[3];
        stream.Read(3, axes);
        stream.Read(extents);
    }
    setExtents(extents);
    return !isSphere;
}

// The min/max box of the positions, read through the layout of the buffer.
void zuBoundingVolume::computeFromDataBox(const zuVertexBuffer* vertices)
{
    if (!vertices || vertices->GetVertexQuantity() <= 0) {
        invalidate();
        return;
    }
    // A block that waits in its file keeps the bound it was saved with.
    const char* data = vertices->GetData();
    if (!data)
        return;
    const zuAttributes& layout = vertices->GetAttributes();
    const int channels = std::min(layout.GetPositionChannels(), 3);
    if (channels <= 0) {
        invalidate();
        return;
    }
    const unsigned int offset = layout.GetPositionOffsetByte();
    const ptrdiff_t stride = vertices->GetVertexSize();
    // Missing channels (2D positions) count as 0; a NaN component never wins a comparison.
    float low[3] = {0.0f, 0.0f, 0.0f};
    float high[3] = {0.0f, 0.0f, 0.0f};
    for (int c = 0; c < channels; ++c) {
        low[c] = std::numeric_limits<float>::infinity();
        high[c] = -std::numeric_limits<float>::infinity();
    }
    // The channel count is made a constant, so that the copy and the comparisons unroll.
    const auto scan = [&](auto count) {
        constexpr int n = decltype(count)::value;
        for (int i = 0; i < vertices->GetVertexQuantity(); ++i) {
            float position[n];
            // Copied, as the stride of a layout with byte-sized groups leaves floats unaligned.
            std::memcpy(position, data + i * stride + offset, sizeof(position));
            for (int c = 0; c < n; ++c) {
                if (position[c] < low[c])
                    low[c] = position[c];
                if (position[c] > high[c])
                    high[c] = position[c];
            }
        }
    };
    if (channels == 3)
        scan(std::integral_constant<int, 3>());
    else if (channels == 2)
        scan(std::integral_constant<int, 2>());
    else
        scan(std::integral_constant<int, 1>());
    // No finite position leaves low above high: a negative extent, an invalid bound.
    setBox(Wm4::Vector3<float>(0.5f * (low[0] + high[0]), 0.5f * (low[1] + high[1]), 0.5f * (low[2] + high[2])),
           Wm4::Vector3<float>(0.5f * (high[0] - low[0]), 0.5f * (high[1] - low[1]), 0.5f * (high[2] - low[2])));
}

void zuBoundingVolume::DescribeFields(const char* name, zuFieldVisitor& visitor) const
{
    visitor.BeginGroup(name);
    visitor.Number("radius", mRadius);
    visitor.Numbers("extents", mExtents, 3, 3);
    visitor.Numbers("centre", mCenter, 3, 3);
    visitor.EndGroup();
}

} // namespace zu
