// The registered objects of a save: found by identifier, and still told apart when
// identifiers repeat, are sparse or missing.

#include <zuSceneGraph/stream/zuRegisteredSet.h>

#include <gtest/gtest.h>

namespace zu {
namespace {

// Objects are only compared by address here, never used.
const zuRttiInterface* fake(uintptr_t n)
{
    return reinterpret_cast<const zuRttiInterface*>(16 * (n + 1));
}

TEST(RegisteredSet, EachObjectOnceInOrderWhateverItsIdentifier)
{
    const struct {
        const char* what;
        uint32_t (*identifier)(uint32_t i);  // UINT32_MAX: registered without one
    } cases[] = {
        {"dense", [](uint32_t i) { return 100 + i; }},
        {"shared by pairs", [](uint32_t i) { return i / 2; }},
        {"sparse", [](uint32_t i) { return i << 20; }},
        {"near the top", [](uint32_t i) { return UINT32_MAX - 1 - i; }},
        {"none", [](uint32_t) { return UINT32_MAX; }},
        {"mixed", [](uint32_t i) { return i % 3 == 0 ? UINT32_MAX : (i % 5) << 12; }},
    };
    for (const auto& c : cases) {
        zuRegisteredSet set;
        auto insert = [&set, &c](uint32_t i) {
            const uint32_t identifier = c.identifier(i);
            return identifier == UINT32_MAX ? set.insert(fake(i)) : set.insert(fake(i), identifier);
        };
        constexpr uint32_t COUNT = 4000;
        for (uint32_t i = 0; i < COUNT; ++i)
            ASSERT_TRUE(insert(i)) << c.what << " " << i;
        for (uint32_t i = 0; i < COUNT; ++i)
            ASSERT_FALSE(insert(i)) << c.what << " " << i;
        ASSERT_EQ(set.size(), COUNT) << c.what;
        for (uint32_t i = 0; i < COUNT; ++i)
            ASSERT_EQ(set[i], fake(i)) << c.what;
        set.clear();
        EXPECT_TRUE(set.size() == 0 && insert(0)) << c.what;
    }
}

} // namespace
} // namespace zu
