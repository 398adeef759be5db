#include <zuSceneGraph/io/zuObjParser.h>
#include <zuSceneGraph/io/zuObjReader.h>
#include <zuSceneGraph/io/zuObjWriter.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <zuSystem/zuMemoryIoDevice.h>
#include <zuSystem/zuProgressNotifier.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>

using namespace zu;

namespace {

class ObjReaderTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() { initializeZuSceneGraph(); }
    static void TearDownTestSuite() { terminateZuSceneGraph(); }

    void SetUp() override
    {
        mFolder = std::filesystem::temp_directory_path() /
                  ("zuObjReaderTest_" + std::to_string(::getpid()) + "_" +
                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(mFolder);
    }
    void TearDown() override { std::filesystem::remove_all(mFolder); }

    std::string path(const std::string& name) const { return (mFolder / name).string(); }
    void writeFile(const std::string& name, const std::string& text) const { std::ofstream(path(name)) << text; }

    zuPointer<zuNode> read(const std::string& text, int threads = 1, size_t chunk = zuObjReader::DEFAULT_CHUNK_SIZE,
                           zuProgressNotifier* progress = nullptr)
    {
        zuMemoryIoDevice device(std::vector<char>(text.begin(), text.end()));
        zuObjReader reader(mImages);
        reader.SetThreadCount(threads);
        reader.SetChunkSize(chunk);
        zuPointer<zuNode> root = reader.Read(device, "model", mFolder.string() + "/", progress);
        mMessages.clear();
        for (const zuObjMessage& message : reader.GetMessages())
            mMessages += std::to_string(message.line) + ": " + message.text + "\n";
        return root;
    }

    // Writes the scene to `name` and reads it back, with no messages.
    zuPointer<zuNode> writeAndRead(const zuNode& root, const std::string& name)
    {
        zuObjWriter writer;
        EXPECT_TRUE(writer.WriteFile(root, path(name), nullptr)) << writer.GetError();
        zuObjReader reader(mImages);
        zuPointer<zuNode> back = reader.ReadFile(path(name), nullptr);
        EXPECT_TRUE(reader.GetMessages().empty());
        return back;
    }

    std::filesystem::path mFolder;
    zuCatalog<zuImage> mImages;
    std::string mMessages;
};

// "Type name vertices/indices" per leaf.
std::string summary(const zuNode& root)
{
    std::string text;
    for (int i = 0; i < root.getNbChildren(); ++i) {
        const auto* leaf = static_cast<const zuBaseGeometry*>(root.getChild(i));
        text.append(text.empty() ? "" : "; ").append(leaf->GetType().GetName() + 7).append(" ");
        text.append(leaf->GetName()).append(" ").append(std::to_string(leaf->GetVertices()->GetVertexQuantity()));
        text.append("/").append(std::to_string(leaf->GetIndices()->GetIndexQuantity()));
    }
    return text;
}

using Triangle = std::array<float, 9>;

// Every triangle of the meshes in world coordinates, each rotated to start at its
// smallest corner (winding kept), sorted.
std::vector<Triangle> triangles(const zuNode& root)
{
    std::vector<Triangle> all;
    for (int i = 0; i < root.getNbChildren(); ++i) {
        const auto* mesh = dynamic_cast<const zuTriMesh*>(root.getChild(i));
        for (int t = 0; mesh && t < mesh->GetTriangleQuantity(); ++t) {
            int v[3];
            mesh->GetTriangle(t, v[0], v[1], v[2]);
            std::array<std::array<float, 3>, 3> corners;
            for (int k = 0; k < 3; ++k) {
                const auto p = mesh->GetWorldTransform().ApplyForward(
                    Wm4::Vector3<float>(mesh->GetVertices()->PositionTuple(v[k])));
                corners[k] = {p[0], p[1], p[2]};
            }
            std::rotate(corners.begin(), std::min_element(corners.begin(), corners.end()), corners.end());
            Triangle triangle;
            for (int k = 0; k < 9; ++k)
                triangle[k] = corners[k / 3][k % 3];
            all.push_back(triangle);
        }
    }
    std::sort(all.begin(), all.end());
    return all;
}

// Component `axis` of (b - a) x (c - a): twice the triangle's signed area seen along it.
double turn(const Triangle& t, int axis)
{
    const int u = (axis + 1) % 3, v = (axis + 2) % 3;
    return (double(t[3 + u]) - t[u]) * (double(t[6 + v]) - t[v]) - (double(t[3 + v]) - t[v]) * (double(t[6 + u]) - t[u]);
}

const char* const TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 1 0\n";

TEST_F(ObjReaderTest, ConstructsAndBadInput)
{
    struct Case {
        const char* text;
        const char* leaves;
        const char* messages;
    };
    const Case cases[] = {
        // Index forms, negative indices, shared vertices.
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nvt 0 0\nvn 0 0 1\nf 1 2 3\nf 1/1 2/1 3/1\nf 1//1 2//1 3//1\n"
         "f -3/-1/-1 -2/-1/-1 -1/-1/-1\nf 1/1/1 2/1/1 3/1/1\n",
         "zuTriMesh default 12/15", ""},
        // Groups, objects and materials split the leaves; a group and material met again
        // joins its leaf; s is skipped.
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\ng a\ns 1\nf 1 2 3\nusemtl m\nf 1 2 3\no b\nf 1 2 3\ng a\nusemtl m\nf 3 2 1\n"
         "g\nusemtl\nf 1 2 3\n",
         "zuTriMesh a 3/3; zuTriMesh a 3/6; zuTriMesh b 3/3; zuTriMesh default 3/3",
         "7: material \"m\" not found\n"},
        // Lines as segments, points; a quad as two triangles.
        {"v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nl 1 2 3\np 4 3\nf 1 2 3 4\n",
         "zuLine default 3/4; zuPoint default 2/2; zuTriMesh default 4/6", ""},
        // CRLF, tabs, repeated spaces, comments, continuations, UTF-8 names and no final
        // line end.
        {"# comment\r\ng Tr\u00e4ger \u00fc # a beam\r\nv\t0 0 0 # inline\r\nv  1   0 \\\r\n 0\r\nv 0 1 0\r\n"
         "f 1 \\\n2 \\\n3",
         "zuTriMesh Tr\u00e4ger \u00fc 3/3", ""},
        // Bad lines: each reported with its line, the rest loads; faces with a bad index
        // are dropped.
        {"v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 x 0\nf 1 2 3\nf 1 2 5\nf 1 2 0\nf 1 2\nf 1/9 2 3\nfoo bar\nvn 1 2\n"
         "f 1 2 3 -9\nf 1 2 3/x\nv 1 2\n",
         "zuTriMesh default 3/3",
         "4: bad number \"x\" in a v statement\n"
         "6: index 5 out of range (4 v statements above); the f statement is dropped\n"
         "7: bad index \"0\" in an f statement; the statement is dropped\n"
         "8: an f statement needs at least 3 indices; the statement is dropped\n"
         "9: index 9 out of range (0 vt statements above); the f statement is dropped\n"
         "10: unknown statement \"foo\"; the line is skipped\n"
         "11: a vn statement takes x y z; found 2 numbers\n"
         "12: index -9 out of range (4 v statements above); the f statement is dropped\n"
         "13: bad index \"3/x\" in an f statement; the statement is dropped\n"
         "14: a v statement takes x y z, an optional w or a colour (r g b or r g b a); found 2 numbers\n"},
        {"mtllib missing.mtl other.mtl\n", "", "1: material library \"missing.mtl\" not found\n"
                                               "1: material library \"other.mtl\" not found\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        zuPointer<zuNode> root = read(c.text);
        ASSERT_TRUE(root);
        EXPECT_EQ(root->GetName(), "model");
        EXPECT_EQ(summary(*root), c.leaves);
        EXPECT_EQ(mMessages, c.messages);
    }
}

