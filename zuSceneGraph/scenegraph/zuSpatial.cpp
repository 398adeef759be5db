#include <zuSceneGraph/scenegraph/zuSpatial.h>

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoxBV.h>
#include <zuSceneGraph/scenegraph/zuRttiCustomSpatialInformation.h>
#include <zuSceneGraph/states/zuGlobalState.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <algorithm>
#include <utility>

namespace zu {

const zuRtti zuSpatial::TYPE("zuCore.zuSpatial", &zuNamedObject::TYPE);

namespace {

// Old streams hold exactly this many metadata references.
constexpr int LEGACY_METADATA_SLOTS = 10;

bool hasLegacyMetadataSlots(const zuBaseStream& stream)
{
    return stream.GetVersion() >= zuStreamVersion(5, 1) && stream.GetVersion() <= zuStreamVersion(5, 12);
}

} // namespace

zuSpatial::zuSpatial() = default;

zuSpatial::~zuSpatial() = default;

// ---------------------------------------------------------------------------------------
// Slots

void zuSpatial::Clean_Flags()
{
    mDirtyMask = 0;
    mUpdateMask = 0;
}

uint32_t zuSpatial::setDirtyDown(bool)
{
    return 0;
}

void zuSpatial::UpdateWorldData()
{
    updateWorldTransform();
}

void zuSpatial::UpdateWorldData_Flags()
{
    updateWorldTransform();
}

void zuSpatial::setGlobalState(zuGlobalState*)
{
}

zuGlobalState* zuSpatial::getGlobalState(int) const
{
    return nullptr;
}

int zuSpatial::getGlobalStateQuantity() const
{
    return 0;
}

// ---------------------------------------------------------------------------------------
// Passes

void zuSpatial::UpdateGS_Flags()
{
    if (mUpdateMask & UPDATE_WORLD_DATA) {
        UpdateWorldData_Flags();
        UpdateWorldBound();
    } else if (mUpdateMask & UPDATE_WORLD_BOUND) {
        UpdateWorldBound();
    }
    mUpdateMask &= ~(UPDATE_WORLD_DATA | UPDATE_WORLD_BOUND);
}

void zuSpatial::UpdateBS()
{
    UpdateWorldBound();
    PropagateBoundToRoot();
}

void zuSpatial::PropagateBoundToRoot()
{
    for (zuSpatial* ancestor = mParent; ancestor; ancestor = ancestor->mParent)
        ancestor->UpdateWorldBound();
}

void zuSpatial::OnGetVisibleSet(zuCuller& culler, bool noCull, bool flag)
{
    if (mSpatialFlags & FLAG_IGNORED)
        return;
    const int mode = mSpatialFlags & FLAG_CULLING_MODE;
    if (mode == CULL_ALWAYS)
        return;
    // The planes this object's bound lies inside are cleared for its subtree only.
    const uint32_t saved = culler.GetPlaneState();
    const bool untested = mode == CULL_NEVER || noCull;
    if (!untested && !culler.IsVisible(mWorldBound)) {
        culler.SetPlaneState(saved);
        return;
    }
    GetVisibleSet(culler, untested, flag);
    culler.SetPlaneState(saved);
}

void zuSpatial::forceIgnore(bool ignore, bool propagate, bool down)
{
    setFlag(FLAG_IGNORED, ignore);
    if (propagate) {
        setDirtyDown(down);
        propagateDirtyToRoot(mDirtyMask);
    }
}

void zuSpatial::markDirty(bool down, uint32_t extraBits)
{
    setDirtyDown(down);
    mDirtyMask |= extraBits;
    propagateDirtyToRoot(mDirtyMask);
}

void zuSpatial::propagateDirtyToRoot(uint32_t bits)
{
    for (zuSpatial* object = this; object; object = object->mParent) {
        object->mDirtyMask |= bits;
        object->mUpdateMask |= bits;
    }
}

// ---------------------------------------------------------------------------------------
// Metadata

void zuSpatial::setMetadata(zuMetadataInterface* metadata)
{
    if (!metadata)
        return;
    const uint32_t key = metadata->getTypeKey();
    std::vector<zuPointer<zuObject>>& list = attachedObjects();
    size_t position = 0;
    for (size_t i = 0; i < list.size(); ++i) {
        const zuMetadataInterface* entry = asMetadata(list[i]);
        if (!entry)
            continue;
        if (entry->getTypeKey() == key) {
            list[i] = metadata;
            return;
        }
        if (entry->getTypeKey() < key)
            position = i + 1;
    }
    list.insert(list.begin() + static_cast<std::ptrdiff_t>(position), zuPointer<zuObject>(metadata));
}

zuMetadataInterface* zuSpatial::getMetadata(uint32_t typeKey) const
{
    for (const auto& entry : attachedObjects())
        if (entry && asMetadata(entry)->getTypeKey() == typeKey)
            return asMetadata(entry);
    return nullptr;
}

bool zuSpatial::removeMetadata(uint32_t typeKey)
{
    const auto& list = std::as_const(*this).attachedObjects();
    for (size_t i = 0; i < list.size(); ++i) {
        if (list[i] && asMetadata(list[i])->getTypeKey() == typeKey) {
            eraseAttachedObject(i);
            return true;
        }
    }
    return false;
}

// ---------------------------------------------------------------------------------------
// Persistence

bool zuSpatial::Register(zuBaseStream& stream) const
{
    if (!zuNamedObject::Register(stream))
        return false;
    if (stream.GetVersion() < zuStreamVersion(6, 6)) {
        // Old streams refer to the bound as an object of its own: it is made here and kept
        // in the side record until Save has written its reference.
        auto* information = new zuRttiCustomSpatialInformation;
        information->legacyVolume = mWorldBound.createLegacyVolume();
        information->globalStateCount = getGlobalStateQuantity();
        stream.registerInformations(this, information);
        if (information->legacyVolume)
            information->legacyVolume->Register(stream);
        for (int i = 0; i < information->globalStateCount; ++i)
            if (const zuGlobalState* state = getGlobalState(i))
                state->Register(stream);
    }
    if (stream.GetVersion() >= zuStreamVersion(5, 1)) {
        // Only the slots the record holds: the first ten in the old fixed-size list.
        const int count = hasLegacyMetadataSlots(stream) ? std::min(getMetadataQuantity(), LEGACY_METADATA_SLOTS)
                                                         : getMetadataQuantity();
        for (int i = 0; i < count; ++i)
            if (const zuMetadataInterface* metadata = getMetadataAt(i))
                metadata->Register(stream);
    }
    return true;
}

int zuSpatial::GetDiskUsed(const zuBaseStream& stream) const
{
    const zuStreamVersion& version = stream.GetVersion();
    int size = zuNamedObject::GetDiskUsed(stream) + 2 * zuGenericTransformation<float>::STREAM_SIZE + 4;
    if (version >= zuStreamVersion(6, 6))
        size += mWorldBound.getDiskUsed(stream, true);
    else
        size += 2 + 8 + 4 + 8 * getGlobalStateQuantity();
    if (version < zuStreamVersion(5, 12))
        size += 4;
    if (version <= zuStreamVersion(5, 0))
        size += 4;
    if (hasLegacyMetadataSlots(stream))
        size += 8 * LEGACY_METADATA_SLOTS;
    if (version > zuStreamVersion(5, 12))
        size += 4 + 8 * getMetadataQuantity();
    return size;
}

void zuSpatial::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    const zuStreamVersion& version = stream.GetVersion();
    stream.Write(mLocalTransform);
    stream.Write(mWorldTransform);
    stream.Write(GetCullingMode());
    if (version >= zuStreamVersion(6, 6)) {
        mWorldBound.writeToStream(stream);
    } else {
        const auto* information = dynamic_cast<const zuRttiCustomSpatialInformation*>(stream.getInformations(this));
        // Two flags that readers ignore.
        stream.Write(false);
        stream.Write(false);
        stream.Write(information ? static_cast<const zuRttiInterface*>(information->legacyVolume.get()) : nullptr);
        const int quantity = getGlobalStateQuantity();
        stream.Write(quantity);
        for (int i = 0; i < quantity; ++i)
            stream.Write(static_cast<const zuRttiInterface*>(getGlobalState(i)));
    }
    if (version < zuStreamVersion(5, 12))
        stream.Write(0);
    if (version <= zuStreamVersion(5, 0))
        stream.Write(0.0f);
    if (hasLegacyMetadataSlots(stream)) {
        for (int i = 0; i < LEGACY_METADATA_SLOTS; ++i)
            stream.Write(static_cast<const zuRttiInterface*>(getMetadataAt(i)));
    }
    if (version > zuStreamVersion(5, 12)) {
        stream.Write(static_cast<unsigned int>(getMetadataQuantity()));
        for (const auto& metadata : attachedObjects())
            stream.Write(static_cast<const zuRttiInterface*>(metadata.get()));
    }
}

