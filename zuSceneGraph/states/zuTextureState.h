#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>

#include <vector>

namespace zu {

class zuTexture;

// The textures a leaf is drawn with, in order (state type 7). The state owns references to
// its textures; a slot may be null. Textures are shared objects: several states may hold
// the same texture.
//
// Record: the object part, the texture count (int), then one object reference per slot
// (null slots included), the same at every stream version.
class zuTextureState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuTextureState();
    ~zuTextureState() override;

    StateType GetStateType() const override { return TEXTURE; }

    int GetTextureQuantity() const { return static_cast<int>(mTextures.size()); }
    // Null for an index out of range or an empty slot.
    zuTexture* GetTexture(int i) const;
    // Appends a texture; returns its index (-1 for null).
    int AttachTexture(zuTexture* texture);
    // Replaces slot i (null empties it); i equal to the count appends. Other indices are
    // ignored.
    void SetTexture(int i, zuTexture* texture);
    void RemoveAllTextures();

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // A reference to anything but a texture leaves its slot empty.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The same count, and slot by slot both empty or equal textures (zuTexture::Equals).
    bool Equals(const zuRttiInterface* other) const override;
    // The target shares this state's textures.
    bool Clone(zuRttiInterface*& target) const override;

private:
    std::vector<zuPointer<zuTexture>> mTextures;
};

} // namespace zu
