#pragma once

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/states/zuLight.h>

namespace zu {

// A node that carries a light along with its world frame: after each update the light
// stands at the node's world translation, and its axes D, U, R are the columns 0, 1, 2 of
// the node's world matrix. Giving the node a light does the reverse for the local frame:
// the light's location becomes the local translation and its axes the columns of the
// local rotation, so that a root light node leaves the light where it was.
//
// Persisted after the node part: a reference to the light.
class zuLightNode : public zuNode {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuLightNode>(stream); }
    static void RegisterFactory() { RegisterClass<zuLightNode>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // No light; the local frame is the identity.
    zuLightNode();
    // References `light` and takes its frame as the local frame (see SetLight).
    explicit zuLightNode(zuLight* light);
    ~zuLightNode() override;

    // Replaces the light. A light's location becomes the local translation and the matrix
    // with columns D, U, R the local rotation (a rotation-scale, non-identity local
    // transformation); null leaves the local frame as it is.
    void SetLight(zuLight* light);
    zuLight* GetLight() const { return mLight; }

    // The node's update, then the light takes the world frame.
    void UpdateWorldData() override;
    // The same in the flag-driven pass, so that a light node moves its light in either.
    void UpdateWorldData_Flags() override;

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // A reference that is not a light leaves the node without one; the local frame is
    // kept as it was read.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The node part; the other object must be a light node too. The lights are not
    // compared.
    bool Equals(const zuRttiInterface* other) const override;
    // The node part into a light node (created for an empty target). The light is not
    // shared: a light follows the frame of one node.
    bool Clone(zuRttiInterface*& target) const override;

private:
    // The light's location and axes from the world transformation.
    void placeLight();

    zuPointer<zuLight> mLight;
};

} // namespace zu
