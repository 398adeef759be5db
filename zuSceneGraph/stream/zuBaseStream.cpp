#include <zuSceneGraph/stream/zuBaseStream.h>

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuObjectPool.h>
#include <zuSceneGraph/objects/zuRttiInterface.h>
#include <zuSceneGraph/stream/zuDataStreamLoader.h>
#include <zuSceneGraph/stream/zuRttiCustomInformation.h>

#include <zuSystem/zuLog.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <new>
#include <optional>
#include <system_error>

namespace zu {

const char* const zuBaseStream::IMAGE_CATALOG_KEY = "StreamImgCatalog";
const char* const zuBaseStream::TOP_LEVEL_MARKER = "Top Level";

namespace {

// Puts values that were copied as raw little-endian bytes into host order.
void toHostOrder(void* values, int size, uint64_t count)
{
    if constexpr (std::endian::native != std::endian::little) {
        char* bytes = static_cast<char*>(values);
        for (uint64_t i = 0; i < count; ++i)
            std::reverse(bytes + i * size, bytes + (i + 1) * size);
    } else {
        (void)values, (void)size, (void)count;
    }
}

// Says so when no type has a factory at all: the library was not started.
void reportEmptyRegistry()
{
    if (zuRttiInterface::GetFactoryNames().empty())
        zuLog::instance().write("zustream", "No factory is registered for any type: the library must be started "
                                            "with zu::initializeZuSceneGraph() before a stream is loaded");
}

// The factories of the last few types met: a scene's records cycle through a handful of
// types (a mesh, its vertex buffer, its index buffer, the next mesh), so a name is looked up
// in the registry about once per run of records, not once per record.
class RecentFactories {
public:
    zuRttiInterface::FactoryFunction find(const std::string& type)
    {
        for (const Entry& entry : mEntries)
            if (entry.factory && entry.type == type)
                return entry.factory;
        const zuRttiInterface::FactoryFunction factory = zuRttiInterface::GetFactory(type);
        if (factory) {
            Entry& entry = mEntries[mNext++ % COUNT];
            entry.type = type;
            entry.factory = factory;
        }
        return factory;
    }

private:
    static constexpr size_t COUNT = 8;
    struct Entry {
        std::string type;
        zuRttiInterface::FactoryFunction factory = nullptr;
    };
    Entry mEntries[COUNT];
    size_t mNext = 0;
};

} // namespace

zuBaseStream::zuBaseStream(zuCatalog<zuImage>* catalog)
{
    mParameters[IMAGE_CATALOG_KEY] = zuVariant(static_cast<void*>(catalog));
}

zuBaseStream::~zuBaseStream()
{
    RemoveAllToLevel();
    deleteLinks();
    clearCustomInformations();
}

zuCatalog<zuImage>* zuBaseStream::GetImageCatalog() const
{
    return static_cast<zuCatalog<zuImage>*>(mParameters.value(IMAGE_CATALOG_KEY).toPointer());
}

// ---------------------------------------------------------------------------------------
// Top-level list

bool zuBaseStream::InsertTopLevel(zuRttiInterface* object)
{
    topLevelSet();
    if (!object || !mTopLevelSet.insert(object).second)
        return false;
    mTopLevel.push_back(object);
    object->IncrementReferences();
    return true;
}

bool zuBaseStream::RemoveTopLevel(zuRttiInterface* object)
{
    topLevelSet();
    if (!object || mTopLevelSet.erase(object) == 0)
        return false;
    mTopLevel.erase(std::find(mTopLevel.begin(), mTopLevel.end(), object));
    object->DecrementReferences();
    return true;
}

void zuBaseStream::RemoveAllToLevel()
{
    std::vector<zuRttiInterface*> objects;
    objects.swap(mTopLevel);
    mTopLevelSet.clear();
    mTopLevelSetStale = false;
    for (zuRttiInterface* object : objects)
        object->DecrementReferences();
}

const std::unordered_set<const zuRttiInterface*>& zuBaseStream::topLevelSet() const
{
    if (mTopLevelSetStale) {
        mTopLevelSet.clear();
        mTopLevelSet.reserve(mTopLevel.size());
        mTopLevelSet.insert(mTopLevel.begin(), mTopLevel.end());
        mTopLevelSetStale = false;
    }
    return mTopLevelSet;
}

zuRttiInterface* zuBaseStream::GetObjectAt(int i) const
{
    if (i < 0 || i >= GetObjectCount())
        return nullptr;
    return mTopLevel[static_cast<size_t>(i)];
}

// ---------------------------------------------------------------------------------------
// Saving

bool zuBaseStream::registerObject(const zuRttiInterface* object)
{
    return mRegistered.insert(object);
}

bool zuBaseStream::registerObject(const zuRttiInterface* object, uint32_t identifier)
{
    return mRegistered.insert(object, identifier);
}

void zuBaseStream::clearObjectMap()
{
    mRegistered.clear();
    std::vector<zuReferenceMap::Entry>().swap(mDefinitions);
    mReferenceCount = 0;
    mReferences.clear();
    std::vector<uint32_t>().swap(mResolved);
    mNullDefined = false;
}

void zuBaseStream::registerTopLevel()
{
    clearObjectMap();
    clearCustomInformations();
    mRecordSizes.clear();
    mRegisteringForSave = true;
    for (zuRttiInterface* object : mTopLevel)
        object->Register(*this);
    mRegisteringForSave = false;
    mFileSizes.clear();
}

int64_t zuBaseStream::GetFileSizeForSave(const std::string& path)
{
    const auto [entry, added] = mFileSizes.try_emplace(&path, -1);
    if (added) {
        std::error_code error;
        const uintmax_t size = std::filesystem::file_size(path, error);
        entry->second = error ? -1 : static_cast<int64_t>(size);
    }
    return entry->second;
}

void zuBaseStream::refuseSave(const std::string& message)
{
    if (mStreamError)
        return;
    zuLog::instance().write("zustream", message);
    recordError(message);
}

uint64_t zuBaseStream::computeSaveSize()
{
    uint64_t total = static_cast<uint64_t>(TOP_LEVEL_MARKER_LENGTH + 4) * mTopLevel.size();
    mRecordSizes.clear();
    mRecordSizes.reserve(mRegistered.size());
    for (size_t i = 0; i < mRegistered.size(); ++i) {
        const zuRttiInterface* object = mRegistered[i];
        mRecordSizes.push_back(object->GetDiskUsed(*this));
        total += static_cast<uint64_t>(mRecordSizes.back());
    }
    return total;
}

void zuBaseStream::WriteRecordSize(const zuRttiInterface* object)
{
    const bool current = mWritingRecord < mRegistered.size() && mRegistered[mWritingRecord] == object;
    if (current && mWritingRecord < mRecordSizes.size()) {
        Write(mRecordSizes[mWritingRecord]);
        return;
    }
    // Without a size pass the field is filled in once the record is written, which spares
    // each record the walk of GetDiskUsed through its classes.
    if (current && mWindowEnd - mPosition >= 4) {
        mSizePendingFor = object;
        mSizeFieldAt = mPosition;
        mSizeSettled = -1;
        Write(0);
        return;
    }
    Write(object->GetDiskUsed(*this));
}

void zuBaseStream::settlePendingSize()
{
    // The window goes to the device before the record is complete: the size must be known
    // now.
    if (mSizePendingFor && mSizeSettled < 0) {
        const int size = mSizePendingFor->GetDiskUsed(*this);
        writeConverted(mBuffer + mSizeFieldAt, &size, 4, 1);
        mSizeSettled = size;
    }
}

void zuBaseStream::finishPendingSize(uint64_t recordStart)
{
    const zuRttiInterface* object = mSizePendingFor;
    mSizePendingFor = nullptr;
    if (!object || mStreamError)
        return;
    const uint64_t written = GetOffset() + mOverflow - recordStart;
    if (mSizeSettled < 0) {
        // No flush since the field was written: the record lies within one window.
        const int size = static_cast<int>(written);
        writeConverted(mBuffer + mSizeFieldAt, &size, 4, 1);
    } else if (static_cast<uint64_t>(mSizeSettled) != written) {
        refuseSave(std::string("Cannot save \"") + object->GetType().GetName() + "\": its record holds "
                   + std::to_string(written) + " bytes, not the " + std::to_string(mSizeSettled)
                   + " its GetDiskUsed reports");
    }
}

bool zuBaseStream::writeRecords()
{
    bool complete = true;
    for (mWritingRecord = 0; mWritingRecord < mRegistered.size() && complete; ++mWritingRecord) {
        const zuRttiInterface* object = mRegistered[mWritingRecord];
        if (mStreamError)
            break;
        if (IsTopLevel(object))
            Write(TOP_LEVEL_MARKER);
        const uint64_t recordStart = GetOffset() + mOverflow;
        object->Save(*this);
        finishPendingSize(recordStart);
        if (mProgress) {
            mProgress->step(1);
            complete = !mProgress->isCancelRequested();
        }
    }
    mWritingRecord = mRegistered.size();
    return complete && !mStreamError;
}

namespace {

void reportBufferNotFilled(uint64_t written, uint64_t expected)
{
    std::cerr << "The buffer is not exactly filled : " << written << "/" << expected
              << " bytes written regarding bytes to be written\n"
              << " This is an indication that some"
              << " class is either incorrectly reporting the number of disk bytes"
              << " used (via the GetDiskUsed function) or incorrectly writing the"
              << " member data to disk.\n";
}

} // namespace

bool zuBaseStream::Save(char*& buffer, unsigned long& size)
{
    clearStreamError();
    registerTopLevel();
    if (mStreamError)
        return false;
    const uint64_t total = computeSaveSize();
    char* data = total ? new char[total] : nullptr;
    resetBufferState();
    setWindow(data, 0, total);
    const bool complete = writeRecords();
    const uint64_t written = GetOffset() + mOverflow;
    resetBufferState();
    if (written != total && complete) {
        reportBufferNotFilled(written, total);
        delete[] data;
        return false;
    }
    if (!complete) {
        delete[] data;
        return false;
    }
    buffer = data;
    size = total;
    return true;
}

unsigned long zuBaseStream::initializeClientBufferSave()
{
    clearStreamError();
    registerTopLevel();
    return computeSaveSize();
}

bool zuBaseStream::finalizeClientBufferSave(char* buffer, int size)
{
    const uint64_t total = computeSaveSize();
    resetBufferState();
    setWindow(buffer, 0, size > 0 ? static_cast<uint64_t>(size) : 0);
    const bool complete = writeRecords();
    const uint64_t written = GetOffset() + mOverflow;
    resetBufferState();
    if (!complete)
        return false;
    const uint64_t bufferSize = static_cast<uint64_t>(std::max(size, 0));
    if (written != total || bufferSize != total) {
        // Measured against the caller's buffer: a buffer of the wrong size is reported with
        // its own size, not as "N/N".
        reportBufferNotFilled(written, bufferSize);
        return false;
    }
    return true;
}

void zuBaseStream::resetBufferState()
{
    mBuffer = nullptr;
    mWindowStart = 0;
    mWindowEnd = 0;
    mPosition = 0;
    mDataEnd = 0;
    mOverflow = 0;
    mLongestSkip = 0;
}

// ---------------------------------------------------------------------------------------
// Loading

namespace {

// On a large load, the pool's thread makes the pages of the next `step` elements after the
// `step` that follow (called as the size reaches a multiple of `step`).
template <class T>
void prefaultAhead(const std::vector<T>& values, size_t step)
{
    const size_t from = values.size() + step;
    if (from < values.capacity())
        zuObjectPool::prefault(values.data() + from, std::min(step, values.capacity() - from) * sizeof(T));
}

} // namespace

zuLink* zuBaseStream::newLink(zuRttiInterface* object)
{
    if ((mLinkCount & (PREFAULT_STEP - 1)) == 0) {
        // The chunks of the links up to two steps on, the pages of the second step made
        // ahead on a large load.
        const size_t chunks = ((mLinkCount + 2 * PREFAULT_STEP - 1) >> LINK_CHUNK_SHIFT) + 1;
        while (mLinkChunks.size() < chunks)
            mLinkChunks.push_back(static_cast<zuLink*>(::operator new(LINK_CHUNK_SIZE * sizeof(zuLink))));
        if (mPrefaulting)
            zuObjectPool::prefault(linkAt(mLinkCount + PREFAULT_STEP), PREFAULT_STEP * sizeof(zuLink));
    }
    zuLink* link = new (linkAt(mLinkCount++)) zuLink(object, &mLinkReferences);
    // The link holds the new object until the load ends, so that an object nobody
    // references (its referrer was skipped, or the data broke) is freed, not leaked.
    object->IncrementReferences();
    return link;
}

void zuBaseStream::deleteLinks()
{
    const size_t count = mLinkCount;
    std::vector<zuLink*> chunks;
    chunks.swap(mLinkChunks);
    mLinkCount = 0;
    for (size_t i = 0; i < count; ++i) {
        zuLink* link = chunks[i >> LINK_CHUNK_SHIFT] + (i & (LINK_CHUNK_SIZE - 1));
        zuRttiInterface* object = link->getObject();
        link->~zuLink();
        if (object)
            object->DecrementReferences();
    }
    for (zuLink* chunk : chunks)
        ::operator delete(chunk);
    std::vector<uint64_t>().swap(mLinkReferences);
}

void zuBaseStream::registerLink(uint64_t identifier, zuLink* link)
{
    mDefinitions.push_back(zuReferenceMap::Entry{identifier, link->getObject(), 0});
    if (mPrefaulting && (mDefinitions.size() & (PREFAULT_STEP - 1)) == 0)
        prefaultAhead(mDefinitions, PREFAULT_STEP);
    if (identifier == 0)
        mNullDefined = true;
}

void zuBaseStream::addObjectReference(zuLink* link, uint64_t identifier)
{
    // Links number their references with 32 bits.
    if (mLinkReferences.size() >= UINT32_MAX / 2) {
        setCorrupt("the stream holds too many references");
        return;
    }
    link->addInterface(identifier);
    ++mReferenceCount;
    if (mPrefaulting && (mLinkReferences.size() & (PREFAULT_STEP - 1)) == 0)
        prefaultAhead(mLinkReferences, PREFAULT_STEP);
}

void zuBaseStream::buildReferenceMap()
{
    mReferences.clear();
    mResolved.clear();
    if (mReferenceCount == 0)
        return;
    // The map takes the records' entries as they are (no copy), sized for them: references
    // mostly name them, and the few that name nothing in the stream grow the map as they
    // come. A later record saved under the same identifier replaces the earlier one.
    const size_t definitions = mDefinitions.size();
    const bool guessing = mReferences.adopt(std::move(mDefinitions));
    mDefinitions = {};
    // With every identifier defined once, record j has entry j. A record refers mostly to
    // the records written right after it (a mesh to its buffers, a node to its first
    // child), so the record after the last one found is tried before the hashed look-up;
    // then the record as far after the last one as that one was after the one before: the
    // siblings of a node often hold subtrees of one size (leaves with their buffers). A
    // guess counts only when the identifiers agree, whatever the file holds.
    const auto defines = [&](size_t record, uint64_t identifier) {
        return record < definitions && mReferences.entryAt(static_cast<uint32_t>(record)).identifier == identifier;
    };
    mResolved.reserve(mReferenceCount);
    for (size_t i = 0; i < mLinkCount; ++i) {
        const zuLink* link = linkAt(i);
        size_t last = i;
        size_t stride = 1;
        for (int k = 0; k < link->getQuantity(); ++k) {
            const uint64_t identifier = link->getInterface(k);
            if (identifier == 0 && !mNullDefined) {
                mResolved.push_back(NO_ENTRY);
                continue;
            }
            uint32_t number;
            if (guessing && defines(last + 1, identifier))
                number = static_cast<uint32_t>(last + 1);
            else if (guessing && defines(last + stride, identifier))
                number = static_cast<uint32_t>(last + stride);
            else
                number = mReferences.findOrInsertNumber(identifier);
            ++mReferences.entryAt(number).pending;
            mResolved.push_back(number);
            stride = number > last ? number - last : 1;
            last = number;
        }
    }
}

void zuBaseStream::ReadLink(zuLink* link)
{
    uint64_t identifier = 0;
    readValues(&identifier, 8, 1);
    addObjectReference(link, identifier);
}

zuRttiInterface* zuBaseStream::getFromMapAndRemove(uint64_t identifier)
{
    // Null reads as null unless a record was saved under it.
    if (identifier == 0 && !mNullDefined)
        return nullptr;
    // The reference the current link handed out last was found when the map was built.
    zuReferenceMap::Entry* entry = nullptr;
    if (mLinking && mLinking->getCursor() > 0) {
        const size_t k = mLinkingBase + mLinking->getCursor() - 1;
        if (k < mResolved.size() && mResolved[k] != NO_ENTRY) {
            zuReferenceMap::Entry& resolved = mReferences.entryAt(mResolved[k]);
            if (resolved.identifier == identifier)
                entry = &resolved;
        }
    }
    if (!entry)
        entry = mReferences.find(identifier);
    // An entry whose references are all resolved counts as erased.
    if (!entry || entry->pending == 0)
        return nullptr;
    --entry->pending;
    return entry->object;
}

void zuBaseStream::requestLinkedPass(LinkedPass pass)
{
    if (std::find(mLinkedPasses.begin(), mLinkedPasses.end(), pass) == mLinkedPasses.end())
        mLinkedPasses.push_back(pass);
}

void zuBaseStream::removeUnreferencedObjects()
{
    // Entries that no reference waits for already read as absent in getFromMapAndRemove:
    // nothing to drop, and the link pass probes a smaller chain for dropping nothing.
}

bool zuBaseStream::Load(char* buffer, unsigned long size)
{
    clearObjectMap();
    RemoveAllToLevel();
    clearCustomInformations();
    clearStreamError();
    resetBufferState();
    setWindow(buffer, 0, buffer ? size : 0);
    setDataEnd(buffer ? size : 0);
    loadRecords(false);
    finishLoad();
    clearObjectMap();
    resetBufferState();
    return waitForStreamLoaderEnd() && !mStreamError;
}

// The steps of loadRecords, defined before it and inline: calls within the library are
// not inlined otherwise, and they run once per record.

// The type name of the next record, after its top-level marker if it has one; true when it
// has.
inline bool zuBaseStream::readRecordName(std::string& name)
{
    // A record whose type name does not read is named by no type in the messages.
    mRecordType = nullptr;
    mRecordStart = GetOffset();
    mRecordSize = 0;
    Read(name);
    const bool topLevel = name.size() == TOP_LEVEL_MARKER_LENGTH && name == TOP_LEVEL_MARKER;
    if (topLevel) {
        mRecordStart = GetOffset();
        Read(name);
    }
    return topLevel;
}

// Builds the record's object through its factory; false when the data broke.
inline bool zuBaseStream::loadRecord(zuRttiInterface::FactoryFunction factory, bool topLevel)
{
    zuRttiInterface* object = factory(*this);
    if (mStreamError || !object)
        return false;
    if (mVersion >= zuStreamVersion(6, 0) && GetOffset() - mRecordStart != mRecordSize) {
        setCorrupt("the record's fields do not fill its size");
        return false;
    }
    if (topLevel) {
        // A loaded object is new, so it cannot be in the list already.
        mTopLevel.push_back(object);
        object->IncrementReferences();
        mTopLevelSetStale = true;
    }
    onObjectLoad();
    return true;
}

// A record of a type no factory knows, passed over by its size (streams from 6.0).
inline bool zuBaseStream::skipRecord(const std::string& name)
{
    std::cout << "Skipping object type " << name << "\n";
    int recordSize = 0;
    Read(recordSize);
    const int64_t header = static_cast<int64_t>(name.size()) + 8;
    if (recordSize < header) {
        setCorrupt("the size of the skipped record is too small");
        return false;
    }
    Skip(static_cast<uint64_t>(recordSize - header));
    return !mStreamError;
}

// Older streams carry no record sizes: a type no factory knows ends the load.
void zuBaseStream::reportMissingFactory(const std::string& name, bool detailed)
{
    if (detailed)
        std::cerr << "zuBaseStream error : cannot find the factory function(" << name << ").\nMake sure you have called";
    else
        std::cerr << "zuBaseStream error : cannot find the factory function. \nMake sure you have called";
    std::cerr << " RegisterFactory() to the each class in the init library function.\n";
}

// Reports the bytes read since `reported`; false when the notifier asks to cancel.
inline bool zuBaseStream::stepProgress(uint64_t& reported)
{
    if (!mProgress)
        return true;
    mProgress->step(static_cast<int64_t>(GetOffset() - reported));
    reported = GetOffset();
    if (mProgress->isCancelRequested()) {
        mStreamError = true;
        return false;
    }
    return true;
}

void zuBaseStream::loadRecords(bool detailedFactoryMessage)
{
    std::string name;
    RecentFactories factories;
    // A type without a factory may mean that no type has one: the library was not started.
    bool registryChecked = false;
    // Progress counts every byte once, the header and the top-level markers included, so
    // that the steps of a complete load add up to the size of the stream.
    uint64_t reported = 0;
    // A stream of many records makes many objects: the pool makes their memory ahead, on
    // another core. How many a stream holds shows once its first records are read: a few
    // large blocks make few objects, and a thread would only slow their load.
    std::optional<zuObjectPool::Prefill> prefill;
    const uint64_t recordsStart = GetOffset();
    size_t records = 0;
    while (!mStreamError && GetRemaining() > 0) {
        if (records++ == PROBED_RECORDS && GetRemaining() / ((GetOffset() - recordsStart) / PROBED_RECORDS + 1) >= MANY_RECORDS) {
            prefill.emplace();
            // The records' identifiers and references grow to millions of entries: room
            // made at once, bounded by the bytes that remain, takes address space only, and
            // the vectors are never copied (and their pages never made twice) as they grow.
            mDefinitions.reserve(mDefinitions.size() + std::min<uint64_t>(GetRemaining() / MIN_RECORD_BYTES, MAX_RESERVED_ENTRIES));
            mLinkReferences.reserve(mLinkReferences.size() + std::min<uint64_t>(GetRemaining() / 8, MAX_RESERVED_ENTRIES));
            mPrefaulting = true;
        }
        const bool topLevel = readRecordName(name);
        if (mStreamError)
            break;
        mRecordType = &name;
        const zuRttiInterface::FactoryFunction factory = factories.find(name);
        if (!factory && !registryChecked) {
            registryChecked = true;
            reportEmptyRegistry();
        }
        bool loaded = false;
        if (factory)
            loaded = loadRecord(factory, topLevel);
        else if (mVersion >= zuStreamVersion(6, 0))
            loaded = skipRecord(name);
        else
            reportMissingFactory(name, detailedFactoryMessage);
        if (!loaded || !stepProgress(reported))
            break;
    }
    mRecordType = nullptr;
    mPrefaulting = false;
}

void zuBaseStream::finishLoad()
{
    if (mStreamError) {
        // The data broke: nothing of it is handed out. Dropping the top-level list and the
        // links frees every object the load created.
        RemoveAllToLevel();
    } else {
        buildReferenceMap();
        removeUnreferencedObjects();
        size_t base = 0;
        for (size_t i = 0; i < mLinkCount; ++i) {
            zuLink* link = linkAt(i);
            mLinking = link;
            mLinkingBase = base;
            link->getObject()->Link(*this, link);
            base += static_cast<size_t>(link->getQuantity());
        }
        mLinking = nullptr;
        for (LinkedPass pass : mLinkedPasses)
            pass(*this);
        for (size_t i = 0; i < mLinkCount; ++i) {
            if (!linkAt(i)->getObject()->PostLink())
                std::cerr << "zuBaseStream error : cannot post link object\n";
        }
    }
    mLinkedPasses.clear();
    std::vector<zuRttiInterface*>().swap(mNotedForLinkedPass);
    deleteLinks();
    clearCustomInformations();
}

void zuBaseStream::setCorrupt(const char* reason)
{
    if (mStreamError)
        return;
    std::string text = "corrupt or truncated data at offset " + std::to_string(GetOffset()) + " (" + reason;
    if (mRecordType && !mRecordType->empty())
        text += ", in the record \"" + *mRecordType + "\" at offset " + std::to_string(mRecordStart);
    text += ")";
    std::cerr << "zuBaseStream error : " << text << "\n";
    recordError(std::move(text));
}

void zuBaseStream::recordError(std::string text)
{
    if (mStreamError)
        return;
    mStreamError = true;
    mErrorText = std::move(text);
    mErrorOffset = GetOffset();
}

void zuBaseStream::clearStreamError()
{
    mStreamError = false;
    mErrorText.clear();
    mErrorOffset = 0;
}

bool zuBaseStream::refuseCount()
{
    setCorrupt("a count exceeds the data that remains");
    return false;
}

// ---------------------------------------------------------------------------------------
// Custom information and stream loaders

void zuBaseStream::registerInformations(const zuRttiInterface* object, zuRttiCustomInformation* information)
{
    zuRttiCustomInformation*& slot = mCustomInformations[object];
    if (slot != information)
        delete slot;
    slot = information;
}

zuRttiCustomInformation* zuBaseStream::getInformations(const zuRttiInterface* object) const
{
    auto entry = mCustomInformations.find(object);
    return entry == mCustomInformations.end() ? nullptr : entry->second;
}

void zuBaseStream::clearCustomInformations()
{
    for (auto& entry : mCustomInformations)
        delete entry.second;
    mCustomInformations.clear();
}

void zuBaseStream::registerStreamLoader(const zuRtti* type, zuDataStreamLoader* loader)
{
    for (auto& entry : mStreamLoaders)
        if (entry.first == type) {
            entry.second = loader;
            return;
        }
    mStreamLoaders.emplace_back(type, loader);
}

void zuBaseStream::unregisterStreamLoader(const zuRtti* type)
{
    std::erase_if(mStreamLoaders, [type](const auto& entry) { return entry.first == type; });
}

zuDataStreamLoader* zuBaseStream::getStreamLoader(const zuRtti* type) const
{
    for (const auto& entry : mStreamLoaders)
        if (entry.first == type)
            return entry.second;
    return nullptr;
}

bool zuBaseStream::onObjectLoad()
{
    bool result = true;
    for (const auto& entry : mStreamLoaders)
        result = entry.second->onObjectLoad() && result;
    return result;
}

bool zuBaseStream::waitForStreamLoaderEnd()
{
    bool result = true;
    for (const auto& entry : mStreamLoaders)
        result = entry.second->waitForEnd(mProgress) && result;
    return result;
}

void zuBaseStream::cancelStreamLoaders()
{
    for (const auto& entry : mStreamLoaders)
        entry.second->cancel();
}

// ---------------------------------------------------------------------------------------
// Primitives

void zuBaseStream::Read(bool& value)
{
    char byte = 0;
    readValues(&byte, 1, 1);
    value = byte != 0;
}

void zuBaseStream::Write(bool value)
{
    const char byte = value ? 1 : 0;
    writeValues(&byte, 1, 1);
}

void zuBaseStream::Read(std::string& value)
{
    int length = 0;
    readValues(&length, 4, 1);
    if (length <= 0) {
        value.clear();
        return;
    }
    if (!CheckCount(length, 1)) {
        value.clear();
        return;
    }
    value.resize(static_cast<size_t>(length));
    readValues(value.data(), 1, static_cast<uint64_t>(length));
}

void zuBaseStream::Write(const std::string& value)
{
    const int length = static_cast<int>(value.size());
    writeValues(&length, 4, 1);
    writeValues(value.data(), 1, value.size());
}

void zuBaseStream::Write(const char* value)
{
    const size_t size = value ? std::strlen(value) : 0;
    const int length = static_cast<int>(size);
    writeValues(&length, 4, 1);
    writeValues(value, 1, size);
}

void zuBaseStream::Read(zuRttiInterface*& value)
{
    uint64_t identifier = 0;
    readValues(&identifier, 8, 1);
    value = reinterpret_cast<zuRttiInterface*>(static_cast<uintptr_t>(identifier));
}

void zuBaseStream::Write(const zuRttiInterface* value)
{
    const uint64_t identifier = reinterpret_cast<uintptr_t>(value);
    writeValues(&identifier, 8, 1);
}

void zuBaseStream::Skip(uint64_t n)
{
    if (n > GetRemaining()) {
        setCorrupt("a skip runs past the end of the data");
        return;
    }
    mLongestSkip = std::max(mLongestSkip, n);
    const uint64_t inWindow = std::min(n, mWindowEnd - mPosition);
    mPosition += inWindow;
    n -= inWindow;
    // What lies beyond the window is passed over by the container in one go, not read.
    if (n > 0 && !fetchNextWindow(n))
        setCorrupt("a skip runs past the end of the data");
}

void zuBaseStream::WriteZeros(uint64_t n)
{
    static const char zeros[4096] = {};
    while (n > 0) {
        const uint64_t chunk = std::min<uint64_t>(n, sizeof(zeros));
        writeValues(zeros, 1, chunk);
        n -= chunk;
    }
}

void zuBaseStream::readAcrossWindows(void* destination, int size, uint64_t count)
{
    uint64_t bytes = static_cast<uint64_t>(size) * count;
    char* target = static_cast<char*>(destination);
    if (mStreamError || bytes > GetRemaining()) {
        std::memset(destination, 0, bytes);
        setCorrupt("a read runs past the end of the data");
        return;
    }
    while (bytes > 0) {
        const uint64_t inWindow = std::min(bytes, mWindowEnd - mPosition);
        std::memcpy(target, mBuffer + mPosition, inWindow);
        mPosition += inWindow;
        target += inWindow;
        bytes -= inWindow;
        if (bytes > 0 && !fetchNextWindow(0)) {
            std::memset(target, 0, bytes);
            setCorrupt("a read runs past the end of the data");
            return;
        }
    }
    toHostOrder(destination, size, count);
}

void zuBaseStream::writeAcrossWindows(const void* source, int size, uint64_t count)
{
    const char* bytes = static_cast<const char*>(source);
    // Values go out in little-endian order; on a big-endian host each is converted first.
    char converted[8];
    for (uint64_t i = 0; i < count;) {
        uint64_t run = count - i;
        const char* from = bytes + i * size;
        if constexpr (std::endian::native != std::endian::little) {
            writeConverted(converted, from, size, 1);
            from = converted;
            run = 1;
        }
        uint64_t left = run * static_cast<uint64_t>(size);
        while (left > 0) {
            if (mPosition == mWindowEnd)
                settlePendingSize();
            if (mPosition == mWindowEnd && !flushWindow()) {
                // A save into a fixed buffer overflowed: count what did not fit.
                mOverflow += left + (count - i - run) * static_cast<uint64_t>(size);
                return;
            }
            const uint64_t inWindow = std::min(left, mWindowEnd - mPosition);
            std::memcpy(mBuffer + mPosition, from, inWindow);
            mPosition += inWindow;
            from += inWindow;
            left -= inWindow;
        }
        i += run;
    }
    (void)converted;
}

// The streamed value: the matrix (row-major), translation and scale as runs of Reals, then
// the three flags as bytes.
template <class Real>
void zuBaseStream::Write(const zuGenericTransformation<Real>& value)
{
    using Value = zuGenericTransformation<Real>;
    // On a little-endian host the members lie as the stream wants them, the numbers then
    // the three flag bytes with no gap: one copy writes them all.
    constexpr size_t real = sizeof(Real);
    if constexpr (std::endian::native == std::endian::little && offsetof(Value, matrix) == 0
                  && offsetof(Value, translate) == 9 * real && offsetof(Value, scale) == 12 * real
                  && offsetof(Value, isIdentity) == 15 * real && offsetof(Value, isRSMatrix) == 15 * real + 1
                  && offsetof(Value, isUniformScale) == 15 * real + 2) {
        writeValues(&value, 1, Value::STREAM_SIZE);
        return;
    }
    Write(value.matrix);
    Write(value.translate);
    Write(value.scale);
    Write(value.isIdentity);
    Write(value.isRSMatrix);
    Write(value.isUniformScale);
}

template <class Real>
void zuBaseStream::Read(zuGenericTransformation<Real>& value)
{
    Read(value.matrix);
    Read(value.translate);
    Read(value.scale);
    Read(value.isIdentity);
    Read(value.isRSMatrix);
    Read(value.isUniformScale);
}

template void zuBaseStream::Write<float>(const zuGenericTransformation<float>&);
template void zuBaseStream::Read<float>(zuGenericTransformation<float>&);
template void zuBaseStream::Write<double>(const zuGenericTransformation<double>&);
template void zuBaseStream::Read<double>(zuGenericTransformation<double>&);

} // namespace zu
