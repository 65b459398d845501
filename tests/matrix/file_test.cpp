// The matrix file: its bytes, tolerant reading, and what happens where it cannot be written or read.

#include <bit>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>
#include <qmml/core.h>
#include <qmml/matrix.h>
#include <qmml/missing.h>
#include <qmml/numtext.h>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using Numbers = std::vector<double>;

class MatrixFile : public testing::Test {
protected:
    MatrixFile()
    {
        std::string pattern = testing::TempDir() + "qmml_matrix_XXXXXX";
        m_folder = ::mkdtemp(pattern.data());
        m_file = m_folder + "/m.txt";
        QMMLSetLastError(0);
    }
    ~MatrixFile() override
    {
        SetDecimalSep('.');
        std::filesystem::remove_all(m_folder);
    }

    void fill(const std::string& text) const { std::ofstream(m_file, std::ios::binary) << text; }
    std::string content() const
    {
        std::ifstream file(m_file, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    Numbers read(int rows, int cols, int result = 1) const
    {
        Numbers a(static_cast<std::size_t>(rows * cols), 99);
        EXPECT_EQ(QelMatrixRead(m_file.c_str(), a.data(), rows, cols), result);
        return a;
    }

    std::string m_folder, m_file;
};

TEST_F(MatrixFile, IsWrittenAsDocumented)
{
    const double a[] = {1, -0.5, CNAN::m_dNAN, 1.0 / 3};
    EXPECT_EQ(QelMatrixWrite(m_file.c_str(), a, 2, 2), 1);
    EXPECT_EQ(content(), "1\t.\r\n-0.5\t0.333333333333333\r\n");
    SetDecimalSep(',');
    fill("");
    EXPECT_EQ(QelMatrixWrite(m_file.c_str(), a, 1, 4), 1);
    EXPECT_EQ(content(), "1\t-0,5\t.\t0,333333333333333\r\n");
}

TEST_F(MatrixFile, KeepsTheTailOfALongerOne)
{
    fill("0123456789");
    const double a[] = {7, 8};
    EXPECT_EQ(QelMatrixWrite(m_file.c_str(), a, 1, 2), 1);
    EXPECT_EQ(content(), "7\t8\r\n56789");
}

TEST_F(MatrixFile, IsReadTolerantly)
{
    struct Case {
        const char* text;
        int rows, cols;
        Numbers expected;
    };
    const Case cases[] = {
        {"1,,3", 1, 3, {1, 0, 3}},
        {"  1  2\t3 ;4\r\n", 1, 4, {1, 2, 3, 4}},
        {"1\n\n\r\r\n2\r\n", 2, 1, {1, 2}},         // empty lines are no rows
        {"   \n5", 2, 1, {0, 5}},                   // blanks are a row
        {"1 2 3\n4 5 6\n7", 2, 2, {1, 4, 2, 5}},    // more than asked for
        {"1\n", 2, 2, {1, 0, 0, 0}},                // less
        {"x1\t1e2e3\t-.5E+1", 1, 4, {0, 1, 0, -5}}, // junk is a separator or gives 0
        {"1e999\t-1e999\t1e-999",
         1,
         3,
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(), 0}},
        {"\n", 1, 1, {0}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        fill(c.text);
        EXPECT_EQ(read(c.rows, c.cols), c.expected);
    }
    fill("");
    EXPECT_EQ(read(1, 2, 0), (Numbers{0, 0}));
    EXPECT_EQ(QMMLGetLastError(), 0);
}

TEST_F(MatrixFile, DropsWhatALineHasBeyondItsLimit)
{
    fill(std::string(8189, ' ') + "123\n7"); // two of the three digits fit
    EXPECT_EQ(read(2, 1), (Numbers{12, 7}));
    fill(std::string(100'000, '1') + "\r\n7");
    EXPECT_EQ(read(2, 1)[1], 7);
}

TEST_F(MatrixFile, RoundTripsFifteenDigitsAndMissingValues)
{
    std::mt19937_64 random(3);
    Numbers a;
    while (a.size() < 3000) {
        const auto value = std::bit_cast<double>(random());
        char text[32];
        std::snprintf(text, sizeof text, "%.15g", value);
        a.push_back(value == value ? std::strtod(text, nullptr) : CNAN::m_dNAN);
    }
    a[5] = CNAN::m_dNAN;
    for (const auto& [rows, cols] : {std::pair{3000, 1}, {100, 30}}) {
        std::filesystem::remove(m_file);
        ASSERT_EQ(QelMatrixWrite(m_file.c_str(), a.data(), rows, cols), 1);
        const Numbers b = read(rows, cols);
        for (std::size_t i = 0; i < a.size(); ++i)
            EXPECT_EQ(std::bit_cast<std::uint64_t>(a[i]), std::bit_cast<std::uint64_t>(b[i])) << a[i];
    }
}

TEST_F(MatrixFile, SaysWhenItCannotBeOpenedOrWritten)
{
    const double a[] = {1};
    double b[] = {99};
    const auto code = [](int result) {
        EXPECT_EQ(result, 0);
        return QMMLSetLastError(0);
    };
    EXPECT_EQ(code(QelMatrixRead(m_file.c_str(), b, 1, 1)), 12565);
    EXPECT_EQ(code(QelMatrixRead(m_folder.c_str(), b, 1, 1)), 12565);
    EXPECT_EQ(code(QelMatrixRead(nullptr, b, 1, 1)), 12565);
    EXPECT_EQ(b[0], 99);
    EXPECT_EQ(code(QelMatrixWrite(m_folder.c_str(), a, 1, 1)), 12565);
    EXPECT_TRUE(std::filesystem::exists(m_folder));
    EXPECT_EQ(code(QelMatrixWrite((m_folder + "/none/m.txt").c_str(), a, 1, 1)), 12565);
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_EQ(code(QelMatrixWrite("/dev/full", a, 1, 1)), 12566);
    }
    ASSERT_EQ(::mkfifo(m_file.c_str(), 0600), 0); // nobody at the other end
    EXPECT_EQ(code(QelMatrixWrite(m_file.c_str(), a, 1, 1)), 12565);
    EXPECT_TRUE(std::filesystem::exists(m_file));
    EXPECT_EQ(QelMatrixRead(m_file.c_str(), b, 1, 1), 0);
}

// A program cannot be written to while it runs, not even by root.
TEST_F(MatrixFile, IsRemovedWhenItCannotBeOpened)
{
    std::filesystem::copy_file("/bin/sleep", m_file);
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl(m_file.c_str(), m_file.c_str(), "60", nullptr);
        ::_exit(1);
    }
    const double a[] = {1};
    int result = -1;
    for (int i = 0; i < 200; ++i) { // until the child has come so far
        std::ofstream probe(m_file, std::ios::in | std::ios::out | std::ios::binary);
        if (!probe) {
            result = QelMatrixWrite(m_file.c_str(), a, 1, 1);
            break;
        }
        probe.close();
        ::usleep(10'000);
    }
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    if (result < 0)
        GTEST_SKIP() << "this system lets running programs be written to";
    EXPECT_EQ(result, 0);
    EXPECT_EQ(QMMLGetLastError(), 12565);
    EXPECT_FALSE(std::filesystem::exists(m_file));
}

TEST_F(MatrixFile, SurvivesAReaderThatLeaves)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    const std::string name = "/dev/fd/" + std::to_string(ends[1]);
    const double a[] = {1};
    EXPECT_EQ(QelMatrixWrite(name.c_str(), a, 1, 1), 0);
    ::close(ends[1]);
}

} // namespace
