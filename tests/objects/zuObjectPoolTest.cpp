// The object pool: blocks of several sizes made and freed on two threads at once never
// overlap, also when freed blocks are reused and emptied chunks go back and come anew, and
// while the pool's own thread makes chunks ready.

#include <zuSceneGraph/objects/zuObjectPool.h>

#include <gtest/gtest.h>

#include <cstring>
#include <optional>
#include <thread>
#include <vector>

namespace zu::test {
namespace {

// Fills blocks with `seed`, frees every other one, makes as many again, checks every byte
// pair it still holds, then frees all.
void fillAndCheck(unsigned char seed, bool* ok)
{
    std::vector<std::pair<unsigned char*, size_t>> blocks;
    for (int round = 0; round < 2; ++round) {
        for (size_t i = 0; i < 20000; ++i) {
            const size_t size = 16 + (i * 7 + seed) % 5 * 100;
            blocks.emplace_back(static_cast<unsigned char*>(zuObjectPool::allocate(size)), size);
            std::memset(blocks.back().first, seed, size);
        }
        for (auto& [block, size] : blocks)
            *ok = *ok && block[0] == seed && block[size - 1] == seed;
        for (size_t i = 0; i < blocks.size(); i += 2)
            zuObjectPool::release(blocks[i].first, blocks[i].second), blocks[i].first = nullptr;
        std::erase_if(blocks, [](const auto& block) { return !block.first; });
    }
    for (auto& [block, size] : blocks)
        zuObjectPool::release(block, size);
}

TEST(zuObjectPoolTest, ThreadsNeverShareBlocks)
{
    for (const bool prefilling : {false, true}) {
        std::optional<zuObjectPool::Prefill> prefill;
        std::vector<char> ahead(1 << 20);
        if (prefilling)
            prefill.emplace();
        zuObjectPool::prefault(ahead.data(), ahead.size());
        bool ok[2] = {true, true};
        std::thread other(fillAndCheck, 2, &ok[1]);
        fillAndCheck(1, &ok[0]);
        other.join();
        EXPECT_TRUE(ok[0] && ok[1]) << "prefilling " << prefilling;
    }
}

} // namespace
} // namespace zu::test
