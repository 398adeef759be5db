// Runs the built zusg tool on files saved here and checks what it prints and returns.
// The tool registers only the library's own classes, so the test classes it meets in
// these files are types no factory of its knows. The field printers are also called
// directly, for values no registered class holds yet.

#include "support/zuTestObjects.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/culling/zuCuller.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuGenericTransformation.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuCullState.h>
#include <zuSceneGraph/states/zuLight.h>
#include <zuSceneGraph/states/zuPolygonOffsetState.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/states/zuWireframeState.h>
#include <zuSceneGraph/states/zuZBufferState.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/zuSceneGraph.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuOutputStreamVersion.h>

#include <gtest/gtest.h>

#ifdef ZUSG_PATH
#include "zusgFields.h"
#endif

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
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
    EXPECT_NE(r.err.find("zusg dump [--no-fields] FILE"), std::string::npos) << r.err;
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
    EXPECT_NE(two.err.find("zusg dump [--no-fields] FILE"), std::string::npos) << two.err;
    EXPECT_EQ(run({"version", "extra"}).status, 2);
    EXPECT_EQ(run({"dump", "--no-fields"}).status, 2);
    EXPECT_EQ(run({"dump", "--fields-please", "a.mvk"}).status, 2);
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
// dump of 6.x streams: the fields below each record of a known type

using ZusgDumpFields = Zusg;

// The field lines below each record line, in the order of the listing, with the record's
// type; the indentation is checked and removed.
struct ListedFields {
    std::string type;
    std::string fields;  // one line per field line, each ending in "\n"
};

std::vector<ListedFields> parseFields(const std::string& out)
{
    std::vector<ListedFields> records;
    std::istringstream lines(out);
    std::string line;
    bool inTable = false;
    size_t indent = 0;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first == "offset") {
            inTable = true;
            // Field lines sit under the "top" column, after the right-aligned offsets.
            indent = line.find("offset") + 6 + 2;
            continue;
        }
        if (!inTable || first.empty())
            continue;
        if (std::isdigit(static_cast<unsigned char>(first[0]))) {
            if (line.find(" records, ") != std::string::npos)
                break;
            std::string top, size, identifier, type;
            words >> top >> size >> identifier >> type;
            records.push_back({type, ""});
            continue;
        }
        EXPECT_EQ(line.compare(0, indent, std::string(indent, ' ')), 0) << line;
        EXPECT_FALSE(records.empty()) << line;
        if (!records.empty())
            records.back().fields += line.substr(indent) + "\n";
    }
    return records;
}

// The fields of the only record of the type (fails when there is not exactly one).
std::string fieldsOf(const std::vector<ListedFields>& records, const std::string& type)
{
    std::string fields;
    int found = 0;
    for (const ListedFields& record : records)
        if (record.type == type) {
            fields = record.fields;
            ++found;
        }
    EXPECT_EQ(found, 1) << type;
    return fields;
}

