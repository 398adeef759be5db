#pragma once

#include <zuSceneGraph/stream/zuLink.h>
#include <zuSceneGraph/stream/zuReferenceMap.h>
#include <zuSceneGraph/stream/zuRegisteredSet.h>
#include <zuSceneGraph/stream/zuStreamPosition.h>
#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <Wm4/Wm4ColorRGB.h>
#include <Wm4/Wm4ColorRGBA.h>
#include <Wm4/Wm4Matrix2.h>
#include <Wm4/Wm4Matrix3.h>
#include <Wm4/Wm4Matrix4.h>
#include <Wm4/Wm4Plane3.h>
#include <Wm4/Wm4Quaternion.h>
#include <Wm4/Wm4System.h>
#include <Wm4/Wm4Vector2.h>
#include <Wm4/Wm4Vector3.h>
#include <Wm4/Wm4Vector4.h>
#include <zuSystem/zuVariant.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace zu {

class zuRtti;
class zuRttiInterface;
class zuRttiCustomInformation;
class zuDataStreamLoader;
class zuDynamicLoadingResource;
class zuProgressNotifierInterface;
class zuImage;
template <class T> class zuCatalog;
template <class T> class zuGenericTransformation;

// Turns a graph of objects into one flat little-endian byte buffer and back.
//
// Saving registers the top-level objects depth first, sizes every record with
// GetDiskUsed, and writes them into one buffer of exactly that size. Loading builds each
// record's object through the factory of its type name, lets it read its fields, then
// links the saved references to the new objects and runs PostLink.
//
// Every read is bounds-checked: a read past the end of the data sets the stream-error
// flag, yields zeros, and makes the load fail with the offset where the data broke.
class zuBaseStream {
public:
    // The key of the image catalogue in the parameter map.
    static const char* const IMAGE_CATALOG_KEY;

    explicit zuBaseStream(zuCatalog<zuImage>* catalog = nullptr);
    zuBaseStream(const zuBaseStream&) = delete;
    zuBaseStream& operator=(const zuBaseStream&) = delete;
    virtual ~zuBaseStream();

    // Saves the top-level objects into a new buffer (the caller frees it with delete[]).
    bool Save(char*& buffer, unsigned long& size);
    // Saving into the caller's buffer: the first call returns the size the buffer needs.
    unsigned long initializeClientBufferSave();
    bool finalizeClientBufferSave(char* buffer, int size);
    // Loads the records of buffer; the top-level objects are then GetObjectAt(0..).
    bool Load(char* buffer, unsigned long size);

    const zuStreamVersion& GetVersion() const { return mVersion; }
    void SetVersion(const zuStreamVersion& version) { mVersion = version; }
    zuVariant::zuVariantMapImpl& GetParameters() { return mParameters; }
    zuCatalog<zuImage>* GetImageCatalog() const;

    // The top-level list: each entry holds one reference on its object.
    bool InsertTopLevel(zuRttiInterface* object);
    bool RemoveTopLevel(zuRttiInterface* object);
    void RemoveAllToLevel();
    bool IsTopLevel(const zuRttiInterface* object) const
    {
        // A stream holds a few top-level objects as a rule, and a save asks once per record:
        // compared directly, a few cost less than a hashed look-up.
        if (mTopLevel.size() <= FEW_TOP_LEVEL)
            return std::find(mTopLevel.begin(), mTopLevel.end(), object) != mTopLevel.end();
        return topLevelSet().count(object) != 0;
    }
    int GetObjectCount() const { return static_cast<int>(mTopLevel.size()); }
    zuRttiInterface* GetObjectAt(int i) const;

