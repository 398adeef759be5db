#pragma once

#include <zuSceneGraph/scenegraph/zuTriMesh.h>

#include <cstdint>
#include <string>

namespace zu {

// The triangle mesh as the renderer draws it with its own states: it describes its
// material and texture channels to the renderer, as description flags and as the shader
// defines and short key of the shader variant that draws them, and classes its
// transparency. It keeps a flags word of its own, whose low four bits are 4 when made.
//
// The description is composed from the leaf's material state (present; opacity below 1)
// and from the channel roles of the textures in its texture state, whenever a state is set,
// after a load, and when the application calls updateObjectDescription after changing a
// state itself. Each role present sets its flag once; a diffuse map adds the define
// "#define DIFFUSE_MAP\n" and the key "Diff", a bump map "#define BUMP_MAP\n" and "Bump",
// in that order whatever the order of the textures.
//
// Record after the triangle mesh's: the flags word (unsigned int).
class zuGeometry : public zuTriMesh {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuGeometry>(stream); }
    static void RegisterFactory() { RegisterClass<zuGeometry>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // The description flags this class composes; the others belong to the application.
    static constexpr uint32_t DESCRIPTION_MATERIAL = 0x0001;
    static constexpr uint32_t DESCRIPTION_DIFFUSE_MAP = 0x0002;
    static constexpr uint32_t DESCRIPTION_BUMP_MAP = 0x0004;
    static constexpr uint32_t DESCRIPTION_SPECULAR_MAP = 0x0008;
    static constexpr uint32_t DESCRIPTION_EMISSIVE_MAP = 0x0010;
    static constexpr uint32_t DESCRIPTION_REFLECTION_MAP = 0x0020;
    // The material lets light through (opacity below 1).
    static constexpr uint32_t DESCRIPTION_TRANSLUCENT = 0x4000;
    static constexpr uint32_t DESCRIPTION_OPACITY_MAP = 0x10000;
    static constexpr uint32_t DESCRIPTION_COMPOSED = DESCRIPTION_MATERIAL | DESCRIPTION_DIFFUSE_MAP
        | DESCRIPTION_BUMP_MAP | DESCRIPTION_SPECULAR_MAP | DESCRIPTION_EMISSIVE_MAP | DESCRIPTION_REFLECTION_MAP
        | DESCRIPTION_TRANSLUCENT | DESCRIPTION_OPACITY_MAP;
    // The flags word of a new geometry; getMeshTransparency reads its bit 0x4.
    static constexpr uint32_t DEFAULT_FLAGS = 0x4;
    static constexpr uint32_t FLAG_TRANSPARENCY_CLASSES = 0x4;

    zuGeometry() = default;
    // References both buffers, then the model bound from the vertices.
    zuGeometry(zuVertexBuffer* vertices, zuIndexBuffer* indices) : zuTriMesh(vertices, indices) {}
    ~zuGeometry() override;

    uint32_t getFlags() const { return mFlags; }
    void setFlags(uint32_t flags) { mFlags = flags; }
    // The shader defines and key of the last composition.
    const std::string& getShaderDefines() const { return mShaderDefines; }
    const std::string& getShaderKey() const { return mShaderKey; }

    // The renderer's transparency class, from the description flags and bit 0x4 of the
    // flags word: without DESCRIPTION_TRANSLUCENT, 3 with an opacity map and 0 without; with
    // it, 2 when bit 0x4 is clear, else 2 with an opacity map and 1 without.
    int getMeshTransparency() const;

    // zuDescriptionInterface: recomposes the flags of DESCRIPTION_COMPOSED, the defines and
    // the key from the current states.
    void updateObjectDescription() override;

    // The hook chain: zuTriMesh's, then this class's; loading reads the flags word after
    // the base hooks.
    void zuTriMeshRegister(zuBaseStream& stream) const override;
    int zuTriMeshGetDiskUsed(const zuBaseStream& stream) const override;
    void zuTriMeshSave(zuBaseStream& stream) const override;
    void zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link) override;
    // This class's own hooks: nothing to register; the flags word, 4 bytes.
    virtual void zuGeometryRegister(zuBaseStream& stream) const;
    virtual int zuGeometryGetDiskUsed(const zuBaseStream& stream) const;
    virtual void zuGeometrySave(zuBaseStream& stream) const;

    const zuRtti& GetType() const override { return TYPE; }
    // A zuGeometry with the same flags word.
    bool Equals(const zuRttiInterface* other) const override;
    // A zuGeometry is created for an empty target; the flags word is copied.
    bool Clone(zuRttiInterface*& target) const override;

protected:
    // For derived descriptions: appended to the composed defines and key.
    void appendShaderDescription(const std::string& defines, const std::string& key)
    {
        mShaderDefines += defines;
        mShaderKey += key;
    }

private:
    uint32_t mFlags = DEFAULT_FLAGS;
    std::string mShaderDefines;
    std::string mShaderKey;
};

} // namespace zu
