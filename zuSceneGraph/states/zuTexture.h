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
//
// A texture holds an image, or only the name of one (an image not loaded, or to be found
// in a catalogue). Loading with an image catalogue shares images by name: in Link, a
// texture whose image has a name takes the catalogue's image of that name when there is
// one, and lists its own otherwise; a texture with a name and no image takes the
// catalogue's image of that name when there is one.
//
// Record: the object part (name, controllers); the image reference; the image name
// (GetImageName); wrap s, wrap t, min filter, mag filter, the texture-coordinate unit and
// the channel (ints). The same at every stream version. Enumerations read from a file are
// kept as read, as are units.
class zuTexture : public zuNamedObject {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream);
    static void RegisterFactory();
    static void UnRegisterFactory();
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    enum Channel : int { CH_DIFFUSE, CH_BUMP, CH_OPACITY, CH_SPECULAR, CH_EMISSIVE, CH_REFLECTION, CH_QUANTITY };
    // What a coordinate outside [0, 1] samples: the edge texel (clamp to edge), the
    // border colour (clamp to border), the image repeated, or repeated mirrored.
    enum WrapMode : int { WM_CLAMP_EDGE, WM_CLAMP_BORDER, WM_REPEAT, WM_MIRRORED_REPEAT, WM_QUANTITY };
    // Nearest or linear within a level; the four mip-mapped forms (level choice second)
    // apply to minification only.
    enum FilterMode : int {
        FM_NEAREST,
        FM_LINEAR,
        FM_NEAREST_MIPMAP_NEAREST,
        FM_LINEAR_MIPMAP_NEAREST,
        FM_NEAREST_MIPMAP_LINEAR,
        FM_LINEAR_MIPMAP_LINEAR,
        FM_QUANTITY
    };

    // No image, no image name; repeat in s and t, trilinear minification
    // (FM_LINEAR_MIPMAP_LINEAR), linear magnification, unit 0, diffuse channel.
    zuTexture();
    explicit zuTexture(zuImage* image);
    ~zuTexture() override;

    zuImage* GetImage() const;
    // Also takes the image's name as the texture's image name, which a texture without
    // image keeps (SetImage(nullptr) keeps the name of the last image).
    void SetImage(zuImage* image);
    // The image's name when there is an image, else the name set (or loaded).
    const std::string& GetImageName() const;
    void SetImageName(const std::string& name) { mImageName = name; }
    Channel GetChannel() const { return mChannel; }
    void SetChannel(Channel channel) { mChannel = channel; }
    WrapMode GetWrapS() const { return mWrapS; }
    WrapMode GetWrapT() const { return mWrapT; }
    void SetWrap(WrapMode s, WrapMode t)
    {
        mWrapS = s;
        mWrapT = t;
    }
    FilterMode GetMinFilter() const { return mMinFilter; }
    FilterMode GetMagFilter() const { return mMagFilter; }
    void SetFilter(FilterMode minFilter, FilterMode magFilter)
    {
        mMinFilter = minFilter;
        mMagFilter = magFilter;
    }
    // The texture-coordinate unit of the vertex buffer the texture reads.
    int GetUnit() const { return mUnit; }
    void SetUnit(int unit) { mUnit = unit; }

    // The names of the enumerators ("CH_DIFFUSE", "WM_REPEAT", "FM_LINEAR", ...);
    // "UNKNOWN" for a value outside the enumeration.
    static const char* GetChannelName(int channel);
    static const char* GetWrapModeName(int mode);
    static const char* GetFilterModeName(int mode);

    // Adds the resources this texture needs drawn (its image's pixel block) to `resources`;
    // false when it has none of its own to add, and the caller adds GetResource() instead.
    bool getResources(std::vector<zuDynamicLoadingResource*>& resources) const;
    // The texture's own resource as the renderer sees it (its image's), or null.
    zuDynamicLoadingResource* GetResource() const;

    const zuRtti& GetType() const override { return TYPE; }
    // Registers the image after the object part.
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // Takes the image (a reference to anything but an image is dropped), then shares it
    // through the stream's image catalogue, if any (see above).
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The object part, the image name, the modes, unit and channel, then the images: both
    // absent, the same, or equal (zuImage::Equals).
    bool Equals(const zuRttiInterface* other) const override;
    // The target shares this texture's image.
    bool Clone(zuRttiInterface*& target) const override;

private:
    zuPointer<zuObject> mImage;  // a zuImage
    Channel mChannel = CH_DIFFUSE;
    std::string mImageName;
    WrapMode mWrapS = WM_REPEAT;
    WrapMode mWrapT = WM_REPEAT;
    FilterMode mMinFilter = FM_LINEAR_MIPMAP_LINEAR;
    FilterMode mMagFilter = FM_LINEAR;
    int mUnit = 0;
};

} // namespace zu
