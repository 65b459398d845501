#include <qmml/core.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace {

using namespace std::string_literals;

// Every row runs on a field of 16 marks, so that each byte that is written shows; n is what the function leaves in it.
TEST(BoundedStrings, WriteWhatTheirRulesSay)
{
    using Function = char* (*)(char*, const char*, int&);
    const Function copy = [](char* dst, const char* src, int& n) { return Lstrcpyn(dst, src, n); };
    const Function append = [](char* dst, const char* src, int& n) { return Lstrncat(dst, src, n); };
    const struct {
        Function function;
        std::string start;
        const char* src;
        int n;
        std::string expected;
        int n_after;
    } rows[] = {
        {copy, "", "abcdef", 4, "abc\0"s, 4},
        {copy, "", "x", 1, "\0"s, 1},
        {copy, "", "ab", 6, "ab\0\0\0\0"s, 6},
        {copy, "", "ab", 0, "", 0},
        {copy, "", nullptr, 3, "\0\0\0"s, 3},
        {Lstrcpynz, "", "abcdef", 3, "abc", 3},
        {Lstrcpynz, "", "ab", 10, "ab\0\0\0\0\0\0\0\0"s, 2},
        {Lstrcpynz, "", "ab", -1, "", 0},
        {Lstrcpynz, "", nullptr, 2, "\0\0"s, 0},
        {append, "ab\0"s, "cdef", 3, "abcd\0"s, 3},
        {append, "ab\0"s, "c", 5, "abc\0##\0"s, 5},
        {append, "ab\0"s, "cdef", 1, "ab\0"s, 1},
        {append, "ab\0"s, nullptr, 3, "ab\0#\0"s, 3},
        {Lstrncatz, "ab\0"s, "cdef", 3, "abcde\0"s, 5},
        {Lstrncatz, "ab\0"s, "cd", 9, "abcd\0"s, 4},
        {Lstrncatz, "ab\0"s, "cd", -4, "ab\0"s, 2},
        {Lstrncatz, "ab\0"s, nullptr, 4, "ab\0"s, 2},
    };
    for (const auto& row : rows) {
        std::string field(16, '#');
        field.replace(0, row.start.size(), row.start);
        int n = row.n;
        EXPECT_EQ(row.function(field.data(), row.src, n), field.data());
        EXPECT_EQ(field, row.expected + std::string(16 - row.expected.size(), '#')) << &row - rows;
        EXPECT_EQ(n, row.n_after) << &row - rows;
        EXPECT_EQ(row.function(nullptr, "abc", n), nullptr);
    }
    char same[] = "abcdef"; // cut in place
    EXPECT_STREQ(Lstrcpyn(same, same + 2, 3), "cd");
}

TEST(BoundedStrings, TrimBothEnds)
{
    const struct {
        std::string text;
        const char *front, *back;
    } rows[] = {
        {"  a b  ", "a b  ", "  a b"},
        {"\t\n\v\f\r x", "x", "\t\n\v\f\r x"},
        {"x \t\n\v\f\r", "x \t\n\v\f\r", "x"},
        {" \t ", "", ""},
        {"", "", ""},
        {"\xA0", "\xA0", "\xA0"},
    };
    for (auto row : rows) {
        EXPECT_STREQ(Lstrpreclip(row.text.c_str()), row.front);
        EXPECT_STREQ(Lstrclip(row.text.data()), row.back);
    }
    EXPECT_EQ(Lstrpreclip(nullptr), nullptr);
    EXPECT_EQ(Lstrclip(nullptr), nullptr);
}

} // namespace
