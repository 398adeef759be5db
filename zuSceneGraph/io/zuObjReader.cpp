#include <zuSceneGraph/io/zuObjReader.h>

#include <zuSceneGraph/io/zuObjMeshBuilder.h>
#include <zuSceneGraph/io/zuObjParser.h>
#include <zuSceneGraph/scenegraph/zuBaseGeometry.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuProgressNotifierGroupCloser.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <new>
#include <set>
#include <thread>

namespace zu {

namespace {

constexpr int MAX_THREADS = 8;
constexpr int64_t PROGRESS_STEP_BYTES = int64_t(1) << 20;

// Reads a device in runs of whole lines: what follows the last line end of a read waits
// for the next run, and a line longer than the buffer grows it.
class ChunkSource {
public:
    ChunkSource(zuIoDevice& device, size_t chunkSize) : mDevice(device), mChunkSize(chunkSize) {}

    // The next run into `text` (grown as needed, never shrunk); false at the end.
    bool next(std::vector<char>& text, size_t& size)
    {
        size_t have = mCarry.size();
        if (mEnd && have == 0)
            return false;
        if (text.size() < have + mChunkSize)
            text.resize(have + mChunkSize);
        std::copy(mCarry.begin(), mCarry.end(), text.begin());
        mCarry.clear();
        for (;;) {
            if (!mEnd) {
                const int64_t got = mDevice.read(text.data() + have, static_cast<int64_t>(text.size() - have));
                if (got < 0)
                    mFailed = true;
                if (got <= 0)
                    mEnd = true;
                else
                    have += static_cast<size_t>(got);
            }
            if (mEnd) {
                size = have;
                return have > 0 && !mFailed;
            }
            const size_t cut = zuObjParser::WholeLinesLength(text.data(), have);
            if (cut > 0) {
                mCarry.assign(text.begin() + static_cast<ptrdiff_t>(cut), text.begin() + static_cast<ptrdiff_t>(have));
                size = cut;
                return true;
            }
            if (have == text.size())
                text.resize(text.size() * 2);
        }
    }
    bool failed() const { return mFailed; }

private:
    zuIoDevice& mDevice;
    size_t mChunkSize;
    std::vector<char> mCarry;
    bool mEnd = false;
    bool mFailed = false;
};

// Reads and parses the chunks of a source on worker threads and hands them, in file order,
// to `consume` on the calling thread. A worker takes the source (one at a time: chunks are
// cut where the previous one ended), reads the next chunk into a free slot, lets the source
// go and parses; so the calling thread only merges. While the chunk it needs next is not
// ready, the calling thread reads and parses one itself when a slot is free, rather than
// wait for a worker the system may not be running. Without workers it does all of it.
class Pipeline {
public:
    using Consume = std::function<bool(const zuObjParser::Chunk& chunk, size_t bytes)>;

    // False when `consume` refused a chunk, the source failed or memory ran out.
    static bool Run(ChunkSource& source, int workerCount, const Consume& consume)
    {
        Pipeline pipeline(source, workerCount);
        return pipeline.run(consume);
    }

private:
    enum State { FREE, BUSY, PARSED, FAILED };
    struct Slot {
        std::vector<char> text;
        size_t size = 0;
        zuObjParser::Chunk chunk;
        State state = FREE;
    };

    Pipeline(ChunkSource& source, int workerCount) : mSource(source)
    {
        const size_t slots = workerCount > 0 ? size_t(workerCount) + 2 : 1;
        mSlots.resize(slots);
        for (int i = 0; i < workerCount; ++i) {
            try {
                mWorkers.emplace_back([this] { work(); });
            } catch (const std::system_error&) {
                break;  // fewer workers, or none: the calling thread reads and parses
            }
        }
    }

    ~Pipeline()
    {
        {
            std::lock_guard<std::mutex> lock(mMutex);
            mStop = true;
        }
        mChanged.notify_all();
        for (std::thread& worker : mWorkers)
            worker.join();
    }

