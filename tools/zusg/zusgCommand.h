#pragma once

#include <string>
#include <vector>

namespace zusg {

// The exit statuses of every command.
enum ExitStatus {
    Success = 0,
    Failure = 1,       // the command ran and failed: missing file, corrupt data, ...
    Usage = 2,         // the arguments do not fit the command
    Interrupted = 130  // Ctrl-C stopped it (128 + SIGINT, as shells report it); nothing half-written is left
};

// One command of the tool: `zusg NAME ARGUMENTS`. A command returns an ExitStatus; on
// Usage, the caller prints the command's usage line.
struct Command {
    const char* name;
    const char* arguments;  // as shown in the usage text, e.g. "FILE"
    const char* summary;
    int (*run)(const std::vector<std::string>& arguments);
};

// The commands, one per source file (zusgVersion.cpp, zusgDump.cpp, ...).
int runVersion(const std::vector<std::string>& arguments);
int runDump(const std::vector<std::string>& arguments);
int runDemo(const std::vector<std::string>& arguments);
int runPick(const std::vector<std::string>& arguments);
int runInfo(const std::vector<std::string>& arguments);
int runTree(const std::vector<std::string>& arguments);
int runConvert(const std::vector<std::string>& arguments);
int runView(const std::vector<std::string>& arguments);

} // namespace zusg