    // Save passes: an object registers itself once; false when it was registered already.
    bool registerObject(const zuRttiInterface* object);
    // The same for an object with an identifier (zuObject::GetID), found by it.
    bool registerObject(const zuRttiInterface* object, uint32_t identifier);
    // True during the register pass of a save (not when a caller registers objects only to
    // list them): an object whose record cannot be written as it must says so then, with
    // refuseSave, before anything is written.
    bool IsRegisteringForSave() const { return mRegisteringForSave; }
    // Fails the save under way: `message` says which object cannot be written and why. The
    // first refusal is logged (category "zustream") and raises the stream-error flag, so
    // that the save stops before the next record and hands nothing out; a refusal in the
    // register pass fails it before a byte is written.
    void refuseSave(const std::string& message);
    // The size of the file `path` names, -1 when it has none, for the checks of the register
    // pass: asked of the system once per save and string (the resources of one load share
    // one path string), so that a save of many blocks left on disk stays cheap.
    int64_t GetFileSizeForSave(const std::string& path);
    int GetOrderedObjectCount() const { return static_cast<int>(mRegistered.size()); }
    const zuRttiInterface* GetOrderedObjectAt(int i) const { return mRegistered[static_cast<size_t>(i)]; }

    // Load passes.
    // Creates the link of a newly built object (the stream owns it until the load ends).
    zuLink* newLink(zuRttiInterface* object);
    void registerLink(uint64_t identifier, zuLink* link);
    void addObjectReference(zuLink* link, uint64_t identifier);
    // Reads one object reference and adds it to the link.
    void ReadLink(zuLink* link);
    zuRttiInterface* getFromMapAndRemove(uint64_t identifier);
    void removeUnreferencedObjects();
    // A pass over the whole of a load, run once after the link pass and before the
    // post-link pass: where one record's links cannot see the shape that all of them make
    // (the scene graph checks and marks its loaded trees there, in one linear walk).
    using LinkedPass = void (*)(zuBaseStream& stream);
    // Asks for `pass` to run in this load; asking again for the same pass changes nothing.
    void requestLinkedPass(LinkedPass pass);
    // Objects noted during the link pass for the linked passes, in the order they were
    // noted, so that a pass need not visit every loaded object to find its own.
    void noteForLinkedPass(zuRttiInterface* object) { mNotedForLinkedPass.push_back(object); }
    const std::vector<zuRttiInterface*>& GetNotedForLinkedPass() const { return mNotedForLinkedPass; }
    // The objects this load created, in reading order, while the load's links last.
    size_t GetLoadedObjectCount() const { return mLinkCount; }
    zuRttiInterface* GetLoadedObjectAt(size_t i) const { return linkAt(i)->getObject(); }
    // Builds a T and lets it read its record: the body of every class's Factory.
    template <class T>
    static zuRttiInterface* LoadNew(zuBaseStream& stream)
    {
        T* object = new T;
        object->Load(stream, stream.newLink(object));
        return object;
    }

    // Data a class keeps for one of its objects during a save or load (owned by the stream).
    void registerInformations(const zuRttiInterface* object, zuRttiCustomInformation* information);
    zuRttiCustomInformation* getInformations(const zuRttiInterface* object) const;
    void clearCustomInformations();

    void registerStreamLoader(const zuRtti* type, zuDataStreamLoader* loader);
    void unregisterStreamLoader(const zuRtti* type);
    zuDataStreamLoader* getStreamLoader(const zuRtti* type) const;
    bool onObjectLoad();
    bool waitForStreamLoaderEnd();
    void cancelStreamLoaders();

    void setStreamError() { mStreamError = true; }
    bool isStreamError() const { return mStreamError; }
    // Why the last load or save broke, and the offset in the data where it did (the first
    // failure counts): "" and 0 when nothing broke, or when the failure came with no reason
    // (a cancellation, setStreamError).
    const std::string& GetErrorText() const { return mErrorText; }
    uint64_t GetErrorOffset() const { return mErrorOffset; }
    zuProgressNotifierInterface* GetProgressNotifier() const { return mProgress; }
    void SetProgressNotifier(zuProgressNotifierInterface* progress) { mProgress = progress; }

