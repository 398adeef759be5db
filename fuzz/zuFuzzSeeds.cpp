// Writes the seed inputs and the dictionaries of the fuzz targets into a folder, so that no
// seed is a blob without the program that made it:
//   stream/        stream files: every registered class alone (default, and filled when it
//                  holds a block) at a few versions, and a small assembly of meshes and one
//                  scene holding an object of every class at every version gate
//   mesh_driver/   some of those files behind the options byte of the driver target
//   index_deltas/  packed indices of each delta width
//   obj/           OBJ files with every statement the reader knows, a material library
//                  after a NUL
//   text/          text files
//   stream.dict, obj.dict  type names, markers, header texts and keywords
// Usage: zuFuzzSeeds FOLDER

#include "zusgW1Assembly.h"

#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/stream/zuBaseStream.h>
#include <zuSceneGraph/zuSceneGraph.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace zu;

namespace {

std::filesystem::path root;

void write(const std::string& name, const std::string& bytes)
{
    const std::filesystem::path path = root / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

// The versions at which some record changes form; a class alone is saved at a few of them,
// the scenes that hold every class at all of them.
const int versions[][2] = {{4, 2}, {5, 0}, {5, 1}, {5, 2}, {5, 12}, {5, 14}, {5, 20},
                           {5, 25}, {6, 0}, {6, 6}, {6, 28}, {6, 32}};
const int someVersions[][2] = {{5, 1}, {6, 0}, {6, 6}, {6, 32}};

std::string header(const int (&version)[2])
{
    char text[16];
    const int length = std::snprintf(text, sizeof text, "MVK %01d.%02d", version[0], version[1]);
    return std::string(text, static_cast<size_t>(length) + 1);
}

// The file of `objects` as top-level objects at `version`; empty when they cannot be saved there.
std::string streamFile(const std::vector<zuRttiInterface*>& objects, const int (&version)[2])
{
    zuBaseStream stream;
    stream.SetVersion(zuStreamVersion(version[0], version[1]));
    for (zuRttiInterface* object : objects)
        stream.InsertTopLevel(object);
    char* buffer = nullptr;
    unsigned long size = 0;
    if (!stream.Save(buffer, size))
        return "";
    std::string file = header(version) + std::string(buffer, size);
    delete[] buffer;
    return file;
}

template <size_t N>
void streamSeeds(const std::string& name, const std::vector<zuRttiInterface*>& objects, const int (&at)[N][2])
{
    for (const auto& version : at)
        if (const std::string file = streamFile(objects, version); !file.empty())
            write("stream/" + name + "-" + std::to_string(version[0]) + "." + std::to_string(version[1]), file);
}

// A block of a few values, so that the records hold data and not only counts.
void fill(zuRttiInterface* object)
{
    if (auto* vertices = dynamic_cast<zuVertexBuffer*>(object)) {
        zuAttributes layout;
        layout.SetPositionChannels(3);
        layout.SetNormalChannels(3);
        layout.SetColorChannels(0, 4);
        vertices->setVertexFormat(layout, 3);
        for (int k = 0; k < vertices->GetDataSize(); ++k)
            vertices->GetData()[k] = static_cast<char>(k % 7 == 3 ? 0x3f : k);
    } else if (auto* indices = dynamic_cast<zuIndexBuffer*>(object)) {
        indices->resizeIndexBuffer(6);
        for (int k = 0; k < 6; ++k)
            indices->SetIndex(k, static_cast<unsigned>(k * 300 % 7));
    } else if (auto* image = dynamic_cast<zuImage*>(object)) {
        image->SetImage(zuImage::RGBA8, 2, 2, "0123456789abcdef");
    }
}

void writeStreamSeeds()
{
    zuPointer<zuNode> scene = new zuNode;
    std::vector<zuPointer<zuRttiInterface>> kept;
    std::vector<zuRttiInterface*> everything{scene.get()};
    for (const std::string& type : zuRttiInterface::GetFactoryNames()) {
        zuRttiInterface::CreateFunction create = zuRttiInterface::GetCreateFunction(type);
        if (!create)
            continue;
        zuPointer<zuRttiInterface> object = create();
        streamSeeds(type, {object.get()}, someVersions);
        zuPointer<zuRttiInterface> filled = create();
        fill(filled);
        streamSeeds(type + "-filled", {filled.get()}, someVersions);
        if (filled->IsDerived(zuSpatial::TYPE))
            scene->attachChild(static_cast<zuSpatial*>(filled.get()));
        else
            everything.push_back(filled);
        kept.push_back(filled);
    }
    streamSeeds("everything", everything, versions);
    zusg::W1Assembly assembly(1, 3);
    zuPointer<zuNode> meshes = assembly.build();
    meshes->UpdateGS();
    streamSeeds("assembly", {meshes.get(), assembly.camera().get()}, versions);

    // The driver reads some of them with each option set on and off.
    const std::pair<const char*, char> driverSeeds[] = {
        {"assembly-6.32", '\x1f'}, {"assembly-6.32", '\x80'}, {"everything-6.32", '\x00'}, {"everything-6.28", '\x6f'}};
    for (const auto& [name, options] : driverSeeds) {
        std::ifstream file(root / "stream" / name, std::ios::binary);
        write(std::string("mesh_driver/") + name + "-" + std::to_string(options & 0xff),
              options + std::string(std::istreambuf_iterator<char>(file), {}));
    }

    // A type name as the stream writes it, then the other texts of a file.
    std::string dictionary = "\"\\x09\\x00\\x00\\x00Top Level\"\n";
    for (const std::string& type : zuRttiInterface::GetFactoryNames()) {
        char length[32];
        std::snprintf(length, sizeof length, "\"\\x%02x\\x00\\x00\\x00", static_cast<unsigned>(type.size()));
        dictionary += length + type + "\"\n";
    }
    for (const auto& version : versions)
        dictionary.append("\"").append(header(version), 0, 8).append("\\x00\"\n");
    write("stream.dict", dictionary);
}

void writeOtherSeeds()
{
    // Width byte, first index, deltas: widths 1, 2 and 4, and negative deltas.
    write("index_deltas/width1", std::string("\x01\x05\x00\x00\x00\xff\xff\x7f\x80", 9));
    write("index_deltas/width2", std::string("\x02\x00\x00\x00\x00\x01\x00\x01\x00\x80\x00", 11));
    write("index_deltas/width4", std::string("\x04\x00\x00\x00\x00\x40\x9c\x00\x00\xc0\x63\xff\xff", 13));

    const std::string obj = "# every statement\nmtllib input.mtl\no part\ng side top\ns 1\nusemtl red\n"
                            "v 0 0 0\nv 1 0 0 1\nv 1 1 0 0.5 0.5 0.5\nv 0 1 0\nvt 0 0\nvt 1 0 0\nvn 0 0 1\n"
                            "f 1 2 3\nf 1/1 2/2 3/1\nf 1//1 3//1 4//1\nf -4/-2/-1 -3/-1/-1 -2/-2/-1 -1/-1/-1\n"
                            "usemtl missing\nl 1 2 3\nl 1/1 2/2\np 1 2 -1\ng\ns off\n"
                            "v 2 0 \\\n 0\nf 1 2 5\ncurv 0 1 1 2\nvp 0.5\nf 1 2\nf 1 9 3\nf a b c\n";
    const std::string mtl = "newmtl red\nKa 0.1 0.1 0.1\nKd 1 0 0\nKs 1\nKe 0 0 0\nNs 10\nNi 1.5\nd 0.5\n"
                            "Tr 0.2\nillum 2\nmap_Kd -clamp on -s 1 1 1 red.png\nmap_Ka red.png\n"
                            "map_Bump -bm 0.5 bump.png\nbump b.png\nmap_d a.png\nrefl -type sphere r.png\n"
                            "newmtl red\nKd spectral a.rfl\nKa xyz 1 1 1\nKs 1 2\n";
    write("obj/everything", obj + '\0' + mtl);
    write("obj/plain", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    write("obj.dict", "\"mtllib \"\n\"usemtl \"\n\"newmtl \"\n\"v \"\n\"vt \"\n\"vn \"\n\"vp \"\n\"f \"\n"
                      "\"l \"\n\"p \"\n\"g \"\n\"o \"\n\"s \"\n\"//\"\n\"\\\\\\x0a\"\n\"Ka \"\n\"Kd \"\n\"Ks \"\n"
                      "\"Ke \"\n\"Ns \"\n\"Ni \"\n\"d \"\n\"Tr \"\n\"illum \"\n\"map_Kd \"\n\"map_Ka \"\n"
                      "\"map_Bump \"\n\"bump \"\n\"map_d \"\n\"refl \"\n\"-clamp on\"\n\"-bm \"\n\"-s \"\n"
                      "\"spectral \"\n\"xyz \"\n\"\\x00\"\n\"1e38\"\n\"nan\"\n\"-inf\"\n");

    write("text/lines", "one\ntwo\r\nthree");
    write("text/long", std::string(2046, 'x') + "\n" + std::string(2047, 'y'));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: zuFuzzSeeds FOLDER\n");
        return 2;
    }
    root = argv[1];
    initializeZuSceneGraph();
    writeStreamSeeds();
    writeOtherSeeds();
    terminateZuSceneGraph();
    return 0;
}
