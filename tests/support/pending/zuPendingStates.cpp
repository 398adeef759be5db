// Stand-ins for the parts of the material state, the texture state and the texture that
// the geometry classes call, for as long as those classes' implementations are not in the
// tree: the type records (so that type checks link), an empty texture list and textures
// that add no resources. The test build compiles this file only while
// zuSceneGraph/states/zuTextureState.cpp is missing, so the real classes replace it.
//
// No test constructs these classes through this file: a state of either class cannot be
// made here, so the slot tests that need real states wait in
// tests/scenegraph/geometryStateSlotsTest.cpp, which is built with the real classes.

#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

namespace zu {

const zuRtti zuMaterialState::TYPE("zuCore.zuMaterialState", &zuGlobalState::TYPE);
const zuRtti zuTextureState::TYPE("zuCore.zuTextureState", &zuGlobalState::TYPE);

zuTexture* zuTextureState::GetTexture(int) const
{
    return nullptr;
}

bool zuTexture::getResources(std::vector<zuDynamicLoadingResource*>&) const
{
    return false;
}

zuDynamicLoadingResource* zuTexture::GetResource() const
{
    return nullptr;
}

} // namespace zu
