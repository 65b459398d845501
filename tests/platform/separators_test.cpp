#include "platform/separators.h"

#include <qmml/platform.h>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>

// The C library loses a few bytes at each look into LOCPATH.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:argz_add_sep";
}

namespace {

using qmml::platform::separators;

std::string both()
{
    const auto s = separators();
    return {s.decimal, s.list};
}

class Separators : public testing::Test {
protected:
    void SetUp() override { set(nullptr, nullptr, nullptr); }
    void TearDown() override
    {
        QMMLSetSeparators(0, 0);
        for (const auto& [name, value] : m_before)
            assign(name, value ? value->c_str() : nullptr);
        std::filesystem::remove_all(m_folder);
    }

    static void set(const char* all, const char* numeric, const char* lang)
    {
        assign("LC_ALL", all);
        assign("LC_NUMERIC", numeric);
        assign("LANG", lang);
    }

    // A locale with a decimal comma need not be installed; it can be compiled where the sources are.
    bool make_german()
    {
        std::filesystem::create_directories(m_folder);
        const std::string command = "localedef -i de_DE -f UTF-8 " + m_folder.string() + "/de_TEST >/dev/null 2>&1";
        if (std::system(command.c_str()) != 0)
            return false;
        assign("LOCPATH", m_folder.c_str());
        return true;
    }

private:
    static void assign(const char* name, const char* value) { value ? setenv(name, value, 1) : unsetenv(name); }
    static std::optional<std::string> current(const char* name)
    {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    }

    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("qmml_locale_" + std::to_string(getpid()));
    const std::pair<const char*, std::optional<std::string>> m_before[4] = {{"LC_ALL", current("LC_ALL")},
                                                                            {"LC_NUMERIC", current("LC_NUMERIC")},
                                                                            {"LANG", current("LANG")},
                                                                            {"LOCPATH", current("LOCPATH")}};
};

TEST_F(Separators, AreNeutralWithoutALocale)
{
    EXPECT_EQ(both(), ".,");
    for (const char* name : {"C", "POSIX", "C.UTF-8", "", "xx_UNKNOWN", "../../etc/passwd"}) {
        set(name, nullptr, nullptr);
        EXPECT_EQ(both(), ".,") << name;
    }
    set(std::string(5000, 'x').c_str(), nullptr, nullptr);
    EXPECT_EQ(both(), ".,");
}

TEST_F(Separators, FollowTheEnvironmentAtEachQuery)
{
    if (!make_german())
        GTEST_SKIP() << "localedef cannot compile de_DE here";
    const struct {
        const char *all, *numeric, *lang, *expected;
    } cases[] = {
        {nullptr, nullptr, "de_TEST", ",;"}, {nullptr, "de_TEST", "C", ",;"}, {"C", "de_TEST", "de_TEST", ".,"},
        {"de_TEST", "C", "C", ",;"},         {"", "", "de_TEST", ",;"},       {nullptr, "C", "de_TEST", ".,"},
        {nullptr, nullptr, "C.UTF-8", ".,"},
    };
    for (const auto& c : cases) {
        set(c.all, c.numeric, c.lang);
        EXPECT_EQ(both(), c.expected) << &c - cases;
    }
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST_F(Separators, CanBeOverridden)
{
    QMMLSetSeparators(',', ';');
    EXPECT_EQ(both(), ",;");
    QMMLSetSeparators(0, '\xA7');
    EXPECT_EQ(both(), ".\xA7");
    QMMLSetSeparators(0, 0);
    EXPECT_EQ(both(), ".,");
}

} // namespace
