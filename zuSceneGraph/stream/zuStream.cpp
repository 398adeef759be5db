#include <zuSceneGraph/stream/zuStream.h>

#include <zuSceneGraph/objects/zuRttiInterface.h>

#include <zuSystem/zuLog.h>
#include <zuSystem/zuProgressNotifierGroupCloser.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <cstdio>
#include <cstring>

namespace zu {

bool zuStream::Load(zuIoDevice&, const std::string&)
{
    return false;
}

bool zuStream::Save(zuIoDevice&, const std::string&, bool)
{
    return false;
}

bool zuStream::save(bool append)
{
    registerTopLevel();
    // An object refused the save: nothing goes to the device.
    if (isStreamError())
        return false;
    if (!append) {
        if (GetVersion().GetMajor() < 6) {
            zuLog::instance().write("zustream", "Too old version to save file stream");
            return false;
        }
        char header[32];
        const int length = std::snprintf(header, sizeof header, "MVK %01d.%02d", GetVersion().GetMajor(),
                                         GetVersion().GetMinor());
        writeNullTerminatedString(length + 1, header);
    }
    zuProgressNotifierInterface* progress = GetProgressNotifier();
    if (progress)
        progress->openGroup("Saving", GetOrderedObjectCount(), 1.0);
    zuProgressNotifierGroupCloser closer(progress);
    if (!writeRecords())
        return false;
    return flushWriteBuffer() && !isStreamError();
}

bool zuStream::load()
{
    zuProgressNotifierInterface* progress = GetProgressNotifier();
    if (progress)
        progress->openGroup("Loading", static_cast<int64_t>(getStreamSize()), 1.0);
    zuProgressNotifierGroupCloser closer(progress);
    loadRecords(true);
    finishLoad();
    clearObjectMap();
    if (isStreamError())
        cancelStreamLoaders();
    if (!waitForStreamLoaderEnd())
        setStreamError();
    return !isStreamError();
}

} // namespace zu
