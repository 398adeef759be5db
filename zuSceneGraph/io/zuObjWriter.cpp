#include <zuSceneGraph/io/zuObjWriter.h>

#include <zuSceneGraph/resources/zuImage.h>
#include <zuSceneGraph/resources/zuRendererInterface.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuNode.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriangles.h>
#include <zuSceneGraph/states/zuMaterialState.h>
#include <zuSceneGraph/states/zuTexture.h>
#include <zuSceneGraph/states/zuTextureState.h>

#include <zuSystem/zuDirUtils.h>
#include <zuSystem/zuFileIoDevice.h>
#include <zuSystem/zuProgressNotifierGroupCloser.h>
#include <zuSystem/zuProgressNotifierInterface.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <functional>
#include <memory>
#include <system_error>
#include <thread>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

namespace zu {

namespace {

constexpr size_t BUFFER_BYTES = size_t(4) << 20;
// Room for the longest line the writer formats without looking again (a face of three
// corners of three indices, or a vertex of six numbers).
constexpr size_t LINE_ROOM = 256;

// Text formatted in one buffer that goes to the device when it fills; without a device the
// buffer grows instead (a block formatted on a worker thread).
class TextBuffer {
public:
    explicit TextBuffer(zuIoDevice* device) : mDevice(device), mBuffer(BUFFER_BYTES) {}

    // Makes room for `bytes` more; then the put operations need no check up to that.
    void reserve(size_t bytes)
    {
        if (mUsed + bytes <= mBuffer.size())
            return;
        if (mDevice)
            flush();
        if (mUsed + bytes > mBuffer.size())
            mBuffer.resize(std::max(2 * mBuffer.size(), mUsed + bytes));
    }
    void put(char c) { mBuffer[mUsed++] = c; }
    void put(const std::string& text) { append(text.data(), text.size()); }
    void put(const char* text, size_t length)
    {
        std::memcpy(mBuffer.data() + mUsed, text, length);
        mUsed += length;
    }
    void putLiteral(const char* text) { put(text, std::strlen(text)); }
    // Shortest text that reads back to the same float.
    void put(float value)
    {
        mUsed = static_cast<size_t>(std::to_chars(mBuffer.data() + mUsed, mBuffer.data() + mBuffer.size(), value).ptr -
                                    mBuffer.data());
    }
    void put(uint64_t value)
    {
        mUsed = static_cast<size_t>(std::to_chars(mBuffer.data() + mUsed, mBuffer.data() + mBuffer.size(), value).ptr -
                                    mBuffer.data());
    }
    // Any length, in pieces that fit.
    void append(const char* text, size_t length)
    {
        while (length > 0) {
            reserve(std::min(length, BUFFER_BYTES));
            const size_t piece = std::min(length, mBuffer.size() - mUsed);
            put(text, piece);
            text += piece;
            length -= piece;
        }
    }
    // Another buffer's text, then that buffer emptied.
    void take(TextBuffer& other)
    {
        append(other.mBuffer.data(), other.mUsed);
        other.mUsed = 0;
    }
    bool flush()
    {
        if (mUsed > 0 && mDevice && !mFailed) {
            mFailed = mDevice->write(mBuffer.data(), static_cast<int64_t>(mUsed)) != static_cast<int64_t>(mUsed);
            mWritten += static_cast<int64_t>(mUsed);
        }
        mUsed = 0;
        return !mFailed;
    }
    int64_t written() const { return mWritten; }

private:
    zuIoDevice* mDevice;
    std::vector<char> mBuffer;
    size_t mUsed = 0;
    bool mFailed = false;
    int64_t mWritten = 0;
};

// Formats lines [begin, end) of a section of a leaf (its v, vt or vn lines, or its elements).
using Section = std::function<void(TextBuffer& out, int begin, int end)>;

// The lines of a section in order. A long section is cut into blocks of lines that worker
// threads format side by side into buffers of their own; the buffers then go out in order.
class SectionWriter {
public:
    static constexpr int BLOCK_LINES = 1 << 16;