void zuSpatial::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    const zuStreamVersion& version = stream.GetVersion();
    stream.Read(mLocalTransform);
    stream.Read(mWorldTransform);
    int mode = 0;
    stream.Read(mode);
    SetCullingMode(mode);
    if (version >= zuStreamVersion(6, 6)) {
        setFlag(FLAG_BOUND_FROM_BOX, mWorldBound.readFromStream(stream));
    } else {
        bool ignored = false;
        stream.Read(ignored);
        stream.Read(ignored);
        stream.ReadLink(link);
        int quantity = 0;
        stream.Read(quantity);
        if (!stream.CheckCount(quantity, 8))
            return;
        for (int i = 0; i < quantity; ++i)
            stream.ReadLink(link);
        // Link needs the count to take the state references from the link.
        auto* information = new zuRttiCustomSpatialInformation;
        information->globalStateCount = quantity;
        stream.registerInformations(this, information);
    }
    if (version < zuStreamVersion(5, 12)) {
        // A list of references that no reader uses any more.
        int count = 0;
        stream.Read(count);
        if (!stream.CheckCount(count, 8))
            return;
        stream.Skip(8 * static_cast<uint64_t>(count));
    }
    if (version <= zuStreamVersion(5, 0)) {
        float dropped = 0.0f;
        stream.Read(dropped);
    }
    clearAttachedObjects();
    if (hasLegacyMetadataSlots(stream)) {
        attachedObjects().resize(LEGACY_METADATA_SLOTS);
        for (int i = 0; i < LEGACY_METADATA_SLOTS; ++i)
            stream.ReadLink(link);
    } else if (version > zuStreamVersion(5, 12)) {
        unsigned int count = 0;
        stream.Read(count);
        if (!stream.CheckCount(count, 8))
            return;
        if (count > 0)
            attachedObjects().resize(count);
        for (unsigned int i = 0; i < count; ++i)
            stream.ReadLink(link);
    }
}