// One object of each class that has a field printer, with fields away from their
// defaults, and the controller of the camera (a test class: unknown to the tool).
struct FieldSample {
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    zuPointer<zuCullState> cull = new zuCullState;
    zuPointer<zuPolygonOffsetState> offset = new zuPolygonOffsetState;
    zuPointer<zuStencilState> stencil = new zuStencilState;
    zuPointer<zuWireframeState> wireframe = new zuWireframeState;
    zuPointer<zuZBufferState> zbuffer = new zuZBufferState;
    zuPointer<zuFloatArray> floats = new zuFloatArray(3, new float[3]{1.0f, 2.5f, -4.0f});
    zuPointer<zuIntArray> ints = new zuIntArray(10, new int[10]{0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    zuPointer<zuCoreSettings> settings = new zuCoreSettings;
    zuPointer<zuCamera> camera = new zuCamera;
    zuPointer<zuLight> light = new zuLight(zuLight::LT_SPOT);

    FieldSample()
    {
        alpha->BlendEnabled = true;
        alpha->DstBlend = zuAlphaState::DBF_ONE;
        alpha->TestEnabled = true;
        alpha->Test = zuAlphaState::TF_GREATER;
        alpha->Reference = 0.5f;
        cull->Enabled = false;
        cull->FrontFace = zuCullState::FT_CW;
        cull->CullFace = zuCullState::CT_FRONT;
        offset->FillEnabled = true;
        offset->PointEnabled = true;
        offset->Scale = 1.5f;
        offset->Bias = -2.0f;
        stencil->Enabled = true;
        stencil->Compare = zuStencilState::CF_LEQUAL;
        stencil->Reference = 3;
        stencil->Mask = 0xFFu;
        stencil->OnFail = zuStencilState::OT_ZERO;
        stencil->OnZFail = zuStencilState::OT_INCREMENT;
        stencil->OnZPass = zuStencilState::OT_REPLACE;
        wireframe->Enabled = true;
        zbuffer->Writable = false;
        zbuffer->Compare = zuZBufferState::CF_GREATER;

        settings->Entries.push_back({"first", 1.0f, 2.0f, 3.0f, true});
        settings->Strings = {"a", "say \"hi\""};
        settings->S1 = 42;
        settings->S3 = 0.25f;
        settings->Records.push_back({"one", "two", {7, 8, 9}});
        settings->H2 = true;
        settings->J3 = 11;
        settings->Width1 = 1024;

        camera->SetName("main view");
        camera->SetFrame(Wm4::Vector3<float>(0.0f, 0.0f, 5.0f), Wm4::Vector3<float>(0.0f, 0.0f, -1.0f),
                         Wm4::Vector3<float>(0.0f, 1.0f, 0.0f), Wm4::Vector3<float>(1.0f, 0.0f, 0.0f));
        camera->SetFrustum(0.5f, 100.0f, -0.25f, 0.25f, -0.5f, 0.5f);
        camera->SetPerspective(false);
        camera->AttachController(new zuTestController);

        light->SetName("spot");
        light->SetDiffuse(Wm4::ColorRGB(1.0f, 0.5f, 0.25f));
        light->SetIntensity(2.0f);
        light->SetAttenuation(1.0f, 0.125f, 0.0f);
        light->SetAttenuate(true);
        light->SetSpotCutoff(0.5f);
        light->SetSpotExponent(4.0f);
        light->SetOn(false);
    }

    std::vector<zuRttiInterface*> topLevel() const
    {
        return {alpha.get(), cull.get(), offset.get(), stencil.get(), wireframe.get(), zbuffer.get(),
                floats.get(), ints.get(), settings.get(), camera.get(), light.get()};
    }
};

// The record of `object` in a 6.32 file of these top-level objects.
ListedRecord recordOf(const std::vector<zuRttiInterface*>& topLevel, const zuRttiInterface* object)
{
    for (const ListedRecord& record : expectedRecords(topLevel, zuStreamVersion(6, 32)))
        if (record.identifier == reinterpret_cast<uintptr_t>(object))
            return record;
    ADD_FAILURE() << "no record of " << object->GetType().GetName();
    return ListedRecord();
}

void patchInt32(std::vector<char>& bytes, uint64_t offset, int32_t value)
{
    ASSERT_LE(offset + 4, bytes.size());
    std::memcpy(bytes.data() + offset, &value, 4);
}

TEST_F(ZusgDumpFields, RenderStatesShowEveryPersistedFieldWithEnumeratorNames)
{
    FieldSample sample;
    const RunResult r = run({"dump", save("fields.mvk", sample.topLevel()).string()});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<ListedFields> records = parseFields(r.out);
    EXPECT_EQ(fieldsOf(records, "zuCore.zuAlphaState"),
              "BlendEnabled true, SrcBlend SBF_SRC_ALPHA, DstBlend DBF_ONE\n"
              "TestEnabled true, Test TF_GREATER, Reference 0.5\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuCullState"), "Enabled false, FrontFace FT_CW, CullFace CT_FRONT\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuPolygonOffsetState"),
              "FillEnabled true, LineEnabled false, PointEnabled true\nScale 1.5, Bias -2\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuStencilState"),
              "Enabled true, Compare CF_LEQUAL, Reference 3, Mask 0x000000FF, WriteMask 0xFFFFFFFF\n"
              "OnFail OT_ZERO, OnZFail OT_INCREMENT, OnZPass OT_REPLACE\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuWireframeState"), "Enabled true\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuZBufferState"), "Enabled true, Writable false, Compare CF_GREATER\n");
}

