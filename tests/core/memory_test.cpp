#include "core/block.h"
#include "core/memory.h"

#include <qmml/core.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// Both families, so that what they share is said once.
struct Family {
    const char* name;
    int (*allocate)(void**, unsigned);
    void (*release)(void*);
    int (*resize)(void**, unsigned);
};
const Family s_families[] = {
    {"plain", AllocMem__, FreeMem__, ReallMem__},
    {"debug", [](void** b, unsigned n) { return _AllocMem_dbg(b, n, 1, 2); }, _FreeMem_dbg,
     [](void** b, unsigned n) { return _ReallMem_dbg(b, n, 1, 2); }},
    {"debug, other name", [](void** b, unsigned n) { return _GetMem_dbg(b, n, 1, 2); }, _FreeMem_dbg,
     [](void** b, unsigned n) { return _ReallMem_dbg(b, n, 1, 2); }},
};

// A constant of the program lies in read-only memory.
void* const s_read_only = nullptr;

bool all_zero(const void* block, std::size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(block);
    return std::all_of(bytes, bytes + size, [](unsigned char b) { return b == 0; });
}

TEST(MemoryBlocks, AreZeroFilledAndResizable)
{
    for (const Family& f : s_families) {
        SCOPED_TRACE(f.name);
        void* block = nullptr;
        ASSERT_EQ(f.allocate(&block, 1000), 0);
        EXPECT_TRUE(all_zero(block, 1000));
        std::memset(block, 0x5A, 1000);
        ASSERT_EQ(f.resize(&block, 100000), 0);
        EXPECT_EQ(std::count(static_cast<char*>(block), static_cast<char*>(block) + 1000, 0x5A), 1000);
        const auto before = reinterpret_cast<std::uintptr_t>(block);
        EXPECT_EQ(f.resize(&block, 0), 0);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block), before);
        EXPECT_EQ(f.allocate(&block, 0), 0);
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(f.resize(&block, 8), 0); // from null, as an allocation
        EXPECT_NE(block, nullptr);
        f.release(block);
        f.release(nullptr);
    }
}

TEST(MemoryBlocks, GrowWithZeros)
{
    void* block = nullptr;
    ASSERT_EQ(GetMem__(&block, 24), 0); // leaves a dirty block behind in the heap
    std::memset(block, 0xFF, 24);
    FreeMem__(block);
    ASSERT_EQ(AllocMem__(&block, 4), 0);
    std::memcpy(block, "abcd", 4);
    ASSERT_EQ(ReallMem__(&block, 8), 0);
    EXPECT_EQ(std::memcmp(block, "abcd\0\0\0\0", 8), 0);
    FreeMem__(block);
}

TEST(MemoryBlocks, RefuseABadVariable)
{
    for (const Family& f : s_families) {
        SCOPED_TRACE(f.name);
        for (void** bad :
             {static_cast<void**>(nullptr), reinterpret_cast<void**>(8), const_cast<void**>(&s_read_only)}) {
            EXPECT_EQ(f.allocate(bad, 8), 1);
            EXPECT_EQ(f.resize(bad, 8), 1);
            EXPECT_EQ(f.resize(bad, 0), 1);
        }
    }
}

TEST(MemoryBlocks, FailEachInItsWay)
{
    for (const Family& f : s_families) {
        SCOPED_TRACE(f.name);
        int mark = 0;
        void* block = &mark;
        qmml::fail_allocation(1);
        EXPECT_EQ(f.allocate(&block, 8), 1);
        EXPECT_EQ(block, nullptr);

        ASSERT_EQ(f.allocate(&block, 4), 0);
        std::memcpy(block, "abcd", 4);
        void* const old = block;
        qmml::fail_allocation(1);
        EXPECT_EQ(f.resize(&block, 64), 1);
        if (f.resize == ReallMem__) {
            EXPECT_EQ(block, old);
            EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
        } else {
            EXPECT_EQ(block, nullptr);
        }
        f.release(old);
    }
}

TEST(Block, ReportsFailureAndMoves)
{
    qmml::fail_allocation(2);
    qmml::Block<double> a(10), b(10), c(10);
    EXPECT_TRUE(a && !b && c);
    EXPECT_EQ(b.size(), 0u);
    EXPECT_TRUE(all_zero(a.data(), 10 * sizeof(double)));
    a[9] = 2.5;
    b = std::move(a);
    EXPECT_TRUE(b);
    EXPECT_EQ(b.size(), 10u);
    EXPECT_EQ(b[9], 2.5);
    EXPECT_EQ(a.size(), 0u);

    EXPECT_TRUE(qmml::Block<double>(0));
    EXPECT_TRUE(qmml::Block<double>(-5));
    EXPECT_FALSE(qmml::Block<double>(INT64_MAX)); // 8 * count would wrap
    qmml::fail_allocation(1);
    EXPECT_FALSE(b.allocate(10));
    EXPECT_EQ(b.size(), 0u);
}

TEST(LibraryError, SwapReturnsThePrevious)
{
    QMMLSetLastError(12558);
    EXPECT_EQ(QMMLSetLastError(-1), 12558);
    EXPECT_EQ(QMMLGetLastError(), -1);
    EXPECT_EQ(QMMLSetLastError(0), -1);
    EXPECT_EQ(QMMLGetLastError(), 0);
}

} // namespace
