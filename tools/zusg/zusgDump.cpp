// zusg dump [--no-fields] FILE: lists the records of an object-stream file.
//
// Streams of 6.0 and later carry each record's size, so the records are walked by their
// headers without building any object: offset, top-level mark, type name, size and saved
// identifier, with types that no registered factory knows marked "unknown". Older streams
// cannot be walked that way: they are loaded through zuFileStream and their top-level
// objects listed.
//
// Below a record of a type that a field printer knows (zusgFields.h), the fields of its
// object follow, indented; --no-fields leaves them out. In a 6.0+ stream each such record
// is loaded on its own (zusgRecordObject.h), so that a broken record shows a note and the
// walk goes on.

#include "zusgByteCursor.h"
#include "zusgCommand.h"
#include "zusgFields.h"
#include "zusgLibraryScope.h"
#include "zusgRecordObject.h"
#include "zusgRecordWalker.h"

#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/stream/zuDataStreamLoader.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace zusg {

namespace {

bool isKnownType(const std::string& type)
{
    return zu::zuRttiInterface::GetFactory(type) != nullptr;
}

// Records larger than this are not loaded for their fields: the record and the object
// built from it would both sit in memory, for a few lines of output.
constexpr int32_t MAX_FIELD_RECORD_SIZE = 64 * 1024 * 1024;
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
    RecordListing(uint64_t fileSize, ByteCursor& cursor, const zu::zuStreamVersion& version, bool showFields)
        : mCursor(cursor), mVersion(version), mShowFields(showFields)
    {
        mOffsetWidth = std::max(6, static_cast<int>(std::to_string(fileSize).size()));
        std::printf("%*s  %-3s  %10s  %-18s  %s\n", mOffsetWidth, "offset", "top", "size", "identifier", "type");
    }

    void add(const Record& record)
    {
        const bool known = isKnownType(record.type);
        std::printf("%*" PRIu64 "  %-3s  %10d  0x%016" PRIx64 "  %s%s\n", mOffsetWidth, record.offset,
                    record.topLevel ? "yes" : "no", record.size, record.identifier, record.type.c_str(),
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
        std::printf("%" PRIu64 " records, %" PRIu64 " top-level", mRecords, mTopLevel);
        if (!mUnknown.empty()) {
            std::printf("; types no registered factory knows:");
            for (const auto& [type, count] : mUnknown)
                std::printf(" %s (%" PRIu64 ")", type.c_str(), count);
        }
        if (mFieldsNotShown > 0)
            std::printf("; %" PRIu64 " with fields not shown", mFieldsNotShown);
        std::printf("\n");
    }

private:
    // The fields below the record line, indented to the column after the offsets.
    void printFields(const Record& record)
    {
        const FieldRegistry::Entry* printer = fieldPrinters().find(record.type);
        if (!printer)
            return;
        std::ostringstream fields;
        std::string failure;
        if (record.size > MAX_FIELD_RECORD_SIZE) {
            failure = "the record is larger than ";
            failure.append(std::to_string(MAX_FIELD_RECORD_SIZE >> 20)).append(" MiB");
        } else if (!readRecordBytes(mCursor, record, mBytes)) {
            failure = "the record cannot be read again";
        } else {
            printRecordFields(mBytes, mVersion, *printer, fields, failure);  // sets `failure` when it fails
        }
        if (!failure.empty()) {
            fields << "fields not shown: " << failure << "\n";
            ++mFieldsNotShown;
        }
        printIndented(fields.str(), mOffsetWidth + 2);
    }

    ByteCursor& mCursor;
    zu::zuStreamVersion mVersion;
    bool mShowFields;
    std::vector<char> mBytes;
    uint64_t mFieldsNotShown = 0;
    int mOffsetWidth = 6;
    uint64_t mRecords = 0;
    uint64_t mTopLevel = 0;
    std::map<std::string, uint64_t> mUnknown;
};

int dumpRecords(const std::string& path, ByteCursor& cursor, RecordWalker& walker, bool showFields)
{
    RecordListing listing(cursor.size(), cursor, walker.version(), showFields);
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

// A file stream that remembers where its record loop stopped: before 6.0 a record of an
// unknown type ends the load without an error, and the records after it are not read.
// A stream loader told of every object built keeps the offset where the last one ended.
class LegacyStream : public zu::zuFileStream {
public:
    LegacyStream() : mTracker(*this) { registerStreamLoader(&zu::zuObject::TYPE, &mTracker); }
    ~LegacyStream() override { unregisterStreamLoader(&zu::zuObject::TYPE); }

    bool load() override
    {
        mRecordEnd = GetOffset();
        const bool loaded = zu::zuFileStream::load();
        mComplete = !hasRemainingData();
        return loaded;
    }
    // Where the record that could not be read starts (when the load is not complete).
    uint64_t stopOffset() const { return mRecordEnd; }
    bool complete() const { return mComplete; }

private:
    class RecordEndTracker : public zu::zuDataStreamLoader {
    public:
        explicit RecordEndTracker(LegacyStream& stream) : mStream(stream) {}
        bool onObjectLoad() override
        {
            mStream.mRecordEnd = mStream.GetOffset();
            return true;
        }
        bool waitForEnd(zu::zuProgressNotifierInterface*) override { return true; }
        void cancel() override {}
        void reset() override {}

    private:
        LegacyStream& mStream;
    };

    RecordEndTracker mTracker;
    uint64_t mRecordEnd = 0;
    bool mComplete = false;
};

int dumpLegacyObjects(const std::string& path, bool showFields)
{
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    LegacyStream stream;
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
            ? "\"" + static_cast<const zu::zuObject*>(object)->GetName() + "\""
            : std::string();
        std::printf("%5d  %-32s  %s\n", i, object->GetType().GetName(), name.c_str());
        const FieldRegistry::Entry* printer = showFields ? fieldPrinters().find(object->GetType().GetName()) : nullptr;
        if (printer && object->IsDerived(*printer->type)) {
            std::ostringstream fields;
            printer->print(*object, fields);
            printIndented(fields.str(), LEGACY_FIELD_INDENT);
        }
    }
    std::printf("%d top-level objects\n", stream.GetObjectCount());
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
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    if (!device.isOpen()) {
        std::error_code error;
        std::cerr << "zusg: " << path << ": cannot open the file"
                  << (std::filesystem::exists(path, error) ? "" : " (there is no such file)") << "\n";
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
    std::printf("%s: object stream \"%s\", %" PRIu64 " bytes\n", path.c_str(), walker.headerText().c_str(),
                cursor.size());
    if (walker.version() >= zu::zuStreamVersion(6, 0))
        return dumpRecords(path, cursor, walker, showFields);
    std::printf("records before 6.0 carry no size: the objects are loaded and the top-level ones listed\n");
    device.close();
    return dumpLegacyObjects(path, showFields);
}

} // namespace zusg