TEST_F(ZusgDumpFields, ArraysShowTheirQuantityAndTheFirstEightElements)
{
    FieldSample sample;
    zuPointer<zuFloatArray> empty = new zuFloatArray;
    zuPointer<zuVector3fArray> vectors = new zuVector3fArray(2, new Wm4::Vector3<float>[2]);
    (*vectors)[1] = Wm4::Vector3<float>(1.0f, -2.0f, 0.125f);
    zuPointer<zuPlane3dArray> planes = new zuPlane3dArray(1, new Wm4::Plane3<double>[1]);
    (*planes)[0] = Wm4::Plane3<double>(Wm4::Vector3<double>(0.0, 0.0, 1.0), 5.0);
    zuPointer<zuMatrix2fArray> matrices = new zuMatrix2fArray(1, new Wm4::Matrix2<float>[1]);
    (*matrices)[0] = Wm4::Matrix2<float>(1.0f, 2.0f, 3.0f, 4.0f);
    const RunResult r = run({"dump", save("arrays.mvk", {sample.floats.get(), sample.ints.get(), empty.get(),
                                                         vectors.get(), planes.get(), matrices.get()})
                                         .string()});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<ListedFields> records = parseFields(r.out);
    ASSERT_EQ(records.size(), 6u) << r.out;
    EXPECT_EQ(records[0].fields, "quantity 3: 1 2.5 -4\n");
    EXPECT_EQ(records[1].fields, "quantity 10: 0 1 2 3 4 5 6 7 ...\n");
    EXPECT_EQ(records[2].fields, "quantity 0\n");
    EXPECT_EQ(records[3].fields, "quantity 2: (0 0 0) (1 -2 0.125)\n");
    EXPECT_EQ(records[4].fields, "quantity 1: (0 0 1; 5)\n");
    EXPECT_EQ(records[5].fields, "quantity 1: (1 2; 3 4)\n");
}

TEST_F(ZusgDumpFields, SettingsShowTheirListsAndScalarsByMemberName)
{
    FieldSample sample;
    const RunResult r = run({"dump", save("settings.mvk", {sample.settings.get()}).string()});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(fieldsOf(parseFields(r.out), "zuCore.zuCoreSettings"),
              "Entries 1:\n"
              "  [0] Name \"first\", First 1, Second 2, Third 3, Flag true\n"
              "Strings 2: \"a\" \"say \\\"hi\\\"\"\n"
              "S1 42, S2 0, S3 0.25, S4 1, S5 1, S6 0, S7 false\n"
              "Records 1:\n"
              "  [0] First \"one\", Second \"two\", Values 7 8 9\n"
              "H1 true, H2 true, H3 false, H4 true\n"
              "J1 0, J2 0, J3 11, J4 0, J5 5, J6 30\n"
              "Width1 1024, Height1 600, Width2 320, Height2 240\n");
}

TEST_F(ZusgDumpFields, CameraAndLightShowFrameFrustumTypeAndColoursAndSayTheirReferencesReadAsNull)
{
    FieldSample sample;
    const RunResult r = run({"dump", save("view.mvk", {sample.camera.get(), sample.light.get()}).string()});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<ListedFields> records = parseFields(r.out);
    EXPECT_EQ(fieldsOf(records, "zuCore.zuCamera"),
              "name \"main view\", controllers 1 (1 null: a record loaded on its own reaches no other record)\n"
              "frame: location (0 0 5), D (0 0 -1), U (0 1 0), R (1 0 0)\n"
              "frustum: dmin 0.5, dmax 100, umin -0.25, umax 0.25, rmin -0.5, rmax 0.5, perspective false\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuLight"),
              "name \"spot\", controllers 0\n"
              "type LT_SPOT, on false\n"
              "frame: location (0 0 0), D (0 0 -1), U (0 1 0), R (1 0 0)\n"
              "colours: ambient (0 0 0), diffuse (1 0.5 0.25), specular (1 1 1), intensity 2\n"
              "attenuation: constant 1, linear 0.125, quadratic 0, attenuate true\n"
              "spot: cutoff 0.5, exponent 4\n");
    // The controller itself is a type the tool does not know: listed, with no fields.
    EXPECT_EQ(fieldsOf(records, "zuTest.zuTestController"), "");
}

TEST_F(ZusgDumpFields, FieldsLeaveTheRecordListingAsItWas)
{
    FieldSample sample;
    const RunResult r = run({"dump", save("fields.mvk", sample.topLevel()).string()});
    ASSERT_EQ(r.status, 0) << r.err;
    std::vector<ListedRecord> expected = expectedRecords(sample.topLevel(), zuStreamVersion(6, 32));
    for (ListedRecord& record : expected)
        record.unknown = record.type.rfind("zuTest.", 0) == 0;
    EXPECT_EQ(parseListing(r.out), expected) << r.out;
    EXPECT_NE(r.out.find("12 records, 11 top-level; types no registered factory knows: zuTest.zuTestController (1)\n"),
              std::string::npos)
        << r.out;
}

