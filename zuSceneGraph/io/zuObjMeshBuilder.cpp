#include <zuSceneGraph/io/zuObjMeshBuilder.h>

#include <zuSceneGraph/resources/zuBlockResourceHandler.h>
#include <zuSceneGraph/resources/zuIndexBuffer.h>
#include <zuSceneGraph/resources/zuVertexBuffer.h>
#include <zuSceneGraph/scenegraph/zuLine.h>
#include <zuSceneGraph/scenegraph/zuPoint.h>
#include <zuSceneGraph/scenegraph/zuTriMesh.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <new>
#include <utility>

namespace zu {

namespace {

constexpr int FIRST_TABLE_BITS = 4;
// Concave polygons up to this many corners are split by ear clipping (quadratic in the
// corners); larger ones, which real files hardly have, as a fan.
constexpr int MAX_CLIPPED_CORNERS = 256;

inline uint64_t mix(uint64_t z)
{
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

// The polygon projected on the axis plane that its Newell normal faces most, oriented so
// that the polygon turns counter-clockwise there. False for a polygon without area.
bool projectPolygon(const zuObjVertexData& data, const int32_t* corners, int count, std::vector<double>& plane)
{
    double normal[3] = {0, 0, 0};
    for (int i = 0; i < count; ++i) {
        const float* p = data.positions[static_cast<size_t>(corners[3 * i])];
        const float* q = data.positions[static_cast<size_t>(corners[3 * ((i + 1) % count)])];
        normal[0] += (double(p[1]) - q[1]) * (double(p[2]) + q[2]);
        normal[1] += (double(p[2]) - q[2]) * (double(p[0]) + q[0]);
        normal[2] += (double(p[0]) - q[0]) * (double(p[1]) + q[1]);
    }
    int axis = 2;
    if (std::fabs(normal[0]) > std::fabs(normal[1]) && std::fabs(normal[0]) > std::fabs(normal[2]))
        axis = 0;
    else if (std::fabs(normal[1]) > std::fabs(normal[2]))
        axis = 1;
    if (normal[axis] == 0.0)
        return false;
    // (u, v) with u x v along +axis, swapped when the normal points the other way.
    int u = (axis + 1) % 3;
    int v = (axis + 2) % 3;
    if (normal[axis] < 0)
        std::swap(u, v);
    plane.resize(2 * static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const float* p = data.positions[static_cast<size_t>(corners[3 * i])];
        plane[2 * i] = p[u];
        plane[2 * i + 1] = p[v];
    }
    return true;
}

// Twice the signed area of triangle (a, b, c) in the plane.
inline double turn(const std::vector<double>& plane, int a, int b, int c)
{
    const double* pa = &plane[2 * a];
    const double* pb = &plane[2 * b];
    const double* pc = &plane[2 * c];
    return (pb[0] - pa[0]) * (pc[1] - pa[1]) - (pb[1] - pa[1]) * (pc[0] - pa[0]);
}

void addFan(int count, std::vector<int>& triangles)
{
    for (int i = 1; i + 1 < count; ++i)
        triangles.insert(triangles.end(), {0, i, i + 1});
}

// Whether a corner other than a, b and c lies inside triangle (a, b, c) or on its edges.
bool holdsCorner(const std::vector<double>& plane, const std::vector<int>& next, int a, int b, int c)
{
    for (int p = next[c]; p != a; p = next[p]) {
        const double* q = &plane[2 * p];
        if ((q[0] == plane[2 * a] && q[1] == plane[2 * a + 1]) || (q[0] == plane[2 * c] && q[1] == plane[2 * c + 1]))
            continue;
        if (turn(plane, a, b, p) >= 0 && turn(plane, b, c, p) >= 0 && turn(plane, c, a, p) >= 0)
            return true;
    }
    return false;
}

void clipEars(const std::vector<double>& plane, int count, std::vector<int>& triangles)
{
    std::vector<int> next(static_cast<size_t>(count));
    std::vector<int> previous(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        next[i] = (i + 1) % count;
        previous[i] = (i + count - 1) % count;
    }
    int remaining = count;
    int current = 0;
    int withoutEar = 0;
    while (remaining > 3) {
        const int a = previous[current];
        const int c = next[current];
        const bool ear = turn(plane, a, current, c) > 0 && !holdsCorner(plane, next, a, current, c);
        // A polygon that crosses itself may have no ear left: a corner is cut anyway, so
        // that every polygon ends.
        if (ear || withoutEar >= remaining) {
            triangles.insert(triangles.end(), {a, current, c});
            next[a] = c;
            previous[c] = a;
            --remaining;
            current = c;
            withoutEar = 0;
        } else {
            current = c;
            ++withoutEar;
        }
    }
    triangles.insert(triangles.end(), {previous[current], current, next[current]});
}

// Triangles of a polygon of four or more corners, as corner numbers.
void splitPolygon(const zuObjVertexData& data, const int32_t* corners, int count, std::vector<double>& plane,
                  std::vector<int>& triangles)
{
    triangles.clear();
    if (!projectPolygon(data, corners, count, plane))
        return addFan(count, triangles);
    if (count == 4) {
        const bool first = turn(plane, 0, 1, 2) > 0 && turn(plane, 0, 2, 3) > 0;
        const bool second = turn(plane, 1, 2, 3) > 0 && turn(plane, 1, 3, 0) > 0;
        bool useSecond = second && !first;
        if (first && second) {
            // Convex: the shorter diagonal, which bends a non-planar quad the least.
            auto distance = [&](int i, int j) {
                const float* p = data.positions[static_cast<size_t>(corners[3 * i])];
                const float* q = data.positions[static_cast<size_t>(corners[3 * j])];
                const double dx = double(p[0]) - q[0], dy = double(p[1]) - q[1], dz = double(p[2]) - q[2];
                return dx * dx + dy * dy + dz * dz;
            };
            useSecond = distance(1, 3) < distance(0, 2);
        }
        if (useSecond)
            triangles.insert(triangles.end(), {1, 2, 3, 1, 3, 0});
        else
            triangles.insert(triangles.end(), {0, 1, 2, 0, 2, 3});
        return;
    }
    bool convex = true;
    for (int i = 0; i < count && convex; ++i)
        convex = turn(plane, (i + count - 1) % count, i, (i + 1) % count) >= 0;
    if (convex || count > MAX_CLIPPED_CORNERS)
        return addFan(count, triangles);
    clipEars(plane, count, triangles);
}

} // namespace

zuObjMeshBuilder::zuObjMeshBuilder(Kind kind, std::string group, std::string material, uint64_t seed)
    : mKind(kind), mGroup(std::move(group)), mMaterial(std::move(material)), mSeed(seed)
{
}

inline size_t zuObjMeshBuilder::slotOf(const int32_t* corner) const
{
    // Positions that follow each other land in neighbouring slots, so that the table is
    // walked almost in order for a typical file; each run of 2^bits positions starts at a
    // random place, and the texture-coordinate and normal indices count only by how far
    // they stray from the position index (not at all in the common file where all three
    // are equal).
    const uint32_t position = static_cast<uint32_t>(corner[0]);
    uint64_t hash = position;
    if (const uint64_t page = position >> mTableBits)
        hash += mix(page ^ mSeed);
    const int64_t texCoordOffset = corner[1] < 0 ? 0 : int64_t(corner[1]) - corner[0];
    const int64_t normalOffset = corner[2] < 0 ? 0 : int64_t(corner[2]) - corner[0];
    if (texCoordOffset != 0 || normalOffset != 0)
        hash += mix(((uint64_t(uint32_t(texCoordOffset)) << 32) | uint32_t(normalOffset)) ^ ~mSeed);
    return static_cast<size_t>(hash) & mMask;
}

void zuObjMeshBuilder::growTable()
{
    std::vector<Entry> old;
    old.swap(mTable);
    mTableBits = old.empty() ? FIRST_TABLE_BITS : mTableBits + 1;
    mTable.reserve(size_t(1) << mTableBits);
    // A table of millions of entries then costs a few page faults instead of thousands.
    zuBlockResourceHandler::AdviseHugePages(mTable.data(), mTable.capacity() * sizeof(Entry));
    mTable.assign(size_t(1) << mTableBits, Entry{-1, -1, -1, 0});
    const size_t mask = mMask = mTable.size() - 1;
    mGrowAt = uint32_t(std::min<uint64_t>(uint64_t(mTable.size()) * 3 / 4, UINT32_MAX));
    for (const Entry& entry : old) {
        if (entry.position < 0)
            continue;
        size_t slot = slotOf(&entry.position);
        while (mTable[slot].position >= 0)
            slot = (slot + 1) & mask;
        mTable[slot] = entry;
    }
}

inline uint32_t zuObjMeshBuilder::vertexOf(const int32_t* corner)
{
    if (mVertexCount >= mGrowAt)
        growTable();
    for (size_t slot = slotOf(corner);; slot = (slot + 1) & mMask) {
        Entry& entry = mTable[slot];
        if (entry.position < 0) {
            entry = Entry{corner[0], corner[1], corner[2], mVertexCount};
            mHasTexCoords |= corner[1] >= 0;
            mHasNormals |= corner[2] >= 0;
            mMissingNormals |= corner[2] < 0;
            return mVertexCount++;
        }
        if (entry.position == corner[0] && entry.texCoord == corner[1] && entry.normal == corner[2])
            return entry.vertex;
    }
}

void zuObjMeshBuilder::AddFace(const int32_t* corners, int count, const zuObjVertexData& data)
{
    if (count == 3) {
        for (int i = 0; i < 3; ++i)
            emit(vertexOf(corners + 3 * i));
        return;
    }
    mPolygon.clear();
    for (int i = 0; i < count; ++i)
        mPolygon.push_back(vertexOf(corners + 3 * i));
    splitPolygon(data, corners, count, mPlane, mTriangles);
    for (const int corner : mTriangles)
        emit(mPolygon[static_cast<size_t>(corner)]);
}

void zuObjMeshBuilder::AddLine(const int32_t* corners, int count)
{
    uint32_t previous = vertexOf(corners);
    for (int i = 1; i < count; ++i) {
        const uint32_t current = vertexOf(corners + 3 * i);
        emit(previous);
        emit(current);
        previous = current;
    }
}

void zuObjMeshBuilder::AddPoints(const int32_t* corners, int count)
{
    for (int i = 0; i < count; ++i)
        emit(vertexOf(corners + 3 * i));
}

void zuObjMeshBuilder::fillVertices(zuVertexBuffer& vertices, const zuObjVertexData& data, bool normalsOnly) const
{
    const zuAttributes& layout = vertices.GetAttributes();
    const int stride = layout.GetStride();
    const int normalOffset = layout.HasNormal() ? static_cast<int>(layout.GetNormalOffsetByte()) : -1;
    const int colorOffset = layout.HasColor(0) ? static_cast<int>(layout.GetColorOffsetByte(0)) : -1;
    const size_t colorBytes = sizeof(float) * static_cast<size_t>(layout.GetColorChannels(0));
    const int texCoordOffset = layout.HasTCoord(0) ? static_cast<int>(layout.GetTCoordOffsetByte(0)) : -1;
    char* block = vertices.GetData();
    for (const Entry& entry : mTable) {
        if (entry.position < 0)
            continue;
        char* vertex = block + static_cast<size_t>(entry.vertex) * static_cast<size_t>(stride);
        if (normalOffset >= 0 && entry.normal >= 0)
            std::memcpy(vertex + normalOffset, data.normals[static_cast<size_t>(entry.normal)], 3 * sizeof(float));
        if (normalsOnly)
            continue;
        std::memcpy(vertex, data.positions[static_cast<size_t>(entry.position)], 3 * sizeof(float));
        if (colorOffset >= 0)
            std::memcpy(vertex + colorOffset, data.colors[static_cast<size_t>(entry.position)], colorBytes);
        if (texCoordOffset >= 0 && entry.texCoord >= 0)
            std::memcpy(vertex + texCoordOffset, data.texCoords[static_cast<size_t>(entry.texCoord)],
                        2 * sizeof(float));
    }
}

zuPointer<zuBaseGeometry> zuObjMeshBuilder::Finish(const zuObjVertexData& data)
{
    zuPointer<zuBaseGeometry> leaf;
    if (!IsEmpty()) {
        zuAttributes layout;
        layout.SetPositionChannels(3);
        if (mKind == TRIANGLES)
            layout.SetNormalChannels(3);
        if (data.hasColors())
            layout.SetColorChannels(0, data.hasAlpha ? 4 : 3);
        if (mHasTexCoords)
            layout.SetTCoordChannels(0, 2);

        // The buffers count in ints.
        if (mIndices.size() > size_t(INT_MAX) || mVertexCount > uint32_t(INT_MAX))
            throw std::bad_alloc();
        // The indices first, so that their blocks are gone before the vertex block exists.
        const int indexCount = static_cast<int>(mIndices.size());
        const bool narrow = mVertexCount <= 65536;
        zuPointer<zuIndexBuffer> indices(
            new zuIndexBuffer(indexCount, narrow ? zuIndexBuffer::INDEX_16 : zuIndexBuffer::INDEX_32));
        size_t copied = 0;
        mIndices.forEachBlock([&](const uint32_t* values, size_t count) {
            if (narrow)
                std::copy(values, values + count, indices->GetIndices16() + copied);
            else
                std::memcpy(indices->GetIndices32() + copied, values, count * sizeof(uint32_t));
            copied += count;
        });
        mIndices.clear();

        zuPointer<zuVertexBuffer> vertices(new zuVertexBuffer(layout, static_cast<int>(mVertexCount)));
        fillVertices(*vertices, data, false);
        if (mKind == TRIANGLES) {
            zuPointer<zuTriMesh> mesh(new zuTriMesh(vertices.get(), indices.get()));
            if (mMissingNormals) {
                // Computed for every vertex, then the normals the file gave are put back.
                mesh->UpdateModelNormals();
                if (mHasNormals)
                    fillVertices(*vertices, data, true);
            }
            leaf = mesh.get();
        } else if (mKind == LINES) {
            leaf = new zuLine(vertices.get(), indices.get(), zuLine::SEGMENTS);
        } else {
            leaf = new zuPoint(vertices.get(), indices.get());
        }
        leaf->SetName(mGroup);
    }
    mIndices.clear();
    std::vector<Entry>().swap(mTable);
    mTableBits = 0;
    mMask = 0;
    mGrowAt = 0;
    mVertexCount = 0;
    return leaf;
}

} // namespace zu
