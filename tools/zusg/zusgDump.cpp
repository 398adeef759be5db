// zusg dump [--no-fields] FILE: lists the records of an object-stream file.
//
// Streams of 6.0 and later carry each record's size, so the records are walked by their
// headers without building any object: offset, top-level mark, type name, size and saved
// identifier, with types that no registered factory knows marked "unknown". Older streams
// cannot be walked that way: they are loaded through zuFileStream and their top-level
// objects listed.
//
// Below a record of a known type the fields of its object follow, indented, as its class
// describes them (zuRttiInterface::Describe); --no-fields leaves them out. A 6.0+ stream is
// loaded as a whole for them, its blocks left in the file and read back one at a time, so
// that a reference reads as the identifier of the record it refers to. When the stream does
// not load as a whole, each record is loaded on its own (zusgRecordObject.h): a broken
// record then shows a note, the walk goes on, and references read as null.

#include "zusgByteCursor.h"
#include "zusgCommand.h"
#include "zusgFieldText.h"
#include "zusgLibraryMessages.h"
#include "zusgLibraryScope.h"
#include "zusgModel.h"
#include "zusgRecordObject.h"
#include "zusgRecordWalker.h"
#include "zusgStreamObjects.h"
#include "zusgText.h"

#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSystem/zuFileIoDevice.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace zusg {

namespace {

bool isKnownType(const std::string& type)
{
    return zu::zuRttiInterface::GetFactory(type) != nullptr;
}

// Records larger than this are not loaded on their own for their fields, nor blocks read
// back: the bytes and the object built from them would both sit in memory, for a few lines
// of output.
constexpr int32_t MAX_FIELD_BYTES = 64 * 1024 * 1024;
// The fields of an old stream's objects sit under the type column, after the index.
constexpr int LEGACY_FIELD_INDENT = 5 + 2;

// Writes each line of `text` after `indent` spaces.
void printIndented(const std::string& text, int indent)
{
    std::istringstream lines(text);
    std::string line;
    while (std::getline(lines, line))
        std::printf("%*s%s\n", indent, "", line.c_str());
}

// A reference of an object that no listing names: null, or its type.
std::string typeLabel(const zu::zuRttiInterface* object)
{
    return object ? std::string(1, '(').append(object->GetType().GetName()).append(")") : "null";
}

// The fields of `object` as its class describes them. A block left in the file is read
// back for the description and dropped again.
std::string describe(const zu::zuRttiInterface& object, const FieldText::ReferenceLabel& label)
{
    std::ostringstream text;
    std::optional<zu::zuRendererInterface::ResidentScope> resident;
    const auto* resource = dynamic_cast<const zu::zuDynamicLoadingResource*>(&object);
    if (resource && resource->getCPUSize() <= static_cast<uint64_t>(MAX_FIELD_BYTES)) {
        const LibraryMessages quiet;
        resident.emplace(resource);
    }
    FieldText fields(text, label);
    zu::zuRttiInterface::Describe(object, fields);
    return text.str();
}

// The bytes of a record, from its type name to its end; the cursor is left where it was.
bool readRecordBytes(ByteCursor& cursor, const Record& record, std::vector<char>& bytes)
{
    const uint64_t back = cursor.offset();
    bytes.resize(static_cast<size_t>(record.size));
    const bool read = cursor.seek(record.offset) && cursor.read(bytes.data(), bytes.size());
    return cursor.seek(back) && read;
}

// Prints the listing of a walk, one line per record, and the summary that follows it.
class RecordListing {
public:
    // `objects`: the stream loaded as a whole; null when each record is loaded on its own.
    RecordListing(uint64_t fileSize, ByteCursor& cursor, const zu::zuStreamVersion& version, bool showFields,
                  const StreamObjects* objects)
        : mCursor(cursor), mVersion(version), mShowFields(showFields), mObjects(objects)
    {
        mOffsetWidth = std::max(6, static_cast<int>(std::to_string(fileSize).size()));
        std::printf("%*s  %-3s  %10s  %-18s  %s\n", mOffsetWidth, "offset", "top", "size", "identifier", "type");
    }

    void add(const Record& record)
    {
        const bool known = isKnownType(record.type);
        std::printf("%*" PRIu64 "  %-3s  %10d  %s  %s%s\n", mOffsetWidth, record.offset, record.topLevel ? "yes" : "no",
                    record.size, identifierText(record.identifier).c_str(), record.type.c_str(),
                    known ? "" : "  (unknown)");
        ++mRecords;
        if (record.topLevel)
            ++mTopLevel;
        if (!known)
            ++mUnknown[record.type];
        if (mShowFields && known)
            printFields(record);
    }

