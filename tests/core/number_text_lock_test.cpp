#include <qmml/core.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

TEST(NumberTextLock, IsRecursiveAndExclusive)
{
    IniConLock();
    IniConLock();
    IniConRelease();
    std::atomic<bool> entered = false;
    std::thread other([&] {
        IniConRelease(); // not its lock to release
        IniConLock();
        entered = true;
        IniConRelease();
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(entered);
    IniConRelease();
    other.join();
    EXPECT_TRUE(entered);
    IniConRelease(); // one too many
    IniConLock();
    IniConRelease();
}