TEST_F(ZusgDumpFields, NoFieldsGivesOneLinePerRecord)
{
    FieldSample sample;
    const fs::path path = save("fields.mvk", sample.topLevel());
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"dump", "--no-fields", path.string()}, {"dump", path.string(), "--no-fields"}}) {
        const RunResult r = run(arguments);
        ASSERT_EQ(r.status, 0) << r.err;
        const std::vector<ListedRecord> listed = parseListing(r.out);
        EXPECT_EQ(listed.size(), 12u);
        // The file line, the column header, the records and the summary: nothing else.
        EXPECT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), static_cast<long>(2 + listed.size() + 1)) << r.out;
        EXPECT_EQ(r.out.find("SBF_"), std::string::npos) << r.out;
        for (const ListedFields& record : parseFields(r.out))
            EXPECT_EQ(record.fields, "") << record.type;
    }
}

TEST_F(ZusgDumpFields, EnumerationsOutsideTheirRangePrintUnknownWithTheValue)
{
    FieldSample sample;
    const std::vector<zuRttiInterface*> topLevel = {sample.alpha.get(), sample.cull.get(), sample.stencil.get(),
                                                    sample.zbuffer.get(), sample.light.get()};
    std::vector<char> bytes = readBytes(save("states.mvk", topLevel));
    // Each enumeration sits at a fixed distance from the end of its record.
    const auto end = [&](const zuRttiInterface* object) {
        const ListedRecord record = recordOf(topLevel, object);
        return record.offset + static_cast<uint64_t>(record.size);
    };
    patchInt32(bytes, end(sample.alpha.get()) - 17, 99);                 // SrcBlend
    patchInt32(bytes, end(sample.alpha.get()) - 8, -1);                  // Test
    patchInt32(bytes, end(sample.cull.get()) - 4, zuCullState::CT_QUANTITY);
    patchInt32(bytes, end(sample.stencil.get()) - 4, -5);                // OnZPass
    patchInt32(bytes, end(sample.zbuffer.get()) - 4, zuZBufferState::CF_QUANTITY);
    const ListedRecord light = recordOf(topLevel, sample.light.get());
    // The light's type follows its record header and its object part ("spot", no controllers).
    patchInt32(bytes, light.offset + 4 + light.type.size() + 4 + 8 + 4 + 4 + 4, zuLight::LT_QUANTITY);
    writeFile(file("patched.mvk"), bytes);

    const RunResult r = run({"dump", file("patched.mvk").string()});
    ASSERT_EQ(r.status, 0) << r.err;
    const std::vector<ListedFields> records = parseFields(r.out);
    EXPECT_EQ(fieldsOf(records, "zuCore.zuAlphaState"),
              "BlendEnabled true, SrcBlend UNKNOWN (99), DstBlend DBF_ONE\n"
              "TestEnabled true, Test UNKNOWN (-1), Reference 0.5\n");
    EXPECT_EQ(fieldsOf(records, "zuCore.zuCullState"), "Enabled false, FrontFace FT_CW, CullFace UNKNOWN (2)\n");
    EXPECT_NE(fieldsOf(records, "zuCore.zuStencilState").find("OnZFail OT_INCREMENT, OnZPass UNKNOWN (-5)\n"),
              std::string::npos);
    EXPECT_EQ(fieldsOf(records, "zuCore.zuZBufferState"), "Enabled true, Writable false, Compare UNKNOWN (8)\n");
    EXPECT_NE(fieldsOf(records, "zuCore.zuLight").find("type UNKNOWN (4), on false\n"), std::string::npos);
}