    SectionWriter()
    {
        const unsigned hardware = std::thread::hardware_concurrency();
        mThreads = static_cast<int>(std::clamp(hardware, 1u, 8u));
    }

    void write(TextBuffer& out, int count, const Section& section)
    {
        if (mThreads == 1 || count <= BLOCK_LINES) {
            section(out, 0, count);
            return;
        }
        while (mParts.size() < static_cast<size_t>(mThreads))
            mParts.push_back(std::make_unique<TextBuffer>(nullptr));
        for (int start = 0; start < count;) {
            std::vector<std::thread> workers;
            int blocks = 0;
            for (; blocks < mThreads && start < count; ++blocks, start += BLOCK_LINES) {
                const int end = count - start > BLOCK_LINES ? start + BLOCK_LINES : count;
                TextBuffer& part = *mParts[static_cast<size_t>(blocks)];
                auto format = [&section, &part, start, end] { section(part, start, end); };
                try {
                    if (blocks + 1 < mThreads && end < count)
                        workers.emplace_back(format);
                    else
                        format();
                } catch (const std::system_error&) {
                    format();  // no thread to be had: formatted here
                }
            }
            for (std::thread& worker : workers)
                worker.join();
            for (int i = 0; i < blocks; ++i)
                out.take(*mParts[static_cast<size_t>(i)]);
        }
    }

private:
    int mThreads = 1;
    std::vector<std::unique_ptr<TextBuffer>> mParts;
};

using MaterialKey = std::pair<const zuMaterialState*, const zuTextureState*>;

const char* mapKeyword(int channel)
{
    switch (channel) {
    case zuTexture::CH_DIFFUSE: return "map_Kd";
    case zuTexture::CH_BUMP: return "map_Bump";
    case zuTexture::CH_OPACITY: return "map_d";
    case zuTexture::CH_SPECULAR: return "map_Ks";
    case zuTexture::CH_EMISSIVE: return "map_Ke";
    case zuTexture::CH_REFLECTION: return "refl";
    default: return nullptr;
    }
}

void putColor(TextBuffer& out, const char* keyword, const Wm4::ColorRGB& color)
{
    out.reserve(LINE_ROOM);
    out.putLiteral(keyword);
    for (int i = 0; i < 3; ++i) {
        out.put(' ');
        out.put(color[i]);
    }
    out.put('\n');
}

void writeMaterial(TextBuffer& out, const std::string& name, const MaterialKey& key, const std::string& folder)
{
    out.put("newmtl " + name + "\n");
    if (const zuMaterialState* material = key.first) {
        putColor(out, "Ka", material->Ambient);
        putColor(out, "Kd", material->Diffuse);
        putColor(out, "Ks", material->Specular);
        putColor(out, "Ke", material->Emissive);
        out.reserve(LINE_ROOM);
        out.putLiteral("Ns ");
        out.put(material->Shininess);
        out.putLiteral("\nd ");
        out.put(material->Opacity);
        out.put('\n');
    }
    for (int i = 0; key.second && i < key.second->GetTextureQuantity(); ++i) {
        const zuTexture* texture = key.second->GetTexture(i);
        const char* keyword = texture ? mapKeyword(texture->GetChannel()) : nullptr;
        if (!keyword || texture->GetImageName().empty())
            continue;
        std::string file = texture->GetImageName();
        if (!folder.empty() && file.compare(0, folder.size(), folder) == 0)
            file.erase(0, folder.size());
        const bool clamp = texture->GetWrapS() == zuTexture::WM_CLAMP_EDGE;
        out.put(std::string(keyword) + (clamp ? " -clamp on " : " ") + file + "\n");
    }
    out.put("\n");
}

// The numbers of v, vt and vn statements written before a leaf: a leaf without texture
// coordinates or normals writes none, so the three counts part.
struct Bases {
    uint64_t positions = 0;
    uint64_t texCoords = 0;
    uint64_t normals = 0;
};

void putIndex(TextBuffer& out, uint64_t index)
{
    char digits[24];
    out.put(digits, static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, index).ptr - digits));
}

