#pragma once

#include <zuSceneGraph/objects/zuNamedObject.h>

namespace zu {

// A persistable object that changes another object over time. Controllers carry a name
// but no controllers of their own.
class zuController : public zuNamedObject {
public:
    static const zuRtti TYPE;

    const zuRtti& GetType() const override { return TYPE; }
    bool AttachController(zuController*) override { return false; }

    // True when the controller should apply its change for this application time.
    virtual bool Update(double appTime);
    // The controlled object (not owned).
    virtual void SetObject(zuObject* object) { mObject = object; }
    zuObject* GetObject() const { return mObject; }

protected:
    zuController() = default;

private:
    zuObject* mObject = nullptr;
};

} // namespace zu