    // Resources whose blocks a save moves to this stream, with where each was before: kept
    // from keepMovedResources(true) on (which forgets those of an earlier save), so that a
    // writer whose save failed can put them back. Off by default.
    using MovedResource = std::pair<const zuDynamicLoadingResource*, zuStreamPosition>;
    void keepMovedResources(bool keep)
    {
        mKeepMovedResources = keep;
        mMovedResources.clear();
    }
    void noteMovedResource(const zuDynamicLoadingResource* resource, zuStreamPosition previous)
    {
        if (mKeepMovedResources)
            mMovedResources.emplace_back(resource, std::move(previous));
    }
    const std::vector<MovedResource>& GetMovedResources() const { return mMovedResources; }
    bool isKeepingMovedResources() const { return mKeepMovedResources; }

    // The path of the container's file, one string shared by every resource the stream
    // loads or saves (so that a resource need not copy it); null for a plain stream.
    const std::shared_ptr<const std::string>& GetSharedPath() const { return mSharedPath; }

    // Offset of the next byte from the start of the data, and the bytes left to read.
    uint64_t GetOffset() const { return mWindowStart + mPosition; }
    uint64_t GetRemaining() const
    {
        const uint64_t offset = GetOffset();
        return offset < mDataEnd ? mDataEnd - offset : 0;
    }
    // Checks, before anything is allocated, that `count` elements of `elementSize` bytes
    // can still be read; a negative or too large count sets the stream-error flag.
    // Inline, as every record checks a few counts: a product, not a division.
    bool CheckCount(int64_t count, uint64_t elementSize)
    {
        if (count < 0 || static_cast<unsigned __int128>(count) * elementSize > GetRemaining())
            return refuseCount();
        return !mStreamError;
    }
    // The bytes of the record being read that its size field (from 6.0) still announces
    // after the current position; before 6.0, where records carry no size, the bytes left.
    uint64_t GetRecordBytesLeft() const
    {
        if (mVersion < zuStreamVersion(6, 0))
            return GetRemaining();
        const uint64_t end = mRecordStart + mRecordSize;
        return end > GetOffset() ? end - GetOffset() : 0;
    }

