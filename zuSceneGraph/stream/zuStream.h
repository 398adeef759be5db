#pragma once

#include <zuSceneGraph/stream/zuBaseStream.h>

#include <cstdint>
#include <memory>
#include <string>

namespace zu {

class zuIoDevice;

// A stream container: the records of the object stream behind a version header, moved
// to and from an IO device. zuFileStream supplies the device transfer.
//
// Saving writes the stream version the caller set, and a new stream has version 0.0, which
// cannot be saved ("Too old version to save file stream"): name the version first, as in
//     stream.SetVersion(zuStreamVersion(zuMajorOutputStreamVersion, zuMinorOutputStreamVersion));
// (the newest format, <zuSystem/zuOutputStreamVersion.h>). Saving through zuMeshManager
// names that version by default. Loading takes the version from the file's header.
class zuStream : public zuBaseStream {
public:
    // `catalog`, when given, is where loaded textures share their images by name.
    explicit zuStream(zuCatalog<zuImage>* catalog = nullptr) : zuBaseStream(catalog) {}

    using zuBaseStream::Load;
    using zuBaseStream::Save;
    // Loads the stream from `device`, read from its current position; the top-level objects
    // are then GetObjectAt(0..). `name` is the path of the device's file: the resources
    // whose blocks stay in the file read them back from there ("" for a device that is not
    // a file). Not supported by this base: false.
    virtual bool Load(zuIoDevice& device, const std::string& name);
    // Saves the top-level objects to `device` (the path of its file in `name`, as for Load):
    // a header and the records, or with `append` only the records, after a stream that is
    // there already. Not supported by this base: false.
    virtual bool Save(zuIoDevice& device, const std::string& name, bool append);
    // The record loops behind Save and Load (`append`: no version check and no header).
    virtual bool save(bool append);
    virtual bool load();
    // Little-endian block transfer of `count` values of `size` bytes each, as every
    // primitive does it.
    virtual void readle(int size, int count, void* destination) { readValues(destination, size, static_cast<uint64_t>(count)); }
    virtual void writele(int size, int count, const void* source) { writeValues(source, size, static_cast<uint64_t>(count)); }
    // Writes `length` bytes of text (the caller counts the NUL).
    virtual void writeNullTerminatedString(int length, const char* text) = 0;
    // Points `text` at the text up to and including the first NUL within the next
    // zuStreamVersion::LENGTH_V4 bytes (the longest header field) and moves past it; false
    // when there is none.
    virtual bool readNullTerminatedString(int& length, char** text) = 0;
    // Raw bytes, `count` values of `size` bytes, with no byte-order conversion.
    virtual void writeData(int size, int count, const void* source) = 0;
    virtual void readData(int size, int count, void* destination) = 0;
    virtual bool flushWriteBuffer() = 0;
    virtual uint64_t getStreamSize() const = 0;
    virtual uint64_t getCurrentStreamOffset() const { return GetOffset(); }
    virtual bool hasRemainingData() const { return GetRemaining() > 0; }

    const std::string& GetName() const { return mName; }

protected:
    void SetName(const std::string& name)
    {
        mName = name;
        setSharedPath(std::make_shared<const std::string>(name));
    }

private:
    std::string mName;
};

} // namespace zu
