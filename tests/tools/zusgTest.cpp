// Runs the built zusg tool on files saved here and checks what it prints and returns.
// The tool registers only the library's own classes, so the test classes it meets in
// these files are types no factory of its knows. The field printers are also called
// directly, for values no registered class holds yet.

#include "support/zuTestObjects.h"
#include "zusgRunner.h"
#include "zusgW1Assembly.h"

#include <zuSceneGraph/math/zuGenericTransformation.h>
#include <zuSceneGraph/objects/zuTSharedArray.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/states/zuAlphaState.h>
#include <zuSceneGraph/states/zuCamera.h>
#include <zuSceneGraph/states/zuLight.h>
#include <zuSceneGraph/states/zuStencilState.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/spatial/zuPicker.h>
#include <zuSceneGraph/stream/zuCoreSettings.h>
#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSystem/zuFileIoDevice.h>

#include <gtest/gtest.h>

#ifdef ZUSG_PATH
#include "zusgFieldText.h"
#endif


#include <algorithm>
#include <cstring>
#include <functional>
#include <iomanip>
#include <sstream>

namespace zu::test {
namespace {

namespace fs = std::filesystem;

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

std::vector<char> readBytes(const fs::path& path)
{
    const std::string text = readFile(path);
    return {text.begin(), text.end()};
}

void patchInt32(std::vector<char>& bytes, uint64_t offset, int32_t value)
{
    ASSERT_LE(offset + 4, bytes.size());
    std::memcpy(bytes.data() + offset, &value, 4);
}

// A dump listing: the record lines between the column header and the summary, and the
// field lines below each record (indentation checked and removed, each ending in "\n").
struct Listing {
    std::vector<ListedRecord> records;
    std::vector<std::string> fields;

