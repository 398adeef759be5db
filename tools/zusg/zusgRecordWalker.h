#pragma once

#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <cstdint>
#include <string>

namespace zusg {

class ByteCursor;

// The header of one object record, as the walk finds it.
struct Record {
    uint64_t offset = 0;      // where the type name starts (after any "Top Level" marker)
    bool topLevel = false;
    std::string type;
    int32_t size = 0;         // bytes from `offset` to the end of the record
    uint64_t identifier = 0;  // the object's address when it was saved
};

// Walks the records of an object stream of version 6.0 or later by their size fields,
// without building any object: each record's header is read and the rest skipped. Every
// field is checked against the data that remains; the first problem stops the walk and is
// kept with the offset where the data breaks.
class RecordWalker {
public:
    // Type names longer than this are taken for corrupt data.
    static constexpr int32_t MAX_TYPE_NAME_LENGTH = 1024;

    explicit RecordWalker(ByteCursor& cursor) : mCursor(cursor) {}

    // Reads the version header ("MVK 6.32" and a NUL) at the start of the data.
    bool readHeader();
    const std::string& headerText() const { return mHeaderText; }
    const zu::zuStreamVersion& version() const { return mVersion; }

    // Reads the next record's header and moves past the record. False at the end of the
    // data, or on a problem (then failed() is true).
    bool next(Record& record);

    bool failed() const { return mFailed; }
    uint64_t failureOffset() const { return mFailureOffset; }
    const std::string& failureReason() const { return mFailureReason; }

private:
    bool fail(uint64_t offset, const std::string& reason);
    // Reads a type name (or the "Top Level" marker) at the cursor.
    bool readName(std::string& name);

    ByteCursor& mCursor;
    std::string mHeaderText;
    zu::zuStreamVersion mVersion;
    bool mFailed = false;
    uint64_t mFailureOffset = 0;
    std::string mFailureReason;
};

} // namespace zusg
