// W2 mesh import: our OBJ reader against tinyobjloader and assimp (when installed) on the
// same generated file, interleaved run by run, medians reported; then our OBJ writer.
//
//     bench_obj [--n N] [--runs R] [--threads T] [--file PATH]
//
// Other arguments (those `make bench` gives the Google Benchmark programs) are ignored.

#include "benchChild.h"
#include "peers/peersW2.h"

#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Reader {
    Reader(const char* readerName, std::function<bench::w2::Measure(const std::string&)> function)
        : name(readerName), read(std::move(function))
    {
    }
    const char* name;
    std::function<bench::w2::Measure(const std::string&)> read;
    std::vector<double> seconds;
    std::vector<double> cpuSeconds;
    std::vector<double> peakKB;
    long triangles = 0;
};

long fileSize(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? static_cast<long>(info.st_size) : -1;
}

} // namespace

int main(int argc, char** argv)
{
    int n = 1000, runs = 5, threads = 0;
    std::string path;
    for (int i = 1; i + 1 < argc; ++i) {
        if (!std::strcmp(argv[i], "--n"))
            n = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--runs"))
            runs = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--threads"))
            threads = std::atoi(argv[++i]);
        else if (!std::strcmp(argv[i], "--file"))
            path = argv[++i];
    }
    if (path.empty())
        path = "/tmp/zu_w2_" + std::to_string(n) + ".obj";
    if (fileSize(path) <= 0 && !bench::w2::WriteGrid(path, n)) {
        std::printf("cannot write %s\n", path.c_str());
        return 1;
    }
    const double megabytes = fileSize(path) / 1e6;
    std::printf("W2 grid OBJ(%d): %s, %ld bytes\n", n, path.c_str(), fileSize(path));

    std::vector<Reader> readers;
    readers.emplace_back("zuObjReader", [threads](const std::string& p) { return bench::w2::ReadOurs(p, threads); });
    if (bench::w2::HaveTinyObjLoader())
        readers.emplace_back("tinyobjloader", bench::w2::ReadTinyObjLoader);
    if (bench::w2::HaveAssimp())
        readers.emplace_back("assimp", bench::w2::ReadAssimp);

    for (int run = 0; run < runs; ++run)
        for (Reader& reader : readers) {
            const bench::w2::Measure measure = reader.read(path);
            if (!measure.ok) {
                std::printf("%s failed\n", reader.name);
                continue;
            }
            reader.seconds.push_back(measure.seconds);
            reader.cpuSeconds.push_back(measure.cpuSeconds);
            reader.peakKB.push_back(static_cast<double>(measure.peakKB));
            reader.triangles = measure.triangles;
        }

    if (readers[0].seconds.empty())
        return 1;
    const double ours = bench::median(readers[0].seconds);
    const double oursCpu = bench::median(readers[0].cpuSeconds);
    const double oursPeak = bench::median(readers[0].peakKB);
    std::printf("%-14s %9s %9s %9s %10s %12s %10s %10s %10s\n", "read", "median s", "MB/s", "cpu s", "peak MB",
                "triangles", "time/ours", "cpu/ours", "peak/ours");
    for (const Reader& reader : readers) {
        if (reader.seconds.empty())
            continue;
        const double seconds = bench::median(reader.seconds);
        const double cpu = bench::median(reader.cpuSeconds);
        const double peak = bench::median(reader.peakKB);
        std::printf("%-14s %9.3f %9.1f %9.3f %10.1f %12ld %10.2f %10.2f %10.2f\n", reader.name, seconds,
                    megabytes / seconds, cpu, peak / 1024.0, reader.triangles, seconds / ours, cpu / oursCpu,
                    peak / oursPeak);
    }

    std::vector<double> writeSeconds, writeCpu;
    double writtenMB = 0.0;
    const std::string output = path + ".written.obj";
    for (int run = 0; run < runs; ++run) {
        const bench::w2::Measure measure = bench::w2::WriteOurs(path, output);
        if (measure.ok) {
            writeSeconds.push_back(measure.seconds);
            writeCpu.push_back(measure.cpuSeconds);
            writtenMB = measure.peakKB * 1024.0 / 1e6;
        }
    }
    std::remove(output.c_str());
    std::remove((path + ".written.mtl").c_str());
    if (!writeSeconds.empty()) {
        const double seconds = bench::median(writeSeconds);
        std::printf("write zuObjWriter: %.3f s (cpu %.3f s), %.1f MB written, %.1f MB/s\n", seconds,
                    bench::median(writeCpu), writtenMB, writtenMB / seconds);
    }
    return 0;
}
