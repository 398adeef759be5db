// peers_table [--depth N] [--obj-grid N] [--runs N]: our library against peer libraries, side by side, in
// one invocation on one machine; prints one Markdown table per workload (the README keeps
// the latest) with the machine it ran on. Status 1 when a run failed, 2 on bad arguments.

#include "peersTable.h"

#include <sys/utsname.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>
#include <thread>

namespace peers {

std::string seconds(double value)
{
    char text[32];
    if (value >= 1.0)
        std::snprintf(text, sizeof text, "%.2f s", value);
    else if (value >= 0.001)
        std::snprintf(text, sizeof text, "%.3g ms", 1000.0 * value);
    else
        std::snprintf(text, sizeof text, "%.3g µs", 1e6 * value);
    return text;
}

std::string grouped(long long value)
{
    const std::string digits = std::to_string(value < 0 ? -value : value);
    std::string text = value < 0 ? "-" : "";
    for (size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            text += ',';
        text += digits[i];
    }
    return text;
}

std::string bytes(double value)
{
    return grouped(std::llround(value)) + " B";
}

std::string megabytes(double kilobytes)
{
    return grouped(std::llround(kilobytes / 1024.0)) + " MB";
}

std::string times(double ratio)
{
    char text[32];
    std::snprintf(text, sizeof text, ratio >= 10 ? "%.0fx" : "%.1fx", ratio);
    return text;
}

Row ratioRow(const std::string& measure, double ours, double peer, std::string (*format)(double), double target)
{
    Row row;
    row.measure = measure;
    row.ours = format(ours);
    row.peer = format(peer);
    const double ratio = peer / ours;
    row.ratio = times(ratio);
    if (target > 0) {
        row.target = "≥ " + times(target);
        row.met = ratio >= target;
    }
    return row;
}

namespace {

std::string cpuModel()
{
    std::ifstream cpuinfo("/proc/cpuinfo");
    std::string line;
    while (std::getline(cpuinfo, line))
        if (line.rfind("model name", 0) == 0 && line.find(':') != std::string::npos)
            return line.substr(line.find(':') + 2);
    return "unknown CPU";
}

std::string machine()
{
    char date[32];
    const std::time_t now = std::time(nullptr);
    std::strftime(date, sizeof date, "%Y-%m-%d", std::gmtime(&now));
    utsname system{};
    ::uname(&system);
    return cpuModel() + ", " + std::to_string(std::thread::hardware_concurrency()) + " cores, Linux " + system.release
           + ", " + date;
}

void print(const Table& table)
{
    std::printf("\n%s\n\n", table.title.c_str());
    std::printf("| measure | ours | %s | ratio | plain IO of our bytes | target | met |\n", table.peerName.c_str());
    std::printf("|---|---:|---:|---:|---|---|---|\n");
    for (const Row& row : table.rows)
        std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", row.measure.c_str(), row.ours.c_str(), row.peer.c_str(),
                    row.ratio.c_str(), row.limit.c_str(), row.target.c_str(),
                    row.target.empty() ? "" : row.met ? "yes" : "no");
    std::printf("\n");
    for (const std::string& note : table.notes)
        std::printf("- %s\n", note.c_str());
}

bool parse(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; i += 2) {
        if (i + 1 >= argc)
            return false;
        const std::string option = argv[i];
        char* end = nullptr;
        const long value = std::strtol(argv[i + 1], &end, 10);
        if (*end || end == argv[i + 1])
            return false;
        if (option == "--depth" && value >= 1 && value <= 7)
            options.depth = static_cast<int>(value);
        else if (option == "--obj-grid" && value >= 0 && value <= 4000)
            options.objGrid = static_cast<int>(value);
        else if (option == "--runs" && value >= 1 && value <= 99)
            options.runs = static_cast<int>(value);
        else
            return false;
    }
    return true;
}

} // namespace

} // namespace peers

int main(int argc, char** argv)
{
    peers::Options options;
    if (!peers::parse(argc, argv, options)) {
        std::fprintf(stderr, "usage: peers_table [--depth 1..7] [--obj-grid 0..4000] [--runs 1..99]\n");
        return 2;
    }
    std::printf("machine: %s\n", peers::machine().c_str());
    std::fflush(stdout);
    const peers::Table w1 = peers::runW1(options);
    peers::print(w1);
    const peers::Table pick = peers::runW1Pick(options);
    peers::print(pick);
    bool ok = w1.ok && pick.ok;
    if (options.objGrid > 0) {
        std::fflush(stdout);
        const peers::Table w2 = peers::runW2(options);
        peers::print(w2);
        ok = ok && w2.ok;
    }
    return ok ? 0 : 1;
}