    // Reads the next chunk into its slot and parses it. Called with `lock` held, the source
    // not taken and the next slot free; returns with `lock` held.
    void produce(std::unique_lock<std::mutex>& lock)
    {
        Slot& slot = mSlots[mRead % mSlots.size()];
        slot.state = BUSY;
        mSourceTaken = true;
        lock.unlock();
        State state = PARSED;
        bool read = true;
        try {
            read = mSource.next(slot.text, slot.size);
        } catch (const std::bad_alloc&) {
            state = FAILED;
        }
        lock.lock();
        mSourceTaken = false;
        mEnd = !read || state == FAILED;
        mChanged.notify_all();
        if (!read) {
            slot.state = FREE;
            return;
        }
        ++mRead;
        if (state == PARSED) {
            lock.unlock();
            try {
                zuObjParser::Parse(slot.text.data(), slot.size, slot.chunk);
            } catch (const std::bad_alloc&) {
                slot.chunk.clear();
                state = FAILED;
            }
            lock.lock();
        }
        slot.state = state;
        mChanged.notify_all();
    }

    bool canRead() const { return !mEnd && !mSourceTaken && mSlots[mRead % mSlots.size()].state == FREE; }

    void work()
    {
        std::unique_lock<std::mutex> lock(mMutex);
        for (;;) {
            mChanged.wait(lock, [this] { return mStop || mEnd || canRead(); });
            if (mStop || mEnd)
                return;
            produce(lock);
        }
    }

    bool run(const Consume& consume)
    {
        for (size_t consumed = 0;; ++consumed) {
            Slot& slot = mSlots[consumed % mSlots.size()];
            std::unique_lock<std::mutex> lock(mMutex);
            while (slot.state != PARSED && slot.state != FAILED) {
                if (mEnd && consumed >= mRead)
                    return !mSource.failed();
                // The chunk needed next is not read yet and no worker is reading: do it here.
                if (consumed == mRead && canRead())
                    produce(lock);
                else
                    mChanged.wait(lock);
            }
            if (slot.state == FAILED)
                throw std::bad_alloc();  // reading or parsing ran out of memory: the caller reports it
            lock.unlock();
            if (!consume(slot.chunk, slot.size))
                return false;
            lock.lock();
            slot.state = FREE;
            mChanged.notify_all();
        }
    }

    ChunkSource& mSource;
    std::vector<Slot> mSlots;
    std::vector<std::thread> mWorkers;
    std::mutex mMutex;
    std::condition_variable mChanged;
    size_t mRead = 0;           // chunks read so far: the next one goes to slot mRead % slots
    bool mSourceTaken = false;  // a thread is reading
    bool mEnd = false;          // the source has no more chunks, or reading ran out of memory
    bool mStop = false;
};

bool endsWithMtl(const std::string& name)
{
    if (name.size() < 4)
        return false;
    std::string tail = name.substr(name.size() - 4);
    std::transform(tail.begin(), tail.end(), tail.begin(), [](unsigned char c) { return std::tolower(c); });
    return tail == ".mtl";
}

// The merge: vertex statements join the file's arrays, statements change the current
// group and material, and elements go to the builder of their group, material and kind.
class Loader {
public:
    Loader(zuCatalog<zuImage>& images, const std::string& folder, std::vector<zuObjMessage>& messages,
           zuProgressNotifierInterface* progress)
        : mFolder(folder), mMessages(messages), mProgress(progress), mMaterials(images)
    {
        const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
        mSeed = static_cast<uint64_t>(now) ^ reinterpret_cast<uintptr_t>(this);
    }

