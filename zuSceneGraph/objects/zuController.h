#pragma once

#include <zuSceneGraph/objects/zuNamedObject.h>

#include <Wm4/Wm4Math.h>

#include <limits>

namespace zu {

// A persistable object that changes another object over time. The application updates
// the controllers an object carries (zuObject::UpdateControllers); each controller maps
// the application time to its own control time and, when it is active and the time moved,
// changes its object.
//
// Time mapping: t = appTime * frequency + phase, then
// - RT_CLAMP: t held within [minTime, maxTime];
// - RT_WRAP: t taken modulo the interval, so the time starts again at minTime;
// - RT_CYCLE (and any other value): forwards through even periods, backwards through odd
//   ones.
// An interval that is empty or reversed (maxTime <= minTime) maps every time to minTime,
// except for RT_CLAMP.
//
// The controlled object is not owned: the object owns its controllers and hands itself
// over when it attaches one (AttachController calls SetObject). A controller carries a
// name but no controllers of its own: every controller operation does nothing.
//
// Persisted after the object part: repeatType (int); minTime, maxTime, phase, frequency
// (doubles); active (bool); the object reference: 45 bytes at every version.
// lastAppTime is not persisted.
class zuController : public zuNamedObject {
public:
    static const zuRtti TYPE;
    // The time mapping, whether it runs, and the controlled object.
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    // Values of repeatType. The field is an int: a value read from a file that names no
    // type runs as RT_CYCLE.
    enum RepeatType : int {
        RT_CLAMP = 0,
        RT_WRAP = 1,
        RT_CYCLE = 2
    };

    // The application time passed to Update to force an update: minus the largest float,
    // compared with the double time.
    static constexpr double FORCE_UPDATE_TIME = -static_cast<double>(Wm4::Math<float>::MAX_REAL);
    // lastAppTime before the first update: minus the largest double, so that the first
    // update with any ordinary time runs.
    static constexpr double NEVER_UPDATED = -std::numeric_limits<double>::max();

    ~zuController() override = default;

    // The control time of an application time.
    double GetControlTime(double appTime) const;
    // The update gate: false when inactive or when appTime is the time of the last update;
    // otherwise records appTime and answers true. FORCE_UPDATE_TIME always passes (unless
    // inactive). Derived controllers apply their change when this answers true.
    virtual bool Update(double appTime);
    // The controlled object (not owned); null detaches. Called by the object's
    // AttachController, SetController and DetachController.
    virtual void SetObject(zuObject* object) { mObject = object; }
    zuObject* GetObject() const { return mObject; }
    double GetLastAppTime() const { return mLastAppTime; }

    // A controller carries no controllers: nothing is attached, none is reported.
    int GetControllerQuantity() const override { return 0; }
    zuController* GetController(int) const override { return nullptr; }
    void SetControllerQuantity(int) override {}
    void SetController(int, zuController*) override {}
    bool AttachController(zuController*) override { return false; }
    void DetachController(zuController*) override {}
    void DetachAllControllers() override {}

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    void Load(zuBaseStream& stream, zuLink* link) override;
    // Resolves the object reference, unless an object that holds this controller has
    // already handed itself over during this load (that object wins).
    void Link(zuBaseStream& stream, zuLink* link) override;
    // Drops an object that does not hold this controller: only a holder tells its
    // controllers when it goes away, so any other object could leave a dangling pointer.
    bool PostLink() override;
    // The object part, repeatType exactly, minTime and maxTime within 1e-6, phase and
    // frequency exactly, and active. The object and lastAppTime are not compared.
    bool Equals(const zuRttiInterface* other) const override;
    // Into an existing controller: the time mapping and active. The target keeps its
    // object (a copy controls what it is attached to) and its next update runs.
    bool Clone(zuRttiInterface*& target) const override;

    int repeatType = RT_CLAMP;
    double minTime = 0.0;
    double maxTime = 0.0;
    double phase = 0.0;
    double frequency = 1.0;
    // An inactive controller never updates, not even for FORCE_UPDATE_TIME.
    bool active = true;

protected:
    zuController() = default;
    // Copies go through Clone, which leaves the controlled object alone.
    zuController(const zuController&) = delete;
    zuController& operator=(const zuController&) = delete;

private:
    zuObject* mObject = nullptr;
    double mLastAppTime = NEVER_UPDATED;
};

} // namespace zu