TEST_F(ZusgDumpFields, ARecordThatDoesNotLoadOnItsOwnGetsANoteAndTheWalkGoesOn)
{
    FieldSample sample;
    const std::vector<zuRttiInterface*> topLevel = {sample.floats.get(), sample.alpha.get(), sample.ints.get()};
    std::vector<char> bytes = readBytes(save("arrays.mvk", topLevel));
    // The float array's quantity (before its 3 elements) claims more than the record holds;
    // the int array's quantity claims less, so its fields do not fill its size.
    const ListedRecord floats = recordOf(topLevel, sample.floats.get());
    patchInt32(bytes, floats.offset + static_cast<uint64_t>(floats.size) - 3 * 4 - 4, 1000);
    const ListedRecord ints = recordOf(topLevel, sample.ints.get());
    patchInt32(bytes, ints.offset + static_cast<uint64_t>(ints.size) - 10 * 4 - 4, 9);
    writeFile(file("broken.mvk"), bytes);

    const RunResult r = run({"dump", file("broken.mvk").string()});
    EXPECT_EQ(r.status, 0) << r.err;
    const std::vector<ListedFields> records = parseFields(r.out);
    ASSERT_EQ(records.size(), 3u) << r.out;
    EXPECT_EQ(records[0].fields,
              "fields not shown: the record does not load on its own (a count exceeds the data that remains)\n");
    EXPECT_EQ(records[1].fields,
              "BlendEnabled true, SrcBlend SBF_SRC_ALPHA, DstBlend DBF_ONE\n"
              "TestEnabled true, Test TF_GREATER, Reference 0.5\n");
    EXPECT_EQ(records[2].fields,
              "fields not shown: the record does not load on its own (the record's fields do not fill its size)\n");
    EXPECT_NE(r.out.find("3 records, 3 top-level; 2 with fields not shown\n"), std::string::npos) << r.out;
    // The library's own messages, with offsets inside the record alone, stay out of the output.
    EXPECT_EQ(r.out.find("zuBaseStream"), std::string::npos) << r.out;
    EXPECT_EQ(r.err.find("zuBaseStream"), std::string::npos) << r.err;
}

TEST_F(ZusgDumpFields, ARecordOverTheLoadLimitIsListedWithANote)
{
    // A float array record grown to just over 64 MiB; the file is extended sparsely, with
    // zero elements.
    FieldSample sample;
    zuPointer<zuFloatArray> one = new zuFloatArray(1, new float[1]{7.0f});
    const std::vector<zuRttiInterface*> topLevel = {one.get()};
    std::vector<char> bytes = readBytes(save("one.mvk", topLevel));
    const ListedRecord record = recordOf(topLevel, one.get());
    const int32_t quantity = 16 * 1024 * 1024 + 1;
    const int32_t size = record.size - 4 + 4 * quantity;
    patchInt32(bytes, record.offset + 4 + record.type.size(), size);
    patchInt32(bytes, record.offset + static_cast<uint64_t>(record.size) - 4 - 4, quantity);
    writeFile(file("big.mvk"), bytes);
    fs::resize_file(file("big.mvk"), record.offset + static_cast<uint64_t>(size));

    const RunResult r = run({"dump", file("big.mvk").string()});
    EXPECT_EQ(r.status, 0) << r.err;
    const std::vector<ListedFields> records = parseFields(r.out);
    ASSERT_EQ(records.size(), 1u) << r.out;
    EXPECT_EQ(records[0].fields, "fields not shown: the record is larger than 64 MiB\n");
}

TEST_F(ZusgDumpFields, EveryByteOfAStateRecordPatchedNeverCrashesTheTool)
{
    // Whatever one byte of a record becomes, the tool prints the record line and either
    // the fields or a note, and the walk reaches the summary.
    FieldSample sample;
    const std::vector<zuRttiInterface*> topLevel = {sample.light.get()};
    const std::vector<char> bytes = readBytes(save("light.mvk", topLevel));
    const ListedRecord light = recordOf(topLevel, sample.light.get());
    const uint64_t header = 4 + light.type.size() + 4 + 8;  // the walk checks these bytes itself
    for (uint64_t at = light.offset + header; at < light.offset + static_cast<uint64_t>(light.size); ++at) {
        std::vector<char> patched = bytes;
        patched[at] = static_cast<char>(0xFF);
        writeFile(file("patched.mvk"), patched);
        const RunResult r = run({"dump", file("patched.mvk").string()});
        EXPECT_EQ(r.status, 0) << "byte " << at << ": " << r.err;
        EXPECT_NE(r.out.find("1 records, 1 top-level"), std::string::npos) << "byte " << at << ": " << r.out;
        const std::vector<ListedFields> records = parseFields(r.out);
        ASSERT_EQ(records.size(), 1u) << r.out;
        EXPECT_FALSE(records[0].fields.empty()) << "byte " << at;
    }
}

// ---------------------------------------------------------------------------------------
// the field printers, called directly

using ZusgFieldPrinters = Zusg;

