#pragma once

// The W2 mesh-import workload (an N x N grid of quads as an OBJ file) and one measure per
// reader, each taken in a forked child so that its peak memory is its own. The peer
// readers are measured only when their libraries were found at configure time
// (ZU_HAVE_TINYOBJLOADER, ZU_HAVE_ASSIMP); a target that builds this file links them as
// bench_obj does (bench/CMakeLists.txt). bench_obj (bench/objW2Bench.cpp) runs them
// interleaved and prints the medians.

#include <string>

namespace bench::w2 {

// The result of one reader on one file. `peakKB` is the child's peak resident memory
// (VmHWM) after the read; `triangles` what the reader made of the file.
struct Measure {
    bool ok = false;
    double seconds = 0.0;
    double cpuSeconds = 0.0;  // user + system time of all the reader's threads
    long peakKB = 0;
    long triangles = 0;
};

// Writes the W2 grid file of size n; false when the file cannot be written.
bool WriteGrid(const std::string& path, int n);

// Reads the file with our reader (`threads` 0: one per core).
Measure ReadOurs(const std::string& path, int threads = 0);
// Reads the file and writes it back as OBJ to `outputPath`; `seconds` is the write alone,
// `peakKB` the bytes written / 1024.
Measure WriteOurs(const std::string& path, const std::string& outputPath);
// The peers; `ok` is false when the library is not available.
Measure ReadTinyObjLoader(const std::string& path);
Measure ReadAssimp(const std::string& path);
bool HaveTinyObjLoader();
bool HaveAssimp();

} // namespace bench::w2
