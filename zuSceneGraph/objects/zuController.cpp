#include <zuSceneGraph/objects/zuController.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cmath>

namespace zu {

const zuRtti zuController::TYPE("zuCore.zuController", &zuObject::TYPE);

namespace {

// Both interval ends compare within this tolerance.
bool nearlyEqual(double a, double b)
{
    return std::fabs(a - b) < 1e-6;
}

} // namespace

double zuController::GetControlTime(double appTime) const
{
    const double t = appTime * frequency + phase;
    if (repeatType == RT_CLAMP) {
        if (minTime > t)
            return minTime;
        return t < maxTime ? t : maxTime;
    }

    const double range = maxTime - minTime;
    if (range <= 0.0)
        return minTime;
    const double x = (t - minTime) / range;
    const double f = std::floor(x);
    if (repeatType == RT_WRAP)
        return minTime + (x - f) * range;

    // RT_CYCLE and any unknown type: odd periods run backwards. The parity is taken from
    // the double itself, so that a time far beyond the int range cannot overflow a
    // conversion; within that range it is the parity of f as an integer.
    if (std::fmod(f, 2.0) != 0.0)
        return maxTime - (x - f) * range;
    return minTime + (x - f) * range;
}

bool zuController::Update(double appTime)
{
    if (!active)
        return false;
    if (appTime == FORCE_UPDATE_TIME) {
        mLastAppTime = appTime;
        return true;
    }
    if (appTime == mLastAppTime)
        return false;
    mLastAppTime = appTime;
    return true;
}

// ---------------------------------------------------------------------------------------
// Persistence

int zuController::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuNamedObject::GetDiskUsed(stream) + 4 + 4 * 8 + 1 + 8;
}

void zuController::Save(zuBaseStream& stream) const
{
    zuNamedObject::Save(stream);
    stream.Write(repeatType);
    stream.Write(minTime);
    stream.Write(maxTime);
    stream.Write(phase);
    stream.Write(frequency);
    stream.Write(active);
    stream.Write(static_cast<const zuRttiInterface*>(mObject));
}

void zuController::Load(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Load(stream, link);
    stream.Read(repeatType);
    stream.Read(minTime);
    stream.Read(maxTime);
    stream.Read(phase);
    stream.Read(frequency);
    stream.Read(active);
    stream.ReadLink(link);
}

void zuController::Link(zuBaseStream& stream, zuLink* link)
{
    zuNamedObject::Link(stream, link);
    zuRttiInterface* object = stream.getFromMapAndRemove(link->getLinkID());
    if (!mObject)
        SetObject(object && object->IsDerived(zuObject::TYPE) ? static_cast<zuObject*>(object) : nullptr);
}

bool zuController::PostLink()
{
    const bool result = zuNamedObject::PostLink();
    if (mObject) {
        bool held = false;
        const int quantity = mObject->GetControllerQuantity();
        for (int i = 0; i < quantity && !held; ++i)
            held = mObject->GetController(i) == this;
        if (!held)
            SetObject(nullptr);
    }
    return result;
}

bool zuController::Equals(const zuRttiInterface* other) const
{
    if (!zuNamedObject::Equals(other) || !other->IsDerived(TYPE))
        return false;
    const zuController* controller = static_cast<const zuController*>(other);
    return repeatType == controller->repeatType && nearlyEqual(minTime, controller->minTime)
        && nearlyEqual(maxTime, controller->maxTime) && phase == controller->phase
        && frequency == controller->frequency && active == controller->active;
}

bool zuController::Clone(zuRttiInterface*& target) const
{
    if (!target || !target->IsDerived(TYPE) || !zuNamedObject::Clone(target))
        return false;
    zuController* controller = static_cast<zuController*>(target);
    controller->repeatType = repeatType;
    controller->minTime = minTime;
    controller->maxTime = maxTime;
    controller->phase = phase;
    controller->frequency = frequency;
    controller->active = active;
    // The copy's mapping may differ from what it last ran with: its next update runs.
    controller->mLastAppTime = NEVER_UPDATED;
    return true;
}

namespace {

const char* const repeatTypeNames[] = {"RT_CLAMP", "RT_WRAP", "RT_CYCLE"};

} // namespace

void zuController::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuNamedObject::DescribeFields(object, visitor);
    const auto& controller = static_cast<const zuController&>(object);
    visitor.BeginGroup("time");
    visitor.EnumeratorOf("repeat", controller.repeatType, repeatTypeNames);
    visitor.Number("min", controller.minTime);
    visitor.Number("max", controller.maxTime);
    visitor.Number("phase", controller.phase);
    visitor.Number("frequency", controller.frequency);
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Flag("active", controller.active);
    visitor.Reference("object", controller.mObject);
    visitor.EndGroup();
}

} // namespace zu
