#pragma once

#include <zuSceneGraph/states/zuGlobalState.h>

#include <vector>

namespace zu {

class zuTexture;

// The textures a leaf is drawn with, in order (state type 7). The state owns references to
// its textures; a slot may be null.
class zuTextureState : public zuGlobalState {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();

    zuTextureState();
    ~zuTextureState() override;

    StateType GetStateType() const override { return TEXTURE; }

    int GetTextureQuantity() const { return static_cast<int>(mTextures.size()); }
    // Null for an index out of range or an empty slot.
    zuTexture* GetTexture(int i) const;
    // Appends a texture; returns its index (-1 for null).
    int AttachTexture(zuTexture* texture);
    void SetTexture(int i, zuTexture* texture);
    void RemoveAllTextures();

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    void Link(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

private:
    std::vector<zuPointer<zuTexture>> mTextures;
};

} // namespace zu
