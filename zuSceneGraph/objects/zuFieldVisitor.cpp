#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <zuSceneGraph/math/zuGenericTransformation.h>

namespace zu {

void zuFieldVisitor::Channel(const char* name, int unit, int channels, int offset)
{
    BeginGroup(name);
    if (unit >= 0)
        Integer("unit", unit);
    Integer("channels", channels);
    Integer("offset", offset);
    EndGroup();
}

void zuFieldVisitor::Transformation(const char* name, const zuGenericTransformation<float>& value)
{
    BeginGroup(name);
    Flag("IsIdentity", value.IsIdentity());
    Flag("IsRSMatrix", value.IsRSMatrix());
    Flag("IsUniformScale", value.IsUniformScale());
    Numbers("matrix", value.GetMatrix(), 9, 3);
    Numbers("translate", value.GetTranslate(), 3, 3);
    Numbers("scale", value.GetScale(), 3, 3);
    EndGroup();
}

void zuFieldVisitor::Frame(const char* name, const float* location, const float* d, const float* u, const float* r)
{
    BeginGroup(name);
    Numbers("location", location, 3, 3);
    Numbers("D", d, 3, 3);
    Numbers("U", u, 3, 3);
    Numbers("R", r, 3, 3);
    EndGroup();
}

} // namespace zu
