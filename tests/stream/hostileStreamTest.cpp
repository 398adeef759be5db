// Valid-looking files shaped to hurt the loader: identifiers chosen to share one slot of the
// reference map, and header texts whose fate used to depend on the block size.

#include "support/zuTestObjects.h"

#include <zuSceneGraph/stream/zuFileStream.h>
#include <zuSceneGraph/stream/zuReferenceMap.h>

#include <zuSystem/zuMemoryIoDevice.h>

#include <gtest/gtest.h>

#include <functional>

namespace zu::test {
namespace {

TEST(HostileStream, ChosenIdentifiersMakeTheMapTakeItsKeyedHashOrdinaryOnesDoNot)
{
    // 120,000 records with the colliding identifiers once took 17 s to load.
    const std::pair<std::function<uint64_t(uint64_t)>, bool> cases[] = {
        {[](uint64_t k) { return 0x7f3a00001000ull + 112 * k; }, false},                                // one heap
        {[](uint64_t k) { return (k % 2 ? 0x7f0000000000ull : 0x560000000000ull) + 48 * k; }, false},  // two
        {[](uint64_t k) { return (k << 28) | (k << 4); }, true},  // all fold onto slot 0
    };
    constexpr uint64_t count = 200000;
    for (const auto& [identifier, keyed] : cases) {
        zuReferenceMap map;
        // Definitions, then as many references in the other order, as a load fills it.
        for (uint64_t k = 0; k < 2 * count; ++k)
            ++map.findOrInsert(identifier(k < count ? k : 2 * count - 1 - k)).pending;
        EXPECT_EQ(map.isKeyed(), keyed);
        ASSERT_EQ(map.size(), count);
        for (uint64_t k = 0; k < count; k += 997)
            ASSERT_TRUE(map.find(identifier(k)) && map.find(identifier(k))->pending == 2) << k;
        EXPECT_EQ(map.find(identifier(count)), nullptr);

        // The same identifiers adopted as a load's records, the eighth saved again at the end:
        // the entry of its first appearance takes the later object.
        std::vector<zuReferenceMap::Entry> records;
        for (uint64_t k = 0; k <= count; ++k)
            records.push_back({identifier(k < count ? k : 7), reinterpret_cast<zuRttiInterface*>(k + 1), 0});
        zuReferenceMap adopted;
        EXPECT_FALSE(adopted.adopt(std::move(records)));
        EXPECT_EQ(adopted.isKeyed(), keyed);
        for (uint64_t k = 0; k < count; k += 7)
            ASSERT_EQ(adopted.find(identifier(k)), &adopted.entryAt(static_cast<uint32_t>(k))) << k;
        EXPECT_EQ(adopted.entryAt(7).object, reinterpret_cast<zuRttiInterface*>(count + 1));
    }
}

TEST(HostileStream, WhetherAHeaderReadsNeverDependsOnTheBlockSize)
{
    zuTestFactories factories;
    const std::string field(27, 'x');  // the longest header field holds 27 characters and the NUL
    const std::pair<std::string, int> cases[] = {
        {std::string("MVK 6.32", 9), 6 << 16 | 32}, {field + '\0', 0}, {field + "y" + '\0', -1}, {field + field, -1}};
    for (const auto& [header, version] : cases)
        for (int blockSize : {8, 16, 24, 32, 1 << 20}) {
            zuMemoryIoDevice device(std::vector<char>(header.begin(), header.end()));
            zuFileStream stream(blockSize, nullptr, nullptr);
            zuLogCapture log;
            const bool loaded = stream.Load(device, "header");
            EXPECT_EQ(loaded ? static_cast<int>(stream.GetVersion().GetMajor() << 16 | stream.GetVersion().GetMinor()) : -1,
                      version) << header.size() << " bytes, block " << blockSize;
        }
}

} // namespace
} // namespace zu::test
