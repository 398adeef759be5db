#include <zuSceneGraph/states/zuTextureState.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

const zuRtti zuTextureState::TYPE("zuCore.zuTextureState", &zuGlobalState::TYPE);

zuRttiInterface* zuTextureState::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuTextureState>(stream);
}

void zuTextureState::RegisterFactory()
{
    RegisterClass<zuTextureState>();
}

void zuTextureState::UnRegisterFactory()
{
    UnregisterFactoryFunction(TYPE.GetName());
}

zuTextureState::zuTextureState() = default;

zuTextureState::~zuTextureState() = default;

zuTexture* zuTextureState::GetTexture(int i) const
{
    if (i < 0 || i >= GetTextureQuantity())
        return nullptr;
    return mTextures[static_cast<size_t>(i)];
}

int zuTextureState::AttachTexture(zuTexture* texture)
{
    if (!texture)
        return -1;
    mTextures.emplace_back(texture);
    return GetTextureQuantity() - 1;
}

void zuTextureState::SetTexture(int i, zuTexture* texture)
{
    if (i < 0 || i > GetTextureQuantity())
        return;
    if (i == GetTextureQuantity())
        mTextures.emplace_back(texture);
    else
        mTextures[static_cast<size_t>(i)] = texture;
}

void zuTextureState::RemoveAllTextures()
{
    mTextures.clear();
}

// ---------------------------------------------------------------------------------------
// Persistence

bool zuTextureState::Register(zuBaseStream& stream) const
{
    if (!zuGlobalState::Register(stream))
        return false;
    for (const auto& texture : mTextures)
        if (texture)
            texture->Register(stream);
    return true;
}

// The count, then one reference per slot.
int zuTextureState::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuGlobalState::GetDiskUsed(stream) + 4 + 8 * GetTextureQuantity();
}

void zuTextureState::Save(zuBaseStream& stream) const
{
    zuGlobalState::Save(stream);
    stream.Write(GetTextureQuantity());
    for (const auto& texture : mTextures)
        stream.Write(static_cast<const zuRttiInterface*>(texture.get()));
}

void zuTextureState::Load(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Load(stream, link);
    mTextures.clear();
    int quantity = 0;
    stream.Read(quantity);
    if (!stream.CheckCount(quantity, 8))
        return;
    // The slots are filled by Link, one per reference read here.
    mTextures.resize(static_cast<size_t>(quantity));
    for (int i = 0; i < quantity; ++i)
        stream.ReadLink(link);
}

void zuTextureState::Link(zuBaseStream& stream, zuLink* link)
{
    zuGlobalState::Link(stream, link);
    for (auto& texture : mTextures) {
        zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
        texture = object && object->IsDerived(zuTexture::TYPE) ? static_cast<zuTexture*>(object) : nullptr;
    }
}

bool zuTextureState::Equals(const zuRttiInterface* other) const
{
    if (!zuGlobalState::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuTextureState* state = static_cast<const zuTextureState*>(other);
    if (GetTextureQuantity() != state->GetTextureQuantity())
        return false;
    for (int i = 0; i < GetTextureQuantity(); ++i) {
        const zuTexture* mine = GetTexture(i);
        const zuTexture* theirs = state->GetTexture(i);
        if (!mine || !theirs) {
            if (mine != theirs)
                return false;
        } else if (mine != theirs && !mine->Equals(theirs)) {
            return false;
        }
    }
    return true;
}

bool zuTextureState::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTextureState;
    if (!target->IsDerived(TYPE) || !zuGlobalState::Clone(target))
        return false;
    zuTextureState* state = static_cast<zuTextureState*>(target);
    if (state != this)
        state->mTextures = mTextures;
    return true;
}

void zuTextureState::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuGlobalState::DescribeFields(object, visitor);
    const auto& state = static_cast<const zuTextureState&>(object);
    visitor.References("textures", state.GetTextureQuantity(),
                       [&](int64_t i) { return state.GetTexture(static_cast<int>(i)); });
}

} // namespace zu