TEST_F(ObjReaderTest, PolygonsKeepTheirAreaAndWinding)
{
    struct Case {
        const char* text;
        int axis;     // the axis the polygon faces
        double area;  // twice the polygon's area seen along it
    };
    const Case cases[] = {
        // A concave quad (a dart): only the diagonal through the reflex corner is valid.
        {"v 0 0 0\nv 2 0 0\nv 0.5 0.5 0\nv 0 2 0\nf 1 2 3 4\n", 2, 2.0},
        {"v 0.5 0.5 0\nv 2 0 0\nv 0 0 0\nv 0 2 0\nf 1 2 3 4\n", 2, -2.0},
        // An L-shaped hexagon, given from a reflex corner, then in reverse, then in the
        // plane facing y.
        {"v 1 1 0\nv 1 2 0\nv 0 2 0\nv 0 0 0\nv 2 0 0\nv 2 1 0\nf 1 2 3 4 5 6\n", 2, 6.0},
        {"v 1 1 0\nv 1 2 0\nv 0 2 0\nv 0 0 0\nv 2 0 0\nv 2 1 0\nf 6 5 4 3 2 1\n", 2, -6.0},
        {"v 1 0 1\nv 2 0 1\nv 2 0 0\nv 0 0 0\nv 0 0 2\nv 1 0 2\nf 1 2 3 4 5 6\n", 1, 6.0},
        // A comb with three teeth, not planar (z varies).
        {"v 0 0 0\nv 5 0 0.1\nv 5 2 0\nv 4 2 0.2\nv 4 1 0\nv 3 1 0.1\nv 3 2 0\nv 2 2 0\nv 2 1 0.3\nv 1 1 0\n"
         "v 1 2 0\nv 0 2 0.1\nf 1 2 3 4 5 6 7 8 9 10 11 12\n",
         2, 16.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        zuPointer<zuNode> root = read(c.text);
        double area = 0;
        for (const Triangle& t : triangles(*root)) {
            area += turn(t, c.axis);
            // Every triangle turns the polygon's way (none folded back over the others).
            EXPECT_GT(turn(t, c.axis) * c.area, 0.0);
        }
        EXPECT_NEAR(area, c.area, 1e-5);
    }
}

TEST_F(ObjReaderTest, VertexChannels)
{
    // Normals given stay as given; normals missing are area-weighted; colours and texture
    // coordinates fill their channels, with white and (0, 0) where a vertex has none.
    zuPointer<zuNode> root = read(std::string(TRIANGLE) +
                                  "v 0 0 1 0.5 0.25 1\nvt 0.5 0.75\nvn 0 1 0\nf 1 2 3\nf 1/1/1 4/1/1 2/1/1\n");
    ASSERT_EQ(root->getNbChildren(), 1);
    const zuVertexBuffer& vertices = *static_cast<zuBaseGeometry*>(root->getChild(0))->GetVertices();
    ASSERT_EQ(vertices.GetVertexQuantity(), 6);
    EXPECT_EQ(vertices.GetAttributes().GetColorChannels(0), 3);
    EXPECT_EQ(vertices.GetAttributes().GetTCoordChannels(0), 2);
    const std::array<float, 9> expected[6] = {
        // position, normal, colour (r g), texture coordinate (s)
        {0, 0, 0, 0, 0, 1, 1, 1, 0}, {1, 0, 0, 0, 0, 1, 1, 1, 0}, {0, 1, 0, 0, 0, 1, 1, 1, 0},
        {0, 0, 0, 0, 1, 0, 1, 1, 0.5f}, {0, 0, 1, 0, 1, 0, 0.5f, 0.25f, 0.5f}, {1, 0, 0, 0, 1, 0, 1, 1, 0.5f},
    };
    for (int i = 0; i < 6; ++i) {
        const float *p = vertices.PositionTuple(i), *n = vertices.NormalTuple(i), *c = vertices.ColorTuple(0, i);
        EXPECT_EQ((std::array<float, 9>{p[0], p[1], p[2], n[0], n[1], n[2], c[0], c[1], vertices.TCoordTuple(0, i)[0]}),
                  expected[i]) << i;
    }
}

TEST_F(ObjReaderTest, MaterialLibraries)
{
    writeFile("tex.png", "");
    writeFile("my lib.mtl",
              "newmtl shiny\nKa 0.1 0.2 0.3\nKd 0.4\nKs 1 1 1\nKe 0 0 0.5\nNs 50\nNi 1.5\nd 0.25\nillum 2\n"
              "map_Ka tex.png\nmap_Kd -bm 2 -s 1 1 1 -o 0 0 -clamp on tex.png\nmap_Ks missing.png\n"
              "map_Bump -bm 0.5 tex.png\nmap_d tex.png\n"
              "newmtl clear\nTr 0.75\nbump tex.png\nNs x\n");
    zuPointer<zuNode> root =
        read(std::string("mtllib my lib.mtl\n") + TRIANGLE + "usemtl shiny\nf 1 2 3\nusemtl clear\nf 1 2 3\n");
    EXPECT_EQ(mMessages, "12: my lib.mtl: texture file \"missing.png\" not found\n"
                         "18: my lib.mtl: bad number in a Ns statement; the line is skipped\n");
    ASSERT_EQ(root->getNbChildren(), 2);
    const auto* shiny = static_cast<zuBaseGeometry*>(root->getChild(0));
    const zuMaterialState& material = *shiny->GetMaterialState();
    EXPECT_EQ((std::vector<Wm4::ColorRGB>{material.Ambient, material.Diffuse, material.Specular, material.Emissive}),
              (std::vector<Wm4::ColorRGB>{{0.1f, 0.2f, 0.3f}, {0.4f, 0.4f, 0.4f}, {1, 1, 1}, {0, 0, 0.5f}}));
    EXPECT_EQ((std::array<float, 2>{material.Shininess, material.Opacity}), (std::array<float, 2>{50.0f, 0.25f}));
    const zuTextureState& textures = *shiny->GetTextureState();
    ASSERT_EQ(textures.GetTextureQuantity(), 4);
    const zuTexture::Channel channels[] = {zuTexture::CH_DIFFUSE, zuTexture::CH_SPECULAR, zuTexture::CH_BUMP,
                                           zuTexture::CH_OPACITY};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(textures.GetTexture(i)->GetChannel(), channels[i]);
    EXPECT_EQ((std::array{textures.GetTexture(0)->GetWrapS(), textures.GetTexture(2)->GetWrapS()}),
              (std::array{zuTexture::WM_CLAMP_EDGE, zuTexture::WM_REPEAT}));
    // One image per file, shared through the catalogue, named by its path.
    EXPECT_EQ(mImages.GetQuantity(), 2);
    EXPECT_EQ(textures.GetTexture(0)->GetImage(), mImages.Find(path("tex.png")));

    const auto* clear = static_cast<zuBaseGeometry*>(root->getChild(1));
    EXPECT_EQ(clear->GetMaterialState()->Opacity, 0.25f);
    EXPECT_EQ(clear->GetTextureState()->GetTexture(0)->GetImage(), mImages.Find(path("tex.png")));
}

// A file whose statements cross chunk boundaries in every way (groups, relative indices,
// continuations, errors) reads the same in one chunk and in many chunks on threads.
TEST_F(ObjReaderTest, ChunksAndThreadsReadAlike)
{
    std::string text;
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        text += "v " + std::to_string(i % 17) + " " + std::to_string(i % 13) + " \\\n" + std::to_string(i % 7) + "\n";
        text += "vt 0." + std::to_string(i) + " 1\nvn 0 0 1\n";
        if (i % 500 == 499)
            text += "g part" + std::to_string(i / 500) + "\nbad line\n";
        if (i >= 3)
            text += "f -1/-1/-1 -2/-2/-2 -3/-3/-3 " + std::to_string(random() % (i + 1) + 1) + "\n";
    }
    zuPointer<zuNode> whole = read(text);
    const std::string messages = mMessages;
    zuPointer<zuNode> chunked = read(text, 3, 4096);
    EXPECT_EQ(mMessages, messages);
    EXPECT_EQ(summary(*chunked), summary(*whole));
    EXPECT_EQ(triangles(*chunked), triangles(*whole));
    for (int i = 0; i < whole->getNbChildren(); ++i)
        EXPECT_TRUE(static_cast<zuBaseGeometry*>(whole->getChild(i))
                        ->GetVertices()
                        ->Equals(static_cast<zuBaseGeometry*>(chunked->getChild(i))->GetVertices()));
}

