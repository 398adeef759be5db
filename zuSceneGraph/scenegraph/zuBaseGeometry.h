#pragma once

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuRenderableSpatial.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <Wm4/Wm4Matrix4.h>

#include <cstdint>
#include <string>
#include <vector>

namespace zu {

class zuMaterialState;
class zuTextureState;

// The common base of the drawable leaves: it binds a vertex buffer and an index buffer
// (both shared, either may be null), keeps the bound of the vertex positions in model
// space, the world transformation as a matrix for the renderer, and the two render states
// a leaf carries itself, its material and its texture state. It inserts itself into the
// culler's visible set.
//
// The world matrix is in the row-vector layout of zuGenericTransformation::GetHomogeneous:
// row j is column j of the linear part (R times scale j for a rotation-scale value), the
// fourth column of rows 0-2 is 0 and row 3 is (T, 1). The update passes refresh it, and a
// load computes it from the loaded world transformation.
//
// Record after the spatial part (from 5.25 on the renderable part, the same fields): before
// 6.6 a reference to a legacy volume made from the model bound; from 6.6 the model bound
// in the bound's form, references to the material and the texture state, and the two
// geometry flags as bytes. Then the class hooks: here the references to the vertex and the
// index buffer; each derived class appends its fields through its own hook. Derived classes
// persist through the hooks and do not override Register, GetDiskUsed, Save, Load or Link.
class zuBaseGeometry : public zuRenderableSpatial {
public:
    static const zuRtti TYPE;
    // The model bound, the states, the two flags and the buffers.
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Bits that a leaf reports from setDirtyDown: going down, its bound (0x40) and 0x2000;
    // otherwise its world data (0x01) and 0x08.
    static constexpr uint32_t DIRTY_DOWN_BITS = 0x2040;
    static constexpr uint32_t DIRTY_UP_BITS = 0x09;
    // The mode byte of every new geometry.
    static constexpr uint8_t DEFAULT_MODE = 4;

    ~zuBaseGeometry() override;

    zuVertexBuffer* GetVertices() const { return mVertices; }
    zuIndexBuffer* GetIndices() const { return mIndices; }
    // Replaces the buffers; the model bound is left alone (UpdateModelBound recomputes it).
    void SetVertices(zuVertexBuffer* vertices) { mVertices = vertices; }
    void SetIndices(zuIndexBuffer* indices) { mIndices = indices; }
    const zuBoundingVolume& GetModelBound() const { return mModelBound; }
    void SetModelBound(const zuBoundingVolume& bound) { mModelBound = bound; }
    // The world transformation in the renderer's layout (GetHomogeneous), made when asked:
    // the update pass then writes no matrix per leaf, and the matrix never lags behind the
    // transformation it comes from.
    Wm4::Matrix4<float> GetWorldMatrix() const
    {
        Wm4::Matrix4<float> matrix;
        GetWorldTransform().GetHomogeneous(matrix);
        return matrix;
    }
    zuMaterialState* GetMaterialState() const;
    zuTextureState* GetTextureState() const;
    // A mode byte and two flags (i = 0 or 1; other indices read false and write nothing)
    // kept for the renderer: the library copies and compares them, persists the flags, and
    // gives them no meaning of its own.
    uint8_t GetModeByte() const { return mModeByte; }
    void SetModeByte(uint8_t mode) { mModeByte = mode; }
    bool GetGeometryFlag(int i) const { return i >= 0 && i < 2 && mGeometryFlags[i]; }
    void SetGeometryFlag(int i, bool value)
    {
        if (i >= 0 && i < 2)
            mGeometryFlags[i] = value;
    }

    // The model bound from the vertex positions (zuBoundingVolume::computeFromDataBox).
    void UpdateModelBound();
    // The model data after the vertices changed: UpdateModelBound; then, with `invert`,
    // UpdateModelInvert(channel) alone; otherwise UpdateModelNormals when `normals` is set
    // and UpdateModelTangentSpace(channel) when `channel` >= -1 (below -1 skips it).
    virtual void UpdateMS(bool normals, bool invert, int channel);
    // The three model updates: nothing in this base. `channel` names the texture-coordinate
    // unit that a derived class builds the tangent space from (or turns with the mesh).
    virtual void UpdateModelNormals();
    virtual void UpdateModelTangentSpace(int channel);
    virtual void UpdateModelInvert(int channel);