    bool consume(const zuObjParser::Chunk& chunk, size_t bytes)
    {
        const size_t positionBase = mData.positions.size();
        const size_t texCoordBase = mData.texCoords.size();
        const size_t normalBase = mData.normals.size();
        appendVertices(chunk);
        for (const zuObjParser::Error& error : chunk.errors)
            report(mLineBase + error.line, error.text);

        // When every index of the chunk is known to be in range, its corners go to the
        // builders as they are.
        const bool checked = !chunk.relative && chunk.reach[0] < int64_t(positionBase) &&
                             chunk.reach[1] < int64_t(texCoordBase) && chunk.reach[2] < int64_t(normalBase);
        size_t next = 0;
        for (size_t i = 0; i < chunk.elements.size(); ++i) {
            for (; next < chunk.statements.size() && chunk.statements[next].element <= i; ++next)
                apply(chunk.statements[next]);
            const zuObjParser::Element& element = chunk.elements[i];
            if (checked)
                build(element, &chunk.corners[3 * size_t(element.firstCorner)]);
            else
                addElement(chunk, element, positionBase, texCoordBase, normalBase);
        }
        for (; next < chunk.statements.size(); ++next)
            apply(chunk.statements[next]);
        mLineBase += chunk.lineCount;

        if (mProgress) {
            mBytes += static_cast<int64_t>(bytes);
            const int64_t steps = mBytes / PROGRESS_STEP_BYTES - mSteps;
            if (steps > 0) {
                mProgress->step(steps);
                mSteps += steps;
            }
            if (mProgress->isCancelRequested())
                return false;
        }
        return true;
    }

    // Steps the progress group to its end (`steps` in all) once the whole file is read.
    void completeProgress(int64_t steps)
    {
        if (mProgress && steps > mSteps)
            mProgress->step(steps - mSteps);
        mSteps = steps;
    }

    zuPointer<zuNode> finish(const std::string& name)
    {
        zuPointer<zuNode> root(new zuNode);
        root->SetName(name);
        for (std::unique_ptr<zuObjMeshBuilder>& builder : mBuilders) {
            zuPointer<zuBaseGeometry> leaf;
            try {
                leaf = builder->Finish(mData);
            } catch (const std::bad_alloc&) {
                report(0, "group \"" + builder->GetGroup() + "\" is too large for one vertex buffer; it is dropped");
            }
            if (leaf) {
                applyMaterial(*leaf, builder->GetMaterial());
                root->attachChild(leaf.get());
            }
            builder.reset();
        }
        mData.clear();
        return root;
    }

    void report(int64_t line, const std::string& text)
    {
        if (mMessages.size() < zuObjReader::MAX_MESSAGES)
            mMessages.push_back({line, text});
        else if (mMessages.size() == zuObjReader::MAX_MESSAGES)
            mMessages.push_back({line, "too many errors; the others are not reported"});
    }

private:
    void appendVertices(const zuObjParser::Chunk& chunk)
    {
        const size_t count = chunk.positionCount();
        if (!chunk.colors.empty() && mData.colors.empty())
            mData.colors.appendFilled(1.0f, mData.positions.size());
        if (!chunk.colors.empty())
            mData.colors.append(chunk.colors.data(), count);
        else if (!mData.colors.empty())
            mData.colors.appendFilled(1.0f, count);
        mData.hasAlpha |= chunk.hasAlpha;
        mData.positions.append(chunk.positions.data(), count);
        mData.texCoords.append(chunk.texCoords.data(), chunk.texCoords.size() / 2);
        mData.normals.append(chunk.normals.data(), chunk.normals.size() / 3);
    }

    void apply(const zuObjParser::Statement& statement)
    {
        const int64_t line = mLineBase + statement.line;
        switch (statement.kind) {
        case zuObjParser::GROUP:
        case zuObjParser::OBJECT:
            mGroup = statement.name.empty() ? "default" : statement.name;
            break;
        case zuObjParser::USE_MATERIAL:
            mMaterial = statement.name;
            mMaterialLines.emplace(mMaterial, line);
            break;
        case zuObjParser::MATERIAL_LIBRARY:
            return loadLibraries(statement.name, line);
        }
        std::fill(std::begin(mCurrent), std::end(mCurrent), nullptr);
    }

