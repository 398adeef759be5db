#include <zuSceneGraph/stream/zuCoreSettings.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

namespace zu {

const zuRtti zuCoreSettings::TYPE("zuCore.zuCoreSettings", &zuObject::TYPE);

namespace {

// The fewest bytes one element of each list takes on disk, to refuse counts the data
// cannot hold before the lists grow: an entry is a string (at least its length), a flag
// and three floats; a string at least its length; a record three values and two strings.
constexpr uint64_t MIN_ENTRY_BYTES = 4 + 1 + 3 * 4;
constexpr uint64_t MIN_STRING_BYTES = 4;
constexpr uint64_t MIN_RECORD_BYTES = 3 * 4 + 4 + 4;

int stringBytes(const std::string& text)
{
    return 4 + static_cast<int>(text.size());
}

} // namespace

zuRttiInterface* zuCoreSettings::Factory(zuBaseStream& stream)
{
    return zuBaseStream::LoadNew<zuCoreSettings>(stream);
}

// ---------------------------------------------------------------------------------------
// Persistence. The order on disk is not the order in memory: an entry writes its flag and
// third number before the first two, a record its values before its strings (second
// first), and J3 and J4 come last because they joined the format in 5.20.

int zuCoreSettings::GetDiskUsed(const zuBaseStream& stream) const
{
    int bytes = zuUnnamedObject::GetDiskUsed(stream);
    bytes += 4;
    for (const Entry& entry : Entries)
        bytes += stringBytes(entry.Name) + 1 + 3 * 4;
    bytes += 4;
    for (const std::string& text : Strings)
        bytes += stringBytes(text);
    bytes += 6 * 4 + 1;  // S1 to S6, S7
    bytes += 4;
    for (const Record& record : Records)
        bytes += 3 * 4 + stringBytes(record.Second) + stringBytes(record.First);
    bytes += 4 * 1;  // H1 to H4
    bytes += 4 * 4;  // J1, J2, J5, J6
    bytes += 4 * 4;  // the two size pairs
    if (stream.GetVersion() >= zuStreamVersion(5, 20))
        bytes += 2 * 4;  // J3, J4
    return bytes;
}

void zuCoreSettings::Save(zuBaseStream& stream) const
{
    zuUnnamedObject::Save(stream);
    stream.Write(static_cast<int>(Entries.size()));
    for (const Entry& entry : Entries) {
        stream.Write(entry.Name);
        stream.Write(entry.Flag);
        stream.Write(entry.Third);
        stream.Write(entry.First);
        stream.Write(entry.Second);
    }
    stream.Write(static_cast<int>(Strings.size()));
    for (const std::string& text : Strings)
        stream.Write(text);
    stream.Write(S1);
    stream.Write(S2);
    stream.Write(S3);
    stream.Write(S4);
    stream.Write(S5);
    stream.Write(S6);
    stream.Write(S7);
    stream.Write(static_cast<int>(Records.size()));
    for (const Record& record : Records) {
        for (unsigned int value : record.Values)
            stream.Write(static_cast<int>(value));
        stream.Write(record.Second);
        stream.Write(record.First);
    }
    stream.Write(H1);
    stream.Write(H2);
    stream.Write(H3);
    stream.Write(H4);
    stream.Write(J1);
    stream.Write(J2);
    stream.Write(J5);
    stream.Write(J6);
    stream.Write(Width1);
    stream.Write(Height1);
    stream.Write(Width2);
    stream.Write(Height2);
    if (stream.GetVersion() >= zuStreamVersion(5, 20)) {
        stream.Write(J3);
        stream.Write(J4);
    }
}

void zuCoreSettings::Load(zuBaseStream& stream, zuLink* link)
{
    zuUnnamedObject::Load(stream, link);
    Entries.clear();
    Strings.clear();
    Records.clear();

    int count = 0;
    stream.Read(count);
    if (!stream.CheckCount(count, MIN_ENTRY_BYTES))
        return;
    Entries.resize(static_cast<size_t>(count));
    for (Entry& entry : Entries) {
        stream.Read(entry.Name);
        stream.Read(entry.Flag);
        stream.Read(entry.Third);
        stream.Read(entry.First);
        stream.Read(entry.Second);
    }

    count = 0;
    stream.Read(count);
    if (!stream.CheckCount(count, MIN_STRING_BYTES))
        return;
    Strings.resize(static_cast<size_t>(count));
    for (std::string& text : Strings)
        stream.Read(text);

    stream.Read(S1);
    stream.Read(S2);
    stream.Read(S3);
    stream.Read(S4);
    stream.Read(S5);
    stream.Read(S6);
    stream.Read(S7);

    count = 0;
    stream.Read(count);
    if (!stream.CheckCount(count, MIN_RECORD_BYTES))
        return;
    Records.resize(static_cast<size_t>(count));
    for (Record& record : Records) {
        for (unsigned int& value : record.Values) {
            int saved = 0;
            stream.Read(saved);
            value = static_cast<unsigned int>(saved);
        }
        stream.Read(record.Second);
        stream.Read(record.First);
    }

    stream.Read(H1);
    stream.Read(H2);
    stream.Read(H3);
    stream.Read(H4);
    stream.Read(J1);
    stream.Read(J2);
    stream.Read(J5);
    stream.Read(J6);
    stream.Read(Width1);
    stream.Read(Height1);
    stream.Read(Width2);
    stream.Read(Height2);
    if (stream.GetVersion() >= zuStreamVersion(5, 20)) {
        stream.Read(J3);
        stream.Read(J4);
    }
}

bool zuCoreSettings::Equals(const zuRttiInterface* other) const
{
    // The values are deliberately left out: two settings records are the same object
    // kind, whatever they hold.
    return zuUnnamedObject::Equals(other) && other->IsDerived(TYPE);
}

bool zuCoreSettings::Clone(zuRttiInterface*& target) const
{
    // Only the object part is cloned: a new target keeps its default values.
    if (!target)
        target = new zuCoreSettings;
    return target->IsDerived(TYPE) && zuUnnamedObject::Clone(target);
}

void zuCoreSettings::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuUnnamedObject::DescribeFields(object, visitor);
    const auto& settings = static_cast<const zuCoreSettings&>(object);
    visitor.List("Entries", static_cast<int64_t>(settings.Entries.size()), [&](int64_t i) {
        const Entry& entry = settings.Entries[static_cast<size_t>(i)];
        visitor.BeginGroup(nullptr);
        visitor.Text("Name", entry.Name);
        visitor.Number("First", entry.First);
        visitor.Number("Second", entry.Second);
        visitor.Number("Third", entry.Third);
        visitor.Flag("Flag", entry.Flag);
        visitor.EndGroup();
    });
    visitor.List("Strings", static_cast<int64_t>(settings.Strings.size()),
                 [&](int64_t i) { visitor.Text(nullptr, settings.Strings[static_cast<size_t>(i)]); });
    visitor.BeginGroup(nullptr);
    visitor.Integer("S1", settings.S1);
    visitor.Integer("S2", settings.S2);
    visitor.Number("S3", settings.S3);
    visitor.Integer("S4", settings.S4);
    visitor.Number("S5", settings.S5);
    visitor.Integer("S6", settings.S6);
    visitor.Flag("S7", settings.S7);
    visitor.EndGroup();
    visitor.List("Records", static_cast<int64_t>(settings.Records.size()), [&](int64_t i) {
        const Record& record = settings.Records[static_cast<size_t>(i)];
        visitor.BeginGroup(nullptr);
        visitor.Text("First", record.First);
        visitor.Text("Second", record.Second);
        visitor.List("Values", 3, [&](int64_t v) { visitor.Integer(nullptr, record.Values[v]); });
        visitor.EndGroup();
    });
    visitor.BeginGroup(nullptr);
    visitor.Flag("H1", settings.H1);
    visitor.Flag("H2", settings.H2);
    visitor.Flag("H3", settings.H3);
    visitor.Flag("H4", settings.H4);
    visitor.EndGroup();
    visitor.BeginGroup(nullptr);
    visitor.Integer("J1", settings.J1);
    visitor.Integer("J2", settings.J2);
    visitor.Integer("J3", settings.J3);
    visitor.Integer("J4", settings.J4);
    visitor.Integer("J5", settings.J5);
    visitor.Integer("J6", settings.J6);
    visitor.EndGroup();
    // K is not saved, so a loaded record always holds its default.
    visitor.BeginGroup(nullptr);
    visitor.Integer("Width1", settings.Width1);
    visitor.Integer("Height1", settings.Height1);
    visitor.Integer("Width2", settings.Width2);
    visitor.Integer("Height2", settings.Height2);
    visitor.EndGroup();
}

} // namespace zu
