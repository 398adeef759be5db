// W2 against the OBJ readers of other libraries (tinyobjloader, assimp: those installed when
// the table was built): the readers' turns rotate from run to run, each read in a forked
// child (peersW2.h), medians of the runs; then our writer.

#include "peersTable.h"

#include "../benchMeasure.h"
#include "peersW2.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace peers {

namespace {

struct Reader {
    Reader(std::string readerName, std::function<bench::w2::Measure(const std::string&)> function)
        : name(std::move(readerName)), read(std::move(function))
    {
    }
    std::string name;
    std::function<bench::w2::Measure(const std::string&)> read;
    std::vector<double> seconds;
    std::vector<double> peakKB;
    long triangles = 0;
};

} // namespace

Table runW2(const Options& options)
{
    Table table;
    table.peerName = "peer";
    const std::string path = (std::filesystem::temp_directory_path()
                              / ("peers-" + std::to_string(::getpid()) + "-w2.obj")).string();
    std::vector<Reader> readers;
    readers.emplace_back("ours", [](const std::string& file) { return bench::w2::ReadOurs(file); });
    if (bench::w2::HaveTinyObjLoader())
        readers.emplace_back("tinyobjloader", bench::w2::ReadTinyObjLoader);
    if (bench::w2::HaveAssimp())
        readers.emplace_back("assimp", bench::w2::ReadAssimp);
    if (!bench::w2::WriteGrid(path, options.objGrid)) {
        table.ok = false;
        table.notes.push_back("FAILED: cannot write " + path);
        return table;
    }
    std::error_code error;
    const double fileBytes = static_cast<double>(std::filesystem::file_size(path, error));
    table.title = "W2 grid OBJ(" + std::to_string(options.objGrid) + "): " + grouped(static_cast<long long>(fileBytes))
                  + " bytes, " + std::to_string(options.runs) + " runs of each reader, interleaved; medians";

    std::vector<double> writeSeconds;
    const std::string written = path + ".written.obj";
    for (int run = 0; run < options.runs; ++run) {
        std::fprintf(stderr, "W2 N=%d: run %d of %d\n", options.objGrid, run + 1, options.runs);
        for (size_t k = 0; k < readers.size(); ++k) {
            Reader& reader = readers[(static_cast<size_t>(run) + k) % readers.size()];
            const bench::w2::Measure measure = reader.read(path);
            if (!measure.ok) {
                table.ok = false;
                table.notes.push_back("FAILED: " + reader.name + " could not read " + path);
                continue;
            }
            reader.seconds.push_back(measure.seconds);
            reader.peakKB.push_back(static_cast<double>(measure.peakKB));
            reader.triangles = measure.triangles;
        }
        const bench::w2::Measure write = bench::w2::WriteOurs(path, written);
        if (write.ok)
            writeSeconds.push_back(write.seconds);
    }
    std::filesystem::remove(path, error);
    std::filesystem::remove(written, error);
    std::filesystem::remove(path + ".written.mtl", error);
    if (!table.ok)
        return table;

    const Reader& ours = readers[0];
    for (size_t k = 1; k < readers.size(); ++k)
        table.rows.push_back(ratioRow("read (" + readers[k].name + ")", bench::median(ours.seconds),
                                      bench::median(readers[k].seconds), seconds, 5));
    for (size_t k = 1; k < readers.size(); ++k)
        table.rows.push_back(ratioRow("peak memory of the read (" + readers[k].name + ")", bench::median(ours.peakKB),
                                      bench::median(readers[k].peakKB), megabytes, 1));
    if (!writeSeconds.empty()) {
        Row write;
        write.measure = "write (ours, MB/s)";
        const double rate = fileBytes / 1e6 / bench::median(writeSeconds);
        write.ours = grouped(static_cast<long long>(rate)) + " MB/s";
        write.target = "≥ 300 MB/s";
        write.met = rate >= 300;
        table.rows.push_back(write);
    }
    if (readers.size() == 1)
        table.notes.push_back("no peer OBJ reader installed (libtinyobjloader-dev, libassimp-dev)");
    std::string triangles = "triangles read:";
    for (const Reader& reader : readers)
        triangles += " " + reader.name + " " + grouped(reader.triangles) + ",";
    triangles.pop_back();
    table.notes.push_back(triangles);
    return table;
}

} // namespace peers
