#include <zuSceneGraph/resources/zuCPULoadBatch.h>

#include <zuSceneGraph/resources/zuBlockReader.h>
#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuDynamicResourceCPULoadRequest.h>
#include <zuSceneGraph/resources/zuRC_WorkingThreadContext.h>

#include <sys/types.h>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zu {

namespace {

constexpr uint64_t MAX_OFFSET = static_cast<uint64_t>(std::numeric_limits<off_t>::max());

// Numbers the files of the blocks in the order they first appear. The requests of a batch
// mostly come file by file, so the last file is tried before the table.
class FileNumbers {
public:
    uint32_t of(const std::string& path)
    {
        if (!mPaths.empty() && path == *mPaths[mLast])
            return mLast;
        const auto found = mNumbers.try_emplace(path, static_cast<uint32_t>(mPaths.size()));
        if (found.second)
            mPaths.push_back(&path);
        mLast = found.first->second;
        return mLast;
    }
    const std::string& path(uint32_t file) const { return *mPaths[file]; }

private:
    std::unordered_map<std::string_view, uint32_t> mNumbers;
    std::vector<const std::string*> mPaths;  // each held by a request's handler
    uint32_t mLast = 0;                      // the file of the last block
};

} // namespace

// A block to read: where its file form lies, at most.
struct zuCPULoadBatch::Block {
    zuDynamicResourceCPULoadRequest* request;
    uint32_t file;  // the index of its file among those of the batch
    uint64_t offset;
    uint64_t end;
};

void zuCPULoadBatch::fail(const Block* first, const Block* last)
{
    for (const Block* block = first; block != last; ++block)
        block->request->mStatus = zuDynamicResourceCPULoadRequest::STATUS_IO_ERROR;
}

void zuCPULoadBatch::readFile(const std::string& path, const Block* first, const Block* last, char* buffer,
              zuRC_WorkingThreadContext* context)
{
    std::FILE* file = fopen64(path.c_str(), "rb");
    if (!file) {
        fail(first, last);
        return;
    }
    // The spans are read straight into the buffer, not through the stream's own.
    std::setvbuf(file, nullptr, _IONBF, 0);
    for (const Block* block = first; block != last;) {
        if (context && context->isStopRequested())
            break;
        const uint64_t start = block->offset;
        uint64_t end = block->end;
        const Block* next = block + 1;
        for (; next != last && next->offset <= end + GAP_BYTES
               && std::max(end, next->end) - start <= SPAN_BYTES;
             ++next)
            end = std::max(end, next->end);
        if (fseeko(file, static_cast<off_t>(start), SEEK_SET) != 0) {
            fail(block, next);
        } else {
            // The file may end before the last block's widest form does: each block is
            // decoded from what arrived.
            const uint64_t got = std::fread(buffer, 1, static_cast<size_t>(end - start), file);
            for (; block != next; ++block) {
                const uint64_t from = block->offset - start;
                zuBlockReader reader(buffer + from, got > from ? got - from : 0);
                block->request->readBlock(reader);
            }
        }
        block = next;
    }
    std::fclose(file);
}

void zuCPULoadBatch::execute(const std::vector<zuDynamicResourceCPULoadRequest*>& requests,
                             zuRC_WorkingThreadContext* context)
{
    std::vector<Block> blocks;
    blocks.reserve(requests.size());
    FileNumbers files;
    for (zuDynamicResourceCPULoadRequest* request : requests) {
        if (!request)
            continue;
        const zuBlockResourceHandler* handler = request->getHandler();
        if (!request->getBlock() && handler && !handler->getResourceFilePath().empty()) {
            const uint64_t offset = handler->getStreamOffset();
            const uint64_t bytes = handler->getMaxFileBytes();
            if (bytes <= SPAN_BYTES && offset <= MAX_OFFSET - bytes) {
                blocks.push_back({request, files.of(handler->getResourceFilePath()), offset, offset + bytes});
                continue;
            }
        }
        request->execute(context);
    }
    if (blocks.empty())
        return;
    const std::unique_ptr<char[]> buffer(new (std::nothrow) char[SPAN_BYTES]);
    if (!buffer) {
        for (const Block& block : blocks)
            block.request->execute(context);
        return;
    }
    std::sort(blocks.begin(), blocks.end(), [](const Block& a, const Block& b) {
        return a.file != b.file ? a.file < b.file : a.offset < b.offset;
    });
    for (auto first = blocks.begin(); first != blocks.end();) {
        const auto last = std::find_if(first, blocks.end(), [first](const Block& b) { return b.file != first->file; });
        readFile(files.path(first->file), &*first, &*first + (last - first), buffer.get(), context);
        first = last;
    }
}

} // namespace zu
