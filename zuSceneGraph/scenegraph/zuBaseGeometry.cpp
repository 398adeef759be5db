#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/scenegraph/zuLegacyBoxBV.h>
#include <zuSceneGraph/scenegraph/zuRttiCustomBaseGeometryInformation.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <cstring>

namespace zu {

const zuRtti zuBaseGeometry::TYPE("zuCore.zuBaseGeometry", &zuRenderableSpatial::TYPE);

namespace {

// A state is taken for a slot only when it says it is of that type and really is of that
// class: the slots are read back as the concrete classes.
zuGlobalState* asMaterialState(zuRttiInterface* object)
{
    if (!object || !object->IsDerived(zuGlobalState::TYPE))
        return nullptr;
    auto* state = static_cast<zuGlobalState*>(object);
    return state->GetStateType() == zuGlobalState::MATERIAL && state->IsDerived(zuMaterialState::TYPE) ? state : nullptr;
}

zuGlobalState* asTextureState(zuRttiInterface* object)
{
    if (!object || !object->IsDerived(zuGlobalState::TYPE))
        return nullptr;
    auto* state = static_cast<zuGlobalState*>(object);
    return state->GetStateType() == zuGlobalState::TEXTURE && state->IsDerived(zuTextureState::TYPE) ? state : nullptr;
}

// The model bound's record below 6.6: one reference. From 6.6: the bound, two references
// and two flag bytes.
constexpr int LEGACY_MODEL_BOUND_SIZE = 8;
constexpr int STATES_AND_FLAGS_SIZE = 8 + 8 + 2;
// The hook of this class: the two buffer references.
constexpr int BUFFER_REFERENCES_SIZE = 16;

} // namespace

zuBaseGeometry::zuBaseGeometry() = default;

zuBaseGeometry::zuBaseGeometry(zuVertexBuffer* vertices, zuIndexBuffer* indices)
    : mVertices(vertices), mIndices(indices)
{
    UpdateModelBound();
}

zuBaseGeometry::~zuBaseGeometry() = default;

zuMaterialState* zuBaseGeometry::GetMaterialState() const
{
    return static_cast<zuMaterialState*>(mMaterialState.get());
}

zuTextureState* zuBaseGeometry::GetTextureState() const
{
    return static_cast<zuTextureState*>(mTextureState.get());
}

// ---------------------------------------------------------------------------------------
// Model updates

void zuBaseGeometry::UpdateModelBound()
{
    mModelBound.computeFromDataBox(mVertices.get());
}

void zuBaseGeometry::UpdateMS(bool normals, bool invert, int channel)
{
    UpdateModelBound();
    if (invert) {
        UpdateModelInvert(channel);
        return;
    }
    if (normals)
        UpdateModelNormals();
    if (channel >= -1)
        UpdateModelTangentSpace(channel);
}

void zuBaseGeometry::UpdateModelNormals()
{
}

void zuBaseGeometry::UpdateModelTangentSpace(int)
{
}

void zuBaseGeometry::UpdateModelInvert(int)
{
}

// ---------------------------------------------------------------------------------------
// Look-ups

zuObject* zuBaseGeometry::GetObjectByName(const std::string& name)
{
    if (zuObject* found = zuRenderableSpatial::GetObjectByName(name))
        return found;
    if (mVertices)
        if (zuObject* found = mVertices->GetObjectByName(name))
            return found;
    if (mIndices)
        if (zuObject* found = mIndices->GetObjectByName(name))
            return found;
    return nullptr;
}

void zuBaseGeometry::GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects)
{
    zuRenderableSpatial::GetAllObjectsByName(name, objects);
    if (mVertices)
        mVertices->GetAllObjectsByName(name, objects);
    if (mIndices)
        mIndices->GetAllObjectsByName(name, objects);
}

zuObject* zuBaseGeometry::GetObjectByID(unsigned int id)
{
    if (zuObject* found = zuRenderableSpatial::GetObjectByID(id))
        return found;
    if (mVertices)
        if (zuObject* found = mVertices->GetObjectByID(id))
            return found;
    if (mIndices)
        if (zuObject* found = mIndices->GetObjectByID(id))
            return found;
    return nullptr;
}

// ---------------------------------------------------------------------------------------
// Passes

void zuBaseGeometry::GetVisibleSet(zuCuller& culler, bool, bool)
{
    culler.Insert(this);
}

uint32_t zuBaseGeometry::setDirtyDown(bool down)
{
    const uint32_t bits = down ? DIRTY_DOWN_BITS : DIRTY_UP_BITS;
    SetDirtyMask(GetDirtyMask() | bits);
    SetUpdateMask(GetUpdateMask() | bits);
    return GetDirtyMask();
}

void zuBaseGeometry::UpdateWorldBound()
{
    if (!mModelBound.isValid()) {
        GetWorldBound().invalidate();
        return;
    }
    mModelBound.transformBoxBy(GetWorldTransform(), GetWorldBound());
}

// ---------------------------------------------------------------------------------------
// States

