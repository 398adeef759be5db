#include "peersW2.h"

#include "../benchChild.h"

#include <zuSceneGraph/io/zuObjReader.h>
#include <zuSceneGraph/io/zuObjWriter.h>
#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>

#ifdef ZU_HAVE_TINYOBJLOADER
#include <tiny_obj_loader.h>
#endif
#ifdef ZU_HAVE_ASSIMP
#include <assimp/Importer.hpp>
#include <assimp/scene.h>
#endif

#include <sys/resource.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace bench::w2 {

namespace {

double now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double cpuNow()
{
    rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + 1e-6 * (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// "%.6f", with "-0.000000" written as "0.000000".
int printNumber(char* out, double value)
{
    int length = std::snprintf(out, 32, "%.6f", value);
    if (std::strcmp(out, "-0.000000") == 0)
        length = std::snprintf(out, 32, "0.000000");
    return length;
}

long countTriangles(const zu::zuNode& root)
{
    long triangles = 0;
    for (int i = 0; i < root.getNbChildren(); ++i)
        if (const auto* mesh = dynamic_cast<const zu::zuTriMesh*>(root.getChild(i)))
            triangles += mesh->GetTriangleQuantity();
    return triangles;
}

} // namespace

bool WriteGrid(const std::string& path, int n)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    const double pi = 3.14159265358979323846;
    std::vector<char> buffer(1 << 20);
    size_t used = 0;
    auto flush = [&](size_t room) {
        if (used + room > buffer.size()) {
            std::fwrite(buffer.data(), 1, used, file);
            used = 0;
        }
    };
    auto line = [&](const char* keyword, const double* values, int count) {
        flush(128);
        used += static_cast<size_t>(std::snprintf(buffer.data() + used, 8, "%s", keyword));
        for (int k = 0; k < count; ++k) {
            buffer[used++] = ' ';
            used += static_cast<size_t>(printNumber(buffer.data() + used, values[k]));
        }
        buffer[used++] = '\n';
    };
    for (int pass = 0; pass < 3; ++pass)
        for (int j = 0; j <= n; ++j)
            for (int i = 0; i <= n; ++i) {
                const double x = double(i) / n, y = double(j) / n;
                if (pass == 0) {
                    const double v[3] = {x, y, 0.1 * std::sin(2 * pi * x) * std::cos(2 * pi * y)};
                    line("v", v, 3);
                } else if (pass == 1) {
                    const double v[2] = {x, y};
                    line("vt", v, 2);
                } else {
                    const double dx = 0.2 * pi * std::cos(2 * pi * x) * std::cos(2 * pi * y);
                    const double dy = -0.2 * pi * std::sin(2 * pi * x) * std::sin(2 * pi * y);
                    const double length = std::sqrt(dx * dx + dy * dy + 1.0);
                    const double v[3] = {-dx / length, -dy / length, 1.0 / length};
                    line("vn", v, 3);
                }
            }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const long a = long(j) * (n + 1) + i + 1, b = a + 1, c = b + n + 1, d = a + n + 1;
            flush(256);
            used += static_cast<size_t>(std::snprintf(buffer.data() + used, 256,
                                                      "f %ld/%ld/%ld %ld/%ld/%ld %ld/%ld/%ld\n"
                                                      "f %ld/%ld/%ld %ld/%ld/%ld %ld/%ld/%ld\n",
                                                      a, a, a, b, b, b, c, c, c, a, a, a, c, c, c, d, d, d));
        }
    std::fwrite(buffer.data(), 1, used, file);
    return std::fclose(file) == 0;
}

Measure ReadOurs(const std::string& path, int threads)
{
    return runInChild<Measure>([&](int pipeEnd) {
        Measure measure;
        zu::zuCatalog<zu::zuImage> images;
        zu::zuObjReader reader(images);
        reader.SetThreadCount(threads);
        const double start = now(), cpuStart = cpuNow();
        zu::zuPointer<zu::zuNode> root = reader.ReadFile(path, nullptr);
        measure.seconds = now() - start;
        measure.cpuSeconds = cpuNow() - cpuStart;
        measure.peakKB = statusKB("VmHWM:");
        measure.ok = root && reader.GetMessages().empty();
        measure.triangles = root ? countTriangles(*root) : 0;
        finishChild(pipeEnd, measure);
    });
}

Measure WriteOurs(const std::string& path, const std::string& outputPath)
{
    return runInChild<Measure>([&](int pipeEnd) {
        Measure measure;
        zu::zuCatalog<zu::zuImage> images;
        zu::zuObjReader reader(images);
        zu::zuPointer<zu::zuNode> root = reader.ReadFile(path, nullptr);
        if (root) {
            root->UpdateGS();
            zu::zuObjWriter writer;
            const double start = now(), cpuStart = cpuNow();
            measure.ok = writer.WriteFile(*root, outputPath, nullptr);
            measure.seconds = now() - start;
            measure.cpuSeconds = cpuNow() - cpuStart;
            measure.peakKB = static_cast<long>(writer.GetBytesWritten() / 1024);
            measure.triangles = countTriangles(*root);
        }
        finishChild(pipeEnd, measure);
    });
}

bool HaveTinyObjLoader()
{
#ifdef ZU_HAVE_TINYOBJLOADER
    return true;
#else
    return false;
#endif
}

bool HaveAssimp()
{
#ifdef ZU_HAVE_ASSIMP
    return true;
#else
    return false;
#endif
}

Measure ReadTinyObjLoader([[maybe_unused]] const std::string& path)
{
#ifdef ZU_HAVE_TINYOBJLOADER
    return runInChild<Measure>([&](int pipeEnd) {
        Measure measure;
        tinyobj::attrib_t attrib;
        std::vector<tinyobj::shape_t> shapes;
        std::vector<tinyobj::material_t> materials;
        std::string warning, error;
        const double start = now(), cpuStart = cpuNow();
        measure.ok = tinyobj::LoadObj(&attrib, &shapes, &materials, &warning, &error, path.c_str(), nullptr, true,
                                      false);
        measure.seconds = now() - start;
        measure.cpuSeconds = cpuNow() - cpuStart;
        measure.peakKB = statusKB("VmHWM:");
        for (const tinyobj::shape_t& shape : shapes)
            measure.triangles += static_cast<long>(shape.mesh.num_face_vertices.size());
        finishChild(pipeEnd, measure);
    });
#else
    return {};
#endif
}

Measure ReadAssimp([[maybe_unused]] const std::string& path)
{
#ifdef ZU_HAVE_ASSIMP
    return runInChild<Measure>([&](int pipeEnd) {
        Measure measure;
        Assimp::Importer importer;
        const double start = now(), cpuStart = cpuNow();
        // No post-processing: the fastest the importer reads.
        const aiScene* scene = importer.ReadFile(path, 0);
        measure.seconds = now() - start;
        measure.cpuSeconds = cpuNow() - cpuStart;
        measure.peakKB = statusKB("VmHWM:");
        measure.ok = scene != nullptr;
        for (unsigned i = 0; scene && i < scene->mNumMeshes; ++i)
            measure.triangles += scene->mMeshes[i]->mNumFaces;
        finishChild(pipeEnd, measure);
    });
#else
    return {};
#endif
}

} // namespace bench::w2
