#include "zusgRecordObject.h"

#include <zuSceneGraph/objects/zuRtti.h>
#include <zuSceneGraph/objects/zuRttiInterface.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstring>
#include <iostream>
#include <sstream>

namespace zusg {

namespace {

const char TOP_LEVEL_MARKER[] = "Top Level";

// Sends what the library writes to the standard streams into a text of its own while it
// lives: a record loaded on its own reports its offsets within the little buffer built for
// it, which would mislead beside the file's offsets.
class LibraryMessages {
public:
    LibraryMessages() : mOut(std::cout.rdbuf(mText.rdbuf())), mErr(std::cerr.rdbuf(mText.rdbuf())) {}
    ~LibraryMessages()
    {
        std::cout.rdbuf(mOut);
        std::cerr.rdbuf(mErr);
    }
    LibraryMessages(const LibraryMessages&) = delete;
    LibraryMessages& operator=(const LibraryMessages&) = delete;

    std::string text() const { return mText.str(); }

private:
    std::ostringstream mText;
    std::streambuf* mOut;
    std::streambuf* mErr;
};

// The reason in the stream's message "... corrupt or truncated data at offset N (REASON,
// in the record ...)" without the offsets; empty when the message has another form.
std::string reasonOf(const std::string& messages)
{
    const size_t open = messages.find(" (");
    if (open == std::string::npos)
        return std::string();
    size_t end = messages.find(", in the record", open);
    if (end == std::string::npos)
        end = messages.find(')', open);
    if (end == std::string::npos)
        return std::string();
    return messages.substr(open + 2, end - open - 2);
}

void appendInt32(std::vector<char>& bytes, int32_t value)
{
    const uint32_t bits = static_cast<uint32_t>(value);
    for (int i = 0; i < 4; ++i)
        bytes.push_back(static_cast<char>((bits >> (8 * i)) & 0xFF));
}

} // namespace

bool printRecordFields(const std::vector<char>& record, const zu::zuStreamVersion& version,
                       const FieldRegistry::Entry& printer, std::ostream& out, std::string& failure)
{
    const int32_t markerLength = static_cast<int32_t>(std::strlen(TOP_LEVEL_MARKER));
    std::vector<char> buffer;
    buffer.reserve(4 + static_cast<size_t>(markerLength) + record.size());
    appendInt32(buffer, markerLength);
    buffer.insert(buffer.end(), TOP_LEVEL_MARKER, TOP_LEVEL_MARKER + markerLength);
    buffer.insert(buffer.end(), record.begin(), record.end());

    zu::zuBaseStream stream;
    stream.SetVersion(version);
    bool loaded = false;
    std::string messages;
    {
        LibraryMessages capture;
        loaded = stream.Load(buffer.data(), buffer.size());
        messages = capture.text();
    }
    if (!loaded) {
        const std::string reason = reasonOf(messages);
        failure = "the record does not load on its own";
        if (!reason.empty())
            failure.append(" (").append(reason).append(")");
        return false;
    }
    const zu::zuRttiInterface* object = stream.GetObjectCount() == 1 ? stream.GetObjectAt(0) : nullptr;
    if (!object || !object->IsDerived(*printer.type)) {
        failure = std::string("the record does not build a ") + printer.type->GetName();
        return false;
    }
    printer.print(*object, out);
    return true;
}

} // namespace zusg
