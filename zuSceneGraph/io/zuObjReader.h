#pragma once

#include <zuSceneGraph/io/zuMtlReader.h>
#include <zuSceneGraph/objects/zuCatalog.h>
#include <zuSceneGraph/objects/zuPointer.h>

#include <cstddef>
#include <string>
#include <vector>

namespace zu {

class zuImage;
class zuIoDevice;
class zuNode;
class zuProgressNotifierInterface;

// Reads an OBJ file into a zuNode named after the file, with one leaf per group (`g` or
// `o`) and material (`usemtl`): a zuTriMesh for the faces, a zuLine for the lines and a
// zuPoint for the points of each, in the order they first appear. The leaves carry the
// material and texture states of their MTL material (zuMtlReader); textures name their
// images in the lent catalogue.
//
// The file is read in chunks cut at line ends; the chunks are parsed on worker threads
// (zuObjParser) and merged in file order on the calling thread, which resolves the indices
// and builds the leaves (zuObjMeshBuilder). Only the vertex statements of the whole file,
// the leaves being built and the chunks in flight are held, never the whole text.
//
// Bad input is reported, not fatal: a bad line, a bad number, an index out of range, a
// missing material library, material or texture each add a message with its line, and the
// rest of the file still loads; a face, line or point statement with a bad index is
// dropped. Indices count from the vertex statements above the statement that uses them.
class zuObjReader {
public:
    // At most this many messages are kept per file; one more says that others were dropped.
    static constexpr size_t MAX_MESSAGES = 1000;
    static constexpr size_t DEFAULT_CHUNK_SIZE = size_t(2) << 20;

    explicit zuObjReader(zuCatalog<zuImage>& images);
    ~zuObjReader();
    zuObjReader(const zuObjReader&) = delete;
    zuObjReader& operator=(const zuObjReader&) = delete;

    // Worker threads for the parse; 0 (the default) takes one per hardware thread, 1 parses
    // on the calling thread. A file of one chunk is always parsed on the calling thread.
    void SetThreadCount(int count) { mThreadCount = count; }
    // The bytes read at once (at least 4 KB; a longer line is read whole).
    void SetChunkSize(size_t bytes) { mChunkSize = bytes < 4096 ? 4096 : bytes; }

    // Reads the file at `path`; material libraries are looked for beside it. Null when the
    // file cannot be read or the progress notifier asked to cancel (nothing is kept then).
    zuPointer<zuNode> ReadFile(const std::string& path, zuProgressNotifierInterface* progress);
    // Reads from a device; `name` names the root node, and material libraries are looked
    // for in `folder` (a folder path with its trailing separator; empty: the current one).
    zuPointer<zuNode> Read(zuIoDevice& device, const std::string& name, const std::string& folder,
                           zuProgressNotifierInterface* progress);

    // The reports of the last read, ordered by line.
    const std::vector<zuObjMessage>& GetMessages() const { return mMessages; }

private:
    zuCatalog<zuImage>& mImages;
    std::vector<zuObjMessage> mMessages;
    int mThreadCount = 0;
    size_t mChunkSize = DEFAULT_CHUNK_SIZE;
};

} // namespace zu
