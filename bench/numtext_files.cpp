// Matrices as text files, in memory where the system has such files.
#include "numtext_bench.h"

#include <qmml/matrix.h>
#include <qmml/numtext.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace qmml::bench {
namespace {

namespace fs = std::filesystem;

struct Matrix {
    std::size_t rows, columns;
    std::vector<double> elements; // column by column

    double& at(std::size_t i, std::size_t j) { return elements[j * rows + i]; }
    double at(std::size_t i, std::size_t j) const { return elements[j * rows + i]; }
    bool ends_line(std::size_t j) const { return j + 1 == columns; }
};

fs::path file_for(const std::string& use)
{
    const fs::path memory = "/dev/shm";
    std::error_code error;
    const fs::path folder = fs::is_directory(memory, error) ? memory : fs::temp_directory_path();
    return folder / ("qmml_bench_" + std::to_string(getpid()) + "_" + use);
}

Matrix make_matrix(std::size_t rows, std::size_t columns)
{
    const std::vector<double>& values = number_sets().front().values;
    Matrix matrix = {rows, columns, std::vector<double>(rows * columns)};
    for (std::size_t i = 0; i < matrix.elements.size(); ++i)
        matrix.elements[i] = values[i % values.size()];
    return matrix;
}

// At most 15 digits, rows on lines, fields between tabs: what all writers write. put: (place, value) -> end.
template <class Put>
void write_with(const fs::path& file, const Matrix& matrix, std::string& buffer, Put put)
{
    buffer.resize(matrix.elements.size() * s_text_size);
    char* p = buffer.data();
    for (std::size_t i = 0; i < matrix.rows; ++i)
        for (std::size_t j = 0; j < matrix.columns; ++j) {
            p = put(p, matrix.at(i, j));
            if (!matrix.ends_line(j)) {
                *p++ = '\t';
            } else {
                *p++ = '\r';
                *p++ = '\n';
            }
        }
    std::FILE* const out = std::fopen(file.c_str(), "wb");
    std::fwrite(buffer.data(), 1, static_cast<std::size_t>(p - buffer.data()), out);
    std::fclose(out);
}

void write_fprintf(const fs::path& file, const Matrix& matrix, std::string&)
{
    std::FILE* const out = std::fopen(file.c_str(), "wb");
    for (std::size_t i = 0; i < matrix.rows; ++i)
        for (std::size_t j = 0; j < matrix.columns; ++j)
            std::fprintf(out, matrix.ends_line(j) ? "%.15g\r\n" : "%.15g\t", matrix.at(i, j));
    std::fclose(out);
}

void write_iostream(const fs::path& file, const Matrix& matrix, std::string&)
{
    std::ofstream out(file, std::ios::binary);
    out.precision(15);
    for (std::size_t i = 0; i < matrix.rows; ++i)
        for (std::size_t j = 0; j < matrix.columns; ++j)
            out << matrix.at(i, j) << (matrix.ends_line(j) ? "\r\n" : "\t");
}

void write_to_chars_15(const fs::path& file, const Matrix& matrix, std::string& buffer)
{
    write_with(file, matrix, buffer, [](char* p, double value) {
        return std::to_chars(p, p + s_text_size, value, std::chars_format::general, 15).ptr;
    });
}

void write_to_chars(const fs::path& file, const Matrix& matrix, std::string& buffer)
{
    write_with(file, matrix, buffer,
               [](char* p, double value) { return std::to_chars(p, p + s_text_size, value).ptr; });
}

void write_qmml(const fs::path& file, const Matrix& matrix, std::string&)
{
    QelMatrixWrite(file.c_str(), matrix.elements.data(), static_cast<int>(matrix.rows),
                   static_cast<int>(matrix.columns));
}

bool read_from_chars(const fs::path& file, Matrix& matrix, std::string& buffer)
{
    std::FILE* const in = std::fopen(file.c_str(), "rb");
    buffer.resize(fs::file_size(file));
    const bool complete = std::fread(buffer.data(), 1, buffer.size(), in) == buffer.size();
    std::fclose(in);
    const char *p = buffer.data(), *const end = p + buffer.size();
    for (std::size_t i = 0; i < matrix.rows; ++i)
        for (std::size_t j = 0; j < matrix.columns; ++j) {
            while (p != end && (*p == '\t' || *p == '\r' || *p == '\n'))
                ++p;
            p = std::from_chars(p, end, matrix.at(i, j)).ptr;
        }
    return complete;
}

bool read_fscanf(const fs::path& file, Matrix& matrix, std::string&)
{
    std::FILE* const in = std::fopen(file.c_str(), "rb");
    bool all = true;
    for (std::size_t i = 0; i < matrix.rows; ++i)
        for (std::size_t j = 0; j < matrix.columns; ++j)
            all &= std::fscanf(in, "%lf", &matrix.at(i, j)) == 1;
    std::fclose(in);
    return all;
}

bool read_iostream(const fs::path& file, Matrix& matrix, std::string&)
{
    std::ifstream in(file, std::ios::binary);
    for (std::size_t i = 0; i < matrix.rows; ++i)
        for (std::size_t j = 0; j < matrix.columns; ++j)
            in >> matrix.at(i, j);
    return !in.fail();
}

bool read_qmml(const fs::path& file, Matrix& matrix, std::string&)
{
    return QelMatrixRead(file.c_str(), matrix.elements.data(), static_cast<int>(matrix.rows),
                         static_cast<int>(matrix.columns)) == 1;
}

bool same_matrix(const Matrix& read, const Matrix& written)
{
    return std::equal(read.elements.begin(), read.elements.end(), written.elements.begin(), written.elements.end(),
                      reads_back);
}

template <class Write>
void add_writer(std::size_t rows, std::size_t columns, const std::string& implementation, Write write)
{
    const std::string workload = "matrix_write_" + std::to_string(rows) + "x" + std::to_string(columns);
    benchmark::RegisterBenchmark((workload + "/" + implementation).c_str(), [=](benchmark::State& state) {
        const fs::path file = file_for(implementation);
        const Matrix matrix = make_matrix(rows, columns);
        std::string buffer;
        write(file, matrix, buffer);
        Matrix back = matrix;
        std::fill(back.elements.begin(), back.elements.end(), 0.0);
        if (!read_iostream(file, back, buffer) || !same_matrix(back, matrix))
            state.SkipWithError("wrong file: not timed");
        else
            for (auto _ : state)
                write(file, matrix, buffer);
        fs::remove(file);
    });
}

template <class Read>
void add_reader(std::size_t rows, std::size_t columns, const std::string& implementation, Read read)
{
    const std::string workload = "matrix_read_" + std::to_string(rows) + "x" + std::to_string(columns);
    benchmark::RegisterBenchmark((workload + "/" + implementation).c_str(), [=](benchmark::State& state) {
        const fs::path file = file_for(implementation);
        const Matrix matrix = make_matrix(rows, columns);
        std::string buffer;
        write_to_chars_15(file, matrix, buffer);
        Matrix back = matrix;
        std::fill(back.elements.begin(), back.elements.end(), 0.0);
        if (!read(file, back, buffer) || !same_matrix(back, matrix))
            state.SkipWithError("wrong values: not timed");
        else
            for (auto _ : state)
                benchmark::DoNotOptimize(read(file, back, buffer));
        fs::remove(file);
    });
}

} // namespace

void add_matrix_files()
{
    // A line of a matrix file holds 8191 characters: 100 columns fit.
    static constexpr std::pair<std::size_t, std::size_t> s_shapes[] = {{10, 10}, {100, 100}, {10'000, 100}};
    for (const auto& [rows, columns] : s_shapes) {
        add_writer(rows, columns, "to_chars_15", write_to_chars_15);
        add_writer(rows, columns, "to_chars", write_to_chars);
        add_writer(rows, columns, "fprintf", write_fprintf);
        add_writer(rows, columns, "iostream", write_iostream);
        add_writer(rows, columns, "qmml", write_qmml);
        add_reader(rows, columns, "from_chars", read_from_chars);
        add_reader(rows, columns, "fscanf", read_fscanf);
        add_reader(rows, columns, "iostream", read_iostream);
        add_reader(rows, columns, "qmml", read_qmml);
    }
}

} // namespace qmml::bench
