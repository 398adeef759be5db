#include <zuSystem/LibInitCounter.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using zu::LibInitCounter;

TEST(LibInitCounterTest, OnlyFirstInitialiseAndLastTerminateWork)
{
    const std::string name = "LibInitCounterTest.nested";
    EXPECT_FALSE(LibInitCounter::terminate(name)); // unmatched
    EXPECT_TRUE(LibInitCounter::initialize(name));
    EXPECT_FALSE(LibInitCounter::initialize(name));
    EXPECT_EQ(LibInitCounter::count(name), 2);
    EXPECT_EQ(LibInitCounter::count("LibInitCounterTest.other"), 0);
    EXPECT_FALSE(LibInitCounter::terminate(name));
    EXPECT_TRUE(LibInitCounter::terminate(name));
    EXPECT_FALSE(LibInitCounter::terminate(name));
    EXPECT_TRUE(LibInitCounter::initialize(name)); // a new cycle starts from scratch
    EXPECT_TRUE(LibInitCounter::terminate(name));
}

TEST(LibInitCounterTest, ExactlyOneThreadInitialisesAndOneTerminates)
{
    const std::string name = "LibInitCounterTest.threads";
    std::atomic<int> firsts{0};
    const auto runAll = [&](bool (*operation)(const std::string&)) {
        firsts = 0;
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t)
            threads.emplace_back([&] {
                for (int i = 0; i < 100; ++i)
                    firsts += operation(name) ? 1 : 0;
            });
        for (std::thread& thread : threads)
            thread.join();
        return firsts.load();
    };
    EXPECT_EQ(runAll(&LibInitCounter::initialize), 1);
    EXPECT_EQ(LibInitCounter::count(name), 800);
    EXPECT_EQ(runAll(&LibInitCounter::terminate), 1);
    EXPECT_EQ(LibInitCounter::count(name), 0);
}
