// Stand-ins for the material state, the texture state and the texture, for as long as those
// classes' implementations are not in the tree: the type records, the virtual functions
// (so that their type information exists for the sanitizers' checks), an empty texture
// list and textures that add no resources. The test build compiles this file only while
// one of zuSceneGraph/states/zuMaterialState.cpp, zuTextureState.cpp and zuTexture.cpp is
// missing, so the real classes replace it.
//
// No test constructs these classes: their constructors are not here. The slot tests that
// need real states wait in tests/scenegraph/geometryStateSlotsTest.cpp, which is built
// with the real classes.

#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

namespace zu {

const zuRtti zuMaterialState::TYPE("zuCore.zuMaterialState", &zuGlobalState::TYPE);
const zuRtti zuTextureState::TYPE("zuCore.zuTextureState", &zuGlobalState::TYPE);
const zuRtti zuTexture::TYPE("zuCore.zuTexture", &zuNamedObject::TYPE);

int zuMaterialState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream);
}

void zuMaterialState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
}

void zuMaterialState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
}

bool zuMaterialState::Equals(const zuRttiInterface* other) const
{
    return zuGlobalState::Equals(other);
}

bool zuMaterialState::Clone(zuRttiInterface*& target) const
{
    return zuGlobalState::Clone(target);
}

zuTextureState::~zuTextureState() = default;

zuTexture* zuTextureState::GetTexture(int) const
{
    return nullptr;
}

bool zuTextureState::Register(zuBaseStream& stream) const
{
    return zuGlobalState::Register(stream);
}

int zuTextureState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream);
}

void zuTextureState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
}

void zuTextureState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
}

void zuTextureState::Link(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Link(stream, link);
}

bool zuTextureState::Equals(const zuRttiInterface* other) const
{
    return zuGlobalState::Equals(other);
}

bool zuTextureState::Clone(zuRttiInterface*& target) const
{
    return zuGlobalState::Clone(target);
}

zuTexture::~zuTexture() = default;

bool zuTexture::getResources(std::vector<zuDynamicLoadingResource*>&) const
{
    return false;
}

zuDynamicLoadingResource* zuTexture::GetResource() const
{
    return nullptr;
}

bool zuTexture::Register(zuBaseStream& stream) const
{
    return zuNamedObject::Register(stream);
}

int zuTexture::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNamedObject::GetDiskUsed(stream);
}

void zuTexture::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
}

void zuTexture::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
}

void zuTexture::Link(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Link(stream, link);
}

bool zuTexture::Equals(const zuRttiInterface* other) const
{
    return zuNamedObject::Equals(other);
}

bool zuTexture::Clone(zuRttiInterface*& target) const
{
    return zuNamedObject::Clone(target);
}

} // namespace zu
