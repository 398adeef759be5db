#pragma once

// What the fuzz targets share: the library started once per process with its messages
// silenced, files of the process's own folder for the readers that take a path, and the
// walks a loaded scene must survive.

#include <zuSceneGraph/objects/zuObject.h>
#include <zuSceneGraph/objects/zuPointer.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zu::fuzz {

using Objects = std::vector<zuPointer<zuObject>>;

// One input of a target, for the life of the target's call. It starts the library (once)
// and sends its messages nowhere: a reader reports every bad input, and printing the
// reports would be most of the work. Under the sanitizers it also counts the bytes the heap
// holds: when the input makes them grow by more than MEMORY_ALLOWED plus MEMORY_PER_BYTE
// times its size, that is a finding (a count read from the file that was not checked
// against the bytes that remain, or derived data without a cap).
class Input {
public:
    static constexpr size_t MEMORY_ALLOWED = size_t(8) << 20;
    static constexpr size_t MEMORY_PER_BYTE = 32;
    explicit Input(size_t size);
    ~Input();
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

private:
    size_t mSize;
    int64_t mHeld;
};

// Writes `size` bytes to `name` in this process's folder (removed at exit); returns the path.
std::string writeFile(const std::string& name, const uint8_t* data, size_t size);

// Runs the update pass and two culls (with and without the level-of-detail policy) from
// every spatial object of `objects` that has no parent, then copies every object and
// compares it with its copy.
void updateAndCull(const Objects& objects);

// Reads back, through the synchronous renderer interface, every block left in its file by
// the objects of `objects` (buffers and images, also those of the geometry below nodes),
// in bulk and then one by one (which must agree), dropping the blocks again after each.
void readBlocksBack(const Objects& objects);

// A finding that is no crash: prints what broke and aborts, so that the fuzzer keeps the input.
[[noreturn]] void fail(const char* what);

} // namespace zu::fuzz