    // zuSpatial
    // This object (name, controllers), then the vertex buffer, then the index buffer.
    zuObject* GetObjectByName(const std::string& name) override;
    void GetAllObjectsByName(const std::string& name, std::vector<zuObject*>& objects) override;
    zuObject* GetObjectByID(unsigned int id) override;
    // Inserts this leaf.
    void GetVisibleSet(zuCuller& culler, bool noCull, bool flag) override;
    // Going down ORs DIRTY_DOWN_BITS into both masks, otherwise DIRTY_UP_BITS; returns the
    // dirty mask.
    uint32_t setDirtyDown(bool down) override;
    // The model bound mapped by the world transformation. An invalid model bound makes the
    // world bound invalid too, so that a leaf whose vertices went away keeps no stale bound.
    void UpdateWorldBound() override;
    // A material state (type 2) or a texture state (type 7) replaces the leaf's own; null
    // and the other types are ignored, as they live on the render passes.
    void setGlobalState(zuGlobalState* state) override;
    // One-based: with a material state, 1 is the material and 2 the texture state; without
    // one, 1 is the texture state. 0 and every other index give null.
    zuGlobalState* getGlobalState(int i) const override;
    // The number of states held, 0 to 2.
    int getGlobalStateQuantity() const override;

    // zuRenderableSpatial
    // Unless `onlySecond`, flag RENDERABLE_FIRST becomes the first readiness test of the
    // buffers (isReadyForUpload); flag RENDERABLE_SECOND always becomes the second
    // (isReadyForDraw). The vertex buffer is tested, then the index buffer; a missing vertex
    // buffer fails and a missing index buffer passes (the vertices are drawn in order).
    // Returns the second result: whether the renderer holds what it draws.
    bool checkRenderable(bool onlySecond) override;
    // The vertex buffer and the index buffer (null without one) when there is a vertex
    // buffer; then for each texture of the texture state its own resources, or the
    // texture's resource when it adds none.
    void getResources(std::vector<zuDynamicLoadingResource*>& resources) const override;

    // The class hooks of the record: each derived class calls its base's first.
    virtual void zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link);
    virtual void zuBaseGeometryLink(zuBaseStream& stream, zuLink* link);
    virtual void zuBaseGeometrySave(zuBaseStream& stream) const;
    virtual int zuBaseGeometryGetDiskUsed(const zuBaseStream& stream) const;
    virtual void zuBaseGeometryRegister(zuBaseStream& stream) const;

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // Resolves the states and buffers; a reference of another type leaves its slot null.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The renderable part's, then the description from the loaded states.
    bool PostLink() override;
    // A geometry whose renderable part is equal, with the same mode byte, the same world
    // matrix bit for bit and the same geometry flags; buffers and states are not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // Into a geometry target: the renderable part, the buffers and states (shared, as in a
    // stream), the model bound, the world matrix, the mode byte and the flags.
    bool Clone(zuRttiInterface*& target) const override;

protected:
    // No buffers, an invalid model bound, the identity world matrix.
    zuBaseGeometry();
    // References both buffers, then the model bound from the vertices.
    zuBaseGeometry(zuVertexBuffer* vertices, zuIndexBuffer* indices);

private:
    // The bytes first, in the padding at the end of the renderable part, and the bound after
    // the pointers: a leaf is then 8 bytes smaller (leaves are many).
    uint8_t mModeByte = DEFAULT_MODE;
    bool mGeometryFlags[2] = {false, false};
    zuPointer<zuVertexBuffer> mVertices;
    zuPointer<zuIndexBuffer> mIndices;
    zuPointer<zuGlobalState> mTextureState;   // a zuTextureState
    zuPointer<zuGlobalState> mMaterialState;  // a zuMaterialState
    zuBoundingVolume mModelBound;
};

} // namespace zu
