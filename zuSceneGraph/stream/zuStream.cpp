#include <zuSceneGraph/stream/zuStream.h>

#include <zuSceneGraph/objects/zuRttiInterface.h>

#include <zuSystem/zuLog.h>
#include <zuSystem/zuOutputStreamVersion.h>
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
    // The version first: objects checking what they can write need the right one.
    if (!append) {
        if (GetVersion().GetMajor() < 6) {
            // A new stream has version 0.00: the usual way here is a caller who never named one.
            char version[32];
            std::snprintf(version, sizeof version, "%d.%02d", GetVersion().GetMajor(), GetVersion().GetMinor());
            zuLog::instance().write("zustream", "Too old version to save file stream");
            recordError(std::string("Too old version to save file stream: the stream version is ") + version
                        + "; name the version to write before saving, as in SetVersion(zuStreamVersion("
                        + std::to_string(zuMajorOutputStreamVersion) + ", "
                        + std::to_string(zuMinorOutputStreamVersion)
                        + ")) (zuMeshManager::saveMeshes writes that version by default)");
            zuLog::instance().write("zustream", GetErrorText());
            return false;
        }
    }
    registerTopLevel();
    // An object refused the save: nothing goes to the device.
    if (isStreamError())
        return false;
    if (!append) {
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
