#pragma once

#include <zuSceneGraph/scenegraph/zuLODPolicy.h>

namespace zu {

// The distance-band policy: the view depth up to the camera's far distance is split into
// as many equal bands as the node has slots, nearest first. The distance from the camera
// to the centre of the node's world bound picks the band, and the slot of that band is
// drawn (nothing when it is empty). The last slot also covers everything beyond the far
// distance. zuLODNode::GetBasePolicy() holds the shared instance.
class zuBaseLODPolicy : public zuLODPolicy {
public:
    zuBaseLODPolicy() = default;

    zuSpatial* selectItem(zuLODNode* node, const zuCamera* camera) const override;

    // The rule itself, without a virtual call: the level-of-detail node applies it
    // directly when the culler runs with the shared instance. Null without a node or a
    // camera.
    static zuSpatial* selectBand(const zuLODNode* node, const zuCamera* camera);
    // The slot for a distance: truncation of (distance / far) * slots, at most slots - 1.
    // Also 0 for a negative quotient (a negative far distance), and slots - 1 for one that
    // is not a number, so that no value reaches the integer conversion out of its range.
    static int selectSlot(float distance, float far, int slots);
};

} // namespace zu
