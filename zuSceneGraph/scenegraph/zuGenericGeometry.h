#pragma once

#include <zuSceneGraph/scenegraph/zuGeometry.h>

#include <string>

namespace zu {

// A geometry drawn by a shader variant the application chooses: besides what zuGeometry
// composes from the states, it carries shader defines and a key of its own, appended to
// the composed ones (for effects the states cannot express: a section colour, a
// highlight, ...).
//
// Record after the geometry's: the defines, then the key (strings).
class zuGenericGeometry : public zuGeometry {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuGenericGeometry>(stream); }
    static void RegisterFactory()
    {
        RegisterClass<zuGenericGeometry>();
    }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuGenericGeometry() = default;
    // References both buffers, then the model bound from the vertices.
    zuGenericGeometry(zuVertexBuffer* vertices, zuIndexBuffer* indices) : zuGeometry(vertices, indices) {}
    ~zuGenericGeometry() override;

    const std::string& getUserDefines() const { return mUserDefines; }
    const std::string& getUserKey() const { return mUserKey; }
    // Sets both and recomposes the description.
    void setUserShader(const std::string& defines, const std::string& key);

    // zuGeometry's composition, then the application's defines and key.
    void updateObjectDescription() override;

    // The hook chain: zuGeometry's, then the two strings.
    int zuGeometryGetDiskUsed(const zuBaseStream& stream) const override;
    void zuGeometrySave(zuBaseStream& stream) const override;
    void zuBaseGeometryLoad(zuBaseStream& stream, zuLink* link) override;

    const zuRtti& GetType() const override { return TYPE; }
    // A zuGenericGeometry with the same defines and key.
    bool Equals(const zuRttiInterface* other) const override;
    // A zuGenericGeometry is created for an empty target; the strings are copied.
    bool Clone(zuRttiInterface*& target) const override;

private:
    std::string mUserDefines;
    std::string mUserKey;
};

} // namespace zu