// One step per megabyte read, the group complete at the end; a cancellation returns null.
TEST_F(ObjReaderTest, ProgressAndCancel)
{
    std::string text;
    for (int i = 0; i < 330000; ++i)
        text += "v 0 0 0\n";
    text += "f 1 2 3\n";
    for (const bool cancel : {false, true}) {
        zuProgressNotifier progress;
        if (cancel)
            progress.requestCancel();
        EXPECT_EQ(bool(read(text, 2, 1 << 20, &progress)), !cancel);
        EXPECT_EQ(progress.totalSteps(), cancel ? 1 : 3);
        EXPECT_EQ(progress.groupDepth(), 0);
        EXPECT_EQ(mMessages, "");
    }
}

// obj -> scene -> obj -> scene: the same triangles in world coordinates, the same
// materials, through a transformed subtree.
TEST_F(ObjReaderTest, WrittenFilesReadBack)
{
    writeFile("tex.png", "");
    writeFile("in.mtl", "newmtl red\nKd 1 0 0\nmap_Kd tex.png\n");
    // The line and point leaves come first and have no texture coordinates or normals:
    // the mesh's corners must count its vt and vn statements apart from its v statements.
    zuPointer<zuNode> first = read("mtllib in.mtl\nv 0.1 0.2 0.3\nv 1e-7 0 3.14159274\nv 0 1 0\nv 2 2 2\nvt 0.5 1\n"
                                   "vn 0 0 1\ng line\nl 1 2 4\np 3\ng a b\nusemtl red\nf 1/1/1 2/1/1 3/1/1 4/1/1\n");
    zuPointer<zuNode> root(new zuNode);
    root->attachChild(first.get());
    first->GetLocalTransform().SetTranslate(Wm4::Vector3<float>(1, 2, 3));
    root->UpdateGS();
    zuPointer<zuNode> second = writeAndRead(*root, "out.obj");
    ASSERT_TRUE(second);
    EXPECT_EQ(second->GetName(), "out");
    EXPECT_EQ(summary(*second), "zuLine line 3/4; zuPoint line 1/1; zuTriMesh a b 4/6");
    EXPECT_EQ(triangles(*second), triangles(*first));
    ASSERT_EQ(second->getNbChildren(), 3);
    const auto* mesh = static_cast<zuBaseGeometry*>(second->getChild(2));
    EXPECT_EQ(mesh->GetMaterialState()->Diffuse, Wm4::ColorRGB(1, 0, 0));
    EXPECT_EQ(mesh->GetTextureState()->GetTexture(0)->GetImageName(), path("tex.png"));
}

