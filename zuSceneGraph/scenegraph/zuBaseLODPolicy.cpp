#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>

#include <zuSceneGraph/scenegraph/zuLODNode.h>
#include <zuSceneGraph/states/zuCamera.h>

namespace zu {

zuSpatial* zuBaseLODPolicy::selectItem(zuLODNode* node, const zuCamera* camera) const
{
    return selectBand(node, camera);
}

zuSpatial* zuBaseLODPolicy::selectBand(const zuLODNode* node, const zuCamera* camera)
{
    if (!node || !camera)
        return nullptr;
    const float distance = (node->GetWorldBound().GetCenter() - camera->GetLocation()).Length();
    return node->getChild(selectSlot(distance, camera->GetDMax(), node->getNbChildren()));
}

int zuBaseLODPolicy::selectSlot(float distance, float far, int slots)
{
    const float band = distance / far * static_cast<float>(slots);
    if (!(band < static_cast<float>(slots)))
        return slots - 1;
    return band > 0.0f ? static_cast<int>(band) : 0;
}

} // namespace zu
