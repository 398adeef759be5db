#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zu {

class zuDynamicResourceCPULoadRequest;
class zuRC_WorkingThreadContext;

// Executes many CPU load requests with few file operations. The requests are grouped by
// file and sorted by stream offset; each file is opened once, and blocks that lie less than
// GAP_BYTES apart are read together, in one read of at most SPAN_BYTES, the bytes between
// them read and dropped. Each request then decodes its block from those bytes. A request
// ends exactly as its own execute would end it (the same block, the same status: a block
// cut short by the end of the file fails with 64, the others of its read are unharmed);
// only the reading differs. A request that holds its block already, has no file, or whose
// block alone exceeds SPAN_BYTES runs its own execute.
//
// The resource controller gives its workers batches of the pending loads of one file, and
// zuRendererInterface::LoadCPUData of many resources runs one on the calling thread.
class zuCPULoadBatch {
public:
    // Reading a gap costs less than another read from about 8 KB down (measured on blocks
    // in the page cache: a read call costs about as much as copying 6 KB).
    static constexpr uint64_t GAP_BYTES = uint64_t(8) << 10;
    static constexpr uint64_t SPAN_BYTES = uint64_t(1) << 20;

    // Executes each request once (nulls are skipped). With the context of a controller that
    // stops, it returns between two reads; the requests not reached stay unrun (status 2),
    // and the controller cancels them.
    static void execute(const std::vector<zuDynamicResourceCPULoadRequest*>& requests,
                        zuRC_WorkingThreadContext* context);

private:
    struct Block;
    // The blocks of one file, in offset order, read span by span through `buffer`.
    static void readFile(const std::string& path, const Block* first, const Block* last, char* buffer,
                         zuRC_WorkingThreadContext* context);
    static void fail(const Block* first, const Block* last);
};

} // namespace zu
