#include <qmml/platform.h>

#include <gtest/gtest.h>

#include <thread>

TEST(LastError, BelongsToTheThread)
{
    SetLastError(0x80000001u);
    unsigned in_new_thread = 1;
    std::thread([&] {
        in_new_thread = GetLastError();
        SetLastError(7);
    }).join();
    EXPECT_EQ(in_new_thread, 0u);
    EXPECT_EQ(GetLastError(), 0x80000001u);
}