    // The fields of the only record of the type (fails when there is not exactly one).
    std::string fieldsOf(const std::string& type) const
    {
        std::string found;
        int count = 0;
        for (size_t i = 0; i < records.size(); ++i)
            if (records[i].type == type) {
                found = fields[i];
                ++count;
            }
        EXPECT_EQ(count, 1) << type;
        return found;
    }
};

Listing parse(const std::string& out)
{
    Listing listing;
    std::istringstream lines(out);
    std::string line;
    size_t indent = std::string::npos;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string first;
        words >> first;
        if (first == "offset") {
            // Field lines sit under the "top" column, after the right-aligned offsets.
            indent = line.find("offset") + 6 + 2;
            continue;
        }
        if (indent == std::string::npos || first.empty())
            continue;
        if (!std::isdigit(static_cast<unsigned char>(first[0]))) {
            EXPECT_EQ(line.compare(0, indent, std::string(indent, ' ')), 0) << line;
            EXPECT_FALSE(listing.fields.empty()) << line;
            if (!listing.fields.empty())
                listing.fields.back() += line.substr(indent) + "\n";
            continue;
        }
        if (line.find(" top-level") != std::string::npos)
            break;
        ListedRecord record;
        std::string top, identifier, unknown;
        record.offset = std::stoull(first);
        words >> top >> record.size >> identifier >> record.type >> unknown;
        record.topLevel = top == "yes";
        record.identifier = std::stoull(identifier, nullptr, 16);
        record.unknown = unknown == "(unknown)";
        listing.records.push_back(record);
        listing.fields.emplace_back();
    }
    return listing;
}

// The records a 6.32 file of these top-level objects holds, in the order the stream writes
// them, with their offsets after the 9-byte header "MVK 6.32".
std::vector<ListedRecord> expectedRecords(const std::vector<zuRttiInterface*>& topLevel)
{
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(6, 32));
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
// top-level node. Records: root, c, a, b, other.
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

// One object of each class that has a field printer, with fields away from their
// defaults, and the controller of the camera (a test class: unknown to the tool).
struct FieldSample {
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    zuPointer<zuStencilState> stencil = new zuStencilState;
    zuPointer<zuFloatArray> floats = new zuFloatArray(3, new float[3]{1.0f, 2.5f, -4.0f});
    zuPointer<zuIntArray> ints = new zuIntArray(10, new int[10]{0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
    zuPointer<zuCoreSettings> settings = new zuCoreSettings;
    zuPointer<zuCamera> camera = new zuCamera;
    zuPointer<zuLight> light = new zuLight(zuLight::LT_SPOT);
    zuPointer<zuDoubleArray> empty = new zuDoubleArray;
    zuPointer<zuVector3fArray> vectors = new zuVector3fArray(2, new Wm4::Vector3<float>[2]{{0, 0, 0}, {1, -2, 0.125f}});
    zuPointer<zuPlane3dArray> planes = new zuPlane3dArray(1, new Wm4::Plane3<double>[1]{{{0.0, 0.0, 1.0}, 5.0}});
    zuPointer<zuMatrix2fArray> matrices = new zuMatrix2fArray(1, new Wm4::Matrix2<float>[1]{{1, 2, 3, 4}});

    FieldSample()
    {
        alpha->BlendEnabled = true;
        alpha->DstBlend = zuAlphaState::DBF_ONE;
        alpha->TestEnabled = true;
        alpha->Test = zuAlphaState::TF_GREATER;
        alpha->Reference = 0.5f;
        stencil->Enabled = true;
        stencil->Compare = zuStencilState::CF_LEQUAL;
        stencil->Reference = 3;
        stencil->Mask = 0xFFu;
        stencil->OnFail = zuStencilState::OT_ZERO;
        stencil->OnZFail = zuStencilState::OT_INCREMENT;
        stencil->OnZPass = zuStencilState::OT_REPLACE;

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
        return {alpha.get(), stencil.get(), floats.get(), ints.get(), settings.get(), camera.get(), light.get(),
                empty.get(), vectors.get(), planes.get(), matrices.get()};
    }
};

const char* const alphaFields = "BlendEnabled true, SrcBlend SBF_SRC_ALPHA, DstBlend DBF_ONE\n"
                                "TestEnabled true, Test TF_GREATER, Reference 0.5\n";

class Zusg : public ZusgRunner {
protected:
    RunResult dump(const fs::path& path) const { return run({"dump", path.string()}); }

    // Writes `bytes` to a file of the test and dumps it.
    RunResult dumpBytes(const std::vector<char>& bytes, const std::string& name = "patched.mvk") const
    {
        std::ofstream(file(name), std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return dump(file(name));
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
};

// ---------------------------------------------------------------------------------------
// dump of 6.x streams

using ZusgDump = Zusg;

TEST_F(ZusgDump, ListsEveryRecordWithItsOffsetTopLevelMarkSizeIdentifierAndUnknownTypes)
{
    // Names of growing length make records of every size, so that record headers straddle
    // the boundaries of the tool's read buffer at every possible point.
    SampleGraph g;
    for (int i = 0; i < 6000; ++i)
        g.other->AttachChild(new zuTestNode(std::string(static_cast<size_t>(i % 97), 'n'), i));
    const fs::path path = save("graph.mvk", g.topLevel());
    const RunResult r = dump(path);
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(has(r.out, "object stream \"MVK 6.32\", "));
    EXPECT_TRUE(parse(r.out).records == expectedRecords(g.topLevel()));
    EXPECT_TRUE(has(r.out, "6,005 records, 2 top-level; types no registered factory knows: zuTest.zuTestController (1) "
                           "zuTest.zuTestNode (6,004)"));
}

// ---------------------------------------------------------------------------------------
// dump of 6.x streams: the fields below each record of a known type

using ZusgDumpFields = Zusg;

TEST_F(ZusgDumpFields, EveryPrintedClassShowsItsPersistedFieldsAndTheListingStaysAsItWas)
{
    FieldSample sample;
    const fs::path path = save("fields.mvk", sample.topLevel());
    const RunResult r = dump(path);
    ASSERT_EQ(r.status, 0) << r.err;
    const Listing listing = parse(r.out);
    EXPECT_EQ(listing.fieldsOf("zuCore.zuAlphaState"), alphaFields);
    EXPECT_EQ(listing.fieldsOf("zuCore.zuStencilState"),
              "Enabled true, Compare CF_LEQUAL, Reference 3, Mask 0x000000FF, WriteMask 0xFFFFFFFF\n"
              "OnFail OT_ZERO, OnZFail OT_INCREMENT, OnZPass OT_REPLACE\n");
    EXPECT_EQ(listing.fieldsOf("zuCore.zuCoreSettings"),
              "Entries 1:\n"
              "  [0] Name \"first\", First 1, Second 2, Third 3, Flag true\n"
              "Strings 2: \"a\" \"say \\\"hi\\\"\"\n"
              "S1 42, S2 0, S3 0.25, S4 1, S5 1, S6 0, S7 false\n"
              "Records 1:\n"
              "  [0] First \"one\", Second \"two\", Values 3: 7 8 9\n"
              "H1 true, H2 true, H3 false, H4 true\n"
              "J1 0, J2 0, J3 11, J4 0, J5 5, J6 30\n"
              "Width1 1024, Height1 600, Width2 320, Height2 240\n");
    // The camera's controller is of a type the tool does not know: the load skips it.
    EXPECT_EQ(listing.fieldsOf("zuCore.zuCamera"),
              "name \"main view\", controllers 1: null\n"
              "frame: location (0 0 5), D (0 0 -1), U (0 1 0), R (1 0 0)\n"
              "frustum: dmin 0.5, dmax 100, umin -0.25, umax 0.25, rmin -0.5, rmax 0.5, perspective false\n");
    EXPECT_EQ(listing.fieldsOf("zuCore.zuLight"),
              "name \"spot\", controllers 0\n"
              "type LT_SPOT, on false\n"
              "frame: location (0 0 0), D (0 0 -1), U (0 1 0), R (1 0 0)\n"
              "colours: ambient (0 0 0), diffuse (1 0.5 0.25), specular (1 1 1), intensity 2\n"
              "attenuation: constant 1, linear 0.125, quadratic 0, attenuate true\n"
              "spot: cutoff 0.5, exponent 4\n");
    EXPECT_EQ(listing.fieldsOf("zuTest.zuTestController"), "");  // unknown to the tool: no fields
    // Arrays: the quantity and the first eight elements.
    for (const auto& [type, fields] : std::vector<std::pair<std::string, std::string>>{
             {"zuCore.zuFloatArray", "quantity 3: 1 2.5 -4\n"}, {"zuCore.zuIntArray", "quantity 10: 0 1 2 3 4 5 6 7 ...\n"},
             {"zuCore.zuDoubleArray", "quantity 0\n"}, {"zuCore.zuVector3fArray", "quantity 2: (0 0 0) (1 -2 0.125)\n"},
             {"zuCore.zuPlane3dArray", "quantity 1: (0 0 1; 5)\n"}, {"zuCore.zuMatrix2fArray", "quantity 1: (1 2; 3 4)\n"}})
        EXPECT_EQ(listing.fieldsOf(type), fields);

    std::vector<ListedRecord> expected = expectedRecords(sample.topLevel());
    for (ListedRecord& record : expected)
        record.unknown = record.type.rfind("zuTest.", 0) == 0;
    EXPECT_TRUE(parse(r.out).records == expected) << r.out;
    EXPECT_TRUE(has(r.out, "12 records, 11 top-level; types no registered factory knows: zuTest.zuTestController (1)\n"));

    // --no-fields, before or after the file: the file line, the column header, the records
    // and the summary, nothing else.
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"dump", "--no-fields", path.string()}, {"dump", path.string(), "--no-fields"}}) {
        const RunResult bare = run(arguments);
        ASSERT_EQ(bare.status, 0) << bare.err;
        EXPECT_TRUE(parse(bare.out).records == expected);
        EXPECT_EQ(std::count(bare.out.begin(), bare.out.end(), '\n'), static_cast<long>(2 + expected.size() + 1));
    }
}

// A stream that loads as a whole: references read as the identifiers of their records, and
// the blocks are read back for their first elements.
TEST_F(ZusgDumpFields, NodesMeshesAndBuffersShowTransformsBoundsLayoutsAndReferencesAsIdentifiers)
{
    zuPointer<zuNode> root = new zuNode;
    root->SetName("root");
    zuPointer<zuTriMesh> cube = zusg::W1Assembly::makeCube();
    zuGenericTransformation<float> local;
    local.SetTranslate(Wm4::Vector3<float>(1.0f, 2.0f, 3.0f));
    cube->SetLocalTransform(local);
    root->attachChild(cube.get());
    root->UpdateGS();
    const fs::path path = save("scene.mvk", {root.get()});
    const RunResult r = dump(path);
    ASSERT_EQ(r.status, 0) << r.err;
    const auto id = [](const zuRttiInterface* object) {
        return "0x" + (std::ostringstream() << std::hex << std::setw(16) << std::setfill('0')
                                            << reinterpret_cast<uintptr_t>(object)).str();
    };
    const Listing listing = parse(r.out);
    EXPECT_TRUE(has(listing.fieldsOf("zuCore.zuNode"), "metadata 0\nchildren 1: " + id(cube.get()) + "\n"));
    const std::string placed = "matrix (1 0 0; 0 1 0; 0 0 1), translate (1 2 3), scale (1 1 1)\n";
    EXPECT_EQ(listing.fieldsOf("zuCore.zuTriMesh"),
              "name \"\", controllers 0\n"
              "local: IsIdentity false, IsRSMatrix true, IsUniformScale true, " + placed +
              "world: IsIdentity false, IsRSMatrix true, IsUniformScale true, " + placed +
              "culling CULL_DYNAMIC\n"
              "world bound: radius 0.8660254, extents (0.5 0.5 0.5), centre (1 2 3)\n"
              "metadata 0\n"
              "model bound: radius 0.8660254, extents (0.5 0.5 0.5), centre (0 0 0)\n"
              "states: material null, texture null\n"
              "geometry flags 2: false false\n"
              "buffers: vertices " + id(cube->GetVertices()) + ", indices " + id(cube->GetIndices()) + "\n"
              "triangles 12\n");
    const std::string vertices = listing.fieldsOf("zuCore.zuVertexBuffer");
    EXPECT_TRUE(has(vertices, "quantity 24, vertex size 24, data size 576\n"
                              "layout: stride 24, Position 3 at 0, Normal 3 at 12\n"
                              "block: bytes 576, file \"" + path.string() + "\", offset "));
    EXPECT_TRUE(has(vertices, "\npositions 24: (0.5 -0.5 -0.5) (0.5 0.5 -0.5) (0.5 0.5 0.5) (0.5 -0.5 0.5) "
                              "(-0.5 -0.5 -0.5) (-0.5 -0.5 0.5) (-0.5 0.5 0.5) (-0.5 0.5 -0.5) ...\n"));
    for (const char* line : {"quantity 36, type INDEX_32\n", "indices 36: 0 1 2 0 2 3 4 5 ...\n"})
        EXPECT_TRUE(has(listing.fieldsOf("zuCore.zuIndexBuffer"), line));
}

// Enumerations outside their range print UNKNOWN with the value; records that do not load
// on their own get a note and the walk goes on.
TEST_F(ZusgDumpFields, PatchedRecordsPrintUnknownEnumerationsOrANoteAndTheWalkGoesOn)
{
    FieldSample sample;
    const std::vector<zuRttiInterface*> topLevel = {sample.floats.get(), sample.alpha.get(), sample.ints.get(),
                                                    sample.light.get()};
    std::vector<char> bytes = readBytes(save("patched.mvk", topLevel));
    const std::vector<ListedRecord> records = expectedRecords(topLevel);  // one per object, in order
    const auto end = [&](size_t i) { return records[i].offset + static_cast<uint64_t>(records[i].size); };
    // The float array's quantity (before its 3 elements) claims more than the record holds;
    // the int array's quantity claims less, so its fields do not fill its size.
    patchInt32(bytes, end(0) - 3 * 4 - 4, 1000);
    patchInt32(bytes, end(2) - 10 * 4 - 4, 9);
    patchInt32(bytes, end(1) - 17, 99);  // the alpha state's SrcBlend
    patchInt32(bytes, end(1) - 8, -1);   // and Test
    // The light's type follows its record header and its object part ("spot", no controllers).
    const ListedRecord& light = records[3];
    patchInt32(bytes, light.offset + 4 + light.type.size() + 4 + 8 + 4 + 4 + 4, zuLight::LT_QUANTITY);

    const RunResult r = dumpBytes(bytes);
    EXPECT_EQ(r.status, 0) << r.err;
    const std::vector<std::string> fields = parse(r.out).fields;
    ASSERT_EQ(fields.size(), 4u) << r.out;
    const std::string note = "fields not shown: the record does not load on its own (";
    EXPECT_EQ(fields[0], note + "a count exceeds the data that remains)\n");
    EXPECT_EQ(fields[1], "BlendEnabled true, SrcBlend UNKNOWN (99), DstBlend DBF_ONE\n"
                         "TestEnabled true, Test UNKNOWN (-1), Reference 0.5\n");
    EXPECT_EQ(fields[2], note + "the record's fields do not fill its size)\n");
    EXPECT_TRUE(has(fields[3], "type UNKNOWN (4), on false\n"));
    EXPECT_TRUE(has(r.out, "4 records, 4 top-level; 2 with fields not shown\n"));
    // The library's own messages, with offsets inside the record alone, stay out of the output.
    EXPECT_EQ(r.out.find("zuBaseStream"), std::string::npos) << r.out;
    EXPECT_EQ(r.err.find("zuBaseStream"), std::string::npos) << r.err;
}

TEST_F(ZusgDumpFields, EveryByteOfAStateRecordPatchedNeverCrashesTheTool)
{
    // Whatever one byte of a record becomes, the tool prints the record line and either
    // the fields or a note, and the walk reaches the summary.
    FieldSample sample;
    const std::vector<zuRttiInterface*> topLevel = {sample.light.get()};
    const std::vector<char> bytes = readBytes(save("light.mvk", topLevel));
    const ListedRecord light = expectedRecords(topLevel)[0];
    const uint64_t header = 4 + light.type.size() + 4 + 8;  // the walk checks these bytes itself
    for (uint64_t at = light.offset + header; at < light.offset + static_cast<uint64_t>(light.size); ++at) {
        std::vector<char> patched = bytes;
        patched[at] = static_cast<char>(0xFF);
        const RunResult r = dumpBytes(patched);
        EXPECT_EQ(r.status, 0) << "byte " << at << ": " << r.err;
        EXPECT_TRUE(has(r.out, "1 record, 1 top-level")) << "byte " << at;
        const std::vector<std::string> fields = parse(r.out).fields;
        ASSERT_EQ(fields.size(), 1u) << r.out;
        EXPECT_FALSE(fields[0].empty()) << "byte " << at;
    }
}

// ---------------------------------------------------------------------------------------
// the describers of the classes, laid out by the dump's text form directly

using ZusgFieldText = Zusg;

TEST_F(ZusgFieldText, EveryRegisteredClassDescribesItsDefaultObjectOnLinesThatNeverStartWithADigit)
{
#ifdef ZUSG_PATH
    const std::vector<std::string> names = zuRttiInterface::GetFactoryNames();
    for (const std::string& name : names) {
        if (name.rfind("zuTest.", 0) == 0)
            continue;
        ASSERT_NE(zuRttiInterface::GetDescribeFunction(name), nullptr) << name;
        const zuRttiInterface::CreateFunction create = zuRttiInterface::GetCreateFunction(name);
        ASSERT_NE(create, nullptr) << name;
        zuPointer<zuRttiInterface> object(create());
        std::ostringstream out;
        zusg::FieldText describer(out, nullptr);
        EXPECT_TRUE(zuRttiInterface::Describe(*object, describer)) << name;
        const std::string text = out.str();
        ASSERT_FALSE(text.empty()) << name;
        EXPECT_EQ(text.back(), '\n') << name;
        std::istringstream lines(text);
        std::string line;
        while (std::getline(lines, line)) {
            const size_t first = line.find_first_not_of(' ');
            ASSERT_NE(first, std::string::npos) << name << ": an empty line";
            EXPECT_FALSE(std::isdigit(static_cast<unsigned char>(line[first]))) << name << ": " << line;
        }
    }
    // Texts are quoted, escaped and cut; small numbers print in exponent form.
    EXPECT_EQ(zusg::quotedText(std::string("a\n\0\xE9", 4)), "\"a\\x0A\\x00\\xE9\"");
    EXPECT_EQ(zusg::quotedText(std::string(70, 'x'), 64), "\"" + std::string(64, 'x') + "\"...");
    EXPECT_EQ(zusg::number(1e-7f), "1e-07");
#endif
}

// ---------------------------------------------------------------------------------------
// dump of broken files: status 1 and the offset where the data breaks

using ZusgDumpBroken = Zusg;

TEST_F(ZusgDumpBroken, EveryCutIsReportedAtOrBeforeItAfterTheWholeRecordsBeforeIt)
{
    SampleGraph g;
    const std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const std::vector<ListedRecord> expected = expectedRecords(g.topLevel());
    const auto cutAt = [&](size_t length) {
        return dumpBytes(std::vector<char>(bytes.begin(), bytes.begin() + static_cast<long>(length)), "cut.mvk");
    };
    // Whatever the cut, only whole records before it are listed; a cut between two records
    // leaves a shorter stream that is whole.
    for (size_t length = 9 + 1; length < bytes.size(); ++length) {
        const RunResult cut = cutAt(length);
        const std::vector<ListedRecord> listed = parse(cut.out).records;
        ASSERT_LE(listed.size(), expected.size());
        for (size_t i = 0; i < listed.size(); ++i) {
            EXPECT_TRUE(listed[i] == expected[i]) << "cut at " << length;
            EXPECT_LE(listed[i].offset + static_cast<uint64_t>(listed[i].size), length);
        }
        if (!listed.empty() && listed.back().offset + listed.back().size == length) {
            EXPECT_EQ(cut.status, 0) << "cut at " << length << ": " << cut.err;
            continue;
        }
        // A cut is reported, with the file's name, where the broken record (or the
        // "Top Level" marker before it) starts.
        EXPECT_EQ(cut.status, 1) << "cut at " << length;
        const uint64_t next = expected[listed.size()].offset;
        const uint64_t start = length >= next ? next : listed.empty() ? 9 : listed.back().offset + listed.back().size;
        EXPECT_TRUE(has(cut.err, file("cut.mvk").string() + ": corrupt or truncated at offset " + std::to_string(start)));
    }
}

TEST_F(ZusgDumpBroken, DamagedHeadersAndTrailingBytesAreReportedWhereTheyBreak)
{
    SampleGraph g;
    const std::vector<char> bytes = readBytes(save("graph.mvk", g.topLevel()));
    const std::vector<ListedRecord> records = expectedRecords(g.topLevel());
    const uint64_t secondSizeField = records[1].offset + 4 + records[1].type.size();
    const struct {
        const char* what;
        std::function<void(std::vector<char>&)> damage;
        size_t listed;           // the records listed before the break
        uint64_t offset;         // where the break is reported
        const char* errText;
    } cases[] = {
        {"three trailing bytes", [](std::vector<char>& b) { b.insert(b.end(), {1, 2, 3}); }, 5, bytes.size(), ""},
        {"a size smaller than the record header", [&](std::vector<char>& b) { patchInt32(b, secondSizeField, 3); },
         1, secondSizeField, "announces 3 bytes"},
        {"a size past the end of the file",
         [&](std::vector<char>& b) { patchInt32(b, records[0].offset + 4 + records[0].type.size(), 1 << 30); }, 0,
         records[0].offset, ""},
        {"a negative type name length", [&](std::vector<char>& b) { patchInt32(b, records[1].offset, -5); }, 1,
         records[1].offset, ""},
        {"text instead of a stream header", [](std::vector<char>& b) { b.assign({'h', 'e', 'l', 'l', 'o', '\n'}); }, 0, 0,
         "no object-stream header"},
        {"a cut stream header", [](std::vector<char>& b) { b.resize(5); }, 0, 0, "no object-stream header"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<char> damaged = bytes;
        c.damage(damaged);
        const RunResult r = dumpBytes(damaged);
        EXPECT_EQ(r.status, 1);
        EXPECT_EQ(parse(r.out).records.size(), c.listed) << r.out;
        EXPECT_TRUE(has(r.err, "at offset " + std::to_string(c.offset) + ":"));
        EXPECT_TRUE(has(r.err, c.errText));
    }
}

// ---------------------------------------------------------------------------------------
// dump of streams before 6.0: records carry no size, so the objects are loaded instead

using ZusgDumpLegacy = Zusg;

TEST_F(ZusgDumpLegacy, KnownTopLevelObjectsShowTheirFieldsAndAnUnknownTypeStopsTheLoad)
{
    const auto legacyFile = [](const std::vector<zuRttiInterface*>& topLevel) {
        const char header[] = "MVK 5.20";  // written with its NUL
        std::vector<char> bytes(header, header + sizeof header);
        const std::vector<char> records = saveToBytes(topLevel, zuStreamVersion(5, 20));
        bytes.insert(bytes.end(), records.begin(), records.end());
        return bytes;
    };
    zuPointer<zuAlphaState> alpha = new zuAlphaState;
    alpha->DstBlend = zuAlphaState::DBF_ONE;
    zuPointer<zuFloatArray> floats = new zuFloatArray(2, new float[2]{0.5f, -1.0f});
    RunResult r = dumpBytes(legacyFile({alpha.get(), floats.get()}), "old.mvk");
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(has(r.out, "\"MVK 5.20\""));
    // Each object's line, then its fields under the type column.
    EXPECT_TRUE(has(r.out, "    0  zuCore.zuAlphaState               \"\"\n"
                           "       BlendEnabled false, SrcBlend SBF_SRC_ALPHA, DstBlend DBF_ONE\n"
                           "       TestEnabled false, Test TF_ALWAYS, Reference 0\n"
                           "    1  zuCore.zuFloatArray               \"\"\n"
                           "       quantity 2: 0.5 -1\n"
                           "2 top-level objects\n"));
    const RunResult bare = run({"dump", "--no-fields", file("old.mvk").string()});
    EXPECT_EQ(bare.status, 0) << bare.err;
    EXPECT_EQ(bare.out.find("quantity"), std::string::npos) << bare.out;

    // The first record (its "Top Level" marker) starts right after the 9-byte header.
    SampleGraph g;
    r = dumpBytes(legacyFile(g.topLevel()), "old.mvk");
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(has(r.err, "loading stopped at offset 9,"));
    EXPECT_TRUE(has(r.err, "zuTest.zuTestNode"));
}

// ---------------------------------------------------------------------------------------
// demo

using ZusgDemo = Zusg;

TEST_F(ZusgDemo, EveryStepRunsKeepSavesWhereAskedAndBadArgumentsAreUsageErrors)
{
    const fs::path kept = file("kept.mvk");
    RunResult r = run({"demo", "--keep", kept.string(), "--depth", "1"});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_EQ(r.out.rfind("zusg demo: the W1 assembly, depth 1, 8 children per node\n", 0), 0u) << r.out;
    EXPECT_TRUE(has(r.out, "\nfile     kept " + kept.string() + "\ndemo: OK\n"));
    EXPECT_EQ(leftFiles(), std::set<std::string>{"kept.mvk"});
    r = run({"demo", "--depth", "7"});
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(has(r.err, "--depth takes a whole number from 1 to 6, not '7'"));
    r = run({"demo", "--depth", "1", "--keep", file("missing/kept.mvk").string()});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(has(r.err, "zusg demo: FAILED: could not save " + file("missing/kept.mvk").string()));
}

// ---------------------------------------------------------------------------------------
// Pick

using ZusgPick = Zusg;

TEST_F(ZusgPick, PrintsTheNearestHitOfTheRayAsThePickerFindsItHere)
{
    zuPointer<zuNode> root = zusg::W1Assembly(1).build();
    root->getChild(0)->SetName("corner");
    const fs::path path = save("w1.mvk", {root.get()});
    root->UpdateGS();
    zuPicker picker;
    ASSERT_TRUE(picker.PickRay(root, Wm4::Vector3<float>(-2, -2, -10), Wm4::Vector3<float>(0, 0, 1)));
    const zuPickRecord& hit = picker.GetRecords()[0];
    std::ostringstream expected;
    expected << "leaf      corner (zuCore.zuTriMesh)\ntriangle  " << hit.triangle << "\npoint     " << hit.point[0]
             << ", " << hit.point[1] << ", " << hit.point[2] << "\nnormal    " << hit.normal[0] << ", " << hit.normal[1]
             << ", " << hit.normal[2] << "\ndistance  " << hit.distance << "\n";
    RunResult r = run({"pick", path.string(), "--eye", "-2,-2,-10", "--dir", "0,0,1"});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, expected.str());
    r = run({"pick", path.string(), "--dir", "0,0,-1", "--eye", "-2,-2,-10"});
    EXPECT_EQ(r.out, "no hit\n");
    EXPECT_EQ(run({"pick", path.string(), "--eye", "0,0", "--dir", "1,0,0"}).status, 2);
}

} // namespace
} // namespace zu::test
