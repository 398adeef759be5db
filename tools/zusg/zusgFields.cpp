#include "zusgFields.h"

#include <zuSceneGraph/objects/zuRtti.h>

namespace zusg {

namespace {

// The families of printers. A new family adds its registration function here.
void (*const families[])(FieldRegistry&) = {
    addArrayFields,
    addSettingsFields,
    addStateFields,
    addCameraLightFields,
};

} // namespace

void FieldRegistry::add(const zu::zuRtti& type, FieldPrinter print)
{
    mEntries[type.GetName()] = Entry{&type, print};
}

const FieldRegistry::Entry* FieldRegistry::find(const std::string& typeName) const
{
    const auto found = mEntries.find(typeName);
    return found == mEntries.end() ? nullptr : &found->second;
}

const FieldRegistry& fieldPrinters()
{
    static const FieldRegistry registry = [] {
        FieldRegistry all;
        for (auto addFamily : families)
            addFamily(all);
        return all;
    }();
    return registry;
}

} // namespace zusg
