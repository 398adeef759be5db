#include <zuSceneGraph/scenegraph/zuLightNode.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

namespace zu {

const zuRtti zuLightNode::TYPE("zuCore.zuLightNode", &zuNode::TYPE);

zuLightNode::zuLightNode() = default;

zuLightNode::zuLightNode(zuLight* light)
{
    SetLight(light);
}

zuLightNode::~zuLightNode() = default;

void zuLightNode::SetLight(zuLight* light)
{
    mLight = light;
    if (!light)
        return;
    zuGenericTransformation<float>& local = GetLocalTransform();
    local.SetTranslate(light->GetLocation());
    local.SetRotate(Wm4::Matrix3<float>(light->GetDVector(), light->GetUVector(), light->GetRVector(), true));
}

void zuLightNode::UpdateWorldData()
{
    zuNode::UpdateWorldData();
    placeLight();
}

void zuLightNode::UpdateWorldData_Flags()
{
    zuNode::UpdateWorldData_Flags();
    placeLight();
}

void zuLightNode::placeLight()
{
    if (!mLight)
        return;
    const zuGenericTransformation<float>& world = GetWorldTransform();
    const Wm4::Matrix3<float>& matrix = world.GetMatrix();
    mLight->SetFrame(world.GetTranslate(), matrix.GetColumn(0), matrix.GetColumn(1), matrix.GetColumn(2));
}

// ---------------------------------------------------------------------------------------
// Persistence after the node part: the light's reference.

bool zuLightNode::Register(zuBaseStream& stream) const
{
    if (!zuNode::Register(stream))
        return false;
    if (mLight)
        mLight->Register(stream);
    return true;
}

int zuLightNode::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNode::GetDiskUsed(stream) + 8;
}

void zuLightNode::Save(zuBaseStream& stream) const
{
    zuNode::Save(stream);
    stream.Write(static_cast<const zuRttiInterface*>(mLight.get()));
}

void zuLightNode::Load(zuBaseStream& stream, zuLink* link)
{
    zuNode::Load(stream, link);
    stream.ReadLink(link);
}

void zuLightNode::Link(zuBaseStream& stream, zuLink* link)
{
    zuNode::Link(stream, link);
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    // Taken as it is: the local frame was read with the node and may differ from the
    // light's (the light is saved with the frame of the last update).
    mLight = object && object->IsDerived(zuLight::TYPE) ? static_cast<zuLight*>(object) : nullptr;
}

bool zuLightNode::Equals(const zuRttiInterface* other) const
{
    return zuNode::Equals(other) && other->IsDerived(TYPE);
}

bool zuLightNode::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuLightNode;
    return target->IsDerived(TYPE) && zuNode::Clone(target);
}

void zuLightNode::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNode::DescribeFields(object, visitor);
    visitor.Reference("light", static_cast<const zuLightNode&>(object).GetLight());
}

} // namespace zu
