#pragma once

namespace zu {

class zuCamera;
class zuLODNode;
class zuSpatial;

// Chooses which child of a level-of-detail node to draw for a camera. The culler holds
// the policy of the current ComputeVisibleSet call; level-of-detail nodes ask it during
// the walk. Implementations keep no state that a walk changes.
class zuLODPolicy {
public:
    virtual ~zuLODPolicy() = default;

    // The child of `node` to draw, or null to draw none.
    virtual zuSpatial* selectItem(zuLODNode* node, const zuCamera* camera) const = 0;

protected:
    zuLODPolicy() = default;
};

} // namespace zu
