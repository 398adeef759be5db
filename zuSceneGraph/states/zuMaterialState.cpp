#include <zuSceneGraph/states/zuMaterialState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cmath>

namespace zu {

const zuRtti zuMaterialState::TYPE("zuCore.zuMaterialState", &zuGlobalState::TYPE);

namespace {

// Floats compare equal within this absolute difference, taken in double so that the
// comparison itself adds no rounding.
bool nearlyEqual(float a, float b)
{
    return std::fabs(static_cast<double>(a) - static_cast<double>(b)) < 1e-6;
}

bool nearlyEqual(const Wm4::ColorRGB& a, const Wm4::ColorRGB& b)
{
    return nearlyEqual(a[0], b[0]) && nearlyEqual(a[1], b[1]) && nearlyEqual(a[2], b[2]);
}

} // namespace

zuRttiInterface* zuMaterialState::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuMaterialState>(stream);
}

void zuMaterialState::RegisterFactory()
{
    RegisterClass<zuMaterialState>();
}

void zuMaterialState::UnRegisterFactory()
{
    UnregisterFactoryFunction(TYPE.GetName());
}

zuMaterialState::zuMaterialState()
    : Ambient(0.2f, 0.2f, 0.2f), Diffuse(0.8f, 0.8f, 0.8f), Specular(0.0f, 0.0f, 0.0f),
      Emissive(0.0f, 0.0f, 0.0f), Shininess(1.0f), Opacity(1.0f)
{
}

// Four colours of three floats, shininess and opacity.
int zuMaterialState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 4 * 12 + 4 + 4;
}

void zuMaterialState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(Ambient);
    stream.Write(Diffuse);
    stream.Write(Specular);
    stream.Write(Emissive);
    stream.Write(Shininess);
    stream.Write(Opacity);
}

void zuMaterialState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    stream.Read(Ambient);
    stream.Read(Diffuse);
    stream.Read(Specular);
    stream.Read(Emissive);
    stream.Read(Shininess);
    stream.Read(Opacity);
}

bool zuMaterialState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuMaterialState* material = static_cast<const zuMaterialState*>(other);
    return nearlyEqual(Ambient, material->Ambient) && nearlyEqual(Diffuse, material->Diffuse)
        && nearlyEqual(Specular, material->Specular) && nearlyEqual(Emissive, material->Emissive)
        && nearlyEqual(Shininess, material->Shininess) && nearlyEqual(Opacity, material->Opacity);
}

bool zuMaterialState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuMaterialState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuMaterialState* material = static_cast<zuMaterialState*>(target);
    material->Ambient = Ambient;
    material->Diffuse = Diffuse;
    material->Specular = Specular;
    material->Emissive = Emissive;
    material->Shininess = Shininess;
    material->Opacity = Opacity;
    return true;
}

void zuMaterialState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuMaterialState&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Numbers("Ambient", state.Ambient, 3, 3);
    visitor.Numbers("Diffuse", state.Diffuse, 3, 3);
    visitor.Numbers("Specular", state.Specular, 3, 3);
    visitor.Numbers("Emissive", state.Emissive, 3, 3);
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Number("Shininess", state.Shininess);
    visitor.Number("Opacity", state.Opacity);
    visitor.EndGroup();
}

} // namespace zu
