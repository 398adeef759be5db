#pragma once

#include <zuSceneGraph/stream/zuStreamVersion.h>

#include <cstdint>
#include <memory>
#include <string>

namespace zu {

// Where a block lies in a stream file: the file's path (shared with the stream that read or
// wrote it, null for no file), the block's offset and the stream's version.
struct zuStreamPosition {
    uint64_t offset = 0;
    zuStreamVersion version;
    std::shared_ptr<const std::string> path;
};

} // namespace zu
