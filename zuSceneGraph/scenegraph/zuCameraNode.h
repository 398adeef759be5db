#pragma once

#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/states/zuCamera.h>

namespace zu {

// A node that carries a camera along with its world frame. After each update the camera
// stands at the node's world translation and looks along an axis of the node's world
// matrix that the facing convention names; giving the node a camera does the reverse for
// the local frame, so that a root camera node leaves the camera where it was.
//
// Persisted after the node part: a reference to the camera; from 5.14 on the facing
// convention (int). A node read from an older stream keeps the convention it was made
// with (the default one).
class zuCameraNode : public zuNode {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuCameraNode>(stream); }
    static void RegisterFactory() { RegisterClass<zuCameraNode>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Which axes of the node's frame the camera's axes are. A value read from a file is
    // kept as read; anything but 1 acts as 0.
    enum FacingConvention : int {
        // D, U, R are the node's local x, y, z axes.
        FACING_ALONG_X = 0,
        // The camera looks down the node's negative z axis, up y, right x (the usual
        // convention of modelling tools).
        FACING_ALONG_NEGATIVE_Z = 1
    };
    // The mark of a camera node whose camera frame is pending (with UPDATE_WORLD_DATA).
    static constexpr uint32_t UPDATE_CAMERA = 0x04;

    // No camera, convention 0.
    zuCameraNode();
    // References `camera` and takes its frame as the local frame (see SetCamera). Every
    // camera node starts marked with UPDATE_WORLD_DATA | UPDATE_CAMERA in both masks.
    explicit zuCameraNode(zuCamera* camera, FacingConvention facing = FACING_ALONG_X);
    ~zuCameraNode() override;

    // Replaces the camera. A camera's location becomes the local translation and its
    // axes the local rotation's columns: (D, U, R) in convention 0, (R, U, -D) in
    // convention 1 (a rotation-scale, non-identity local transformation); the node is then
    // marked UPDATE_WORLD_DATA | UPDATE_CAMERA up to the root. Null leaves the local frame
    // and the masks as they are.
    void SetCamera(zuCamera* camera);
    zuCamera* GetCamera() const { return mCamera; }
    FacingConvention GetFacingConvention() const { return mFacing; }

    // The node's update, then the camera takes the world frame: location = world
    // translation; convention 0: D, U, R = columns 0, 1, 2 of the world matrix;
    // convention 1: D = -column 2, U = column 1, R = column 0.
    void UpdateWorldData() override;
    void UpdateWorldData_Flags() override;

    const zuRtti& GetType() const override { return TYPE; }
    bool Register(zuBaseStream& stream) const override;
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // A reference that is not a camera leaves the node without one; the local frame is
    // kept as it was read.
    void Link(zuBaseStream& stream, zuLink* link) override;
    // The node part; the other object must be a camera node too. Cameras and conventions
    // are not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // The node part and the convention into a camera node (created for an empty target).
    // The camera is not shared: a camera follows the frame of one node.
    bool Clone(zuRttiInterface*& target) const override;

private:
    // The camera's location and axes from the world transformation.
    void placeCamera();

    zuPointer<zuCamera> mCamera;
    FacingConvention mFacing = FACING_ALONG_X;
};

} // namespace zu
