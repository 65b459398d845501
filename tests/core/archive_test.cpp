#include <qmml/platform.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace {

struct Buffer : CArchiveSink {
    void Write(const void* data, size_t size) override { bytes.append(static_cast<const char*>(data), size); }
    size_t Read(void* data, size_t size) override
    {
        const size_t arrived = std::min({size, bytes.size() - position, piece});
        std::memcpy(data, bytes.data() + position, arrived);
        position += arrived;
        return arrived;
    }
    std::string bytes;
    size_t position = 0;
    size_t piece = SIZE_MAX;
};

CString load(Buffer& buffer)
{
    CArchive archive(buffer, CArchive::load);
    CString text = "old";
    archive >> text;
    return text;
}

TEST(Archive, StoresLengthAndBytes)
{
    const struct {
        size_t length;
        std::string prefix;
    } cases[] = {
        {0, std::string("\0", 1)},
        {254, "\xFE"},
        {255, std::string("\xFF\xFF\0", 3)},
        {65533, "\xFF\xFD\xFF"},
        {65534, std::string("\xFF\xFF\xFF\xFE\xFF\0\0", 7)},
        {70000, std::string("\xFF\xFF\xFF\x70\x11\1\0", 7)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.length);
        std::string text(c.length, 'x');
        if (c.length > 1)
            text[1] = '\0'; // counted, not terminated
        Buffer buffer;
        CArchive archive(buffer, CArchive::store);
        archive << CString(text) << CString("next");
        EXPECT_EQ(buffer.bytes.substr(0, c.prefix.size()), c.prefix);
        EXPECT_EQ(buffer.bytes.size(), c.prefix.size() + c.length + 5);
        EXPECT_EQ(load(buffer).GetText(), text);
        EXPECT_EQ(load(buffer), "next");
        buffer.position = 0;
        buffer.piece = 1; // as from a slow channel, the length too
        EXPECT_EQ(load(buffer).GetText(), text);
    }
}

TEST(Archive, GivesAnEmptyStringForWhatNeverArrives)
{
    for (const std::string& bytes : {std::string(), std::string("\5abcd"), std::string("\xFF"), std::string("\xFF\1"),
                                     std::string("\xFF\xFF\xFF\xFF\xFF\xFF"),
                                     std::string("\xFF\xFF\xFF\xFF\xFF\xFF\xFF"
                                                 "abc"),
                                     std::string("\xFF\xFE\xFF\1\0abc", 8)}) {
        Buffer buffer;
        buffer.bytes = bytes;
        EXPECT_TRUE(load(buffer).IsEmpty());
    }
}

TEST(Archive, LeavesAnArchiveOfTheOtherModeAlone)
{
    Buffer buffer;
    buffer.bytes = "\1a";
    CArchive storing(buffer, CArchive::store), loading(buffer, CArchive::load);
    CString text = "old";
    storing >> text;
    EXPECT_TRUE(text.IsEmpty());
    loading << CString("x");
    EXPECT_EQ(buffer.bytes, "\1a");
    EXPECT_EQ(buffer.position, 0u);
}

} // namespace
