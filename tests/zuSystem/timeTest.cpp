#include <zuSystem/zuHighResTimer.h>
#include <zuSystem/zuOutputStreamVersion.h>
#include <zuSystem/zuSystemUtils.h>
#include <zuSystem/zuThread.h>

#include <gtest/gtest.h>

TEST(zuTimeTest, ClocksAdvanceAtLeastByTheSleep)
{
    zu::zuHighResTimer timer;
    const uint64_t before = zu::zuSystemUtils::GetTimeBaseMs();
    zu::zuThread::sleepMs(20);
    EXPECT_GE(timer.elapsedMs(), 20.0);
    EXPECT_GE(timer.elapsedUs(), 20000);
    EXPECT_GE(zu::zuSystemUtils::GetTimeBaseMs() - before, 19u); // whole milliseconds on both ends
}

TEST(zuTimeTest, OutputStreamVersionIsTheNewestFormat)
{
    EXPECT_EQ(zu::zuMajorOutputStreamVersion, 6);
    EXPECT_EQ(zu::zuMinorOutputStreamVersion, 32);
}
