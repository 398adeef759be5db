// Runs the built zusg tool on files saved here and checks what it prints and returns.
// The tool registers only the library's own classes, so the test classes it meets in
// these files are types no factory of its knows.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace zu::test {
namespace {

namespace fs = std::filesystem;

struct RunResult {
    int status = -1;
    std::string out;
    std::string err;
};

// One record as the tool lists it, or as the test expects it.
struct ListedRecord {
    uint64_t offset = 0;
    bool topLevel = false;
    int size = 0;
    uint64_t identifier = 0;
    std::string type;
    bool unknown = false;

    bool operator==(const ListedRecord&) const = default;
};

std::ostream& operator<<(std::ostream& out, const ListedRecord& r)
{
    return out << "{" << r.offset << (r.topLevel ? " top " : " ") << r.size << " 0x" << std::hex << r.identifier
               << std::dec << " " << r.type << (r.unknown ? " unknown" : "") << "}";
}

std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (char c : text)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

std::string readFile(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void writeFile(const fs::path& path, const std::vector<char>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::vector<char> readBytes(const fs::path& path)
{
    const std::string text = readFile(path);
    return std::vector<char>(text.begin(), text.end());
}

// The record lines of a dump listing: those between the column header and the summary.
std::vector<ListedRecord> parseListing(const std::string& out)
{
    std::vector<ListedRecord> records;
    std::istringstream lines(out);
    std::string line;
    bool inTable = false;
    while (std::getline(lines, line)) {
        std::istringstream fields(line);
        std::string first;
        fields >> first;
        if (first == "offset") {
            inTable = true;
            continue;
        }
        if (!inTable || first.empty() || !std::isdigit(static_cast<unsigned char>(first[0])))
            continue;
        if (line.find(" records, ") != std::string::npos)
            break;
        ListedRecord record;
        std::string top, identifier, unknown;
        record.offset = std::stoull(first);
        fields >> top >> record.size >> identifier >> record.type >> unknown;
        record.topLevel = top == "yes";
        record.identifier = std::stoull(identifier, nullptr, 16);
        record.unknown = unknown == "(unknown)";
        records.push_back(record);
    }
    return records;
}

// The records a 6.x file of these top-level objects holds, in the order the stream writes
// them, with their offsets after the 9-byte header "MVK 6.32".
std::vector<ListedRecord> expectedRecords(const std::vector<zuRttiInterface*>& topLevel, zuStreamVersion version)
{
    zuBaseStream stream;
    stream.SetVersion(version);
    for (zuRttiInterface* object : topLevel)
        stream.InsertTopLevel(object);
    stream.initializeClientBufferSave();
    std::vector<ListedRecord> records;
    uint64_t offset = zuStreamVersion::LENGTH_V6;
    for (int i = 0; i < stream.GetOrderedObjectCount(); ++i) {
        const zuRttiInterface* object = stream.GetOrderedObjectAt(i);
        ListedRecord record;
        record.topLevel = stream.IsTopLevel(object);
        if (record.topLevel)
            offset += 4 + 9;  // the "Top Level" marker
        record.offset = offset;
        record.size = object->GetDiskUsed(stream);
        record.identifier = reinterpret_cast<uintptr_t>(object);
        record.type = object->GetType().GetName();
        record.unknown = true;
        offset += static_cast<uint64_t>(record.size);
        records.push_back(record);
    }
    return records;
}

// A small graph: root (controller c; children a, b) with b also holding a, and a second
// top-level node.
struct SampleGraph {
    zuPointer<zuTestNode> root = new zuTestNode("root", 7);
    zuPointer<zuTestNode> a = new zuTestNode("a", 1);
    zuPointer<zuTestNode> b = new zuTestNode("b", 2);
    zuPointer<zuTestController> c = new zuTestController;
    zuPointer<zuTestNode> other = new zuTestNode("other", 3);
    SampleGraph()
    {
        root->AttachController(c);
        root->AttachChild(a);
        root->AttachChild(b);
        b->AttachChild(a);
    }
    std::vector<zuRttiInterface*> topLevel() const { return {root.get(), other.get()}; }
};

class Zusg : public ::testing::Test {
protected:
    void SetUp() override
    {
#ifndef ZUSG_PATH
        GTEST_SKIP() << "zusg is not built";
#endif
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        mDir = fs::temp_directory_path()
            / ("zusgTest-" + std::to_string(::getpid()) + "-" + info->test_suite_name() + "-" + info->name());
        fs::remove_all(mDir);
        fs::create_directories(mDir);
    }
    void TearDown() override
    {
        if (!mDir.empty())
            fs::remove_all(mDir);
    }

    fs::path file(const std::string& name) const { return mDir / name; }

    RunResult run(const std::vector<std::string>& arguments) const
    {
        RunResult result;
#ifdef ZUSG_PATH
        std::string command = quoted(ZUSG_PATH);
        for (const std::string& argument : arguments)
            command.append(" ").append(quoted(argument));
        command.append(" >").append(quoted(file("stdout").string()));
        command.append(" 2>").append(quoted(file("stderr").string()));
        const int raw = std::system(command.c_str());
        result.status = raw != -1 && WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        result.out = readFile(file("stdout"));
        result.err = readFile(file("stderr"));
#else
        (void)arguments;
#endif
        return result;
    }

    // Saves the objects through a file stream, as an application does.
    fs::path save(const std::string& name, const std::vector<zuRttiInterface*>& topLevel,
                  zuStreamVersion version = zuStreamVersion(6, 32)) const
    {
        const fs::path path = file(name);
        zuFileIoDevice device(path.string(), zuFileIoDevice::WriteOnly);
        zuFileStream stream;
        stream.SetVersion(version);
        for (zuRttiInterface* object : topLevel)
            stream.InsertTopLevel(object);
        EXPECT_TRUE(stream.Save(device, path.string(), false));
        device.close();
        EXPECT_FALSE(device.isError());
        return path;
    }

    zuTestFactories mFactories;
    fs::path mDir;
};

// ---------------------------------------------------------------------------------------
// Command line

using ZusgCommandLine = Zusg;

TEST_F(ZusgCommandLine, NoCommandPrintsTheUsageWithStatus2)
{
    const RunResult r = run({});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("usage: zusg COMMAND"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("zusg dump FILE"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("zusg version"), std::string::npos) << r.err;
}

TEST_F(ZusgCommandLine, UnknownCommandIsAUsageError)
{
    const RunResult r = run({"frobnicate"});
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("unknown command 'frobnicate'"), std::string::npos) << r.err;
}

TEST_F(ZusgCommandLine, DumpNeedsExactlyOneFile)
{
    EXPECT_EQ(run({"dump"}).status, 2);
    const RunResult two = run({"dump", "a.mvk", "b.mvk"});
    EXPECT_EQ(two.status, 2);
    EXPECT_NE(two.err.find("zusg dump FILE"), std::string::npos) << two.err;
    EXPECT_EQ(run({"version", "extra"}).status, 2);
}

TEST_F(ZusgCommandLine, HelpGoesToStandardOutputWithStatus0)
{
    const RunResult r = run({"--help"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("usage: zusg COMMAND"), std::string::npos) << r.out;
}

// ---------------------------------------------------------------------------------------
// version

using ZusgVersion = Zusg;

TEST_F(ZusgVersion, PrintsTheLibraryVersionTextsAndTheDefaultStreamVersion)
{
    const RunResult r = run({"version"});
    EXPECT_EQ(r.status, 0);
    EXPECT_NE(r.out.find("zuSceneGraph 3.0.0.17 2022-7\n"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find(zuSceneGraph::Version::GetDescStringMajorMinorReleaseRevision()), std::string::npos);
    char stream[32];
    std::snprintf(stream, sizeof stream, "%d.%02d\n", zuMajorOutputStreamVersion, zuMinorOutputStreamVersion);
    EXPECT_NE(r.out.find(std::string("default output stream version  ") + stream), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("6.32"), std::string::npos) << r.out;
}

// ---------------------------------------------------------------------------------------
// dump of 6.x streams

using ZusgDump = Zusg;

TEST_F(ZusgDump, ListsEveryRecordWithItsOffsetTopLevelMarkSizeAndIdentifier)
{
    SampleGraph g;
    const fs::path path = save("graph.mvk", g.topLevel());
    const RunResult r = run({"dump", path.string()});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("object stream \"MVK 6.32\", " + std::to_string(fs::file_size(path)) + " bytes"),
              std::string::npos)
        << r.out;
    const std::vector<ListedRecord> expected = expectedRecords(g.topLevel(), zuStreamVersion(6, 32));
    ASSERT_EQ(expected.size(), 5u);  // root, c, a, b, other: a shared child is written once
    EXPECT_EQ(parseListing(r.out), expected) << r.out;
    EXPECT_NE(r.out.find("5 records, 2 top-level"), std::string::npos) << r.out;
}

TEST_F(ZusgDump, TypesNoRegisteredFactoryKnowsAreMarkedUnknown)
{
    SampleGraph g;
    const RunResult r = run({"dump", save("graph.mvk", g.topLevel()).string()});
    ASSERT_EQ(r.status, 0) << r.err;
    for (const ListedRecord& record : parseListing(r.out))
        EXPECT_TRUE(record.unknown) << record;
    EXPECT_NE(r.out.find("types no registered factory knows: zuTest.zuTestController (1) zuTest.zuTestNode (4)"),
              std::string::npos)
        << r.out;
}

TEST_F(ZusgDump, WalksThousandsOfRecordsAcrossItsReadBuffer)
{
    // Names of growing length make records of every size, so that record headers straddle
    // the boundaries of the tool's read buffer at every possible point.
    zuPointer<zuTestNode> root = new zuTestNode("root");
    for (int i = 0; i < 6000; ++i)
        root->AttachChild(new zuTestNode(std::string(static_cast<size_t>(i % 97), 'n'), i));
    const RunResult r = run({"dump", save("many.mvk", {root.get()}).string()});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<ListedRecord> listed = parseListing(r.out);
    const std::vector<ListedRecord> expected = expectedRecords({root.get()}, zuStreamVersion(6, 32));
    ASSERT_EQ(listed.size(), expected.size());
    for (size_t i = 0; i < listed.size(); ++i)
        ASSERT_EQ(listed[i], expected[i]) << "record " << i;
}

TEST_F(ZusgDump, AStreamWithOnlyItsHeaderHasNoRecords)
{
    const fs::path path = save("empty.mvk", {});
    ASSERT_EQ(fs::file_size(path), 9u);
    const RunResult r = run({"dump", path.string()});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(parseListing(r.out).empty());
    EXPECT_NE(r.out.find("0 records, 0 top-level"), std::string::npos) << r.out;
}

// ---------------------------------------------------------------------------------------
// dump of broken files: status 1 and the offset where the data breaks

using ZusgDumpBroken = Zusg;

TEST_F(ZusgDumpBroken, ATruncatedRecordIsReportedAtItsOffsetAfterTheRecordsBeforeIt)
{
    SampleGraph g;
    const std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const std::vector<ListedRecord> expected = expectedRecords(g.topLevel(), zuStreamVersion(6, 32));
    const ListedRecord& cut = expected[2];
    writeFile(file("cut.mvk"), std::vector<char>(bytes.begin(), bytes.begin() + static_cast<long>(cut.offset) + 10));

    const RunResult r = run({"dump", file("cut.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(parseListing(r.out), std::vector<ListedRecord>(expected.begin(), expected.begin() + 2)) << r.out;
    EXPECT_NE(r.err.find("corrupt or truncated at offset " + std::to_string(cut.offset) + ":"), std::string::npos)
        << r.err;
    EXPECT_NE(r.err.find(file("cut.mvk").string()), std::string::npos) << r.err;
}

TEST_F(ZusgDumpBroken, EveryCutInsideARecordIsReportedNeverListed)
{
    // Whatever the cut, the tool lists only whole records before it; a cut inside a record
    // fails and names an offset no later than the cut. A cut between two records leaves a
    // shorter stream that is whole.
    SampleGraph g;
    const std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const std::vector<ListedRecord> expected = expectedRecords(g.topLevel(), zuStreamVersion(6, 32));
    for (size_t length = 9 + 1; length < bytes.size(); ++length) {
        writeFile(file("cut.mvk"), std::vector<char>(bytes.begin(), bytes.begin() + static_cast<long>(length)));
        const RunResult r = run({"dump", file("cut.mvk").string()});
        const std::vector<ListedRecord> listed = parseListing(r.out);
        ASSERT_LE(listed.size(), expected.size());
        for (size_t i = 0; i < listed.size(); ++i) {
            EXPECT_EQ(listed[i], expected[i]) << "cut at " << length;
            EXPECT_LE(listed[i].offset + static_cast<uint64_t>(listed[i].size), length);
        }
        const bool betweenRecords = !listed.empty() && listed.back().offset + listed.back().size == length;
        if (betweenRecords) {
            EXPECT_EQ(r.status, 0) << "cut at " << length << ": " << r.err;
            continue;
        }
        EXPECT_EQ(r.status, 1) << "cut at " << length;
        const size_t at = r.err.find("truncated at offset ");
        ASSERT_NE(at, std::string::npos) << "cut at " << length << ": " << r.err;
        EXPECT_LE(std::stoull(r.err.substr(at + 20)), length) << r.err;
    }
}

TEST_F(ZusgDumpBroken, TrailingBytesAfterTheLastRecordAreReported)
{
    SampleGraph g;
    std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const uint64_t end = bytes.size();
    bytes.insert(bytes.end(), {1, 2, 3});
    writeFile(file("tail.mvk"), bytes);
    const RunResult r = run({"dump", file("tail.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(parseListing(r.out).size(), 5u) << r.out;
    EXPECT_NE(r.err.find("at offset " + std::to_string(end) + ":"), std::string::npos) << r.err;
}

TEST_F(ZusgDumpBroken, ASizeFieldSmallerThanTheRecordHeaderIsReportedAtTheField)
{
    SampleGraph g;
    std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const ListedRecord second = expectedRecords(g.topLevel(), zuStreamVersion(6, 32))[1];
    const uint64_t sizeField = second.offset + 4 + second.type.size();
    const int32_t tooSmall = 3;
    std::memcpy(bytes.data() + sizeField, &tooSmall, 4);
    writeFile(file("size.mvk"), bytes);
    const RunResult r = run({"dump", file("size.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(parseListing(r.out).size(), 1u) << r.out;
    EXPECT_NE(r.err.find("at offset " + std::to_string(sizeField) + ":"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("announces 3 bytes"), std::string::npos) << r.err;
}

TEST_F(ZusgDumpBroken, ASizeFieldPastTheEndOfTheFileIsReportedAtTheRecord)
{
    SampleGraph g;
    std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const ListedRecord first = expectedRecords(g.topLevel(), zuStreamVersion(6, 32))[0];
    const int32_t huge = 1 << 30;
    std::memcpy(bytes.data() + first.offset + 4 + first.type.size(), &huge, 4);
    writeFile(file("huge.mvk"), bytes);
    const RunResult r = run({"dump", file("huge.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(parseListing(r.out).empty()) << r.out;
    EXPECT_NE(r.err.find("at offset " + std::to_string(first.offset) + ":"), std::string::npos) << r.err;
}

TEST_F(ZusgDumpBroken, AGarbledTypeNameIsReportedAtTheRecord)
{
    SampleGraph g;
    std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const ListedRecord second = expectedRecords(g.topLevel(), zuStreamVersion(6, 32))[1];
    const int32_t negative = -5;
    std::memcpy(bytes.data() + second.offset, &negative, 4);
    writeFile(file("name.mvk"), bytes);
    const RunResult r = run({"dump", file("name.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("at offset " + std::to_string(second.offset) + ":"), std::string::npos) << r.err;
}

TEST_F(ZusgDumpBroken, AFileWithoutAStreamHeaderIsReportedAtOffset0)
{
    writeFile(file("text.mvk"), {'h', 'e', 'l', 'l', 'o', '\n'});
    const RunResult r = run({"dump", file("text.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("at offset 0: no object-stream header"), std::string::npos) << r.err;

    writeFile(file("short.mvk"), {'M', 'V', 'K', ' ', '6'});
    EXPECT_EQ(run({"dump", file("short.mvk").string()}).status, 1);
    writeFile(file("empty.mvk"), {});
    EXPECT_EQ(run({"dump", file("empty.mvk").string()}).status, 1);
}

TEST_F(ZusgDumpBroken, AMissingFileIsReportedWithStatus1)
{
    const std::string path = file("absent.mvk").string();
    const RunResult r = run({"dump", path});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find(path), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("no such file"), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty()) << r.out;
}

// ---------------------------------------------------------------------------------------
// dump of streams before 6.0: records carry no size, so the objects are loaded instead

using ZusgDumpLegacy = Zusg;

std::vector<char> legacyFile(const std::vector<zuRttiInterface*>& topLevel)
{
    const char header[] = "MVK 5.20";  // written with its NUL
    std::vector<char> bytes(header, header + sizeof header);
    const std::vector<char> records = saveToBytes(topLevel, zuStreamVersion(5, 20));
    bytes.insert(bytes.end(), records.begin(), records.end());
    return bytes;
}

TEST_F(ZusgDumpLegacy, AnEmptyOldStreamLoadsAndListsNoObjects)
{
    writeFile(file("old.mvk"), legacyFile({}));
    const RunResult r = run({"dump", file("old.mvk").string()});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_NE(r.out.find("\"MVK 5.20\""), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("0 top-level objects"), std::string::npos) << r.out;
}

TEST_F(ZusgDumpLegacy, LoadingStopsAtTheFirstRecordOfAnUnknownTypeAndSaysWhere)
{
    SampleGraph g;
    writeFile(file("old.mvk"), legacyFile(g.topLevel()));
    const RunResult r = run({"dump", file("old.mvk").string()});
    EXPECT_EQ(r.status, 1);
    // The first record (its "Top Level" marker) starts right after the 9-byte header.
    EXPECT_NE(r.err.find("loading stopped at offset 9,"), std::string::npos) << r.err;
    EXPECT_NE(r.err.find("zuTest.zuTestNode"), std::string::npos) << r.err;
}

} // namespace
} // namespace zu::test