void zuBaseGeometry::setGlobalState(zuGlobalState* state)
{
    if (zuGlobalState* texture = asTextureState(state))
        mTextureState = texture;
    else if (zuGlobalState* material = asMaterialState(state))
        mMaterialState = material;
    else
        return;
    updateObjectDescription();
}

zuGlobalState* zuBaseGeometry::getGlobalState(int i) const
{
    // One-based, and the texture state moves up when there is no material.
    if (mMaterialState) {
        if (i == 1)
            return mMaterialState;
        return i == 2 ? mTextureState.get() : nullptr;
    }
    return i == 1 ? mTextureState.get() : nullptr;
}

int zuBaseGeometry::getGlobalStateQuantity() const
{
    return (mMaterialState ? 1 : 0) + (mTextureState ? 1 : 0);
}

// ---------------------------------------------------------------------------------------
// Rendering

bool zuBaseGeometry::checkRenderable(bool onlySecond)
{
    if (!onlySecond) {
        const bool first = mVertices && mVertices->isReadyForUpload() && (!mIndices || mIndices->isReadyForUpload());
        setRenderFlag(RENDERABLE_FIRST, first);
    }
    const bool second = mVertices && mVertices->isReadyForDraw() && (!mIndices || mIndices->isReadyForDraw());
    setRenderFlag(RENDERABLE_SECOND, second);
    return second;
}

void zuBaseGeometry::getResources(std::vector<zuDynamicLoadingResource*>& resources) const
{
    resources.clear();
    if (mVertices) {
        resources.push_back(mVertices.get());
        resources.push_back(mIndices ? static_cast<zuDynamicLoadingResource*>(mIndices.get()) : nullptr);
    }
    if (const zuTextureState* textures = GetTextureState()) {
        const int quantity = textures->GetTextureQuantity();
        for (int i = 0; i < quantity; ++i) {
            const zuTexture* texture = textures->GetTexture(i);
            if (texture && !texture->getResources(resources))
                resources.push_back(texture->GetResource());
        }
    }
}

// ---------------------------------------------------------------------------------------
// Class hooks: the two buffer references.

void zuBaseGeometry::zuBaseGeometryRegister(zuBaseStream& stream) const
{
    if (mVertices)
        mVertices->Register(stream);
    if (mIndices)
        mIndices->Register(stream);
}

int zuBaseGeometry::zuBaseGeometryGetDiskUsed(const zuBaseStream&) const
{
    return BUFFER_REFERENCES_SIZE;
}

void zuBaseGeometry::zuBaseGeometrySave(zuBaseStream& stream) const
{
    stream.Write(static_cast<const zuRttiInterface*>(mVertices.get()));
    stream.Write(static_cast<const zuRttiInterface*>(mIndices.get()));
}

void zuBaseGeometry::zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link)
{
    stream.ReadLink(link);
    stream.ReadLink(link);
}

void zuBaseGeometry::zuBaseGeometryLink(zuBaseStream& stream, zuLink* link)
{
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    mVertices = object && object->IsDerived(zuVertexBuffer::TYPE) ? static_cast<zuVertexBuffer*>(object) : nullptr;
    object = stream.getFromMapAndRemove(link->getLinkID());
    mIndices = object && object->IsDerived(zuIndexBuffer::TYPE) ? static_cast<zuIndexBuffer*>(object) : nullptr;
}

// ---------------------------------------------------------------------------------------
// Persistence. Streams before 5.25 know a leaf as a spatial object, newer ones as a
// renderable spatial; the renderable part adds nothing to the record, so both write the
// same fields.

bool zuBaseGeometry::Register(zuBaseStream& stream) const
{
    const bool registered = stream.GetVersion() >= zuStreamVersion(5, 25) ? zuRenderableSpatial::Register(stream)
                                                                           : zuSpatial::Register(stream);
    if (!registered)
        return false;
    if (stream.GetVersion() < zuStreamVersion(6, 6)) {
        // The record refers to a legacy sphere made from the model bound; it lives in this
        // leaf's side record until Save has written its reference. The side record takes the
        // place of the spatial part's, with what that one holds.
        auto* information = new zuRttiCustomBaseGeometryInformation;
        if (const auto* spatial = dynamic_cast<const zuRttiCustomSpatialInformation*>(stream.getInformations(this))) {
            information->legacyVolume = spatial->legacyVolume;
            information->globalStateCount = spatial->globalStateCount;
        }
        information->modelVolume = mModelBound.createLegacyVolume();
        stream.registerInformations(this, information);
        if (information->modelVolume)
            information->modelVolume->Register(stream);
    } else {
        if (mMaterialState)
            mMaterialState->Register(stream);
        if (mTextureState)
            mTextureState->Register(stream);
    }
    zuBaseGeometryRegister(stream);
    return true;
}

int zuBaseGeometry::GetDiskUsed(const zuBaseStream& stream) const
{
    int size = stream.GetVersion() >= zuStreamVersion(5, 25) ? zuRenderableSpatial::GetDiskUsed(stream)
                                                             : zuSpatial::GetDiskUsed(stream);
    if (stream.GetVersion() >= zuStreamVersion(6, 6))
        size += mModelBound.getDiskUsed(stream, true) + STATES_AND_FLAGS_SIZE;
    else
        size += LEGACY_MODEL_BOUND_SIZE;
    return size + zuBaseGeometryGetDiskUsed(stream);
}

