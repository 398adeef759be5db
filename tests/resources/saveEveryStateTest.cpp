// Every registered class, saved alone in each state its objects can be in, at the version
// gates, through a plain stream and a file stream: either the save succeeds, its record
// loads back equal to what was saved and the copy saves to as many bytes, or the save fails,
// writes nothing to the device and names the object. Classes added later are covered as
// soon as they register their factory.

#include "resources/zuResourceTestSupport.h"

#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>

#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuMemoryIoDevice.h>

#include <cstring>
#include <filesystem>

namespace zu::test {
namespace {

// Beyond the default object, the states of a block resource: filled; filled, saved and
// loaded back with the block left on disk; the same with its file removed (the save must
// fail and the resource keep its file); with a load request queued for it (the save reads
// the block anyway); brought in, changed in form (resized, made 16-bit, new pixels) and
// dropped again (the drop must not lose the change). A vertex of 15 bytes cannot be saved
// up to 5.1. Sharing an object between holders changes nothing in its own record: the
// stream writes it once whoever holds it, as its tests show.
enum State { DEFAULT, FILLED, ON_DISK, FILE_GONE, UNDER_REQUEST, CHANGED };
const char* const stateNames[] = {"default", "filled", "on disk", "file gone", "under a request", "changed"};

// A vertex of 15 bytes (positions and 3 byte channels), indices 0 1000 2000 3000, 2×2 pixels.
void fill(zuObject* object, bool changed)
{
    if (auto* vertices = dynamic_cast<zuVertexBuffer*>(object)) {
        zuAttributes layout;
        layout.SetPositionChannels(3);
        layout.SetUserByteChannels(0, 3);
        vertices->setVertexFormat(layout, 4);
        for (int k = 0; k < vertices->GetDataSize(); ++k)
            vertices->GetData()[k] = static_cast<char>(k * 7 + 1);
        if (changed) {
            // The new vertex holds floats far from the zeros that follow a block in its file.
            vertices->resizeVertexBuffer(5);
            const float ones[3] = {1.0f, 1.0f, 1.0f};
            std::memcpy(vertices->GetData() + 60, ones, sizeof ones);
        }
    } else if (auto* indices = dynamic_cast<zuIndexBuffer*>(object)) {
        indices->resizeIndexBuffer(4);
        for (int k = 0; k < 4; ++k)
            indices->SetIndex(k, 1000u * static_cast<unsigned>(k));
        if (changed)
            indices->ConvertToShort();
    } else if (auto* image = dynamic_cast<zuImage*>(object)) {
        image->SetImage(zuImage::RGBA8, changed ? 1 : 2, 2, "0123456789abcdef");
    }
}

// Saves `object` alone: the bytes of the buffer, or of the device even after a failure.
bool save(zuObject* object, zuStreamVersion version, bool file, std::vector<char>& bytes)
{
    zuFileStream stream(64);
    stream.SetVersion(version);
    stream.InsertTopLevel(object);
    zuMemoryIoDevice device;
    char* buffer = nullptr;
    unsigned long size = 0;
    const bool saved = file ? stream.Save(device, "copy", false) : stream.Save(buffer, size);
    bytes = file ? device.data() : std::vector<char>(buffer, buffer + size);
    delete[] buffer;
    return saved;
}

zuPointer<zuObject> load(std::vector<char> bytes, zuStreamVersion version, bool file)
{
    zuFileStream stream;
    zuMemoryIoDevice device(bytes);
    stream.SetVersion(version);
    const bool loaded = file ? stream.Load(device, "copy") : stream.Load(bytes.data(), bytes.size());
    return loaded && stream.GetObjectCount() == 1 ? static_cast<zuObject*>(stream.GetObjectAt(0)) : nullptr;
}

class SaveEveryState : public ResourceLibrary {
protected:
    // One save of `name` in `state` at `version` and what it must give.
    void check(const std::string& name, State state, zuStreamVersion version, bool file)
    {
        const zuRttiInterface::CreateFunction create = zuRttiInterface::GetCreateFunction(name);
        zuPointer<zuObject> object = static_cast<zuObject*>(create());
        auto* resource = dynamic_cast<zuDynamicLoadingResource*>(object.get());
        if (state != DEFAULT && !resource)
            return;
        SCOPED_TRACE(name + ", " + stateNames[state] + ", " + std::to_string(version.GetMajor()) + "."
                     + std::to_string(version.GetMinor()) + (file ? ", file stream" : ""));
        const std::string source = dir.file("source.mvk");
        if (state != DEFAULT)
            fill(object, false);
        if (state > FILLED) {
            ASSERT_TRUE(saveResources(source, {object.get()}));
            zuDynamicLoadingResource::SetLoadPolicy(object->GetType(), false);
            zuFileStream stream;
            zuFileIoDevice device(source, zuFileIoDevice::ReadOnly);
            ASSERT_TRUE(stream.Load(device, source));
            zuDynamicLoadingResource::ClearLoadingPolicies();
            object = static_cast<zuObject*>(stream.GetObjectAt(0));
            resource = dynamic_cast<zuDynamicLoadingResource*>(object.get());
        }
        if (state == FILE_GONE)
            std::filesystem::remove(source);
        ASSERT_TRUE(state != UNDER_REQUEST || controller.requestCPULoad(resource) != 0);
        if (state == CHANGED) {
            zuRendererInterface::LoadCPUData(resource);
            fill(object, true);
            zuRendererInterface::DeleteCPUData(resource, false);
        }
        // 16-bit indices come back 32-bit from streams before 5.2, which know no other.
        const bool widened = dynamic_cast<zuIndexBuffer*>(object.get()) && version < zuStreamVersion(5, 2);
        zuPointer<zuObject> reference = static_cast<zuObject*>(create());
        if (state != DEFAULT)
            fill(reference, state == CHANGED && !widened);
        const auto* vertices = dynamic_cast<const zuVertexBuffer*>(reference.get());
        const bool refused =
            state == FILE_GONE || (vertices && vertices->GetVertexSize() % 4 != 0 && version <= zuStreamVersion(5, 1));

        const std::string fileBefore = resource ? resource->getResourceFilePath() : "";
        zuLogCapture log;
        std::vector<char> bytes;
        const bool saved = save(object, version, file, bytes);
        controller.cancelAllRequests();
        if (refused) {
            EXPECT_FALSE(saved);
            EXPECT_TRUE(bytes.empty()) << "bytes reached the device";
            ASSERT_FALSE(log.mMessages.empty());
            EXPECT_NE(log.mMessages.back().second.find(name), std::string::npos);
            EXPECT_EQ(resource->getResourceFilePath(), fileBefore);
            return;
        }
        ASSERT_TRUE(saved);
        const zuPointer<zuObject> loaded = load(bytes, version, file);
        ASSERT_NE(loaded, nullptr) << "does not load";
        EXPECT_TRUE(loaded->IsExactly(object->GetType()) && loaded->Equals(reference) && reference->Equals(loaded));
        std::vector<char> again;
        EXPECT_TRUE(save(loaded, version, file, again) && again.size() == bytes.size()) << "saves again otherwise";
    }

    zuTempDir dir;
    zuResourceController controller;  // never started: its requests stay queued
};

TEST_F(SaveEveryState, EverySaveLoadsBackEqualOrFailsNamingTheObject)
{
    int classes = 0;
    for (const std::string& name : zuRttiInterface::GetFactoryNames()) {
        if (!zuRttiInterface::GetCreateFunction(name) || name.rfind("zuTest.", 0) == 0)
            continue;
        ++classes;
        for (State state : {DEFAULT, FILLED, ON_DISK, FILE_GONE, UNDER_REQUEST, CHANGED})
            for (const zuStreamVersion& version : {zuStreamVersion(6, 32), {6, 0}, {5, 20}, {5, 2}, {5, 1}})
                for (bool file : {false, true})
                    if (!file || version >= zuStreamVersion(6, 0))
                        check(name, state, version, file);
    }
    EXPECT_GE(classes, 30);
}

} // namespace
} // namespace zu::test