// The corner of the leaf's vertex `vertex` (0-based). When the three statements have the
// same number, as in a file of leaves that all have texture coordinates and normals, it is
// formatted once and copied.
void putCorner(TextBuffer& out, int vertex, const Bases& bases, bool texCoords, bool normals)
{
    const uint64_t position = bases.positions + static_cast<uint64_t>(vertex) + 1;
    out.put(' ');
    if ((!texCoords || bases.texCoords == bases.positions) && (!normals || bases.normals == bases.positions)) {
        char digits[24];
        const size_t length = static_cast<size_t>(std::to_chars(digits, digits + sizeof digits, position).ptr - digits);
        out.put(digits, length);
        if (texCoords || normals) {
            out.put('/');
            if (texCoords)
                out.put(digits, length);
            if (normals) {
                out.put('/');
                out.put(digits, length);
            }
        }
        return;
    }
    putIndex(out, position);
    if (texCoords || normals) {
        out.put('/');
        if (texCoords)
            putIndex(out, bases.texCoords + static_cast<uint64_t>(vertex) + 1);
        if (normals) {
            out.put('/');
            putIndex(out, bases.normals + static_cast<uint64_t>(vertex) + 1);
        }
    }
}

// One leaf: its group, material, vertices and elements; `bases` counts the statements
// written before it and is advanced past the leaf's.
void writeLeaf(TextBuffer& out, SectionWriter& sections, const zuBaseGeometry& leaf, const std::string& material,
               Bases& bases)
{
    zuVertexBuffer* vertices = leaf.GetVertices();
    zuIndexBuffer* indices = leaf.GetIndices();
    const zuRendererInterface::ResidentScope residentVertices(vertices);
    const zuRendererInterface::ResidentScope residentIndices(indices);
    if (!vertices || !vertices->GetData() || !vertices->GetAttributes().HasPosition())
        return;
    const zuAttributes& layout = vertices->GetAttributes();
    const int count = vertices->GetVertexQuantity();
    const int positionChannels = std::min(3, layout.GetPositionChannels());
    const bool normals = layout.GetNormalChannels() >= 3;
    const bool texCoords = layout.GetTCoordChannels(0) >= 2;
    const bool colors = layout.GetColorChannels(0) >= 3;
    const zuGenericTransformation<float>& world = leaf.GetWorldTransform();
    const Bases base = bases;
    bases.positions += static_cast<uint64_t>(count);
    bases.texCoords += texCoords ? static_cast<uint64_t>(count) : 0;
    bases.normals += normals ? static_cast<uint64_t>(count) : 0;

    out.put("g " + (leaf.GetName().empty() ? std::string("leaf") : leaf.GetName()) + "\n");
    if (!material.empty())
        out.put("usemtl " + material + "\n");
    sections.write(out, count, [&](TextBuffer& text, int begin, int end) {
        for (int i = begin; i < end; ++i) {
            const float* p = vertices->PositionTuple(i);
            Wm4::Vector3<float> position(p[0], positionChannels > 1 ? p[1] : 0.0f, positionChannels > 2 ? p[2] : 0.0f);
            if (!world.IsIdentity())
                position = world.ApplyForward(position);
            text.reserve(LINE_ROOM);
            text.put('v');
            for (int k = 0; k < 3; ++k) {
                text.put(' ');
                text.put(position[k]);
            }
            for (int k = 0; colors && k < 3; ++k) {
                text.put(' ');
                text.put(vertices->ColorTuple(0, i)[k]);
            }
            text.put('\n');
        }
    });
    sections.write(out, texCoords ? count : 0, [&](TextBuffer& text, int begin, int end) {
        for (int i = begin; i < end; ++i) {
            const float* t = vertices->TCoordTuple(0, i);
            text.reserve(LINE_ROOM);
            text.putLiteral("vt ");
            text.put(t[0]);
            text.put(' ');
            text.put(t[1]);
            text.put('\n');
        }
    });
    sections.write(out, normals ? count : 0, [&](TextBuffer& text, int begin, int end) {
        for (int i = begin; i < end; ++i) {
            const float* n = vertices->NormalTuple(i);
            Wm4::Vector3<float> normal(n[0], n[1], n[2]);
            if (!world.IsIdentity())
                normal = world.ApplyNormal(normal);
            text.reserve(LINE_ROOM);
            text.putLiteral("vn");
            for (int k = 0; k < 3; ++k) {
                text.put(' ');
                text.put(normal[k]);
            }
            text.put('\n');
        }
    });
    // Elements whose indices fall outside the vertices are skipped: the file would not
    // read back.
    auto valid = [count](int index) { return index >= 0 && index < count; };
    if (const auto* triangles = dynamic_cast<const zuTriangles*>(&leaf)) {
        sections.write(out, triangles->GetTriangleQuantity(), [&](TextBuffer& text, int begin, int end) {
            for (int t = begin; t < end; ++t) {
                int a, b, c;
                if (!triangles->GetTriangle(t, a, b, c) || !valid(a) || !valid(b) || !valid(c))
                    continue;
                text.reserve(LINE_ROOM);
                text.put('f');
                putCorner(text, a, base, texCoords, normals);
                putCorner(text, b, base, texCoords, normals);
                putCorner(text, c, base, texCoords, normals);
                text.put('\n');
            }
        });
    } else if (const auto* lines = dynamic_cast<const zuLine*>(&leaf)) {
        sections.write(out, lines->GetSegmentQuantity(), [&](TextBuffer& text, int begin, int end) {
            for (int s = begin; s < end; ++s) {
                int a, b;
                if (!lines->GetSegment(s, a, b) || !valid(a) || !valid(b))
                    continue;
                text.reserve(LINE_ROOM);
                text.put('l');
                putCorner(text, a, base, texCoords, false);
                putCorner(text, b, base, texCoords, false);
                text.put('\n');
            }
        });
    } else if (const auto* points = dynamic_cast<const zuPoint*>(&leaf)) {
        sections.write(out, points->GetPointQuantity(), [&](TextBuffer& text, int begin, int end) {
            for (int i = begin; i < end; ++i) {
                const int a = points->GetPoint(i);
                if (!valid(a))
                    continue;
                text.reserve(LINE_ROOM);
                text.put('p');
                putCorner(text, a, base, false, false);
                text.put('\n');
            }
        });
    }
}

