#include <zuSceneGraph/scenegraph/zuCameraNode.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuCameraNode::TYPE("zuCore.zuCameraNode", &zuNode::TYPE);

zuCameraNode::zuCameraNode()
{
    propagateDirtyToRoot(UPDATE_WORLD_DATA | UPDATE_CAMERA);
}

zuCameraNode::zuCameraNode(zuCamera* camera, FacingConvention facing) : mFacing(facing)
{
    SetCamera(camera);
    propagateDirtyToRoot(UPDATE_WORLD_DATA | UPDATE_CAMERA);
}

zuCameraNode::~zuCameraNode() = default;

void zuCameraNode::SetCamera(zuCamera* camera)
{
    mCamera = camera;
    if (!camera)
        return;
    zuGenericTransformation<float>& local = GetLocalTransform();
    local.SetTranslate(camera->GetLocation());
    if (mFacing == FACING_ALONG_NEGATIVE_Z)
        local.SetRotate(Wm4::Matrix3<float>(camera->GetRVector(), camera->GetUVector(), -camera->GetDVector(), true));
    else
        local.SetRotate(Wm4::Matrix3<float>(camera->GetDVector(), camera->GetUVector(), camera->GetRVector(), true));
    // The ancestors' passes must reach this node for the camera to follow the new frame.
    propagateDirtyToRoot(UPDATE_WORLD_DATA | UPDATE_CAMERA);
}

void zuCameraNode::UpdateWorldData()
{
    zuNode::UpdateWorldData();
    placeCamera();
}

void zuCameraNode::UpdateWorldData_Flags()
{
    zuNode::UpdateWorldData_Flags();
    placeCamera();
}

void zuCameraNode::placeCamera()
{
    if (!mCamera)
        return;
    const zuGenericTransformation<float>& world = GetWorldTransform();
    const Wm4::Matrix3<float>& matrix = world.GetMatrix();
    if (mFacing == FACING_ALONG_NEGATIVE_Z)
        mCamera->SetFrame(world.GetTranslate(), -matrix.GetColumn(2), matrix.GetColumn(1), matrix.GetColumn(0));
    else
        mCamera->SetFrame(world.GetTranslate(), matrix.GetColumn(0), matrix.GetColumn(1), matrix.GetColumn(2));
}

// ---------------------------------------------------------------------------------------
// Persistence after the node part: the camera's reference, from 5.14 the convention.

bool zuCameraNode::Register(zuBaseStream& stream) const
{
    if (!zuNode::Register(stream))
        return false;
    if (mCamera)
        mCamera->Register(stream);
    return true;
}

int zuCameraNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNode::GetDiskUsed(stream) + 8 + (stream.GetVersion() >= zuStreamVersion(5, 14) ? 4 : 0);
}

void zuCameraNode::Save(zuBaseStream& stream) const
{
    zuNode::Save(stream);
    stream.Write(static_cast<const zuRttiInterface*>(mCamera.get()));
    if (stream.GetVersion() >= zuStreamVersion(5, 14))
        stream.Write(static_cast<int>(mFacing));
}

void zuCameraNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuNode::Load(stream, link);
    stream.ReadLink(link);
    if (stream.GetVersion() >= zuStreamVersion(5, 14)) {
        int facing = FACING_ALONG_X;
        stream.Read(facing);
        mFacing = static_cast<FacingConvention>(facing);
    }
}

void zuCameraNode::Link(zuBaseStream& stream, zuLink* link)
{
    zuNode::Link(stream, link);
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    mCamera = object && object->IsDerived(zuCamera::TYPE) ? static_cast<zuCamera*>(object) : nullptr;
}

bool zuCameraNode::Equals(const zuRttiInterface* other) const
{
    return zuNode::Equals(other) && other->IsDerived(TYPE);
}

bool zuCameraNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuCameraNode;
    if (!target->IsDerived(TYPE) || !zuNode::Clone(target))
        return false;
    static_cast<zuCameraNode*>(target)->mFacing = mFacing;
    return true;
}

namespace {

const char* const facingNames[] = {"FACING_ALONG_X", "FACING_ALONG_NEGATIVE_Z"};

} // namespace

void zuCameraNode::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNode::DescribeFields(object, visitor);
    const auto& node = static_cast<const zuCameraNode&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Reference("camera", node.GetCamera());
    visitor.EnumeratorOf("facing", node.GetFacingConvention(), facingNames);
    visitor.EndGroup();
}

} // namespace zu
