// The identifier map of a load: growth, reserved room, colliding identifiers and the null
// identifier.

#include <zuSceneGraph/stream/zuReferenceMap.h>

#include <gtest/gtest.h>

namespace zu {
namespace {

TEST(ReferenceMap, KeepsEveryIdentifierThroughGrowthAndCollisions)
{
    zuReferenceMap map;
    EXPECT_EQ(map.find(0), nullptr);
    // Identifiers 2^32 apart fold onto few slots: they must still be told apart.
    std::vector<uint64_t> identifiers;
    for (uint64_t i = 0; i < 3000; ++i)
        identifiers.push_back(0x1000 + (i << 32));
    for (uint64_t i = 0; i < 20000; ++i)
        identifiers.push_back(0x7f0000000000ull + 112 * i);
    identifiers.push_back(0);  // the null reference is an identifier like any other
    for (size_t i = 0; i < identifiers.size(); ++i)
        map.findOrInsert(identifiers[i]).pending = static_cast<uint32_t>(i + 1);
    ASSERT_EQ(map.size(), identifiers.size());
    for (size_t i = 0; i < identifiers.size(); ++i) {
        zuReferenceMap::Entry* entry = map.find(identifiers[i]);
        ASSERT_NE(entry, nullptr) << i;
        EXPECT_TRUE(entry->identifier == identifiers[i] && entry->pending == i + 1);
    }
    EXPECT_EQ(map.find(0x1000 + (5000ull << 32)), nullptr);
    EXPECT_TRUE((&map.findOrInsert(identifiers[7])) == map.find(identifiers[7]) && map.size() == identifiers.size());
    map.clear();
    EXPECT_TRUE(map.size() == 0u && map.find(identifiers[0]) == nullptr);

    // Room made beforehand: no insertion moves an entry.
    map.reserve(identifiers.size());
    zuReferenceMap::Entry* first = &map.findOrInsert(identifiers[0]);
    for (uint64_t identifier : identifiers)
        map.findOrInsert(identifier);
    EXPECT_TRUE(map.find(identifiers[0]) == first && map.size() == identifiers.size());
}

} // namespace
} // namespace zu
