#pragma once

#include <zuSceneGraph/objects/zuObject.h>

namespace zu {

// The base of small, numerous objects (arrays, buffers, states, settings) that carry no
// name and no controllers: setting either does nothing and none is ever reported.
class zuUnnamedObject : public zuObject {
public:
    // Nothing: the object level's name and controllers are not there.
    static void DescribeFields(const zuRttiInterface&, zuFieldVisitor&) {}

    int GetControllerQuantity() const override { return 0; }
    zuController* GetController(int) const override { return nullptr; }
    void SetControllerQuantity(int) override {}
    void SetController(int, zuController*) override {}
    bool AttachController(zuController*) override { return false; }
    void DetachController(zuController*) override {}
    void DetachAllControllers() override {}
    void SetName(const std::string&) override {}
    const std::string& GetName() const override { return zuEmptyName(); }

protected:
    zuUnnamedObject() = default;
    zuUnnamedObject(const zuUnnamedObject& other) = default;
    zuUnnamedObject& operator=(const zuUnnamedObject&) = default;
};

} // namespace zu
