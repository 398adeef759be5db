#include <zuSceneGraph/scenegraph/zuBillboardNode.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <cmath>

namespace zu {

const zuRtti zuBillboardNode::TYPE("zuCore.zuBillboardNode", &zuNode::TYPE);

zuBillboardNode::zuBillboardNode() = default;

zuBillboardNode::zuBillboardNode(zuCamera* camera) : mCamera(camera)
{
}

zuBillboardNode::~zuBillboardNode() = default;

void zuBillboardNode::UpdateWorldData()
{
    if (!mCamera) {
        zuNode::UpdateWorldData();
        return;
    }
    updateWorldTransform();
    faceCamera();
    for (int i = 0; i < getNbChildren(); ++i)
        if (zuSpatial* child = getChild(i))
            child->UpdateGS(false);
}

void zuBillboardNode::UpdateWorldData_Flags()
{
    if (!mCamera) {
        zuNode::UpdateWorldData_Flags();
        return;
    }
    updateWorldTransform();
    faceCamera();
    for (int i = 0; i < getNbChildren(); ++i)
        if (zuSpatial* child = getChild(i))
            child->UpdateGS_Flags();
}

void zuBillboardNode::faceCamera()
{
    // A world transformation that the update did not recompute (ignored, or held by its
    // owner) is left as it is rather than turned once more.
    if (isIgnored() || isWorldTransformHeld())
        return;
    zuGenericTransformation<float>& world = GetWorldTransform();
    const Wm4::Vector3<float> eye = world.ApplyInverse(mCamera->GetLocation(), true);
    // Straight above or below (x = z = 0) gives atan2(0, 0) = 0: no turn.
    const float angle = std::atan2(eye.X(), eye.Z());
    const Wm4::Matrix3<float> turn(Wm4::Vector3<float>::UNIT_Y, angle);
    // A rotation-scale world transformation stays one (SetRotate flags it so, and not the
    // identity); a general matrix is turned the same way and stays general, since its
    // matrix holds no separate scale.
    if (world.IsRSMatrix())
        world.SetRotate(world.GetRotate() * turn);
    else
        world.SetMatrix(world.GetMatrix() * turn);
}

// ---------------------------------------------------------------------------------------
// Persistence after the node part: the camera's reference.

bool zuBillboardNode::Register(zuBaseStream& stream) const
{
    if (!zuNode::Register(stream))
        return false;
    if (mCamera)
        mCamera->Register(stream);
    return true;
}

int zuBillboardNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNode::GetDiskUsed(stream) + 8;
}

void zuBillboardNode::Save(zuBaseStream& stream) const
{
    zuNode::Save(stream);
    stream.Write(static_cast<const zuRttiInterface*>(mCamera.get()));
}

void zuBillboardNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuNode::Load(stream, link);
    stream.ReadLink(link);
}

void zuBillboardNode::Link(zuBaseStream& stream, zuLink* link)
{
    zuNode::Link(stream, link);
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    mCamera = object && object->IsDerived(zuCamera::TYPE) ? static_cast<zuCamera*>(object) : nullptr;
}

bool zuBillboardNode::Equals(const zuRttiInterface* other) const
{
    return zuNode::Equals(other) && other->IsDerived(TYPE);
}

bool zuBillboardNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuBillboardNode;
    if (!target->IsDerived(TYPE) || !zuNode::Clone(target))
        return false;
    static_cast<zuBillboardNode*>(target)->mCamera = mCamera;
    return true;
}

void zuBillboardNode::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNode::DescribeFields(object, visitor);
    visitor.Reference("camera", static_cast<const zuBillboardNode&>(object).GetCamera());
}

} // namespace zu
