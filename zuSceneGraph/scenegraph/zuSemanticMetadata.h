#pragma once

#include <zuSceneGraph/scenegraph/zuMetadataInterface.h>
#include <zuSceneGraph/stream/zuBaseStream.h>

#include <string>
#include <utility>
#include <vector>

namespace zu {

// Semantic properties of a scene object as string pairs: a part number, a material name,
// a supplier, whatever the application's model carries ("PartNumber" -> "A-1234"). Keys
// are unique and keep the order in which they were first set.
//
// Type key 2 (TYPE_KEY). Persisted as "zuCore.zuSemanticMetadata": after the object part,
// an int count, then count pairs of strings (key, value).
class zuSemanticMetadata : public zuMetadataInterface {
public:
    static const zuRtti TYPE;
    static zuRttiInterface* Factory(zuBaseStream& stream) { return zuBaseStream::LoadNew<zuSemanticMetadata>(stream); }
    static void RegisterFactory() { RegisterClass<zuSemanticMetadata>(); }
    static void UnRegisterFactory() { UnregisterFactoryFunction(TYPE.GetName()); }
    static void DescribeFields(const zuRttiInterface& object, zuFieldVisitor& visitor);

    static constexpr uint32_t TYPE_KEY = 2;

    zuSemanticMetadata() = default;

    uint32_t getTypeKey() const override { return TYPE_KEY; }
    // The pairs describe the object; they do not depend on which object carries them.
    void updateMetaData(zuSpatial*) override {}

    // Replaces the value of an existing key, else appends the pair.
    void setValue(const std::string& key, const std::string& value);
    // False (and `value` untouched) when the key is absent.
    bool getValue(const std::string& key, std::string& value) const;
    bool hasKey(const std::string& key) const { return find(key) >= 0; }
    // False when the key is absent.
    bool removeKey(const std::string& key);
    void clear() { mPairs.clear(); }
    int getQuantity() const { return static_cast<int>(mPairs.size()); }
    // The pair at an index in [0, getQuantity()); no bounds check.
    const std::string& getKeyAt(int i) const { return mPairs[static_cast<size_t>(i)].first; }
    const std::string& getValueAt(int i) const { return mPairs[static_cast<size_t>(i)].second; }

    const zuRtti& GetType() const override { return TYPE; }
    int GetDiskUsed(const zuBaseStream& stream) const override;
    void Save(zuBaseStream& stream) const override;
    // A key that a file repeats keeps its last value, at its first place.
    void Load(zuBaseStream& stream, zuLink* link) override;
    // The same pairs in the same order.
    bool Equals(const zuRttiInterface* other) const override;
    bool Clone(zuRttiInterface*& target) const override;

private:
    int find(const std::string& key) const;

    std::vector<std::pair<std::string, std::string>> mPairs;
};

} // namespace zu
