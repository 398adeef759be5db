#pragma once

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/states/zuCamera.h>

namespace zu {

// A node that turns about its model y axis toward a camera, so that its model z axis
// points at the camera as seen from above (its children, labels or sprites, face the
// viewer). The turn is recomputed by every update of the node; a camera that moves asks
// for an update of the billboard. Without a camera the node is a plain node.
//
// Persisted after the node part: a reference to the camera.
class zuBillboardNode : public zuNode {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuBillboardNode>(stream); }
    static void RegisterFactory() { RegisterClass<zuBillboardNode>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    zuBillboardNode();
    explicit zuBillboardNode(zuCamera* camera);
    ~zuBillboardNode() override;

    void SetCamera(zuCamera* camera) { mCamera = camera; }
    zuCamera* GetCamera() const { return mCamera; }

    // This node's world transformation; with a camera, the camera's location is taken
    // into the node's model space (x, z), and the world rotation is multiplied on the
    // right by the rotation of atan2(x, z) about the model y axis. Then UpdateGS(false) on
    // each child, which inherits the turned frame.
    void UpdateWorldData() override;
    // The same, with UpdateGS_Flags() on the children.
    void UpdateWorldData_Flags() override;

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // A reference that is not a camera leaves the node without one.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The node part; the other object must be a billboard too. Cameras are not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // The node part and the camera (shared: the billboard only reads it) into a billboard
    // (created for an empty target).
    bool Clone(zuRttiInterface*& target) const override;

private:
    // Turns the world transformation toward the camera.
    void faceCamera();

    zuPointer<zuCamera> mCamera;
};

} // namespace zu
