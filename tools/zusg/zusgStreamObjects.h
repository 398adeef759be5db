#pragma once

// The objects of an object-stream file as the library loads them, for `zusg dump` to
// describe record by record.

#include <zuSceneGraph/objects/zuPointer.h>
#include <zuSceneGraph/stream/zuDataStreamLoader.h>
#include <zuSceneGraph/stream/zuFileStream.h>

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace zusg {

// A file stream that keeps every object its load builds, in reading order, each with a
// reference of its own (so that objects nothing refers to stay as well), and the offset
// where the last record it read ended: before 6.0 a record of a type no factory knows
// ends the load without an error, and the records after it are not read.
class TrackingStream : public zu::zuFileStream {
public:
    TrackingStream();
    ~TrackingStream() override;

    bool load() override;

    const std::vector<zu::zuPointer<zu::zuRttiInterface>>& objects() const { return mObjects; }
    // Where the record that could not be read starts (when the load is not complete).
    uint64_t stopOffset() const { return mRecordEnd; }
    bool complete() const { return mComplete; }

private:
    class Tracker : public zu::zuDataStreamLoader {
    public:
        explicit Tracker(TrackingStream& stream) : mStream(stream) {}
        bool onObjectLoad() override;
        bool waitForEnd(zu::zuProgressNotifierInterface*) override { return true; }
        void cancel() override {}
        void reset() override {}

    private:
        TrackingStream& mStream;
    };

    Tracker mTracker;
    std::vector<zu::zuPointer<zu::zuRttiInterface>> mObjects;
    uint64_t mRecordEnd = 0;
    bool mComplete = false;
};

// The objects of a 6.0+ stream, loaded as a whole with their blocks left in the file, and
// the identifier each one's record was saved under: a reference then reads as the
// identifier that the listing shows for the record it refers to.
class StreamObjects {
public:
    // False, with the reason in `failure`, when the stream does not load as a whole (a
    // broken record fails the whole load).
    bool load(const std::string& path, std::string& failure);

    // The object of the i-th record of a type that a factory knows, in file order.
    const zu::zuRttiInterface* at(size_t i) const { return i < mObjects.size() ? mObjects[i].get() : nullptr; }
    // "0x" and the 16 hexadecimal digits of the object's record, "null" for none.
    std::string label(const zu::zuRttiInterface* object) const;

private:
    std::vector<zu::zuPointer<zu::zuRttiInterface>> mObjects;
    std::unordered_map<const zu::zuRttiInterface*, uint64_t> mIdentifiers;
};

// "0x" and the identifier in 16 hexadecimal digits, as the listing shows it.
std::string identifierText(uint64_t identifier);

} // namespace zusg