    // Primitives. Multi-byte values are little-endian; there is no padding.
    void Read(bool& value);
    void Write(bool value);
    void Read(char& value) { readValues(&value, 1, 1); }
    void Write(char value) { writeValues(&value, 1, 1); }
    void Read(unsigned char& value) { readValues(&value, 1, 1); }
    void Write(unsigned char value) { writeValues(&value, 1, 1); }
    void Read(short& value) { readValues(&value, 2, 1); }
    void Write(short value) { writeValues(&value, 2, 1); }
    void Read(unsigned short& value) { readValues(&value, 2, 1); }
    void Write(unsigned short value) { writeValues(&value, 2, 1); }
    void Read(int& value) { readValues(&value, 4, 1); }
    void Write(int value) { writeValues(&value, 4, 1); }
    void Read(unsigned int& value) { readValues(&value, 4, 1); }
    void Write(unsigned int value) { writeValues(&value, 4, 1); }
    void Read(long& value) { readValues(&value, 8, 1); }
    void Write(long value) { writeValues(&value, 8, 1); }
    void Read(unsigned long& value) { readValues(&value, 8, 1); }
    void Write(unsigned long value) { writeValues(&value, 8, 1); }
    void Read(long long& value) { readValues(&value, 8, 1); }
    void Write(long long value) { writeValues(&value, 8, 1); }
    void Read(unsigned long long& value) { readValues(&value, 8, 1); }
    void Write(unsigned long long value) { writeValues(&value, 8, 1); }
    void Read(float& value) { readValues(&value, 4, 1); }
    void Write(float value) { writeValues(&value, 4, 1); }
    void Read(double& value) { readValues(&value, 8, 1); }
    void Write(double value) { writeValues(&value, 8, 1); }
    // A signed 32-bit length, then the bytes; a length of 0 or less reads as "".
    void Read(std::string& value);
    void Write(const std::string& value);
    void Write(const char* value);
    // An object reference: 8 bytes, the object's address at save time (0 for null).
    // The value read is an identifier to resolve in Link, never an object to use.
    void Read(zuRttiInterface*& value);
    void Write(const zuRttiInterface* value);
    void Read(Wm4::ColorRGB& value) { readValues(&value, 4, 3); }
    void Write(const Wm4::ColorRGB& value) { writeValues(&value, 4, 3); }
    void Read(Wm4::ColorRGBA& value) { readValues(&value, 4, 4); }
    void Write(const Wm4::ColorRGBA& value) { writeValues(&value, 4, 4); }
    template <class Real> void Read(Wm4::Vector2<Real>& value) { readValues(&value, sizeof(Real), 2); }
    template <class Real> void Write(const Wm4::Vector2<Real>& value) { writeValues(&value, sizeof(Real), 2); }
    template <class Real> void Read(Wm4::Vector3<Real>& value) { readValues(&value, sizeof(Real), 3); }
    template <class Real> void Write(const Wm4::Vector3<Real>& value) { writeValues(&value, sizeof(Real), 3); }
    template <class Real> void Read(Wm4::Vector4<Real>& value) { readValues(&value, sizeof(Real), 4); }
    template <class Real> void Write(const Wm4::Vector4<Real>& value) { writeValues(&value, sizeof(Real), 4); }
    template <class Real> void Read(Wm4::Quaternion<Real>& value) { readValues(&value, sizeof(Real), 4); }
    template <class Real> void Write(const Wm4::Quaternion<Real>& value) { writeValues(&value, sizeof(Real), 4); }
    template <class Real> void Read(Wm4::Matrix2<Real>& value) { readValues(&value, sizeof(Real), 4); }
    template <class Real> void Write(const Wm4::Matrix2<Real>& value) { writeValues(&value, sizeof(Real), 4); }
    template <class Real> void Read(Wm4::Matrix3<Real>& value) { readValues(&value, sizeof(Real), 9); }
    template <class Real> void Write(const Wm4::Matrix3<Real>& value) { writeValues(&value, sizeof(Real), 9); }
    template <class Real> void Read(Wm4::Matrix4<Real>& value) { readValues(&value, sizeof(Real), 16); }
    template <class Real> void Write(const Wm4::Matrix4<Real>& value) { writeValues(&value, sizeof(Real), 16); }
    template <class Real> void Read(Wm4::Plane3<Real>& value) { readValues(&value, sizeof(Real), 4); }
    template <class Real> void Write(const Wm4::Plane3<Real>& value) { writeValues(&value, sizeof(Real), 4); }
    // The affine transformation value (defined with the transformation class).
    template <class Real> void Read(zuGenericTransformation<Real>& value);
    template <class Real> void Write(const zuGenericTransformation<Real>& value);

    // Array forms: n elements back to back, with no count of their own.
    template <class T> void Read(int n, T* values)
    {
        if constexpr (isPlainPrimitive<T>()) {
            if (n > 0)
                readValues(values, componentSize<T>(), static_cast<uint64_t>(n) * componentCount<T>());
        } else {
            for (int i = 0; i < n; ++i)
                Read(values[i]);
        }
    }
    template <class T> void Write(int n, const T* values)
    {
        if constexpr (isPlainPrimitive<T>()) {
            if (n > 0)
                writeValues(values, componentSize<T>(), static_cast<uint64_t>(n) * componentCount<T>());
        } else {
            for (int i = 0; i < n; ++i)
                Write(values[i]);
        }
    }

    // Advances over n bytes.
    void Skip(uint64_t n);
    // Writes n zero bytes (a block that is not at hand when its record is written).
    void WriteZeros(uint64_t n);