#ifdef ZUSG_PATH
std::string printed(const zuGenericTransformation<float>& transformation)
{
    std::ostringstream out;
    zusg::printTransformation(transformation, "local", out);
    return out.str();
}
#endif

TEST_F(ZusgFieldPrinters, TransformationShowsFlagsMatrixRowsTranslateAndScale)
{
#ifdef ZUSG_PATH
    EXPECT_EQ(printed(zuGenericTransformation<float>()),
              "local: IsIdentity true, IsRSMatrix true, IsUniformScale true\n"
              "  matrix row 0: 1 0 0\n"
              "  matrix row 1: 0 1 0\n"
              "  matrix row 2: 0 0 1\n"
              "  translate (0 0 0)\n"
              "  scale (1 1 1)\n");

    // A quarter turn about z, rows as stored (the matrix acts on column vectors).
    zuGenericTransformation<float> rotation;
    rotation.SetRotate(Wm4::Matrix3<float>(0.0f, -1.0f, 0.0f, 1.0f, 0.0f, 0.0f, 0.0f, 0.0f, 1.0f));
    rotation.SetTranslate(Wm4::Vector3<float>(1.0f, 2.0f, -3.5f));
    rotation.SetUniformScale(2.0f);
    EXPECT_EQ(printed(rotation),
              "local: IsIdentity false, IsRSMatrix true, IsUniformScale true\n"
              "  matrix row 0: 0 -1 0\n"
              "  matrix row 1: 1 0 0\n"
              "  matrix row 2: 0 0 1\n"
              "  translate (1 2 -3.5)\n"
              "  scale (2 2 2)\n");

    zuGenericTransformation<float> general;
    general.SetMatrix(Wm4::Matrix3<float>(1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 0.1f));
    general.SetScale(Wm4::Vector3<float>(1.0f, 2.0f, 3.0f));
    const std::string text = printed(general);
    EXPECT_NE(text.find("IsRSMatrix false, IsUniformScale false\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  matrix row 2: 7 8 0.1\n"), std::string::npos) << text;
    EXPECT_NE(text.find("  scale (1 2 3)\n"), std::string::npos) << text;
#endif
}

TEST_F(ZusgFieldPrinters, EveryPrinterBelongsToARegisteredClassAndPrintsItsDefaultObject)
{
#ifdef ZUSG_PATH
    const zusg::FieldRegistry& printers = zusg::fieldPrinters();
    // The 21 shared arrays, the settings, the six render states, the camera and the light.
    EXPECT_EQ(printers.size(), 30u);
    size_t found = 0;
    for (const std::string& name : zuRttiInterface::GetFactoryNames()) {
        const zusg::FieldRegistry::Entry* printer = printers.find(name);
        if (!printer)
            continue;
        ++found;
        EXPECT_EQ(name, printer->type->GetName());
        const zuRttiInterface::CreateFunction create = zuRttiInterface::GetCreateFunction(name);
        ASSERT_NE(create, nullptr) << name;
        zuPointer<zuObject> object(static_cast<zuObject*>(create()));
        ASSERT_TRUE(object->IsDerived(*printer->type)) << name;
        std::ostringstream out;
        printer->print(*object, out);
        const std::string text = out.str();
        ASSERT_FALSE(text.empty()) << name;
        EXPECT_EQ(text.back(), '\n') << name;
        // Only record lines start with a digit, so no field line may.
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            const size_t first = line.find_first_not_of(' ');
            ASSERT_NE(first, std::string::npos) << name << ": an empty line";
            EXPECT_FALSE(std::isdigit(static_cast<unsigned char>(line[first]))) << name << ": " << line;
        }
    }
    EXPECT_EQ(found, printers.size());
#endif
}