// A cancelled write leaves the files that were there as they were, and no others.
TEST_F(ObjReaderTest, FailedWritesKeepOldFiles)
{
    writeFile("old.obj", "old");
    writeFile("old.mtl", "old library");
    writeFile("in.mtl", "newmtl red\nKd 1 0 0\n");
    zuPointer<zuNode> root = read(std::string("mtllib in.mtl\n") + TRIANGLE + "usemtl red\nf 1 2 3\n");
    zuProgressNotifier progress;
    progress.requestCancel();
    zuObjWriter writer;
    EXPECT_FALSE(writer.WriteFile(*root, path("old.obj"), &progress));
    EXPECT_EQ(writer.GetError(), "writing was cancelled");
    EXPECT_FALSE(writer.WriteFile(*root, path("missing/new.obj"), nullptr));
    std::ifstream obj(path("old.obj")), library(path("old.mtl"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(obj), {}), "old");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(library), {}), "old library");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(mFolder), {}), 3);
}

// A leaf long enough to be formatted in blocks on several threads comes back whole and in
// order.
TEST_F(ObjReaderTest, LongLeavesWriteInOrder)
{
    zuAttributes layout;
    layout.SetPositionChannels(3);
    const int count = 150000;
    zuPointer<zuVertexBuffer> vertices(new zuVertexBuffer(layout, count));
    zuPointer<zuIndexBuffer> indices(new zuIndexBuffer(3 * (count - 2), zuIndexBuffer::INDEX_32));
    for (int i = 0; i < count; ++i) {
        float* p = vertices->PositionTuple(i);
        p[0] = static_cast<float>(i) * 0.25f;
        p[1] = static_cast<float>(i % 2);
        p[2] = 1.0f / static_cast<float>(i + 1);
    }
    for (int t = 0; t < count - 2; ++t)
        for (int k = 0; k < 3; ++k)
            indices->GetIndices32()[3 * t + k] = static_cast<unsigned>(t + (t % 2 ? 2 - k : k));
    zuPointer<zuNode> root(new zuNode);
    root->attachChild(new zuTriMesh(vertices.get(), indices.get()));
    zuPointer<zuNode> back = writeAndRead(*root, "long.obj");
    ASSERT_TRUE(back);
    EXPECT_EQ(triangles(*back), triangles(*root));
}

