#include "support.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

static_assert(sizeof(CStrIntlStg::SConvInfo) == 3);

class IntlText : public testing::Test {
protected:
    void TearDown() override { QMMLSetSeparators(0, 0); }
};

std::string neutral(const CStrIntlStg& text)
{
    QMMLSetSeparators('.', ',');
    return CString(text).GetText();
}

TEST_F(IntlText, MapsEveryCharacter)
{
    const struct {
        char decimal, list;
        const char *user, *neutral, *shown;
    } cases[] = {
        {'.', ',', "1.5,2;3", "1.5,2;3", "1.5,2;3"},
        {',', ';', "1,5;2,25", "1.5,2.25", "1,5;2,25"},
        {',', ';', "3,14", "3.14", "3,14"},
        {',', ';', "a.b", "a.b", "a,b"},
        {'.', ';', "1.5;2,5", "1.5,2,5", "1.5;2;5"},
        {',', ',', "a,b.c", "a.b.c", "a,b,c"}, // the decimal separator is looked at first
        {';', '.', "1;2.3", "1.2,3", "1;2.3"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.decimal << c.list << ' ' << c.user);
        const auto locale = [&] { QMMLSetSeparators(c.decimal, c.list); };
        locale();
        CStrIntlStg text, assigned, counted, in_place;
        text.Set(c.user);
        assigned = c.user;
        counted = CString(c.user);
        CString mapped = c.user;
        CStrIntlStg::Conv2US(mapped);
        char raw[32];
        std::strcpy(raw, c.user);
        CStrIntlStg::_Conv2US(raw);

        CString shown;
        text.Get(shown);
        EXPECT_EQ(shown, c.shown);
        const CString converted = text;
        EXPECT_EQ(converted, c.shown);
        EXPECT_STREQ(static_cast<const char*>(text), c.shown);
        for (const CStrIntlStg* each : {&text, &assigned, &counted}) {
            EXPECT_EQ(neutral(*each), c.neutral);
            locale();
        }
        EXPECT_EQ(mapped, c.neutral);
        EXPECT_STREQ(raw, c.neutral);
        CStrIntlStg::Conv2Intl(mapped);
        CStrIntlStg::_Conv2Intl(raw);
        EXPECT_EQ(mapped, c.shown);
        EXPECT_STREQ(raw, c.shown);
    }
    CStrIntlStg::_Conv2US(nullptr);
    CStrIntlStg::_Conv2Intl(nullptr);
}

TEST_F(IntlText, TakesNeutralTextAsItIs)
{
    QMMLSetSeparators(',', ';');
    CStrIntlStg set;
    set.SetUS("1,5");
    for (const CStrIntlStg& text : {CStrIntlStg("1,5"), CStrIntlStg(CString("1,5")), set})
        EXPECT_EQ(CString(text), "1;5");
    EXPECT_TRUE(CStrIntlStg(static_cast<const char*>(nullptr)).IsEmpty());
}

TEST_F(IntlText, CopiesAreIndependent)
{
    QMMLSetSeparators(',', ';');
    CStrIntlStg first = "1.5", copy = first, assigned, set;
    assigned = first;
    set.Set(first);
    const char* shown = first;
    first.Set("9");
    EXPECT_STREQ(shown, "1,5"); // readable until the next conversion
    first = *&first;
    EXPECT_EQ(CString(first), "9");
    for (const CStrIntlStg* each : {&copy, &assigned, &set})
        EXPECT_EQ(CString(*each), "1,5");
}

TEST_F(IntlText, KnowsWhenItIsEmpty)
{
    const struct {
        const char* text;
        int length, empty, trivial;
    } cases[] = {{"", 0, 1, 1}, {" \t\r\n\v\f", 6, 0, 1}, {"0", 1, 0, 0}, {"  x", 3, 0, 0}, {".", 1, 0, 0}};
    for (const auto& c : cases) {
        CStrIntlStg text(c.text);
        EXPECT_EQ(text.GetLength(), c.length);
        EXPECT_EQ(text.IsEmpty(), c.empty);
        EXPECT_EQ(text.IsTrivial(), c.trivial);
        text.Empty();
        EXPECT_EQ(text.IsEmpty(), 1);
    }
}

TEST_F(IntlText, AsksForTheSeparators)
{
    for (const auto& [decimal, list, convert] :
         {std::tuple{'.', ',', 0}, {',', ';', 1}, {'.', ';', 1}, {',', ',', 1}}) {
        QMMLSetSeparators(decimal, list);
        CStrIntlStg::SConvInfo info = {'x', 'x', 9};
        CStrIntlStg::InitIntl(info);
        EXPECT_EQ(info.decimal, decimal);
        EXPECT_EQ(info.list, list);
        EXPECT_EQ(info.convert, convert);
    }
}

struct Document : CArchiveSink {
    void Write(const void* data, size_t size) override { bytes.append(static_cast<const char*>(data), size); }
    size_t Read(void* data, size_t size) override
    {
        const size_t arrived = std::min(size, bytes.size() - position);
        std::memcpy(data, bytes.data() + position, arrived);
        position += arrived;
        return arrived;
    }
    std::string bytes;
    size_t position = 0;
};

TEST_F(IntlText, IsArchivedInNeutralForm)
{
    QMMLSetSeparators(',', ';');
    Document document;
    CArchive storing(document, CArchive::store), loading(document, CArchive::load);
    CStrIntlStg text, other("old");
    text.Set(CString("1,5\0;2", 6));
    storing << text << CStrIntlStg("next");
    EXPECT_EQ(document.bytes, std::string("\6"
                                          "1.5\0,2\4next",
                                          12));
    QMMLSetSeparators(';', ':'); // another user opens it
    loading >> other;
    EXPECT_EQ(CString(other).GetText(), std::string("1;5\0:2", 6));
    loading >> other >> text;
    EXPECT_EQ(CString(other), "next");
    EXPECT_TRUE(text.IsEmpty()); // the document is at its end
}

struct Dialog : CDataExchange {
    void PrepareEditCtrl(int id) override { calls += "prepare " + std::to_string(id) + ' '; }
    CString GetControlText(int id) const override
    {
        calls += "get " + std::to_string(id) + ' ';
        return control;
    }
    void SetControlText(int id, const char* text) override
    {
        calls += "set " + std::to_string(id) + ' ';
        control = text;
    }
    CString control;
    mutable std::string calls;
};

TEST_F(IntlText, IsExchangedWithADialog)
{
    QMMLSetSeparators(',', ';');
    Dialog dialog;
    CStrIntlStg text("1.5,2");
    DDX_Text(&dialog, 17, text);
    EXPECT_EQ(dialog.calls, "prepare 17 set 17 ");
    EXPECT_EQ(dialog.control, "1,5;2");

    dialog.calls.clear();
    dialog.control = "2,75;x";
    dialog.m_bSaveAndValidate = 1;
    DDX_Text(&dialog, 17, text);
    EXPECT_EQ(dialog.calls, "prepare 17 get 17 ");
    EXPECT_EQ(dialog.control, "2,75;x");
    EXPECT_EQ(neutral(text), "2.75,x");

    DDX_Text(nullptr, 17, text);
    EXPECT_EQ(neutral(text), "2.75,x");
}

} // namespace
