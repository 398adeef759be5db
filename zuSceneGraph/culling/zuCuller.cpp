#include <zuSceneGraph/culling/zuCuller.h>

#include <zuSceneGraph/scenegraph/zuSpatial.h>
#include <zuSceneGraph/states/zuCamera.h>

#include <Wm4/Wm4Math.h>

#include <algorithm>

namespace zu {

zuCuller::zuCuller() = default;

zuCuller::~zuCuller() = default;

void zuCuller::SetCamera(const zuCamera* camera)
{
    mCamera = camera;
    if (!camera)
        return;
    for (int i = 0; i < 6; ++i)
        mFrustum[i] = camera->GetFrustum()[i];
    computeFrustumPlanes();
    mPlaneState = ~0u;
}

void zuCuller::computeFrustumPlanes()
{
    const Wm4::Vector3<float>& e = mCamera->GetLocation();
    const Wm4::Vector3<float>& d = mCamera->GetDVector();
    const Wm4::Vector3<float>& u = mCamera->GetUVector();
    const Wm4::Vector3<float>& r = mCamera->GetRVector();
    const float dMin = mFrustum[zuCamera::VF_DMIN], dMax = mFrustum[zuCamera::VF_DMAX];
    const float uMin = mFrustum[zuCamera::VF_UMIN], uMax = mFrustum[zuCamera::VF_UMAX];
    const float rMin = mFrustum[zuCamera::VF_RMIN], rMax = mFrustum[zuCamera::VF_RMAX];
    const float dDotE = d.Dot(e);

    mPlanes[PLANE_NEAR] = Wm4::Plane3<float>(d, dDotE + dMin);
    mPlanes[PLANE_FAR] = Wm4::Plane3<float>(-d, -(dDotE + dMax));
    if (mCamera->IsPerspective()) {
        // Each side plane holds the eye and one edge of the near rectangle.
        const auto sidePlane = [&e](const Wm4::Vector3<float>& normal, float length) {
            const Wm4::Vector3<float> unit = normal / length;
            return Wm4::Plane3<float>(unit, unit.Dot(e));
        };
        mPlanes[PLANE_BOTTOM] = sidePlane(d * -uMin + u * dMin, Wm4::Math<float>::Sqrt(dMin * dMin + uMin * uMin));
        mPlanes[PLANE_TOP] = sidePlane(d * uMax - u * dMin, Wm4::Math<float>::Sqrt(dMin * dMin + uMax * uMax));
        mPlanes[PLANE_LEFT] = sidePlane(d * -rMin + r * dMin, Wm4::Math<float>::Sqrt(dMin * dMin + rMin * rMin));
        mPlanes[PLANE_RIGHT] = sidePlane(d * rMax - r * dMin, Wm4::Math<float>::Sqrt(dMin * dMin + rMax * rMax));
    } else {
        // An orthographic volume has parallel sides.
        const float uDotE = u.Dot(e), rDotE = r.Dot(e);
        mPlanes[PLANE_BOTTOM] = Wm4::Plane3<float>(u, uDotE + uMin);
        mPlanes[PLANE_TOP] = Wm4::Plane3<float>(-u, -(uDotE + uMax));
        mPlanes[PLANE_LEFT] = Wm4::Plane3<float>(r, rDotE + rMin);
        mPlanes[PLANE_RIGHT] = Wm4::Plane3<float>(-r, -(rDotE + rMax));
    }
}

void zuCuller::ComputeVisibleSet(zuSpatial* scene, zuLODPolicy* policy, bool flag)
{
    mLODPolicy = policy;
    if (mCamera && scene) {
        // clear() keeps the capacity: a culler reused every frame allocates nothing.
        mVisibleSet.clear();
        mPlaneState = ~0u;
        scene->OnGetVisibleSet(*this, false, flag);
    }
    mLODPolicy = nullptr;
}

void zuCuller::Insert(zuRenderableSpatial* leaf)
{
    if (mVisibleSet.size() == mVisibleSet.capacity())
        mVisibleSet.reserve(std::max<size_t>(1, 2 * mVisibleSet.capacity()));
    mVisibleSet.push_back(leaf);
}

bool zuCuller::isVisibleNoHierachy(const zuBoundingVolume& bv) const
{
    for (int i = 0; i < mPlaneQuantity; ++i)
        if (bv.whichBoxSide(mPlanes[i]) < 0)
            return false;
    return true;
}

bool zuCuller::IsVisible(const Wm4::Vector3<float>& point)
{
    for (int i = mPlaneQuantity - 1; i >= 0; --i) {
        const uint32_t bit = 1u << i;
        if (!(mPlaneState & bit))
            continue;
        const float side = mPlanes[i].DistanceTo(point);
        if (side < 0.0f)
            return false;
        if (side > 0.0f)
            mPlaneState &= ~bit;
    }
    return true;
}

bool zuCuller::IsVisible(int count, const Wm4::Vector3<float>* points, bool ignoreNearPlane) const
{
    for (int i = mPlaneQuantity - 1; i >= 0; --i) {
        if (ignoreNearPlane && i == PLANE_NEAR)
            continue;
        int j = 0;
        while (j < count && mPlanes[i].DistanceTo(points[j]) < 0.0f)
            ++j;
        if (j == count)
            return false;
    }
    return true;
}

int zuCuller::WhichSide(const Wm4::Plane3<float>& plane) const
{
    if (!mCamera)
        return 0;
    const Wm4::Vector3<float>& e = mCamera->GetLocation();
    const Wm4::Vector3<float>& d = mCamera->GetDVector();
    const Wm4::Vector3<float>& u = mCamera->GetUVector();
    const Wm4::Vector3<float>& r = mCamera->GetRVector();
    const float dMin = mFrustum[zuCamera::VF_DMIN], dMax = mFrustum[zuCamera::VF_DMAX];
    // A perspective volume widens to the far plane in proportion; an orthographic one
    // keeps the near rectangle.
    const float ratio = mCamera->IsPerspective() ? dMax / dMin : 1.0f;
    const float us[2] = {mFrustum[zuCamera::VF_UMIN], mFrustum[zuCamera::VF_UMAX]};
    const float rs[2] = {mFrustum[zuCamera::VF_RMIN], mFrustum[zuCamera::VF_RMAX]};
    const Wm4::Vector3<float> nearCenter = e + d * dMin;
    const Wm4::Vector3<float> farCenter = e + d * dMax;
    int positive = 0, negative = 0;
    for (float uValue : us) {
        for (float rValue : rs) {
            const Wm4::Vector3<float> offset = u * uValue + r * rValue;
            for (const Wm4::Vector3<float>& corner : {nearCenter + offset, farCenter + offset * ratio}) {
                const float distance = plane.DistanceTo(corner);
                if (distance > 0.0f)
                    ++positive;
                else if (distance < 0.0f)
                    ++negative;
            }
        }
    }
    if (positive == 8)
        return +1;
    if (negative == 8)
        return -1;
    return 0;
}

bool zuCuller::PushPlane(const Wm4::Plane3<float>& plane)
{
    if (mPlaneQuantity >= MAX_PLANE_QUANTITY)
        return false;
    mPlanes[mPlaneQuantity] = plane;
    mPlaneState |= 1u << mPlaneQuantity;
    ++mPlaneQuantity;
    return true;
}

bool zuCuller::PopPlane()
{
    if (mPlaneQuantity <= FRUSTUM_PLANE_QUANTITY)
        return false;
    --mPlaneQuantity;
    return true;
}

} // namespace zu
