#include "zusgStreamObjects.h"

#include "zusgByteCursor.h"
#include "zusgLibraryMessages.h"
#include "zusgRecordWalker.h"

#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/resources/zuDynamicLoadingResource.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSystem/zuFileIoDevice.h>

#include <cinttypes>
#include <cstdio>

namespace zusg {

TrackingStream::TrackingStream() : mTracker(*this)
{
    registerStreamLoader(&zu::zuObject::TYPE, &mTracker);
}

TrackingStream::~TrackingStream()
{
    unregisterStreamLoader(&zu::zuObject::TYPE);
}

bool TrackingStream::load()
{
    mObjects.clear();
    mRecordEnd = GetOffset();
    const bool loaded = zu::zuFileStream::load();
    mComplete = !hasRemainingData();
    return loaded;
}

bool TrackingStream::Tracker::onObjectLoad()
{
    mStream.mRecordEnd = mStream.GetOffset();
    mStream.mObjects.emplace_back(mStream.GetLoadedObjectAt(mStream.GetLoadedObjectCount() - 1));
    return true;
}

std::string identifierText(uint64_t identifier)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%016" PRIx64, identifier);
    return text;
}

bool StreamObjects::load(const std::string& path, std::string& failure)
{
    // The identifiers of the records that build an object, in file order: the load builds
    // one object per such record, in the same order.
    std::vector<uint64_t> identifiers;
    {
        zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
        ByteCursor cursor(device);
        RecordWalker walker(cursor);
        Record record;
        if (!walker.readHeader()) {
            failure = walker.failureReason();
            return false;
        }
        while (walker.next(record))
            if (zu::zuRttiInterface::GetFactory(record.type))
                identifiers.push_back(record.identifier);
        if (walker.failed()) {
            failure = walker.failureReason();
            return false;
        }
    }

    // Blocks stay in the file, as in a lazy load, so that a model of any size fits; the
    // dump reads each one back while it describes it. The policies last as long as the
    // command's process.
    for (const zu::zuRtti* type : {&zu::zuVertexBuffer::TYPE, &zu::zuIndexBuffer::TYPE, &zu::zuImage::TYPE})
        zu::zuDynamicLoadingResource::SetLoadPolicy(*type, false);
    zu::zuFileIoDevice device(path, zu::zuFileIoDevice::ReadOnly);
    TrackingStream stream;
    bool loaded = false;
    {
        LibraryMessages quiet;
        loaded = stream.Load(device, path);
    }
    if (!loaded) {
        failure = stream.GetErrorText().empty() ? "the stream does not load" : stream.GetErrorText();
        return false;
    }
    if (stream.objects().size() != identifiers.size()) {
        failure = "the stream builds another number of objects than it has records of known types";
        return false;
    }
    mObjects = stream.objects();
    for (size_t i = 0; i < mObjects.size(); ++i)
        mIdentifiers.emplace(mObjects[i].get(), identifiers[i]);
    return true;
}

std::string StreamObjects::label(const zu::zuRttiInterface* object) const
{
    if (!object)
        return "null";
    const auto found = mIdentifiers.find(object);
    if (found != mIdentifiers.end())
        return identifierText(found->second);
    // An object the load built beside the records (none does today): its type.
    return std::string(1, '(').append(object->GetType().GetName()).append(")");
}

} // namespace zusg
