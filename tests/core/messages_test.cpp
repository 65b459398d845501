#include <qmml/core.h>

#include <gtest/gtest.h>

#include <string>

namespace {

std::string load(const char* text)
{
    const QmmlString strings[] = {{1, "other"}, {7, text}};
    const QmmlModule module = {strings, 2};
    const std::string loaded = szLoadResString(&module, 7);
    EXPECT_EQ(loaded, szGetString(7, &module));
    EXPECT_EQ(loaded, strLoadResString(&module, 7).GetText());
    EXPECT_EQ(loaded, strGetString(7, &module).GetText());
    return loaded;
}

TEST(Messages, DropTheMarkerOnce)
{
    const struct {
        const char *text, *expected;
    } cases[] = {
        {"Fichier", "Fichier"},
        {"dontTRANSLATE!!Fichier", "Fichier"},
        {"DontTranslate!!", ""},
        {"DontTranslate!", "DontTranslate!"},
        {"DontTranslate!!DontTranslate!!x", "DontTranslate!!x"},
        {" DontTranslate!!", " DontTranslate!!"},
        {"", ""},
        {nullptr, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(load(c.text), c.expected);
}

TEST(Messages, AreCutBetweenCharacters)
{
    const std::string a(1020, 'a');
    const struct {
        std::string text, expected;
    } cases[] = {
        {a + "bcd", a + "bcd"},
        {a + "bcde", a + "bcd"},
        {a + "bc\xC3\xA9", a + "bc"},                           // two bytes, one too many
        {a + "b\xC3\xA9z", a + "b\xC3\xA9"},                    // ends just at the limit
        {a + "\xF0\x9F\x8E\xB2", a},                            // four bytes
        {std::string(2000, '\x80'), std::string(1023, '\x80')}, // no UTF-8 at all
        {"DontTranslate!!" + a, std::string(1008, 'a')},
    };
    for (const auto& c : cases)
        EXPECT_EQ(load(c.text.c_str()), c.expected);
}

TEST(Messages, AreEmptyWhereThereAreNone)
{
    const QmmlModule no_table = {nullptr, 3};
    EXPECT_STREQ(szLoadResString(nullptr, 12292), "");
    EXPECT_STREQ(szGetString(12292, &no_table), "");
    EXPECT_STREQ(szGetStringFUNC(12287), "");
    EXPECT_TRUE(strGetStringFUNC(12298).IsEmpty());
}

TEST(Messages, AreFrench)
{
    EXPECT_STREQ(szGetStringFUNC(12288), "Impossible d'initialiser le moteur de symboles");
    EXPECT_STREQ(szGetStringFUNC(12290), "\n-- coordonn\xC3\xA9"
                                         "es dynamiques --");
    EXPECT_STREQ(szGetStringFUNC(12295), "S\xC3\xA9parateur attendu");
    EXPECT_EQ(strGetStringFUNC(12297), "Erreur dans la formule");
    HuxDllInitFuncs();
    HuxDllInitFuncs();
    EXPECT_STREQ(szGetStringFUNC(12292), "Expression vide");
}

TEST(Messages, StayForTenRequestsOfAnyKind)
{
    char* const first = szGetStringFUNC(12292);
    char* const second = szGetStringBuffer();
    EXPECT_NE(first, second);
    strGetStringFUNC(12293);
    for (int i = 0; i < 7; ++i)
        szLoadResString(nullptr, 1);
    EXPECT_STREQ(first, "Expression vide");
    EXPECT_EQ(szGetStringBuffer(), first);
    EXPECT_EQ(szGetStringBuffer(), second);
}

} // namespace
