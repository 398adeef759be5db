#pragma once

#include <zuSceneGraph/scenegraph/zuDescriptionInterface.h>
#include <zuSceneGraph/scenegraph/zuSpatial.h>

#include <cstdint>
#include <vector>

namespace zu {

class zuDynamicLoadingResource;

// The abstract base of the leaves that can be drawn. Its second base holds the flags that
// describe how the leaf is drawn. It adds seven byte flags for the geometry classes (two
// of them hold the results of checkRenderable) and nothing to the persisted record.
class zuRenderableSpatial : public zuSpatial, public zuDescriptionInterface {
public:
    static const zuRtti TYPE;

    // The byte flags. Geometry keeps the two readiness results of checkRenderable here.
    enum RenderFlag : int {
        RENDERABLE_FIRST = 0,
        RENDERABLE_SECOND = 1,
        RENDER_FLAG_QUANTITY = 7
    };

    // Whether the leaf's data is ready to be drawn; `onlySecond` skips the first test.
    virtual bool checkRenderable(bool onlySecond) = 0;
    // Empties `resources` and appends the dynamically loaded resources the leaf draws with.
    virtual void getResources(std::vector<zuDynamicLoadingResource*>& resources) const = 0;

    uint8_t getRenderFlag(int i) const { return i >= 0 && i < RENDER_FLAG_QUANTITY ? mRenderFlags[i] : 0; }
    void setRenderFlag(int i, uint8_t value)
    {
        if (i >= 0 && i < RENDER_FLAG_QUANTITY)
            mRenderFlags[i] = value;
    }

    const zuRtti& GetType() const override { return TYPE; }
    // The other object must be renderable too.
    bool Equals(const zuRttiInterface* other) const override;
    // Into a renderable target: the spatial part and the description flags.
    bool Clone(zuRttiInterface*& target) const override;

protected:
    zuRenderableSpatial() = default;

private:
    uint8_t mRenderFlags[RENDER_FLAG_QUANTITY] = {};
};

} // namespace zu
