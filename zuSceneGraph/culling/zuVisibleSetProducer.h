#pragma once

#include <vector>

namespace zu {

class zuCamera;
class zuLODPolicy;
class zuRenderableSpatial;
class zuSpatial;

// The abstract source of a visible set for the render passes, with the level-of-detail
// policy that its culling runs use. A derived producer owns the set (usually a culler's)
// and computes it.
class zuVisibleSetProducer {
public:
    virtual ~zuVisibleSetProducer();

    // The set for reading and for writing (the passes null out what they drop).
    virtual const std::vector<zuRenderableSpatial*>& getVisibleSet() const = 0;
    virtual std::vector<zuRenderableSpatial*>& getVisibleSet() = 0;
    // Computes the set of `scene` for `camera` with this producer's policy; false when
    // the producer could not (no scene, no camera, ...), the previous set then kept.
    virtual bool computeVisibleSet(zuSpatial* scene, const zuCamera* camera, bool flag) = 0;

    // Every slot that holds `item` becomes null (the set keeps its length); false when
    // there was none.
    bool removeVisibleItem(zuRenderableSpatial* item);
    // Appends the whole set to `out`, or replaces `out` by it.
    void copyVisibleSet(std::vector<zuRenderableSpatial*>& out, bool append) const;
    // Empties the set.
    void clear() { getVisibleSet().clear(); }

    zuLODPolicy* getLODPolicy() const { return mLODPolicy; }
    void setLODPolicy(zuLODPolicy* policy) { mLODPolicy = policy; }

protected:
    // The policy starts as the shared distance-band policy of the level-of-detail nodes
    // (zuLODNode::GetBasePolicy()).
    zuVisibleSetProducer();

private:
    zuLODPolicy* mLODPolicy;
};

} // namespace zu