void zuSpatial::Link(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Link(stream, link);
    if (stream.GetVersion() < zuStreamVersion(6, 6)) {
        auto* information = dynamic_cast<zuRttiCustomSpatialInformation*>(stream.getInformations(this));
        zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
        if (object && object->IsDerived(zuLegacyBoundingVolume::TYPE)) {
            auto* legacy = static_cast<zuLegacyBoundingVolume*>(object);
            mWorldBound.assign(legacy);
            setFlag(FLAG_BOUND_FROM_BOX, legacy->IsDerived(zuLegacyBoxBV::TYPE));
            if (information)
                information->legacyVolume = legacy;
        }
        const int quantity = information ? information->globalStateCount : 0;
        for (int i = 0; i < quantity; ++i) {
            object = stream.getFromMapAndRemove(link->getLinkID());
            if (object && object->IsDerived(zuGlobalState::TYPE))
                setGlobalState(static_cast<zuGlobalState*>(object));
        }
    }
    if (getMetadataQuantity() > 0) {
        for (auto& metadata : attachedObjects()) {
            zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
            metadata = object && object->IsDerived(zuMetadataInterface::TYPE) ? static_cast<zuMetadataInterface*>(object)
                                                                                : nullptr;
        }
    }
}

bool zuSpatial::PostLink()
{
    const bool result = zuNamedObject::PostLink();
    for (const auto& metadata : std::as_const(*this).attachedObjects())
        if (metadata)
            asMetadata(metadata)->updateMetaData(this);
    return result;
}

bool zuSpatial::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuSpatial* spatial = static_cast<const zuSpatial*>(other);
    return mLocalTransform.Equals(spatial->mLocalTransform) && mWorldTransform.Equals(spatial->mWorldTransform)
        && GetCullingMode() == spatial->GetCullingMode();
}

bool zuSpatial::Clone(zuRttiInterface*& target) const
{
    if (!target || !target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    if (target == this)
        return true;
    zuSpatial* spatial = static_cast<zuSpatial*>(target);
    spatial->mLocalTransform = mLocalTransform;
    spatial->mWorldTransform = mWorldTransform;
    spatial->SetCullingMode(GetCullingMode());
    spatial->mWorldBound.copyFrom(mWorldBound);
    spatial->mParent = nullptr;
    spatial->setAttachedObjects(attachedObjects());
    return true;
}

namespace {

const char* const cullingModeNames[] = {"CULL_DYNAMIC", "CULL_ALWAYS", "CULL_NEVER"};

} // namespace

void zuSpatial::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNamedObject::DescribeFields(object, visitor);
    const auto& spatial = static_cast<const zuSpatial&>(object);
    visitor.Transformation("local", spatial.mLocalTransform);
    visitor.Transformation("world", spatial.mWorldTransform);
    visitor.EnumeratorOf("culling", spatial.GetCullingMode(), cullingModeNames);
    spatial.mWorldBound.DescribeFields("world bound", visitor);
    visitor.References("metadata", spatial.getMetadataQuantity(),
                       [&](int64_t i) { return spatial.getMetadataAt(static_cast<int>(i)); });
}

} // namespace zu
