#include <zuSceneGraph/scenegraph/zuGeometry.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

namespace zu {

const zuRtti zuGeometry::TYPE("zuCore.zuGeometry", &zuTriMesh::TYPE);

namespace {

// The description flag of a texture's channel role; 0 for a role this class does not know.
uint32_t channelFlag(int channel)
{
    switch (channel) {
    case zuTexture::CH_DIFFUSE: return zuGeometry::DESCRIPTION_DIFFUSE_MAP;
    case zuTexture::CH_BUMP: return zuGeometry::DESCRIPTION_BUMP_MAP;
    case zuTexture::CH_OPACITY: return zuGeometry::DESCRIPTION_OPACITY_MAP;
    case zuTexture::CH_SPECULAR: return zuGeometry::DESCRIPTION_SPECULAR_MAP;
    case zuTexture::CH_EMISSIVE: return zuGeometry::DESCRIPTION_EMISSIVE_MAP;
    case zuTexture::CH_REFLECTION: return zuGeometry::DESCRIPTION_REFLECTION_MAP;
    default: return 0;
    }
}

} // namespace

zuGeometry::~zuGeometry() = default;

int zuGeometry::getMeshTransparency() const
{
    const uint32_t description = getDescriptionFlags();
    const bool opacityMap = (description & DESCRIPTION_OPACITY_MAP) != 0;
    if (!(description & DESCRIPTION_TRANSLUCENT))
        return opacityMap ? 3 : 0;
    if (!(mFlags & FLAG_TRANSPARENCY_CLASSES))
        return 2;
    return opacityMap ? 2 : 1;
}

void zuGeometry::updateObjectDescription()
{
    uint32_t flags = getDescriptionFlags() & ~DESCRIPTION_COMPOSED;
    if (const zuMaterialState* material = GetMaterialState()) {
        flags |= DESCRIPTION_MATERIAL;
        if (material->Opacity < 1.0f)
            flags |= DESCRIPTION_TRANSLUCENT;
    }
    if (const zuTextureState* textures = GetTextureState()) {
        const int quantity = textures->GetTextureQuantity();
        for (int i = 0; i < quantity; ++i)
            if (const zuTexture* texture = textures->GetTexture(i))
                flags |= channelFlag(texture->GetChannel());
    }
    setDescriptionFlags(flags);
    mShaderDefines.clear();
    mShaderKey.clear();
    if (flags & DESCRIPTION_DIFFUSE_MAP)
        appendShaderDescription("#define DIFFUSE_MAP\n", "Diff");
    if (flags & DESCRIPTION_BUMP_MAP)
        appendShaderDescription("#define BUMP_MAP\n", "Bump");
}

// ---------------------------------------------------------------------------------------
// Hooks

void zuGeometry::zuTriMeshRegister(zuBaseStream& stream) const
{
    zuTriMesh::zuTriMeshRegister(stream);
    zuGeometryRegister(stream);
}

int zuGeometry::zuTriMeshGetDiskUsed(const zuBaseStream& stream) const
{
    return zuTriMesh::zuTriMeshGetDiskUsed(stream) + zuGeometryGetDiskUsed(stream);
}

void zuGeometry::zuTriMeshSave(zuBaseStream& stream) const
{
    zuTriMesh::zuTriMeshSave(stream);
    zuGeometrySave(stream);
}

void zuGeometry::zuGeometryRegister(zuBaseStream&) const
{
}

int zuGeometry::zuGeometryGetDiskUsed(const zuBaseStream&) const
{
    return 4;
}

void zuGeometry::zuGeometrySave(zuBaseStream& stream) const
{
    stream.Write(static_cast<unsigned int>(mFlags));
}

void zuGeometry::zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link)
{
    zuTriMesh::zuBaseGeometryLoad(stream, link);
    unsigned int flags = 0;
    stream.Read(flags);
    mFlags = flags;
}

bool zuGeometry::Equals(const zuRttiInterface* other) const
{
    return zuTriMesh::Equals(other) && other->IsDerived(TYPE) && mFlags == static_cast<const zuGeometry*>(other)->mFlags;
}

bool zuGeometry::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuGeometry;
    if (!target->IsDerived(TYPE) || !zuTriMesh::Clone(target))
        return false;
    static_cast<zuGeometry*>(target)->mFlags = mFlags;
    return true;
}

void zuGeometry::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuTriMesh::DescribeFields(object, visitor);
    visitor.Mask("flags", static_cast<const zuGeometry&>(object).mFlags, 32);
}

} // namespace zu