TEST_F(ZusgFieldPrinters, TextsAreQuotedEscapedAndCut)
{
#ifdef ZUSG_PATH
    EXPECT_EQ(zusg::quotedText("plain"), "\"plain\"");
    EXPECT_EQ(zusg::quotedText(std::string("a\n\0\xE9", 4)), "\"a\\x0A\\x00\\xE9\"");
    EXPECT_EQ(zusg::quotedText(std::string(70, 'x'), 64), "\"" + std::string(64, 'x') + "\"...");
    EXPECT_EQ(zusg::number(0.1f), "0.1");
    EXPECT_EQ(zusg::number(1e-7f), "1e-07");
    EXPECT_EQ(zusg::number(0.1), "0.1");
    EXPECT_EQ(zusg::enumerator(zuStencilState::GetCompareName(zuStencilState::CF_QUANTITY), 8), "UNKNOWN (8)");
    EXPECT_EQ(zusg::enumerator(zuStencilState::GetCompareName(zuStencilState::CF_ALWAYS), 7), "CF_ALWAYS");
#endif
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

TEST_F(ZusgDumpLegacy, TopLevelObjectsOfKnownTypesShowTheirFields)
{
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    alpha->DstBlend = zuAlphaState::DBF_ONE;
    zuPointer<zuFloatArray> floats = new zuFloatArray(2, new float[2]{0.5f, -1.0f});
    writeFile(file("old.mvk"), legacyFile({alpha.get(), floats.get()}));

    const RunResult r = run({"dump", file("old.mvk").string()});
    EXPECT_EQ(r.status, 0) << r.err;
    // Each object's line, then its fields under the type column.
    EXPECT_NE(r.out.find("    0  zuCore.zuAlphaState               \"\"\n"
                         "       BlendEnabled false, SrcBlend SBF_SRC_ALPHA, DstBlend DBF_ONE\n"
                         "       TestEnabled false, Test TF_ALWAYS, Reference 0\n"
                         "    1  zuCore.zuFloatArray               \"\"\n"
                         "       quantity 2: 0.5 -1\n"
                         "2 top-level objects\n"),
              std::string::npos)
        << r.out;

    const RunResult bare = run({"dump", "--no-fields", file("old.mvk").string()});
    EXPECT_EQ(bare.status, 0) << bare.err;
    EXPECT_EQ(bare.out.find("quantity"), std::string::npos) << bare.out;
}

// ---------------------------------------------------------------------------------------
// demo

// The demo saves into the temporary directory: here, the test's own, so that the test sees
// whether the file is left behind.
class ZusgDemo : public Zusg {
protected:
    void SetUp() override
    {
        Zusg::SetUp();
        if (const char* previous = std::getenv("TMPDIR"))
            mPreviousTmpDir = previous;
        if (!mDir.empty())
            ::setenv("TMPDIR", mDir.c_str(), 1);
    }
    void TearDown() override
    {
        if (mPreviousTmpDir.empty())
            ::unsetenv("TMPDIR");
        else
            ::setenv("TMPDIR", mPreviousTmpDir.c_str(), 1);
        Zusg::TearDown();
    }

    // The files the test directory holds besides the captured output.
    std::set<std::string> leftFiles() const
    {
        std::set<std::string> names;
        for (const fs::directory_entry& entry : fs::directory_iterator(mDir))
            if (entry.path().filename() != "stdout" && entry.path().filename() != "stderr")
                names.insert(entry.path().filename().string());
        return names;
    }

    std::string mPreviousTmpDir;
};

// The first word of each line below the title.
std::vector<std::string> stepNames(const std::string& out)
{
    std::vector<std::string> steps;
    std::istringstream lines(out);
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line))
        steps.push_back(line.substr(0, line.find(' ')));
    return steps;
}