    // Reads count values of size bytes each (1, 2, 4 or 8), converting from little-endian.
    void readValues(void* destination, int size, uint64_t count)
    {
        const uint64_t bytes = static_cast<uint64_t>(size) * count;
        if (bytes <= mWindowEnd - mPosition) {
            readConverted(mBuffer + mPosition, destination, size, count);
            mPosition += bytes;
        } else {
            readAcrossWindows(destination, size, count);
        }
    }
    // Writes count values of size bytes each, converting to little-endian.
    void writeValues(const void* source, int size, uint64_t count)
    {
        const uint64_t bytes = static_cast<uint64_t>(size) * count;
        if (bytes <= mWindowEnd - mPosition) {
            writeConverted(mBuffer + mPosition, source, size, count);
            mPosition += bytes;
        } else {
            writeAcrossWindows(source, size, count);
        }
    }

    // Writes the size field of `object`'s record: the size pass's figure while that record
    // is being written; in a save without a size pass, the bytes the record turns out to
    // hold (GetDiskUsed when the window must go to the device before the record ends; a
    // record that does not hold what its GetDiskUsed said then fails the save); else its
    // GetDiskUsed.
    void WriteRecordSize(const zuRttiInterface* object);

    // Marks the data as corrupt at the current offset (first failure wins) and logs why.
    void setCorrupt(const char* reason);

protected:
    // Hooks of the block-buffered containers. Reading: refill the window with the bytes that
    // follow it. Writing: hand the full window to the device and start a new one. The plain
    // stream has a single window, so both fail there.
    // `skip` bytes after the window are passed over first (a container with a seekable
    // device seeks over them instead of reading them).
    virtual bool fetchNextWindow(uint64_t /*skip*/) { return false; }
    virtual bool flushWindow() { return false; }

    // The window the primitives work on: mBuffer[0..mWindowEnd) at stream offset mWindowStart.
    void setWindow(char* buffer, uint64_t windowStart, uint64_t windowEnd)
    {
        mBuffer = buffer;
        mWindowStart = windowStart;
        mWindowEnd = windowEnd;
        mPosition = 0;
    }
    void setDataEnd(uint64_t end) { mDataEnd = end; }
    // The longest skip since the last call: tells a container whether the records it reads
    // lie between large blocks passed over.
    uint64_t takeLongestSkip()
    {
        const uint64_t longest = mLongestSkip;
        mLongestSkip = 0;
        return longest;
    }
    void setSharedPath(std::shared_ptr<const std::string> path) { mSharedPath = std::move(path); }
    char* windowBuffer() const { return mBuffer; }
    uint64_t windowStart() const { return mWindowStart; }
    uint64_t windowEnd() const { return mWindowEnd; }
    void clearStreamError();
    // Raises the stream-error flag with the reason, at the current offset, unless a failure
    // is recorded already.
    void recordError(std::string text);
    void resetBufferState();

    // The loading passes, shared with the containers.
    void clearObjectMap();
    // Reads records until the data ends, an error occurs or loading must stop.
    // `detailedFactoryMessage` selects the container's wording of the unknown-type error.
    void loadRecords(bool detailedFactoryMessage);
    // Links, post-links and releases the links; on a stream error drops what was loaded.
    void finishLoad();
    // The save passes.
    void registerTopLevel();
    // Sizes every record once; the write pass then takes each record's size from here.
    uint64_t computeSaveSize();
    // Writes the ordered objects; false when the progress notifier asked to cancel.
    bool writeRecords();
    static const char* const TOP_LEVEL_MARKER;
    static constexpr int TOP_LEVEL_MARKER_LENGTH = 9;

private:
    static constexpr unsigned LINK_CHUNK_SHIFT = 15;
    // Streams whose first records promise this many more have the object pool make memory
    // ahead while they load.
    static constexpr size_t PROBED_RECORDS = 1024;
    static constexpr uint64_t MANY_RECORDS = 65536;
    // What a large load reserves for its bookkeeping: a record takes at least this many
    // bytes (type name, size, identifier, name, controller count), a reference 8.
    static constexpr uint64_t MIN_RECORD_BYTES = 25;
    static constexpr uint64_t MAX_RESERVED_ENTRIES = uint64_t(1) << 23;
    // Links, identifiers and references whose pages the pool's thread makes ahead at once,
    // on a large load (a power of two; at most a chunk of links).
    static constexpr size_t PREFAULT_STEP = 8192;
    static constexpr size_t LINK_CHUNK_SIZE = size_t(1) << LINK_CHUNK_SHIFT;
    static_assert(PREFAULT_STEP <= LINK_CHUNK_SIZE && (PREFAULT_STEP & (PREFAULT_STEP - 1)) == 0);

