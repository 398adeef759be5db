#include "support/zuTestLeaf.h"

namespace zu::test {

const zuRtti zuTestLeaf::TYPE("zuTest.zuTestLeaf", &zuRenderableSpatial::TYPE);

void zuTestLeaf::setGlobalState(zuGlobalState* state)
{
    if (!state)
        return;
    const int type = state->GetStateType();
    if (type >= 0 && type < zuGlobalState::MAX_STATE_TYPE)
        mStates[type] = state;
}

zuGlobalState* zuTestLeaf::getGlobalState(int i) const
{
    for (const auto& state : mStates)
        if (state && i-- == 0)
            return state;
    return nullptr;
}

int zuTestLeaf::getGlobalStateQuantity() const
{
    int quantity = 0;
    for (const auto& state : mStates)
        if (state)
            ++quantity;
    return quantity;
}

int zuTestLeaf::GetDiskUsed(const zuBaseStream& stream) const
{
    return zuRenderableSpatial::GetDiskUsed(stream) + mModelBound.getDiskUsed(stream, true);
}

void zuTestLeaf::Save(zuBaseStream& stream) const
{
    zuRenderableSpatial::Save(stream);
    mModelBound.writeToStream(stream);
}

void zuTestLeaf::Load(zuBaseStream& stream, zuLink* link)
{
    zuRenderableSpatial::Load(stream, link);
    mModelBound.readFromStream(stream);
}

bool zuTestLeaf::Equals(const zuRttiInterface* other) const
{
    return zuRenderableSpatial::Equals(other) && other->IsDerived(TYPE)
        && mModelBound == static_cast<const zuTestLeaf*>(other)->mModelBound;
}

bool zuTestLeaf::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuTestLeaf;
    if (!target->IsDerived(TYPE) || !zuRenderableSpatial::Clone(target))
        return false;
    static_cast<zuTestLeaf*>(target)->mModelBound = mModelBound;
    return true;
}

} // namespace zu::test
