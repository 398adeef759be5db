// Field printer of the core settings: the lists and the scalars by their member names.
// K is not persisted, so a loaded record always shows its default and it is left out.

#include "zusgFields.h"

#include <zuSceneGraph/stream/zuCoreSettings.h>

#include <algorithm>

namespace zusg {

namespace {

// List entries shown before the rest is counted.
constexpr size_t SHOWN_ENTRIES = 8;

void printRest(size_t size, std::ostream& out)
{
    if (size > SHOWN_ENTRIES)
        out << "  ... (" << size - SHOWN_ENTRIES << " more)\n";
}

void printSettings(const zu::zuRttiInterface& object, std::ostream& out)
{
    const auto& settings = static_cast<const zu::zuCoreSettings&>(object);

    out << "Entries " << settings.Entries.size() << (settings.Entries.empty() ? "" : ":") << "\n";
    for (size_t i = 0; i < std::min(settings.Entries.size(), SHOWN_ENTRIES); ++i) {
        const zu::zuCoreSettings::Entry& entry = settings.Entries[i];
        out << "  [" << i << "] Name " << quotedText(entry.Name) << ", First " << number(entry.First) << ", Second "
            << number(entry.Second) << ", Third " << number(entry.Third) << ", Flag " << flag(entry.Flag) << "\n";
    }
    printRest(settings.Entries.size(), out);

    out << "Strings " << settings.Strings.size() << (settings.Strings.empty() ? "" : ":");
    for (size_t i = 0; i < std::min(settings.Strings.size(), SHOWN_ENTRIES); ++i)
        out << " " << quotedText(settings.Strings[i]);
    if (settings.Strings.size() > SHOWN_ENTRIES)
        out << " ...";
    out << "\n";

    out << "S1 " << settings.S1 << ", S2 " << settings.S2 << ", S3 " << number(settings.S3) << ", S4 " << settings.S4
        << ", S5 " << number(settings.S5) << ", S6 " << settings.S6 << ", S7 " << flag(settings.S7) << "\n";

    out << "Records " << settings.Records.size() << (settings.Records.empty() ? "" : ":") << "\n";
    for (size_t i = 0; i < std::min(settings.Records.size(), SHOWN_ENTRIES); ++i) {
        const zu::zuCoreSettings::Record& record = settings.Records[i];
        out << "  [" << i << "] First " << quotedText(record.First) << ", Second " << quotedText(record.Second)
            << ", Values " << record.Values[0] << " " << record.Values[1] << " " << record.Values[2] << "\n";
    }
    printRest(settings.Records.size(), out);

    out << "H1 " << flag(settings.H1) << ", H2 " << flag(settings.H2) << ", H3 " << flag(settings.H3) << ", H4 "
        << flag(settings.H4) << "\n";
    out << "J1 " << settings.J1 << ", J2 " << settings.J2 << ", J3 " << settings.J3 << ", J4 " << settings.J4
        << ", J5 " << settings.J5 << ", J6 " << settings.J6 << "\n";
    out << "Width1 " << settings.Width1 << ", Height1 " << settings.Height1 << ", Width2 " << settings.Width2
        << ", Height2 " << settings.Height2 << "\n";
}

} // namespace

void addSettingsFields(FieldRegistry& registry)
{
    registry.add(zu::zuCoreSettings::TYPE, printSettings);
}

} // namespace zusg
