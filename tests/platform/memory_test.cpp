#include "platform/memory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace {

using qmml::platform::is_writable;

// Four pages: writable, read-only, inaccessible, unmapped.
class Probe : public testing::Test {
protected:
    void SetUp() override
    {
        void* pages = mmap(nullptr, 4 * m_page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        ASSERT_NE(pages, MAP_FAILED);
        m_start = static_cast<char*>(pages);
        ASSERT_EQ(mprotect(m_start + m_page, m_page, PROT_READ), 0);
        ASSERT_EQ(mprotect(m_start + 2 * m_page, m_page, PROT_NONE), 0);
        ASSERT_EQ(munmap(m_start + 3 * m_page, m_page), 0);
    }
    void TearDown() override { munmap(m_start, 3 * m_page); }

    const std::size_t m_page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    char* m_start = nullptr;
};

TEST_F(Probe, TellsWritableMemoryFromTheRest)
{
    const struct {
        const char* name;
        const char* p;
        std::size_t size;
        bool writable;
    } cases[] = {
        {"first byte", m_start, 1, true},
        {"whole page", m_start, m_page, true},
        {"last pointer", m_start + m_page - 8, 8, true},
        {"odd address", m_start + 3, 8, true},
        {"nothing", m_start + 1, 0, true},
        {"one byte too far", m_start + m_page - 7, 8, false},
        {"two pages", m_start, m_page + 1, false},
        {"read-only", m_start + m_page, 8, false},
        {"no access", m_start + 2 * m_page, 8, false},
        {"unmapped", m_start + 3 * m_page, 8, false},
        {"null", nullptr, 8, false},
        {"null page", reinterpret_cast<const char*>(16), 8, false},
        {"not canonical", reinterpret_cast<const char*>(0x8000000000000000u), 8, false},
        {"end of the address space", reinterpret_cast<const char*>(~std::uintptr_t{3}), 4, false},
        {"wraps round", m_start, SIZE_MAX, false},
    };
    for (const auto& c : cases)
        EXPECT_EQ(is_writable(c.p, c.size), c.writable) << c.name;
}

TEST_F(Probe, LeavesTheDataAlone)
{
    std::memset(m_start, 0xA5, m_page);
    EXPECT_TRUE(is_writable(m_start, m_page));
    for (std::size_t i = 0; i < m_page; ++i)
        ASSERT_EQ(static_cast<unsigned char>(m_start[i]), 0xA5);
}

TEST_F(Probe, LosesNoWriteOfAnotherThread)
{
    auto& counter = *new (m_start) std::atomic<unsigned>(0);
    constexpr unsigned rounds = 200000;
    std::thread writer([&] {
        for (unsigned i = 0; i < rounds; ++i)
            counter.store(counter.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    });
    while (counter.load(std::memory_order_relaxed) < rounds)
        ASSERT_TRUE(is_writable(&counter, sizeof counter));
    writer.join();
    EXPECT_EQ(counter.load(), rounds);
}

} // namespace