    // The names of a mtllib statement: the whole text when a file has that name (a name
    // with spaces), otherwise the words, those that do not end in ".mtl" joined with the
    // next ones until one does.
    void loadLibraries(const std::string& text, int64_t line)
    {
        std::vector<std::string> names;
        if (zuDirUtils::FileExists(pathOf(text))) {
            names.push_back(text);
        } else {
            std::string name;
            size_t start = 0;
            while (start < text.size()) {
                size_t stop = text.find_first_of(" \t", start);
                if (stop == std::string::npos)
                    stop = text.size();
                if (stop > start) {
                    if (!name.empty())
                        name.push_back(' ');
                    name.append(text, start, stop - start);
                    if (endsWithMtl(name)) {
                        names.push_back(name);
                        name.clear();
                    }
                }
                start = stop + 1;
            }
            if (!name.empty())
                names.push_back(name);
        }
        if (names.empty())
            report(line, "mtllib names no file");
        for (const std::string& name : names) {
            const std::string path = pathOf(name);
            if (!mLibraries.insert(path).second)
                continue;
            if (!mMaterials.ReadFile(path, mMessages))
                report(line, "material library \"" + name + "\" not found");
        }
    }

    std::string pathOf(std::string name) const
    {
        std::replace(name.begin(), name.end(), '\\', '/');
        return !name.empty() && name[0] == '/' ? name : mFolder + name;
    }

    void applyMaterial(zuBaseGeometry& leaf, const std::string& name)
    {
        if (name.empty())
            return;
        const zuMtlReader::Material* material = mMaterials.Find(name);
        if (!material) {
            if (mMissingMaterials.insert(name).second)
                report(mMaterialLines[name], "material \"" + name + "\" not found");
            return;
        }
        leaf.setGlobalState(material->material.get());
        if (material->textures)
            leaf.setGlobalState(material->textures.get());
    }

    zuObjMeshBuilder& builder(zuObjParser::ElementKind kind)
    {
        if (mCurrent[kind])
            return *mCurrent[kind];
        std::string key(1, static_cast<char>('0' + kind));
        key += mGroup;
        key += '\n';
        key += mMaterial;
        const auto [entry, inserted] = mBuilderIndex.try_emplace(key, mBuilders.size());
        if (inserted) {
            static const zuObjMeshBuilder::Kind KINDS[] = {zuObjMeshBuilder::TRIANGLES, zuObjMeshBuilder::LINES,
                                                           zuObjMeshBuilder::POINTS};
            mBuilders.push_back(std::make_unique<zuObjMeshBuilder>(KINDS[kind], mGroup, mMaterial, mSeed));
        }
        mCurrent[kind] = mBuilders[entry->second].get();
        return *mCurrent[kind];
    }

    void addElement(const zuObjParser::Chunk& chunk, const zuObjParser::Element& element, size_t positionBase,
                    size_t texCoordBase, size_t normalBase)
    {
        const int64_t above[3] = {int64_t(positionBase) + element.positionCount,
                                  int64_t(texCoordBase) + element.texCoordCount,
                                  int64_t(normalBase) + element.normalCount};
        static const char* const KINDS[] = {"v", "vt", "vn"};
        static const char* const STATEMENTS[] = {"f", "l", "p"};
        mCorners.resize(3 * size_t(element.cornerCount));
        const int32_t* stored = &chunk.corners[3 * size_t(element.firstCorner)];
        for (size_t i = 0; i < mCorners.size(); i += 3) {
            for (int kind = 0; kind < 3; ++kind) {
                const int32_t index = stored[i + kind] + 1;  // as written
                if (index == 0 && kind > 0) {
                    mCorners[i + kind] = -1;
                    continue;
                }
                const int64_t resolved = index > 0 ? int64_t(index) - 1 : above[kind] + index;
                if (resolved < 0 || resolved >= above[kind] || resolved > INT32_MAX) {
                    report(mLineBase + element.line,
                           "index " + std::to_string(index) + " out of range (" + std::to_string(above[kind]) + " " +
                               KINDS[kind] + " statements above); the " + STATEMENTS[element.kind] +
                               " statement is dropped");
                    return;
                }
                mCorners[i + kind] = static_cast<int32_t>(resolved);
            }
        }
        build(element, mCorners.data());
    }

