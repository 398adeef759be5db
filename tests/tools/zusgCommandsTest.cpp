// The user's commands of zusg (info, tree, convert, view) run on files made here: their
// exit statuses and first lines, a conversion round trip, the SVG they draw, and Ctrl-C.

#include "zusgRunner.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/io/zuIoManager.h>
#include <zuSceneGraph/io/zuSvgBuilder.h>
#include <zuSceneGraph/spatial/zuMeshTriangles.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <sstream>

namespace zu::test {
namespace {

namespace fs = std::filesystem;

class ZusgCommands : public ZusgRunner {
protected:
    static void SetUpTestSuite() { initializeZuSceneGraph(); }
    static void TearDownTestSuite() { terminateZuSceneGraph(); }

    // The W1 assembly of this depth, saved as an application saves it.
    fs::path saveW1(const std::string& name, int depth) const
    {
        zuPointer<zuNode> root = zusg::W1Assembly(depth).build();
        zuFileStream stream;
        stream.SetVersion(zuStreamVersion(6, 32));
        stream.InsertTopLevel(root);
        zuFileIoDevice device(file(name).string(), zuFileIoDevice::WriteOnly);
        EXPECT_TRUE(stream.Save(device, file(name).string(), false));
        return file(name);
    }

    // The output of tests/tools/svgCheck.py, or "" when python3 is missing.
    std::string check(const std::vector<std::string>& arguments) const
    {
        std::string command = "python3 " + quoted(SVG_CHECK);
        for (const std::string& argument : arguments)
            command.append(" ").append(quoted(argument));
        command.append(" >").append(quoted(file("check").string()));
        return std::system(command.c_str()) == 0 ? readFile(file("check")) : std::string();
    }
};

// The value of the line starting with `label` ("drawn      12 triangles" -> 12).
uint64_t figure(const std::string& text, const std::string& label)
{
    const size_t at = text.find("\n" + label);
    std::string digits;
    for (size_t i = at == std::string::npos ? text.size() : at + label.size() + 1; i < text.size(); ++i) {
        if (std::isdigit(static_cast<unsigned char>(text[i])))
            digits += text[i];
        else if (text[i] != ',' && text[i] != ' ')
            break;
    }
    return digits.empty() ? UINT64_MAX : std::stoull(digits);
}

TEST_F(ZusgCommands, EveryCommandAnswersWithItsStatusAndFirstLine)
{
    const std::string w1 = saveW1("w1.mvk", 2).string();
    std::string bytes = readFile(w1);
    std::ofstream(file("cut.mvk"), std::ios::binary) << bytes.substr(0, bytes.size() / 2);
    std::ofstream(file("newer.mvk"), std::ios::binary) << bytes.replace(0, 8, "MVK 9.01");
    std::ofstream(file("notes.txt")) << "text\n";
    fs::create_directory(file("folder.mvk"));
    const struct {
        std::vector<std::string> arguments;
        int status;
        std::string text;  // at the start of standard output, else anywhere in standard error
    } cases[] = {
        {{"--version"}, 0, "zuSceneGraph 3.0.0.17"},
        {{"version"}, 0, "zuSceneGraph 3.0.0.17 2022-7\n"},
        {{"--help"}, 0, "usage: zusg COMMAND"},
        {{"info", "--help"}, 0, "usage:\n  zusg info FILE [--lazy]\n"},
        {{"view", "-h", "x"}, 0, "usage:\n  zusg view FILE [-o OUT.svg]"},
        {{"info", w1}, 0, "file        " + w1 + ", "},
        {{"tree", w1, "--depth", "0"}, 0, "(unnamed) zuCore.zuNode, 768 triangles (72 objects below)\n"},
        {{"tree", w1, "--depth", "1", "--transforms"}, 0, "(unnamed) zuCore.zuNode, 768 triangles\n  local: identity\n"
                                                          "  (unnamed) zuCore.zuNode, 96 triangles (8 objects below)\n    local: translate (-4 -4 -4), rotate ("},
        {{"info", file("missing.mvk").string()}, 1, "missing.mvk: no such file"},
        {{"tree", file("folder.mvk").string()}, 1, "folder.mvk: is a directory"},
        {{"view", file("cut.mvk").string()}, 1, "cut.mvk"},
        {{"info", file("notes.txt").string()}, 1, "no driver loads files with the extension \"txt\""},
        {{"convert", w1, file("out.xyz").string()}, 1, "no driver saves files with the extension \"xyz\""},
        {{"convert", w1, file("folder.mvk").string()}, 1, "folder.mvk: is a directory"},
        {{"convert", w1, file("missing/out.mvk").string()}, 1, "No such file or directory\n"},
        {{"convert", w1, file("missing/out.obj").string()}, 1, "No such file or directory\n"},
        {{"convert", w1, file("out.mvk").string(), "--version", "5.0"}, 1, "must name a stream version from 6.0 to 6.32"},
        {{"info"}, 2, "usage:\n  zusg info"},
        {{}, 2, "usage: zusg COMMAND"},
        {{"frobnicate"}, 2, "unknown command 'frobnicate'"},
        {{"dump", "a.mvk", "b.mvk"}, 2, "zusg dump [--no-fields] FILE"},
        {{"dump"}, 2, ""},
        {{"dump", "--fields-please", "a.mvk"}, 2, ""},
        {{"version", "extra"}, 2, ""},
        {{"info", w1, "--fast"}, 2, ""},
        {{"tree", w1, "--depth", "-1"}, 2, "--depth takes a whole number"},
        {{"convert", w1}, 2, ""},
        {{"convert", w1, "out.mvk", "--version", "six"}, 2, "--version takes a stream version"},
        {{"convert", w1, "out.obj", "--version", "6.20"}, 2, "applies to object-stream files"},
        {{"convert", w1, "out.mvk", "--option", "=1"}, 2, "--option takes key=value"},
        {{"view", w1, "--size", "0x10"}, 2, "--size does not take '0x10'"},
        {{"view", w1, "--fov", "180"}, 2, ""},
        {{"view", w1, "--up", "0,0,0"}, 2, ""},
    };
    for (const auto& c : cases) {
        const RunResult r = run(c.arguments);
        EXPECT_EQ(r.status, c.status) << (c.arguments.empty() ? "" : c.arguments[0] + " " + c.arguments.back()) << "\n" << r.err;
        if (c.status == 0)
            EXPECT_EQ(r.out.substr(0, c.text.size()), c.text);
        else
            EXPECT_TRUE(has(r.err, c.text));
    }
    const RunResult newer = run({"info", file("newer.mvk").string()});
    EXPECT_EQ(newer.status, 0);
    EXPECT_TRUE(has(newer.err, "newer.mvk: warning: the stream version 9.01 is newer than this library's 6.32\n"));
    EXPECT_TRUE(has(run({"version"}).out, "\ndefault output stream version  6.32\n"));
    const RunResult info = run({"info", w1});
    for (const char* line : {"\nformat      object stream, MVK 6.32\n", "\nparts       64\n", "\ntriangles   768\n", "\nvertices    1,536\n",
                             "\n  zuCore.zuNode                                   9\n",
                             "\nblocks      128 blocks: 46,080 bytes in memory, 0 bytes left in the file\n"})
        EXPECT_TRUE(has(info.out, line));
    EXPECT_TRUE(has(run({"info", "--lazy", w1}).out, "46,080 bytes left in the file"));
    const std::string tree = run({"tree", w1}).out;
    EXPECT_EQ(std::count(tree.begin(), tree.end(), '\n'), 73);
    EXPECT_EQ(leftFiles(), (std::set<std::string>{"w1.mvk", "cut.mvk", "newer.mvk", "notes.txt", "folder.mvk"}));
}

// obj -> mvk -> obj: the same triangles at the same places; a line the reader drops is
// reported with its line.
TEST_F(ZusgCommands, ConvertRoundTripFromObjThroughTheStreamKeepsEveryTriangle)
{
    std::ofstream(file("in.obj")) << "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 2\ng quad\nf 1 2 3 4\ng tri\nf 1 3 4\nf 1 2 9\n";
    RunResult r = run({"convert", "in.obj", "mid.mvk"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(has(r.err, "in.obj:9: warning: index 9 out of range"));
    EXPECT_TRUE(has(r.out, "converted in.obj to mid.mvk: 1 top-level object, 3 triangles"));
    r = run({"convert", "--lazy", "mid.mvk", "out.obj"});
    EXPECT_EQ(r.status, 0) << r.err;

    // The corners of every triangle, in world space, as sorted lists of coordinates.
    const auto triangles = [this](const std::string& name) {
        std::vector<std::array<float, 9>> found;
        zuPointer<zuObject> loaded;
        EXPECT_TRUE(zuIoManager::msInstance->getMeshManager().loadMesh(loaded, file(name).string(), nullptr, {},
                                                                       nullptr, nullptr));
        auto* root = dynamic_cast<zuNode*>(loaded.get());
        for (int i = 0; root && i < root->getNbChildren(); ++i) {
            const auto* leaf = static_cast<const zuBaseGeometry*>(root->getChild(i));
            const zuMeshTriangles view(leaf);
            for (int t = 0; t < view.GetTriangleQuantity(); ++t) {
                Wm4::Vector3<float> p[3];
                view.GetTriangle(t, p[0], p[1], p[2]);
                found.push_back({p[0][0], p[0][1], p[0][2], p[1][0], p[1][1], p[1][2], p[2][0], p[2][1], p[2][2]});
            }
        }
        std::sort(found.begin(), found.end());
        return found;
    };
    EXPECT_EQ(triangles("in.obj").size(), 3u);
    EXPECT_EQ(triangles("out.obj"), triangles("in.obj"));
}

// The picture holds one polygon per triangle drawn; read back lazily it is the same; past
// the limit each visible part is a rectangle and the picture says so.
TEST_F(ZusgCommands, ViewDrawsOnePolygonPerTriangleItReportsAndSimplifiesPastTheLimit)
{
    saveW1("w1.mvk", 2);
    const RunResult full = run({"view", "w1.mvk", "--size", "320x240"});
    ASSERT_EQ(full.status, 0) << full.err;
    const uint64_t drawn = figure(full.out, "drawn");
    EXPECT_GT(drawn, 64u * 2);
    EXPECT_EQ(figure(full.out, "visible"), 64u);
    const std::string tags = check({"count", file("w1.svg").string()});
    if (tags.empty())
        GTEST_SKIP() << "python3 is missing";
    EXPECT_TRUE(has(tags, "polygon " + std::to_string(drawn) + "\n"));
    EXPECT_EQ(run({"view", "--lazy", "w1.mvk", "--size", "320x240", "-o", "lazy.svg"}).status, 0);
    EXPECT_EQ(readFile(file("lazy.svg")), readFile(file("w1.svg")));

    const RunResult simple = run({"view", "w1.mvk", "--max-triangles", "767", "-o", "simple.svg"});
    EXPECT_TRUE(has(simple.out, "note       768 triangles exceed the limit of 767"));
    EXPECT_TRUE(has(readFile(file("simple.svg")), "<!-- 768 triangles exceed the limit of 767"));
    EXPECT_EQ(check({"count", file("simple.svg").string()}), "g 1\nrect 65\nsvg 1\n");
}

// Ctrl-C during a long conversion: status 130, and neither the output nor a temporary file
// is left behind.
TEST_F(ZusgCommands, CtrlCStopsALongConversionWithStatus130AndLeavesNoFile)
{
#ifdef ZUSG_PATH
    saveW1("big.mvk", 5);
    int errPipe[2];
    ASSERT_EQ(::pipe(errPipe), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::dup2(errPipe[1], STDERR_FILENO);
        ::close(errPipe[0]);
        ::execl(ZUSG_PATH, "zusg", "convert", "--lazy", "--progress", file("big.mvk").c_str(),
                file("copy.mvk").c_str(), nullptr);
        ::_exit(127);
    }
    ::close(errPipe[1]);
    // The save's first progress line ("0%", then a line per tenth on a pipe) says it is under way.
    std::string err;
    char buffer[256];
    ssize_t n;
    while (err.find("saving copy.mvk: ") == std::string::npos && (n = ::read(errPipe[0], buffer, sizeof buffer)) > 0)
        err.append(buffer, static_cast<size_t>(n));
    ::kill(child, SIGINT);
    while ((n = ::read(errPipe[0], buffer, sizeof buffer)) > 0)
        err.append(buffer, static_cast<size_t>(n));
    ::close(errPipe[0]);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status)) << err;
    EXPECT_EQ(WEXITSTATUS(status), 130) << err;
    EXPECT_TRUE(has(err, "interrupted, " + file("copy.mvk").string() + " not written"));
    EXPECT_EQ(leftFiles(), std::set<std::string>{"big.mvk"});
#endif
}

} // namespace
} // namespace zu::test