TEST_F(ZusgDemo, AtDepth2EveryStepRunsAndItsFiguresAgreeWithTheSceneBuiltHere)
{
    const RunResult r = run({"demo", "--depth", "2"});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(r.err, "");
    EXPECT_EQ(r.out.rfind("zusg demo: the W1 assembly, depth 2, 8 children per node\n", 0), 0u) << r.out;
    EXPECT_EQ(stepNames(r.out), (std::vector<std::string>{"build", "update", "cull", "save", "load", "check", "load",
                                                          "cull", "restore", "check", "file", "demo:"}))
        << r.out;
    EXPECT_TRUE(r.out.ends_with("\ndemo: OK\n")) << r.out;

    // The same scene, culled and saved here.
    const zusg::W1Assembly workload(2);
    zuPointer<zuNode> root = workload.build();
    root->UpdateGS();
    zuPointer<zuCamera> camera = workload.camera();
    zuCuller culler;
    culler.SetCamera(camera);
    culler.ComputeVisibleSet(root, nullptr, false);
    const std::string visible = std::to_string(culler.GetVisibleSet().size());
    ASSERT_GT(culler.GetVisibleSet().size(), 0u);
    const fs::path path = save("same.mvk", {root.get()},
                               zuStreamVersion(zuMajorOutputStreamVersion, zuMinorOutputStreamVersion));
    const uintmax_t bytes = fs::file_size(path);
    fs::remove(path);
    ASSERT_TRUE(bytes >= 1000 && bytes < 1000000) << bytes;
    // The size as the demo groups it, "69,817".
    const std::string grouped = std::to_string(bytes / 1000) + "," + std::to_string(bytes % 1000 + 1000).substr(1);

    // 1 + 8 + 64 objects, two buffers per mesh.
    for (const std::string& expected :
         {std::string("\nbuild    73 objects, 64 meshes, 128 buffers "), "\ncull     " + visible + " of 64 leaves visible ",
          "\nsave     MVK 6.32, " + grouped + " bytes ", std::string("\nload     full: 128 of 128 buffers in memory "),
          "\ncheck    full: update, cull, the same " + visible + " leaves and buffers ",
          std::string("\nload     lazy: 0 of 128 buffers in memory "), "\ncull     lazy: update, " + visible + " leaves visible ",
          "\nrestore  lazy: " + std::to_string(2 * culler.GetVisibleSet().size()) + " read back, now "
              + std::to_string(2 * culler.GetVisibleSet().size()) + " of 128 in memory ",
          "\ncheck    lazy: the same " + visible + " leaves and buffers "})
        EXPECT_NE(r.out.find(expected), std::string::npos) << expected << "\n" << r.out;
    // The temporary file is gone.
    EXPECT_NE(r.out.find("\nfile     removed " + (mDir / "zusg-demo-").string()), std::string::npos) << r.out;
    EXPECT_EQ(leftFiles(), std::set<std::string>{});
}

TEST_F(ZusgDemo, KeepLeavesTheSavedSceneWhereAsked)
{
    const fs::path kept = file("kept.mvk");
    const RunResult r = run({"demo", "--keep", kept.string(), "--depth", "1"});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_NE(r.out.find("\nfile     kept " + kept.string() + "\ndemo: OK\n"), std::string::npos) << r.out;
    EXPECT_EQ(leftFiles(), std::set<std::string>{"kept.mvk"});

    zuFileStream stream;
    zuFileIoDevice device(kept.string(), zuFileIoDevice::ReadOnly);
    ASSERT_TRUE(stream.Load(device, kept.string()));
    ASSERT_EQ(stream.GetObjectCount(), 1);
    ASSERT_TRUE(stream.GetObjectAt(0)->IsExactly(zuNode::TYPE));
    const auto* root = static_cast<const zuNode*>(stream.GetObjectAt(0));
    ASSERT_EQ(root->getNbChildren(), 8);
    const zuPointer<zuTriMesh> cube = zusg::W1Assembly::makeCube();
    for (int i = 0; i < 8; ++i) {
        ASSERT_TRUE(root->getChild(i)->IsExactly(zuTriMesh::TYPE)) << i;
        const auto* mesh = static_cast<const zuTriMesh*>(root->getChild(i));
        EXPECT_TRUE(mesh->GetVertices()->Equals(cube->GetVertices())) << i;
        EXPECT_TRUE(mesh->GetIndices()->Equals(cube->GetIndices())) << i;
    }
}

TEST_F(ZusgDemo, BadArgumentsAreUsageErrorsAndAFailedStepSaysWhatFailed)
{
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"demo", "--depth", "0"},
                                               {"demo", "--depth", "7"},
                                               {"demo", "--depth", "4x"},
                                               {"demo", "--depth", ""},
                                               {"demo", "--depth"},
                                               {"demo", "--keep"},
                                               {"demo", "--keep", ""},
                                               {"demo", "--deep", "2"}}) {
        const RunResult r = run(arguments);
        EXPECT_EQ(r.status, 2) << arguments.size() << " " << arguments.back();
        EXPECT_NE(r.err.find("zusg demo [--depth N] [--keep FILE]"), std::string::npos) << r.err;
        EXPECT_EQ(r.out.find("demo: OK"), std::string::npos) << r.out;
    }
    EXPECT_NE(run({"demo", "--depth", "7"}).err.find("--depth takes a whole number from 1 to 6, not '7'"),
              std::string::npos);

    const RunResult r = run({"demo", "--depth", "1", "--keep", file("missing/kept.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("zusg demo: FAILED: could not save " + file("missing/kept.mvk").string()), std::string::npos)
        << r.err;
    EXPECT_EQ(r.out.find("demo: OK"), std::string::npos) << r.out;
}

} // namespace
} // namespace zu::test
