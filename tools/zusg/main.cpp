// zusg: inspects, converts and draws model files, and reports the library's versions.
//
//     zusg version
//     zusg dump [--no-fields] FILE
//     zusg demo [--depth N] [--keep FILE] [--svg FILE]
//     zusg pick FILE --eye x,y,z --dir x,y,z
//     zusg info FILE [--lazy]
//     zusg tree FILE [--depth N] [--transforms]
//     zusg convert IN OUT [--version M.m] [--option key=value ...] [--lazy] [--progress]
//     zusg view FILE [-o OUT.svg] [--size WxH] [--eye x,y,z] [--target x,y,z] [--up x,y,z] ...
//
// A command joins by adding its source file and one line to the table below.

#include "zusgCommand.h"

#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace zusg {
namespace {

const Command commands[] = {
    {"version", "", "print the library version and the default stream version", runVersion},
    {"dump", "[--no-fields] FILE",
     "list the records of an object-stream file (.mvk), each with the fields of its object\n"
     "      when its type is known; --no-fields lists the records only",
     runDump},
    {"demo", "[--depth N] [--keep FILE] [--svg FILE]",
     "build a scene of N levels (1 to 6, default 4), update, cull, save, load it fully and with\n"
     "      its buffers left in the file, and check what comes back; --keep saves to FILE and keeps it;\n"
     "      --svg draws what the camera sees into FILE",
     runDemo},
    {"pick", "FILE --eye x,y,z --dir x,y,z",
     "the nearest triangle that the ray from the eye along the direction meets in the file's\n"
     "      scene: leaf, triangle, world point and normal, distance",
     runPick},
    {"info", "FILE [--lazy]",
     "what a model file (any format the library loads) holds: format, objects by type, parts,\n"
     "      triangles, vertices, bound, blocks in memory and in the file, load time",
     runInfo},
    {"tree", "FILE [--depth N] [--transforms]",
     "the trees of a model file, one object a line: name, type, triangles; with --transforms\n"
     "      the local transformations",
     runTree},
    {"convert", "IN OUT [--version M.m] [--option key=value ...] [--lazy] [--progress]",
     "converts a model between the formats the library loads and saves (mvk, obj, ...);\n"
     "      --lazy leaves the blocks of a stream in its file until they are written; --progress\n"
     "      shows the progress of every step, even a quick one",
     runConvert},
    {"view", "FILE [-o OUT.svg] [--size WxH] [--eye x,y,z] [--target x,y,z] [--up x,y,z] [--fov DEG]\n"
             "      [--lazy] [--max-triangles N]",
     "draws what a camera sees of the model as SVG (by default the whole model from a diagonal)",
     runView},
};

void printUsageLine(std::ostream& out, const Command& command)
{
    out << "  zusg " << command.name;
    if (*command.arguments)
        out << " " << command.arguments;
    out << "\n      " << command.summary << "\n";
}

void printUsage(std::ostream& out)
{
    out << "usage: zusg COMMAND [ARGUMENTS]\n\ncommands:\n";
    for (const Command& command : commands)
        printUsageLine(out, command);
    out << "\n`zusg COMMAND --help` shows one command. Exit status: 0 on success, 1 when the command fails,\n"
           "2 on bad arguments, 130 when Ctrl-C stopped it.\n";
}

const Command* findCommand(const std::string& name)
{
    for (const Command& command : commands)
        if (name == command.name)
            return &command;
    return nullptr;
}

} // namespace
} // namespace zusg

int main(int argc, char** argv)
{
    using namespace zusg;
    if (argc < 2) {
        printUsage(std::cerr);
        return Usage;
    }
    const std::string name = argv[1];
    if (name == "--version")
        return runVersion({});
    if (name == "help" || name == "-h" || name == "--help") {
        printUsage(std::cout);
        return Success;
    }
    const Command* command = findCommand(name);
    if (!command) {
        std::cerr << "zusg: unknown command '" << name << "'\n\n";
        printUsage(std::cerr);
        return Usage;
    }
    const std::vector<std::string> arguments(argv + 2, argv + argc);
    for (const std::string& argument : arguments)
        if (argument == "--help" || argument == "-h") {
            std::cout << "usage:\n";
            printUsageLine(std::cout, *command);
            return Success;
        }
    const int status = command->run(arguments);
    if (status == Usage) {
        std::cerr << "usage:\n";
        printUsageLine(std::cerr, *command);
    }
    std::cout.flush();
    return status;
}
