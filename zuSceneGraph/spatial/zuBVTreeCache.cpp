#include <zuSceneGraph/spatial/zuBVTreeCache.h>

#include <zuSceneGraph/spatial/zuMeshTriangles.h>

namespace zu {

zuBVTreeCache::Signature::Signature(const zuTriangles* mesh) : modelBound(mesh->GetModelBound())
{
    if (const zuVertexBuffer* v = mesh->GetVertices()) {
        vertices = v;
        vertexData = v->GetData();
        vertexQuantity = v->GetVertexQuantity();
        vertexSize = v->GetVertexSize();
        positionChannels = v->GetAttributes().GetPositionChannels();
        positionOffset = v->GetAttributes().GetPositionOffsetByte();
    }
    if (const zuIndexBuffer* i = mesh->GetIndices()) {
        indices = i;
        indexData = i->GetData();
        indexQuantity = i->GetIndexQuantity();
        indexType = i->GetIndexType();
    }
}

bool zuBVTreeCache::Signature::operator==(const Signature& other) const
{
    return vertices == other.vertices && indices == other.indices && vertexData == other.vertexData
        && indexData == other.indexData && vertexQuantity == other.vertexQuantity && vertexSize == other.vertexSize
        && positionChannels == other.positionChannels && positionOffset == other.positionOffset
        && indexQuantity == other.indexQuantity && indexType == other.indexType && modelBound == other.modelBound;
}

zuBVTreeCache::zuBVTreeCache() = default;

zuBVTreeCache::~zuBVTreeCache() = default;

const zuBVTree* zuBVTreeCache::GetTree(zuTriangles* mesh, zuBVTree::Kind kind)
{
    if (!mesh || kind >= zuBVTree::KIND_QUANTITY)
        return nullptr;
    const Signature now(mesh);
    auto found = mEntries.find(mesh);
    if (found != mEntries.end() && !(found->second.signature == now)) {
        mEntries.erase(found);
        found = mEntries.end();
    }
    if (found != mEntries.end() && found->second.trees[kind])
        return found->second.trees[kind].get();
    const zuMeshTriangles triangles(mesh);
    std::unique_ptr<zuBVTree> tree = zuBVTree::Build(triangles, kind);
    if (!tree)
        return nullptr;
    if (found == mEntries.end())
        found = mEntries.emplace(mesh, Entry{zuPointer<zuTriangles>(mesh), now, {}}).first;
    found->second.trees[kind] = std::move(tree);
    return found->second.trees[kind].get();
}

void zuBVTreeCache::Invalidate(const zuTriangles* mesh)
{
    mEntries.erase(mesh);
}

void zuBVTreeCache::Clear()
{
    mEntries.clear();
}

int zuBVTreeCache::Purge()
{
    int dropped = 0;
    for (auto entry = mEntries.begin(); entry != mEntries.end();) {
        const zuTriangles* mesh = entry->second.mesh;
        if (mesh->GetReferences() == 1 || !(entry->second.signature == Signature(mesh))) {
            entry = mEntries.erase(entry);
            ++dropped;
        } else {
            ++entry;
        }
    }
    return dropped;
}

int zuBVTreeCache::GetTreeQuantity() const
{
    int trees = 0;
    for (const auto& entry : mEntries)
        for (const auto& tree : entry.second.trees)
            trees += tree ? 1 : 0;
    return trees;
}

size_t zuBVTreeCache::GetMemoryUsed() const
{
    // A table entry: its node (the pair and the link), its bucket.
    constexpr size_t ENTRY_BYTES = sizeof(std::pair<const zuTriangles*, Entry>) + 2 * sizeof(void*);
    size_t bytes = mEntries.size() * ENTRY_BYTES;
    for (const auto& entry : mEntries)
        for (const auto& tree : entry.second.trees)
            bytes += tree ? tree->GetMemoryUsed() : 0;
    return bytes;
}

} // namespace zu