    // Adds an element of resolved corners to the builder of its kind.
    void build(const zuObjParser::Element& element, const int32_t* corners)
    {
        zuObjMeshBuilder& target = builder(element.kind);
        const int count = static_cast<int>(element.cornerCount);
        if (element.kind == zuObjParser::FACE)
            target.AddFace(corners, count, mData);
        else if (element.kind == zuObjParser::LINE)
            target.AddLine(corners, count);
        else
            target.AddPoints(corners, count);
    }

    const std::string& mFolder;
    std::vector<zuObjMessage>& mMessages;
    zuProgressNotifierInterface* mProgress;
    zuMtlReader mMaterials;
    zuObjVertexData mData;
    std::vector<std::unique_ptr<zuObjMeshBuilder>> mBuilders;
    // Ordered, not hashed: group names come from the file, and a file could choose names
    // whose hashes collide.
    std::map<std::string, size_t> mBuilderIndex;
    zuObjMeshBuilder* mCurrent[3] = {nullptr, nullptr, nullptr};
    std::string mGroup = "default";
    std::string mMaterial;
    std::map<std::string, int64_t> mMaterialLines;
    std::set<std::string> mMissingMaterials;
    std::set<std::string> mLibraries;
    std::vector<int32_t> mCorners;
    int64_t mLineBase = 0;
    int64_t mBytes = 0;
    int64_t mSteps = 0;
    uint64_t mSeed = 0;
};

} // namespace

zuObjReader::zuObjReader(zuCatalog<zuImage>& images) : mImages(images) {}

zuObjReader::~zuObjReader() = default;

zuPointer<zuNode> zuObjReader::ReadFile(const std::string& path, zuProgressNotifierInterface* progress)
{
    zuFileIoDevice file(path, zuFileIoDevice::ReadOnly);
    if (!file.isOpen()) {
        mMessages.assign(1, zuObjMessage{0, "cannot open \"" + path + "\""});
        return {};
    }
    return Read(file, zuDirUtils::ExtractFileBaseName(path), zuDirUtils::ExtractDirectory(path), progress);
}

zuPointer<zuNode> zuObjReader::Read(zuIoDevice& device, const std::string& name, const std::string& folder,
                                    zuProgressNotifierInterface* progress)
{
    mMessages.clear();
    const int64_t size = device.size() - (device.size() >= 0 ? device.pos() : 0);
    // A small file is read in one chunk of its own size and parsed here.
    size_t chunkSize = mChunkSize;
    if (size >= 0 && static_cast<uint64_t>(size) < chunkSize)
        chunkSize = static_cast<size_t>(size) + 1;
    int workers = mThreadCount > 0 ? mThreadCount : static_cast<int>(std::thread::hardware_concurrency());
    workers = std::clamp(workers, 1, MAX_THREADS);
    if (workers == 1 || (size >= 0 && static_cast<uint64_t>(size) <= chunkSize))
        workers = 0;

    const int64_t steps = size > 0 ? (size + PROGRESS_STEP_BYTES - 1) / PROGRESS_STEP_BYTES : 1;
    if (progress)
        progress->openGroup("Reading OBJ file", steps);
    zuProgressNotifierGroupCloser closer(progress);
    try {
        Loader loader(mImages, folder, mMessages, progress);
        ChunkSource source(device, chunkSize);
        const bool read = Pipeline::Run(source, workers, [&loader](const zuObjParser::Chunk& chunk, size_t bytes) {
            return loader.consume(chunk, bytes);
        });
        if (!read) {
            if (source.failed())
                loader.report(0, "read error in \"" + name + "\"");
            return {};
        }
        loader.completeProgress(steps);
        zuPointer<zuNode> root = loader.finish(name);
        std::stable_sort(mMessages.begin(), mMessages.end(),
                         [](const zuObjMessage& a, const zuObjMessage& b) { return a.line < b.line; });
        return root;
    } catch (const std::bad_alloc&) {
        mMessages.push_back({0, "out of memory reading \"" + name + "\""});
        return {};
    }
}

} // namespace zu