    template <class T> static constexpr bool isPlainPrimitive()
    {
        return (std::is_arithmetic_v<T> && !std::is_same_v<T, bool>)
            || std::is_same_v<T, Wm4::ColorRGB> || std::is_same_v<T, Wm4::ColorRGBA>
            || isWm4Real<T, float>() || isWm4Real<T, double>();
    }
    template <class T, class Real> static constexpr bool isWm4Real()
    {
        return std::is_same_v<T, Wm4::Vector2<Real>> || std::is_same_v<T, Wm4::Vector3<Real>>
            || std::is_same_v<T, Wm4::Vector4<Real>> || std::is_same_v<T, Wm4::Quaternion<Real>>
            || std::is_same_v<T, Wm4::Matrix2<Real>> || std::is_same_v<T, Wm4::Matrix3<Real>>
            || std::is_same_v<T, Wm4::Matrix4<Real>> || std::is_same_v<T, Wm4::Plane3<Real>>;
    }
    template <class T> static constexpr int componentSize()
    {
        if constexpr (std::is_arithmetic_v<T>)
            return sizeof(T);
        else if constexpr (std::is_same_v<T, Wm4::ColorRGB> || std::is_same_v<T, Wm4::ColorRGBA> || isWm4Real<T, float>())
            return 4;
        else
            return 8;
    }
    template <class T> static constexpr uint64_t componentCount() { return sizeof(T) / componentSize<T>(); }

    static void readConverted(const char* source, void* destination, int size, uint64_t count)
    {
        switch (size) {
        case 1: std::memcpy(destination, source, count); break;
        case 2: Wm4::System::Read2le(source, static_cast<int>(count), destination); break;
        case 4: Wm4::System::Read4le(source, static_cast<int>(count), destination); break;
        default: Wm4::System::Read8le(source, static_cast<int>(count), destination); break;
        }
    }
    static void writeConverted(char* destination, const void* source, int size, uint64_t count)
    {
        switch (size) {
        case 1: std::memcpy(destination, source, count); break;
        case 2: Wm4::System::Write2le(destination, static_cast<int>(count), source); break;
        case 4: Wm4::System::Write4le(destination, static_cast<int>(count), source); break;
        default: Wm4::System::Write8le(destination, static_cast<int>(count), source); break;
        }
    }
    void readAcrossWindows(void* destination, int size, uint64_t count);
    void writeAcrossWindows(const void* source, int size, uint64_t count);
    // The steps of loadRecords.
    bool refuseCount();
    bool readRecordName(std::string& name);
    bool loadRecord(zuRttiInterface* (*factory)(zuBaseStream&), bool topLevel);
    bool skipRecord(const std::string& name);
    static void reportMissingFactory(const std::string& name, bool detailed);
    bool stepProgress(uint64_t& reported);
    zuLink* linkAt(size_t i) const { return mLinkChunks[i >> LINK_CHUNK_SHIFT] + (i & (LINK_CHUNK_SIZE - 1)); }
    void deleteLinks();
    void buildReferenceMap();

