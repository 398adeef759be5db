#include <zuSceneGraph/scenegraph/zuSemanticMetadata.h>

#include <zuSceneGraph/objects/zuFieldVisitor.h>

#include <unordered_map>

namespace zu {

const zuRtti zuSemanticMetadata::TYPE("zuCore.zuSemanticMetadata", &zuMetadataInterface::TYPE);

int zuSemanticMetadata::find(const std::string& key) const
{
    for (size_t i = 0; i < mPairs.size(); ++i)
        if (mPairs[i].first == key)
            return static_cast<int>(i);
    return -1;
}

void zuSemanticMetadata::setValue(const std::string& key, const std::string& value)
{
    const int i = find(key);
    if (i >= 0)
        mPairs[static_cast<size_t>(i)].second = value;
    else
        mPairs.emplace_back(key, value);
}

bool zuSemanticMetadata::getValue(const std::string& key, std::string& value) const
{
    const int i = find(key);
    if (i < 0)
        return false;
    value = mPairs[static_cast<size_t>(i)].second;
    return true;
}

bool zuSemanticMetadata::removeKey(const std::string& key)
{
    const int i = find(key);
    if (i < 0)
        return false;
    mPairs.erase(mPairs.begin() + i);
    return true;
}

// ---------------------------------------------------------------------------------------
// Persistence after the object part: int count, then count (key, value) string pairs.

int zuSemanticMetadata::GetDiskUsed(const zuBaseStream& stream) const
{
    int size = zuMetadataInterface::GetDiskUsed(stream) + 4;
    for (const auto& pair : mPairs)
        size += 4 + static_cast<int>(pair.first.size()) + 4 + static_cast<int>(pair.second.size());
    return size;
}

void zuSemanticMetadata::Save(zuBaseStream& stream) const
{
    zuMetadataInterface::Save(stream);
    stream.Write(getQuantity());
    for (const auto& pair : mPairs) {
        stream.Write(pair.first);
        stream.Write(pair.second);
    }
}

void zuSemanticMetadata::Load(zuBaseStream& stream, zuLink* link)
{
    zuMetadataInterface::Load(stream, link);
    mPairs.clear();
    int count = 0;
    stream.Read(count);
    // Each pair holds at least its two string lengths.
    if (!stream.CheckCount(count, 8))
        return;
    // Repeated keys are found through a map, so that a file of many pairs loads in
    // linear time.
    std::unordered_map<std::string, size_t> places;
    std::string key, value;
    for (int i = 0; i < count && !stream.isStreamError(); ++i) {
        stream.Read(key);
        stream.Read(value);
        auto [place, added] = places.emplace(key, mPairs.size());
        if (added)
            mPairs.emplace_back(key, value);
        else
            mPairs[place->second].second = value;
    }
}

bool zuSemanticMetadata::Equals(const zuRttiInterface* other) const
{
    if (!zuMetadataInterface::Equals(other) || !other->IsDerived(TYPE))
        return false;
    return mPairs == static_cast<const zuSemanticMetadata*>(other)->mPairs;
}

bool zuSemanticMetadata::Clone(zuRttiInterface*& target) const
{
    if (!target)
        target = new zuSemanticMetadata;
    if (!target->IsDerived(TYPE) || !zuMetadataInterface::Clone(target))
        return false;
    static_cast<zuSemanticMetadata*>(target)->mPairs = mPairs;
    return true;
}

void zuSemanticMetadata::DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor)
{
    zuMetadataInterface::DescribeFields(object, visitor);
    const auto& metadata = static_cast<const zuSemanticMetadata&>(object);
    visitor.List("pairs", metadata.getQuantity(), [&](int64_t i) {
        visitor.BeginGroup(nullptr);
        visitor.Text("key", metadata.getKeyAt(static_cast<int>(i)));
        visitor.Text("value", metadata.getValueAt(static_cast<int>(i)));
        visitor.EndGroup();
    });
}

} // namespace zu