bool isWrittenLeaf(const zuSpatial& spatial)
{
    return spatial.IsDerived(zuTriangles::TYPE) || spatial.IsDerived(zuLine::TYPE) || spatial.IsDerived(zuPoint::TYPE);
}

// The leaves of the subtree in tree order (iterative: a deep tree cannot exhaust the stack).
std::vector<const zuBaseGeometry*> collectLeaves(const zuSpatial& root)
{
    std::vector<const zuBaseGeometry*> leaves;
    std::vector<const zuSpatial*> stack{&root};
    while (!stack.empty()) {
        const zuSpatial* spatial = stack.back();
        stack.pop_back();
        if (isWrittenLeaf(*spatial)) {
            leaves.push_back(static_cast<const zuBaseGeometry*>(spatial));
        } else if (const auto* node = dynamic_cast<const zuNode*>(spatial)) {
            for (int i = node->getNbChildren() - 1; i >= 0; --i)
                if (const zuSpatial* child = node->getChild(i))
                    stack.push_back(child);
        }
    }
    return leaves;
}

} // namespace

zuObjWriter::zuObjWriter() = default;

zuObjWriter::~zuObjWriter() = default;

bool zuObjWriter::WriteFile(const zuSpatial& root, const std::string& path, zuProgressNotifierInterface* progress)
{
    // Both files are written under temporary names and take their names only when all went
    // well, so that a failed write leaves the files that were there as they were.
    mError.clear();
    const std::string folder = zuDirUtils::ExtractDirectory(path);
    const std::string libraryName = zuDirUtils::ExtractFileBaseName(path) + ".mtl";
    const std::string partial = ".part";
    zuFileIoDevice file(path + partial, zuFileIoDevice::WriteOnly);
    if (!file.isOpen()) {
        mError = file.withSystemReason("cannot write \"" + path + "\"");
        return false;
    }
    zuFileIoDevice library;
    bool written = Write(root, file, &library, libraryName, folder, progress, partial);
    file.close();
    library.close();
    if (written && file.isError()) {
        mError = file.withSystemReason("cannot write \"" + path + "\"");
        written = false;
    } else if (written && library.isError()) {
        mError = library.withSystemReason("cannot write the material library of \"" + path + "\"");
        written = false;
    }
    if (written && library.path().empty() && std::rename(file.path().c_str(), path.c_str()) == 0)
        return true;
    if (written && !library.path().empty() && std::rename(library.path().c_str(), (folder + libraryName).c_str()) == 0 &&
        std::rename(file.path().c_str(), path.c_str()) == 0)
        return true;
    if (written)
        mError = "cannot rename the written files to \"" + path + "\": " + std::strerror(errno);
    std::remove(file.path().c_str());
    if (!library.path().empty())
        std::remove(library.path().c_str());
    return false;
}