    zuStreamVersion mVersion;
    zuVariant::zuVariantMapImpl mParameters;
    static constexpr size_t FEW_TOP_LEVEL = 8;
    std::vector<zuRttiInterface*> mTopLevel;
    // Membership of the top-level list, rebuilt on demand: a load appends its top-level
    // objects (all new) to the list alone, so that loading many of them hashes nothing.
    const std::unordered_set<const zuRttiInterface*>& topLevelSet() const;
    mutable std::unordered_set<const zuRttiInterface*> mTopLevelSet;
    mutable bool mTopLevelSetStale = false;
    // The record sizes of the last size pass, in registration order (empty when the save
    // had no size pass, as a container's has not), and the record being written.
    std::vector<int> mRecordSizes;
    size_t mWritingRecord = 0;
    // The size field of the record being written, when it is filled in after the record:
    // its object, its place in the window, and the size GetDiskUsed gave when the window had
    // to go before the record ended (-1 until then).
    const zuRttiInterface* mSizePendingFor = nullptr;
    uint64_t mSizeFieldAt = 0;
    int64_t mSizeSettled = -1;
    void settlePendingSize();
    void finishPendingSize(uint64_t recordStart);
    bool mRegisteringForSave = false;
    std::unordered_map<const std::string*, int64_t> mFileSizes;
    // The registered objects and their order.
    zuRegisteredSet mRegistered;
    // Raw storage: a link is constructed when an object takes it, so that a load of one
    // record touches one link, not a whole chunk.
    std::vector<zuLink*> mLinkChunks;
    bool mPrefaulting = false;  // while a large load reads its records
    size_t mLinkCount = 0;
    // The references the links read, side by side in the order they were read (the link
    // pass then walks them in order), freed at once with the links.
    std::vector<uint64_t> mLinkReferences;
    // The identifier each loaded object was saved under, and how many references the
    // records read: the map from identifiers to objects is built from these when the link
    // pass starts, in one tight loop, and not at all when no record refers to another.
    std::vector<zuReferenceMap::Entry> mDefinitions;
    size_t mReferenceCount = 0;
    zuReferenceMap mReferences;
    // The entry of every reference the links read, in link order, found once when the map
    // is built: the link pass then takes each reference's object without hashing it again.
    // A null reference has no entry unless some record was saved under the null identifier.
    static constexpr uint32_t NO_ENTRY = UINT32_MAX;
    std::vector<uint32_t> mResolved;
    bool mNullDefined = false;
    // The link whose Link runs, and the place of its first reference in mResolved.
    const zuLink* mLinking = nullptr;
    size_t mLinkingBase = 0;
    std::unordered_map<const zuRttiInterface*, zuRttiCustomInformation*> mCustomInformations;
    std::vector<std::pair<const zuRtti*, zuDataStreamLoader*>> mStreamLoaders;
    std::vector<LinkedPass> mLinkedPasses;
    std::vector<zuRttiInterface*> mNotedForLinkedPass;
    zuProgressNotifierInterface* mProgress = nullptr;
    std::shared_ptr<const std::string> mSharedPath;
    bool mKeepMovedResources = false;
    std::vector<MovedResource> mMovedResources;

    char* mBuffer = nullptr;
    uint64_t mWindowStart = 0;  // stream offset of mBuffer[0]
    uint64_t mWindowEnd = 0;    // bytes of the window that may be read or written
    uint64_t mPosition = 0;     // position inside the window
    uint64_t mDataEnd = 0;      // stream offset where the data ends (reading)
    uint64_t mLongestSkip = 0;  // since the container last asked
    uint64_t mOverflow = 0;     // bytes a save tried to write past its buffer
    bool mStreamError = false;
    std::string mErrorText;
    uint64_t mErrorOffset = 0;
    const std::string* mRecordType = nullptr;  // type name of the record being read, for messages
    uint64_t mRecordStart = 0;
    uint64_t mRecordSize = 0;   // the size field of the record being read (0 before 6.0)

    friend class zuRttiInterface;
};

} // namespace zu
