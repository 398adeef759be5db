#include "zusgRecordObject.h"

#include "zusgLibraryMessages.h"

#include <zuSceneGraph/objects/zuRttiInterface.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstring>

namespace zusg {

namespace {

const char TOP_LEVEL_MARKER[] = "Top Level";

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

zu::zuPointer<zu::zuRttiInterface> loadRecordAlone(const std::vector<char>& record, const zu::zuStreamVersion& version,
                                                   std::string& failure)
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
    if (!loaded || stream.GetObjectCount() != 1) {
        const std::string reason = reasonOf(messages);
        failure = "the record does not load on its own";
        if (!reason.empty())
            failure.append(" (").append(reason).append(")");
        return nullptr;
    }
    return stream.GetObjectAt(0);
}

} // namespace zusg