    void printSummary() const
    {
        std::printf("%s, %s top-level", counted(mRecords, "record").c_str(), grouped(mTopLevel).c_str());
        if (!mUnknown.empty()) {
            std::printf("; types no registered factory knows:");
            for (const auto& [type, count] : mUnknown)
                std::printf(" %s (%s)", type.c_str(), grouped(count).c_str());
        }
        if (mFieldsNotShown > 0)
            std::printf("; %s with fields not shown", grouped(mFieldsNotShown).c_str());
        std::printf("\n");
    }

private:
    // The fields below the record line, indented to the column after the offsets.
    void printFields(const Record& record)
    {
        std::string fields;
        std::string failure;
        if (mObjects) {
            const zu::zuRttiInterface* object = mObjects->at(mKnownRecords++);
            if (object && record.type == object->GetType().GetName())
                fields = describe(*object, [this](const zu::zuRttiInterface* o) { return mObjects->label(o); });
            else
                failure = "the stream built no object of this record";
        } else if (record.size > MAX_FIELD_BYTES) {
            failure = "the record is larger than ";
            failure.append(std::to_string(MAX_FIELD_BYTES >> 20)).append(" MiB");
        } else if (!readRecordBytes(mCursor, record, mBytes)) {
            failure = "the record cannot be read again";
        } else if (const zu::zuPointer<zu::zuRttiInterface> object = loadRecordAlone(mBytes, mVersion, failure)) {
            fields = describe(*object, typeLabel);
        }
        if (!failure.empty()) {
            fields += "fields not shown: " + failure + "\n";
            ++mFieldsNotShown;
        }
        printIndented(fields, mOffsetWidth + 2);
    }

    ByteCursor& mCursor;
    zu::zuStreamVersion mVersion;
    bool mShowFields;
    const StreamObjects* mObjects;
    size_t mKnownRecords = 0;
    std::vector<char> mBytes;
    uint64_t mFieldsNotShown = 0;
    int mOffsetWidth = 6;
    uint64_t mRecords = 0;
    uint64_t mTopLevel = 0;
    std::map<std::string, uint64_t> mUnknown;
};

int dumpRecords(const std::string& path, ByteCursor& cursor, RecordWalker& walker, bool showFields)
{
    StreamObjects objects;
    std::string failure;
    const bool whole = showFields && objects.load(path, failure);
    if (showFields && !whole)
        std::printf("each record is loaded on its own, its references reading as null: the stream does not load as"
                    " a whole (%s)\n",
                    failure.c_str());
    RecordListing listing(cursor.size(), cursor, walker.version(), showFields, whole ? &objects : nullptr);
    Record record;
    while (walker.next(record))
        listing.add(record);
    listing.printSummary();
    if (walker.failed()) {
        std::fflush(stdout);
        std::cerr << "zusg: " << path << ": corrupt or truncated at offset " << walker.failureOffset() << ": "
                  << walker.failureReason() << "\n";
        return Failure;
    }
    return Success;
}

int dumpLegacyObjects(const std::string& path, bool showFields)
{
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    TrackingStream stream;
    const bool loaded = stream.Load(device, path);
    std::fflush(stdout);
    if (!loaded) {
        std::cerr << "zusg: " << path << ": the objects cannot be loaded (the reason is written above)\n";
        return Failure;
    }
    std::printf("%5s  %-32s  %s\n", "index", "type", "name");
    for (int i = 0; i < stream.GetObjectCount(); ++i) {
        const zu::zuRttiInterface* object = stream.GetObjectAt(i);
        const std::string name = object->IsDerived(zu::zuObject::TYPE)
            ? quotedText(static_cast<const zu::zuObject*>(object)->GetName())
            : std::string();
        std::printf("%5d  %-32s  %s\n", i, object->GetType().GetName(), name.c_str());
        if (showFields)
            printIndented(describe(*object, typeLabel), LEGACY_FIELD_INDENT);
    }
    std::printf("%s\n", counted(static_cast<uint64_t>(stream.GetObjectCount()), "top-level object").c_str());
    if (!stream.complete()) {
        std::fflush(stdout);
        std::cerr << "zusg: " << path << ": loading stopped at offset " << stream.stopOffset()
                  << ", before the end of the data: a stream older than 6.0 cannot be read past a record"
                     " of a type no registered factory knows\n";
        return Failure;
    }
    return Success;
}

} // namespace

int runDump(const std::vector<std::string>& arguments)
{
    bool showFields = true;
    std::vector<std::string> files;
    for (const std::string& argument : arguments) {
        if (argument == "--no-fields")
            showFields = false;
        else if (argument.size() > 1 && argument[0] == '-')
            return Usage;
        else
            files.push_back(argument);
    }
    if (files.size() != 1)
        return Usage;
    const std::string& path = files[0];
    if (!checkInputFile(path))
        return Failure;
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    if (!device.isOpen()) {
        std::cerr << "zusg: " << path << ": cannot open the file\n";
        return Failure;
    }
    LibraryScope library;
    ByteCursor cursor(device);
    RecordWalker walker(cursor);
    if (!walker.readHeader()) {
        std::cerr << "zusg: " << path << ": corrupt or truncated at offset " << walker.failureOffset() << ": "
                  << walker.failureReason() << "\n";
        return Failure;
    }
    std::printf("%s: object stream \"%s\", %s\n", path.c_str(), walker.headerText().c_str(),
                counted(cursor.size(), "byte").c_str());
    std::fflush(stdout);
    warnIfNewerThanLibrary(path, walker.version());
    if (walker.version() >= zu::zuStreamVersion(6, 0))
        return dumpRecords(path, cursor, walker, showFields);
    std::printf("records before 6.0 carry no size: the objects are loaded and the top-level ones listed\n");
    device.close();
    return dumpLegacyObjects(path, showFields);
}

} // namespace zusg
