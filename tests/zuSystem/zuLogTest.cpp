#include "support/zuOutputCapture.h"

#include <zuSystem/zuLog.h>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

using zu::zuLog;
using zu::test::zuOutputCapture;

TEST(zuLogTest, SinkCapturesAndDefaultWritesOneLinePerMessage)
{
    std::vector<std::string> lines;
    const zuLog::Sink previous = zuLog::instance().setSink(
        [&](const std::string& category, const std::string& message) { lines.push_back(category + ":" + message); });
    zuLog::instance().write("driver", "cannot open file");
    EXPECT_EQ(lines, std::vector<std::string>{"driver:cannot open file"});

    EXPECT_TRUE(zuLog::instance().setSink({})); // returns the capturing sink
    zuOutputCapture capturedErr(zuOutputCapture::STDERR);
    zuLog::instance().write("zustream", "bad header");
    zuLog::instance().write("zustream", "ends with newline\n");
    const std::string captured = capturedErr.take();
    zuLog::instance().setSink(previous);
    EXPECT_EQ(captured, "[zustream] bad header\n[zustream] ends with newline\n");
}

TEST(zuLogTest, SinkMayReplaceItselfWhileWriting)
{
    int calls = 0;
    const zuLog::Sink previous = zuLog::instance().setSink([&](const std::string&, const std::string&) {
        ++calls;
        // The running sink is destroyed here unless write runs a copy of it.
        zuLog::instance().setSink([&](const std::string&, const std::string&) { calls += 10; });
        zuLog::instance().write("nested", "from the sink");
    });
    zuLog::instance().write("outer", "message");
    zuLog::instance().setSink(previous);
    EXPECT_EQ(calls, 11);
}

TEST(zuLogTest, CriticalSectionKeepsTheMessagesOfTwoThreadsTogether)
{
    std::vector<std::string> lines;
    const zuLog::Sink previous = zuLog::instance().setSink(
        [&](const std::string&, const std::string& message) { lines.push_back(message); });
    const auto writer = [](std::string who) {
        for (int i = 0; i < 200; ++i) {
            zuLog::instance().enterCriticalSection();
            zuLog::instance().write("t", who + "1");
            zuLog::instance().write("t", who + "2");
            zuLog::instance().leaveCriticalSection();
        }
    };
    std::thread a(writer, "a");
    std::thread b(writer, "b");
    a.join();
    b.join();
    zuLog::instance().setSink(previous);

    ASSERT_EQ(lines.size(), 800u);
    for (size_t i = 0; i < lines.size(); i += 2)
        ASSERT_EQ(lines[i + 1], lines[i].substr(0, 1) + "2") << i;
}
