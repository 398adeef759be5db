#include <zuSceneGraph/culling/zuVisibleSetProducer.h>

#include <zuSceneGraph/scenegraph/zuBaseLODPolicy.h>
#include <zuSceneGraph/scenegraph/zuLODNode.h>

#include <algorithm>

namespace zu {

zuVisibleSetProducer::zuVisibleSetProducer() : mLODPolicy(zuLODNode::GetBasePolicy())
{
}

zuVisibleSetProducer::~zuVisibleSetProducer() = default;

bool zuVisibleSetProducer::removeVisibleItem(zuRenderableSpatial* item)
{
    bool found = false;
    for (zuRenderableSpatial*& slot : getVisibleSet()) {
        if (slot == item) {
            slot = nullptr;
            found = true;
        }
    }
    return found;
}

void zuVisibleSetProducer::copyVisibleSet(std::vector<zuRenderableSpatial*>& out, bool append) const
{
    const std::vector<zuRenderableSpatial*>& set = getVisibleSet();
    if (append)
        out.insert(out.end(), set.begin(), set.end());
    else
        out = set;
}

} // namespace zu
