#include <zuSceneGraph/states/zuTexture.h>

#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstddef>
#include <iterator>

namespace zu {

const zuRtti zuTexture::TYPE("zuCore.zuTexture", &zuObject::TYPE);

namespace {

const char* const channelNames[] = {"CH_DIFFUSE",  "CH_BUMP",     "CH_OPACITY",
                                    "CH_SPECULAR", "CH_EMISSIVE", "CH_REFLECTION"};
const char* const wrapModeNames[] = {"WM_CLAMP_EDGE", "WM_CLAMP_BORDER", "WM_REPEAT", "WM_MIRRORED_REPEAT"};
const char* const filterModeNames[] = {"FM_NEAREST",
                                       "FM_LINEAR",
                                       "FM_NEAREST_MIPMAP_NEAREST",
                                       "FM_LINEAR_MIPMAP_NEAREST",
                                       "FM_NEAREST_MIPMAP_LINEAR",
                                       "FM_LINEAR_MIPMAP_LINEAR"};
static_assert(std::size(channelNames) == zuTexture::CH_QUANTITY, "one name per channel");
static_assert(std::size(wrapModeNames) == zuTexture::WM_QUANTITY, "one name per wrap mode");
static_assert(std::size(filterModeNames) == zuTexture::FM_QUANTITY, "one name per filter mode");

template <std::size_t N>
const char* nameOf(const char* const (&table)[N], int value)
{
    return value >= 0 && static_cast<std::size_t>(value) < N ? table[value] : "UNKNOWN";
}

} // namespace

zuRttiInterface* zuTexture::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuTexture>(stream);
}

void zuTexture::RegisterFactory()
{
    RegisterClass<zuTexture>();
}

void zuTexture::UnRegisterFactory()
{
    UnregisterFactoryFunction(TYPE.GetName());
}

zuTexture::zuTexture() = default;

zuTexture::zuTexture(zuImage* image)
{
    SetImage(image);
}

zuTexture::~zuTexture() = default;

zuImage* zuTexture::GetImage() const
{
    // Only SetImage and Link fill the slot, both with images.
    return static_cast<zuImage*>(mImage.get());
}

void zuTexture::SetImage(zuImage* image)
{
    mImage = image;
    if (image)
        mImageName = image->GetName();
}

const std::string& zuTexture::GetImageName() const
{
    const zuImage* image = GetImage();
    return image ? image->GetName() : mImageName;
}

const char* zuTexture::GetChannelName(int channel)
{
    return nameOf(channelNames, channel);
}

const char* zuTexture::GetWrapModeName(int mode)
{
    return nameOf(wrapModeNames, mode);
}

const char* zuTexture::GetFilterModeName(int mode)
{
    return nameOf(filterModeNames, mode);
}

bool zuTexture::getResources(std::vector<zuDynamicLoadingResource*>& resources) const
{
    zuImage* image = GetImage();
    if (!image)
        return false;
    resources.push_back(image);
    return true;
}

zuDynamicLoadingResource* zuTexture::GetResource() const
{
    return GetImage();
}

// ---------------------------------------------------------------------------------------
// Persistence

bool zuTexture::Register(zuBaseStream& stream) const
{
    if (!zuNamedObject::Register(stream))
        return false;
    if (const zuImage* image = GetImage())
        image->Register(stream);
    return true;
}

// The image reference, the image name, then six ints.
int zuTexture::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNamedObject::GetDiskUsed(stream) + 8 + 4 + static_cast<int>(GetImageName().size()) + 6 * 4;
}

void zuTexture::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    stream.Write(static_cast<const zuRttiInterface*>(GetImage()));
    stream.Write(GetImageName());
    stream.Write(static_cast<int>(mWrapS));
    stream.Write(static_cast<int>(mWrapT));
    stream.Write(static_cast<int>(mMinFilter));
    stream.Write(static_cast<int>(mMagFilter));
    stream.Write(mUnit);
    stream.Write(static_cast<int>(mChannel));
}

void zuTexture::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    stream.ReadLink(link);
    stream.Read(mImageName);
    int wrapS = 0;
    int wrapT = 0;
    int minFilter = 0;
    int magFilter = 0;
    int channel = 0;
    stream.Read(wrapS);
    stream.Read(wrapT);
    stream.Read(minFilter);
    stream.Read(magFilter);
    stream.Read(mUnit);
    stream.Read(channel);
    // Kept as read, even outside their enumerations (a newer or damaged file): the
    // enumerations are ints, so every value is a valid field value.
    mWrapS = static_cast<WrapMode>(wrapS);
    mWrapT = static_cast<WrapMode>(wrapT);
    mMinFilter = static_cast<FilterMode>(minFilter);
    mMagFilter = static_cast<FilterMode>(magFilter);
    mChannel = static_cast<Channel>(channel);
}

void zuTexture::Link(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Link(stream, link);
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    zuImage* image = object && object->IsDerived(zuImage::TYPE) ? static_cast<zuImage*>(object) : nullptr;
    if (zuCatalog<zuImage>* catalog = stream.GetImageCatalog()) {
        // The file's own image of a name already listed is dropped with the links, unless
        // something else refers to it.
        if (image)
            image = catalog->Share(image);
        else if (!mImageName.empty())
            image = catalog->Find(mImageName);
    }
    mImage = image;
}

bool zuTexture::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuTexture* texture = static_cast<const zuTexture*>(other);
    if (GetImageName() != texture->GetImageName() || mWrapS != texture->mWrapS || mWrapT != texture->mWrapT
        || mMinFilter != texture->mMinFilter || mMagFilter != texture->mMagFilter || mUnit != texture->mUnit
        || mChannel != texture->mChannel)
        return false;
    const zuImage* mine = GetImage();
    const zuImage* theirs = texture->GetImage();
    if (mine == theirs)
        return true;
    return mine && theirs && mine->Equals(theirs);
}

bool zuTexture::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTexture;
    if (!target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    zuTexture* texture = static_cast<zuTexture*>(target);
    if (texture == this)
        return true;
    texture->mImage = mImage;
    texture->mImageName = mImageName;
    texture->mWrapS = mWrapS;
    texture->mWrapT = mWrapT;
    texture->mMinFilter = mMinFilter;
    texture->mMagFilter = mMagFilter;
    texture->mUnit = mUnit;
    texture->mChannel = mChannel;
    return true;
}

void zuTexture::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNamedObject::DescribeFields(object, visitor);
    const auto& texture = static_cast<const zuTexture&>(object);
    visitor.BeginGroup(nullptr);
    visitor.Reference("image", texture.mImage.get());
    visitor.Text("image name", texture.GetImageName());
    visitor.EndGroup();
    visitor.BeginGroup("wrap");
    visitor.Enumerator("s", texture.mWrapS, GetWrapModeName(texture.mWrapS));
    visitor.Enumerator("t", texture.mWrapT, GetWrapModeName(texture.mWrapT));
    visitor.EndGroup();
    visitor.BeginGroup("filter");
    visitor.Enumerator("min", texture.mMinFilter, GetFilterModeName(texture.mMinFilter));
    visitor.Enumerator("mag", texture.mMagFilter, GetFilterModeName(texture.mMagFilter));
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Integer("unit", texture.mUnit);
    visitor.Enumerator("channel", texture.mChannel, GetChannelName(texture.mChannel));
    visitor.EndGroup();
}

} // namespace zu