void zuBaseGeometry::Save(zuBaseStream& stream) const
{
    if (stream.GetVersion() >= zuStreamVersion(5, 25))
        zuRenderableSpatial::Save(stream);
    else
        zuSpatial::Save(stream);
    if (stream.GetVersion() >= zuStreamVersion(6, 6)) {
        mModelBound.writeToStream(stream);
        stream.Write(static_cast<const zuRttiInterface*>(mMaterialState.get()));
        stream.Write(static_cast<const zuRttiInterface*>(mTextureState.get()));
        stream.Write(mGeometryFlags[0]);
        stream.Write(mGeometryFlags[1]);
    } else {
        const auto* information = dynamic_cast<const zuRttiCustomBaseGeometryInformation*>(stream.getInformations(this));
        stream.Write(information ? static_cast<const zuRttiInterface*>(information->modelVolume.get()) : nullptr);
    }
    zuBaseGeometrySave(stream);
}

void zuBaseGeometry::Load(zuBaseStream& stream, zuLink* link)
{
    if (stream.GetVersion() >= zuStreamVersion(5, 25))
        zuRenderableSpatial::Load(stream, link);
    else
        zuSpatial::Load(stream, link);
    if (stream.GetVersion() >= zuStreamVersion(6, 6)) {
        // The spatial flag "bound from a box" follows the model bound, read last.
        setFlag(FLAG_BOUND_FROM_BOX, mModelBound.readFromStream(stream));
        stream.ReadLink(link);
        stream.ReadLink(link);
        stream.Read(mGeometryFlags[0]);
        stream.Read(mGeometryFlags[1]);
    } else {
        stream.ReadLink(link);
    }
    zuBaseGeometryLoad(stream, link);
}

void zuBaseGeometry::Link(zuBaseStream& stream, zuLink* link)
{
    if (stream.GetVersion() >= zuStreamVersion(5, 25))
        zuRenderableSpatial::Link(stream, link);
    else
        zuSpatial::Link(stream, link);
    if (stream.GetVersion() >= zuStreamVersion(6, 6)) {
        mMaterialState = asMaterialState(stream.getFromMapAndRemove(link->getLinkID()));
        mTextureState = asTextureState(stream.getFromMapAndRemove(link->getLinkID()));
    } else {
        zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
        if (object && object->IsDerived(zuLegacyBoundingVolume::TYPE)) {
            const auto* legacy = static_cast<const zuLegacyBoundingVolume*>(object);
            mModelBound.assign(legacy);
            setFlag(FLAG_BOUND_FROM_BOX, legacy->IsDerived(zuLegacyBoxBV::TYPE));
        }
    }
    zuBaseGeometryLink(stream, link);
}

bool zuBaseGeometry::PostLink()
{
    const bool result = zuRenderableSpatial::PostLink();
    updateObjectDescription();
    return result;
}

bool zuBaseGeometry::Equals(const zuRttiInterface* other) const
{
    if (!zuRenderableSpatial::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const auto* geometry = static_cast<const zuBaseGeometry*>(other);
    return mModeByte == geometry->mModeByte
        && std::memcmp(static_cast<const float*>(GetWorldMatrix()), static_cast<const float*>(geometry->GetWorldMatrix()),
                       16 * sizeof(float)) == 0
        && mGeometryFlags[0] == geometry->mGeometryFlags[0] && mGeometryFlags[1] == geometry->mGeometryFlags[1];
}

bool zuBaseGeometry::Clone(zuRttiInterface*& target) const
{
    if (!target || !target->IsDerived(TYPE) || !zuRenderableSpatial::Clone(target))
        return false;
    if (target == this)
        return true;
    auto* geometry = static_cast<zuBaseGeometry*>(target);
    geometry->mVertices = mVertices;
    geometry->mIndices = mIndices;
    geometry->mModelBound = mModelBound;
    geometry->mTextureState = mTextureState;
    geometry->mMaterialState = mMaterialState;
    geometry->mModeByte = mModeByte;
    geometry->mGeometryFlags[0] = mGeometryFlags[0];
    geometry->mGeometryFlags[1] = mGeometryFlags[1];
    geometry->updateObjectDescription();
    return true;
}

void zuBaseGeometry::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuRenderableSpatial::DescribeFields(object, visitor);
    const auto& geometry = static_cast<const zuBaseGeometry&>(object);
    geometry.mModelBound.DescribeFields("model bound", visitor);
    visitor.BeginGroup("states");
    visitor.Reference("material", geometry.mMaterialState.get());
    visitor.Reference("texture", geometry.mTextureState.get());
    visitor.EndGroup();
    visitor.List("geometry flags", 2, [&](int64_t i) { visitor.Flag(nullptr, geometry.mGeometryFlags[i]); });
    visitor.BeginGroup("buffers");
    visitor.Reference("vertices", geometry.mVertices.get());
    visitor.Reference("indices", geometry.mIndices.get());
    visitor.EndGroup();
}

} // namespace zu
