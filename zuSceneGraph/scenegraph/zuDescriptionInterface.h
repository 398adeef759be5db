#pragma once

#include <cstdint>

namespace zu {

// The description of how a renderable object is drawn, as 32 flag bits that the renderer
// reads to choose its shader variant (which texture channels, transparency, ...). The
// object composes them in updateObjectDescription from its own states; this base only
// keeps them. Not persisted: the flags follow from the object's persisted states.
class zuDescriptionInterface {
public:
    virtual ~zuDescriptionInterface();

    // Recomposes the flags from the object's current states. Nothing in this base.
    virtual void updateObjectDescription();

    uint32_t getDescriptionFlags() const { return mDescriptionFlags; }
    void setDescriptionFlags(uint32_t flags) { mDescriptionFlags = flags; }
    bool hasDescriptionFlag(uint32_t flag) const { return (mDescriptionFlags & flag) == flag; }
    void setDescriptionFlag(uint32_t flag, bool on)
    {
        mDescriptionFlags = on ? mDescriptionFlags | flag : mDescriptionFlags & ~flag;
    }
    // Copies the description of another object (for Clone).
    void copyDescription(const zuDescriptionInterface& other) { mDescriptionFlags = other.mDescriptionFlags; }

protected:
    zuDescriptionInterface() = default;
    zuDescriptionInterface(const zuDescriptionInterface&) = default;
    zuDescriptionInterface& operator=(const zuDescriptionInterface&) = default;

private:
    uint32_t mDescriptionFlags = 0;
};

} // namespace zu