// The fast path of the number parser against the standard one: the same float for
// every decimal shape, halfway cases and long mantissas included.
TEST(ObjParserTest, NumbersAreCorrectlyRounded)
{
    std::vector<std::string> numbers = {"1.", ".5", "-.25", "+3", "1E-3", "12.5e+2", "3.4028235e38", "1e-45", "1e-50",
                                        "-0.000000", "16777217", "0.1000000000000000055511151231257827",
                                        "123456789012345678901234567890", "7.038531e-26", "1.00000005960464477539062"};
    std::mt19937_64 random(1);
    for (int i = 0; i < 200000; ++i) {
        char text[64];
        const int digits = static_cast<int>(random() % 12) + 1;
        const int point = static_cast<int>(random() % (digits + 1));
        int length = std::snprintf(text, sizeof text, "%s", random() % 2 ? "-" : "");
        for (int d = 0; d < digits; ++d)
            length += std::snprintf(text + length, sizeof text - length, "%s%d", d == point ? "." : "",
                                    static_cast<int>(random() % 10));
        if (random() % 4 == 0)
            std::snprintf(text + length, sizeof text - length, "e%d", static_cast<int>(random() % 60) - 30);
        numbers.push_back(text);
    }
    for (const std::string& number : numbers) {
        float expected = 0.0f;
        const char* start = number.c_str() + (number[0] == '+');
        const auto result = std::from_chars(start, number.c_str() + number.size(), expected);
        const char* p = number.c_str();
        float value = -1.0f;
        const bool parsed = zuObjParser::ParseFloat(p, number.c_str() + number.size(), value);
        if (result.ec == std::errc()) {
            ASSERT_TRUE(parsed) << number;
            EXPECT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << number;
        }
    }
    for (const char* bad : {"x", "1.2.3", "--1", "+-1", "1e", "nan", "inf", "1e50", "0x10"}) {
        const char* p = bad;
        float value;
        EXPECT_FALSE(zuObjParser::ParseFloat(p, bad + std::strlen(bad), value)) << bad;
    }
}

} // namespace
