#pragma once

#include <zuSceneGraph/objects/zuNamedObject.h>

#include <string>
#include <vector>

namespace zu {

class zuDynamicLoadingResource;
class zuImage;

// A texture of a leaf: its image (shared, by reference or by name in the stream's image
// catalogue), how it is sampled, which texture-coordinate unit it reads, and the role it
// plays in the material (diffuse, bump, opacity, ...).
class zuTexture : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();

    enum Channel { CH_DIFFUSE, CH_BUMP, CH_OPACITY, CH_SPECULAR, CH_EMISSIVE, CH_REFLECTION, CH_QUANTITY };

    zuTexture();
    explicit zuTexture(zuImage* image);
    ~zuTexture() override;

    zuImage* GetImage() const;
    void SetImage(zuImage* image);
    Channel GetChannel() const { return mChannel; }
    void SetChannel(Channel channel) { mChannel = channel; }

    // Adds the resources this texture needs drawn (its image's pixel block) to `resources`;
    // false when it has none of its own to add, and the caller adds GetResource() instead.
    bool getResources(std::vector<zuDynamicLoadingResource*>& resources) const;
    // The texture's own resource as the renderer sees it (its image's), or null.
    zuDynamicLoadingResource* GetResource() const;

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    void Link(zuBaseStream& stream, zuLink* link) override;
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

private:
    zuPointer<zuObject> mImage;  // a zuImage
    Channel mChannel = CH_DIFFUSE;
};

} // namespace zu