bool zuObjWriter::Write(const zuSpatial& root, zuIoDevice& device, zuIoDevice* materials,
                        const std::string& libraryName, const std::string& libraryFolder,
                        zuProgressNotifierInterface* progress)
{
    return Write(root, device, materials, libraryName, libraryFolder, progress, "");
}

bool zuObjWriter::Write(const zuSpatial& root, zuIoDevice& device, zuIoDevice* materials,
                        const std::string& libraryName, const std::string& libraryFolder,
                        zuProgressNotifierInterface* progress, const std::string& librarySuffix)
{
    mError.clear();
    mBytesWritten = 0;
    const std::vector<const zuBaseGeometry*> leaves = collectLeaves(root);

    // Materials are named in the order the leaves use them; leaves with the same states
    // share one.
    std::map<MaterialKey, std::string> names;
    std::vector<MaterialKey> order;
    std::vector<std::string> leafMaterials(leaves.size());
    for (size_t i = 0; materials && i < leaves.size(); ++i) {
        const MaterialKey key(leaves[i]->GetMaterialState(), leaves[i]->GetTextureState());
        if (!key.first && !key.second)
            continue;
        const auto [entry, inserted] = names.try_emplace(key, "material_" + std::to_string(order.size()));
        if (inserted)
            order.push_back(key);
        leafMaterials[i] = entry->second;
    }

    if (progress)
        progress->openGroup("Writing OBJ file", static_cast<int64_t>(leaves.size()) + 1);
    zuProgressNotifierGroupCloser closer(progress);
    TextBuffer out(&device);
    SectionWriter sections;
    if (!order.empty())
        out.put("mtllib " + libraryName + "\n");
    Bases bases;
    for (size_t i = 0; i < leaves.size(); ++i) {
        writeLeaf(out, sections, *leaves[i], leafMaterials[i], bases);
        if (progress) {
            progress->step();
            if (progress->isCancelRequested()) {
                mError = "writing was cancelled";
                return false;
            }
        }
    }
    bool ok = out.flush();
    mBytesWritten = out.written();

    if (ok && !order.empty()) {
        auto* file = dynamic_cast<zuFileIoDevice*>(materials);
        if (file && !file->isOpen() &&
            !file->open(libraryFolder + libraryName + librarySuffix, zuFileIoDevice::WriteOnly)) {
            mError = file->withSystemReason("cannot write the material library \"" + libraryFolder + libraryName + "\"");
            return false;
        }
        TextBuffer library(materials);
        for (const MaterialKey& key : order)
            writeMaterial(library, names[key], key, libraryFolder);
        ok = library.flush();
    }
    if (progress)
        progress->step();
    if (!ok && mError.empty())
        mError = "write error";
    return ok;
}

} // namespace zu
