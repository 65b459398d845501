#include "host/command.h"
#include "host/error.h"
#include "host/matrix_data.h"
#include "host/output_file.h"

#include <qmml/core.h>
#include <qmml/matrix.h>

#include <algorithm>
#include <climits>
#include <map>
#include <memory>

namespace qmml::host {
namespace {

struct MatrixOptions {
    std::string operation, output, part, delimiter = ",";
    std::vector<std::string> files, columns;
    int digits = 6, first = 1, last = 0;
    bool complete = false, about_origin = false, reverse = false, list = false;
};

struct Part {
    std::string name;
    Matrix matrix;
};
using Parts = std::vector<Part>;

// One or two matrices in, named parts out.
struct Operation {
    const char* name;
    int operands;
    const char* what;
    Parts (*compute)(const std::vector<Matrix>& in, const MatrixOptions& options);
};

// The library leaves a number; people want words.
void must_succeed(int result)
{
    if (result)
        return;
    static const std::map<int, const char*> s_reasons = {
        {12546, "the row counts differ"},
        {12549, "the column counts differ"},
        {12551, "the shapes differ"},
        {12554, "the dimensions do not conform"},
        {12555, "the matrix is not square"},
        {12557, "the matrix is singular, not positive definite, or has dependent columns"},
        {12558, "out of memory"},
        {12560, "the determinant is out of range"},
        {12562, "the eigenvalues did not converge"},
        {12563, "a pivot lies outside the matrix"},
        {12564, "a variable has no variance"},
    };
    const auto found = s_reasons.find(QMMLGetLastError());
    throw Error(found == s_reasons.end() ? "the computation failed" : found->second);
}

using Unary = int (*)(const double*, double*, int, int, int, int);
using Binary = int (*)(const double*, const double*, double*, int, int, int, int, int, int);

Parts unary(Unary call, const Matrix& a, Matrix result)
{
    must_succeed(call(a.data(), result.data(), a.rows, a.cols, result.rows, result.cols));
    return {{"", std::move(result)}};
}

Parts binary(Binary call, const Matrix& a, const Matrix& b, Matrix result)
{
    must_succeed(call(a.data(), b.data(), result.data(), a.rows, a.cols, b.rows, b.cols, result.rows, result.cols));
    return {{"", std::move(result)}};
}

Parts scalar(int (*call)(const double*, double*, int, int), const Matrix& a)
{
    Matrix result(1, 1);
    must_succeed(call(a.data(), result.data(), a.rows, a.cols));
    return {{"", std::move(result)}};
}

Matrix named(Matrix matrix, const std::vector<std::string>& names)
{
    matrix.row_names = matrix.column_names = names;
    return matrix;
}

Parts moments(int (*call)(const double*, double*, int, int, int, int, int), const Matrix& a,
              const MatrixOptions& options)
{
    Matrix result(a.cols, a.cols);
    must_succeed(call(a.data(), result.data(), a.rows, a.cols, a.cols, a.cols, options.about_origin ? 0 : 1));
    return {{"", named(std::move(result), a.column_names)}};
}

Parts eigen(const Matrix& a)
{
    Matrix values(a.rows, 1), vectors(a.rows, a.cols), positive(1, 1);
    must_succeed(QelMatrixEigenVectors(a.data(), values.data(), vectors.data(), positive.data(), a.rows, a.cols, a.rows,
                                       a.rows, a.cols));
    return {{"values", std::move(values)}, {"vectors", std::move(vectors)}, {"positive", std::move(positive)}};
}

Parts singular_values(const Matrix& a)
{
    Matrix u(std::max(a.rows, a.cols), a.cols), w(a.cols, 1), v(a.cols, a.cols);
    must_succeed(QelMatrixSingularValuesDecomp(a.data(), u.data(), w.data(), v.data(), a.rows, a.cols, u.rows, u.cols,
                                               a.cols, a.cols, a.cols));
    return {{"u", std::move(u)}, {"values", std::move(w)}, {"v", std::move(v)}};
}

Parts sweep(const Matrix& a, const MatrixOptions& options)
{
    Matrix result = a;
    const int last = options.last == 0 ? a.rows : options.last;
    must_succeed(
        QelMatrixSweep(result.data(), options.first, last, options.reverse ? -1 : 1, result.rows, result.cols));
    return {{"", std::move(result)}};
}

Parts means(const Matrix& a)
{
    Matrix result(a.cols, 1);
    must_succeed(QelMatrixMeans(a.data(), result.data(), a.rows, a.cols, a.cols));
    result.row_names = a.column_names;
    return {{"", std::move(result)}};
}

Parts kronecker(const Matrix& a, const Matrix& b)
{
    if (static_cast<long>(a.rows) * b.rows * a.cols * b.cols > INT_MAX)
        throw Error("the product is too large");
    return binary(QelMatrixKroneckerMultiply, a, b, Matrix(a.rows * b.rows, a.cols * b.cols));
}

using In = const std::vector<Matrix>&;
using Options = const MatrixOptions&;

const Operation s_operations[] = {
    {"add", 2, "A + B",
     [](In in, Options) {
         return binary(QelMatrixAdd, in[0], in[1], {in[0].rows, in[0].cols});
     }},
    {"cholesky", 1, "the upper triangular U with A = U'U",
     [](In in, Options) {
         return unary(QelMatrixCholeskyDecomposition, in[0], {in[0].rows, in[0].cols});
     }},
    {"correlations", 1, "of the columns",
     [](In in, Options options) { return moments(QelMatrixCorrelations, in[0], options); }},
    {"crossproducts", 1, "of the columns' deviations from their means",
     [](In in, Options options) { return moments(QelMatrixCrossProductOfDev, in[0], options); }},
    {"det", 1, "the determinant", [](In in, Options) { return scalar(QelMatrixDet, in[0]); }},
    {"eigen", 1, "eigenvalues and eigenvectors of a symmetric matrix: values, vectors, positive",
     [](In in, Options) { return eigen(in[0]); }},
    {"inverse", 1, "the inverse",
     [](In in, Options) {
         return unary(QelMatrixInverse, in[0], {in[0].rows, in[0].cols});
     }},
    {"kronecker", 2, "the Kronecker product", [](In in, Options) { return kronecker(in[0], in[1]); }},
    {"means", 1, "of the columns", [](In in, Options) { return means(in[0]); }},
    {"multiply", 2, "A B",
     [](In in, Options) {
         return binary(QelMatrixMultiply, in[0], in[1], {in[0].rows, in[1].cols});
     }},
    {"orthonormalise", 1, "orthonormal columns, by Gram and Schmidt",
     [](In in, Options) {
         return unary(QelMatrixGramSchmidtOrt, in[0], {in[0].rows, in[0].cols});
     }},
    {"pinv", 1, "the pseudo-inverse",
     [](In in, Options) {
         return unary(QelMatrixGeneralPseudoInverse, in[0], {in[0].cols, in[0].rows});
     }},
    {"rank", 1, "the number of singular values above 1e-14",
     [](In in, Options) { return scalar(QelMatrixRank, in[0]); }},
    {"show", 1, "the matrix itself, to look at it or to convert a file",
     [](In in, Options) {
         return Parts{{"", in[0]}};
     }},
    {"solve", 2, "the X with A X = B",
     [](In in, Options) {
         return binary(QelMatrixSolve, in[0], in[1], {in[1].rows, in[1].cols});
     }},
    {"subtract", 2, "A - B",
     [](In in, Options) {
         return binary(QelMatrixSubtract, in[0], in[1], {in[0].rows, in[0].cols});
     }},
    {"sumsq", 1, "the sum of the squares of all elements",
     [](In in, Options) { return scalar(QelMatrixSumOfSquares, in[0]); }},
    {"svd", 1, "A = U diag(values) V': u, values, v", [](In in, Options) { return singular_values(in[0]); }},
    {"sweep", 1, "a symmetric matrix swept on the pivots --first to --last",
     [](In in, Options options) { return sweep(in[0], options); }},
    {"trace", 1, "the sum of the diagonal", [](In in, Options) { return scalar(QelMatrixTrace, in[0]); }},
    {"transpose", 1, "rows as columns",
     [](In in, Options) {
         return unary(QelMatrixTranspose, in[0], {in[0].cols, in[0].rows});
     }},
};

std::string list_of_operations()
{
    std::string text;
    for (const Operation& operation : s_operations) {
        std::string name = operation.name;
        name.resize(16, ' ');
        text += name + (operation.operands == 2 ? "A B  " : "A    ") + operation.what + '\n';
    }
    return text;
}

const Operation& find_operation(const std::string& name)
{
    const auto is_it = [&](const Operation& operation) { return operation.name == name; };
    const auto found = std::ranges::find_if(s_operations, is_it);
    if (found == std::end(s_operations))
        throw Error((name.empty() ? std::string("an operation is required") : "no operation \"" + name + "\"") +
                    " (qmml matrix --list shows them)");
    return *found;
}

Parts compute(const Operation& operation, const MatrixOptions& options)
{
    if (options.files.size() != static_cast<std::size_t>(operation.operands))
        throw Error(options.operation + (operation.operands == 2 ? " takes two files" : " takes one file"));
    if (options.delimiter.size() != 1 && options.delimiter != "tab")
        throw Error("--delimiter takes one character, or \"tab\"");
    const MatrixInput input = {options.columns, options.complete,
                               options.delimiter == "tab" ? '\t' : options.delimiter[0]};
    std::vector<Matrix> in;
    for (const std::string& file : options.files)
        in.push_back(read_matrix(file, input));
    try {
        return operation.compute(in, options);
    } catch (const Error& error) {
        throw Error(options.operation + ": " + error.what());
    }
}

Parts chosen_part(Parts parts, const std::string& name)
{
    if (name.empty())
        return parts;
    std::string names;
    for (Part& part : parts) {
        if (part.name == name)
            return {std::move(part)};
        names += (names.empty() ? "" : ", ") + part.name;
    }
    throw Error("no part \"" + name + "\"" + (names.empty() ? "" : "; there are " + names));
}

void run(const MatrixOptions& options)
{
    if (options.list)
        return write_to_stdout(list_of_operations());
    const Parts parts = chosen_part(compute(find_operation(options.operation), options), options.part);
    if (!options.output.empty()) {
        if (parts.size() > 1)
            throw Error("--output takes one matrix: choose with --part");
        return write_matrix(options.output, parts[0].matrix);
    }
    std::string text;
    for (const Part& part : parts) {
        if (parts.size() > 1)
            text += (text.empty() ? "" : "\n") + part.name + '\n';
        text += aligned_text(part.matrix, options.digits);
    }
    write_to_stdout(text);
}

} // namespace

void add_matrix_command(CLI::App& app)
{
    CLI::App* const matrix = app.add_subcommand("matrix", "Matrix algebra on matrix files and CSV files");
    const auto options = std::make_shared<MatrixOptions>();
    matrix->add_option("operation", options->operation, "What to compute, as --list names it");
    matrix
        ->add_option("files", options->files,
                     "A matrix file, or CSV where the name ends in .csv or is \"-\" (standard input)")
        ->type_name("FILE");
    matrix->add_flag("--list", options->list, "List the operations");
    matrix->add_option("-o,--output", options->output, "Write a matrix file, or CSV if the name ends in .csv")
        ->type_name("FILE");
    matrix->add_option("--part", options->part, "Of a result of several matrices, this one");
    matrix->add_option("--digits", options->digits, "Significant digits to print [6]")->check(CLI::Range(1, 17));
    matrix->add_option("--columns", options->columns, "Columns of the CSV file, by name")->delimiter(',');
    matrix->add_flag("--complete", options->complete, "Leave out the rows of the CSV file that have a missing cell");
    matrix->add_option("--delimiter", options->delimiter, "Of the CSV file, or \"tab\" [,]");
    matrix->add_flag("--about-origin", options->about_origin,
                     "Correlations and cross products about the origin instead of the means");
    matrix->add_option("--first", options->first, "First pivot to sweep [1]");
    matrix->add_option("--last", options->last, "Last pivot to sweep [the last]");
    matrix->add_flag("--reverse", options->reverse, "Sweep in reverse");
    matrix->footer("A matrix file has a line for each row and a tab between two numbers; \".\" is missing.\n\n"
                   "Examples:\n"
                   "  qmml matrix inverse a.txt\n"
                   "  qmml matrix solve a.txt b.txt --output x.txt\n"
                   "  qmml matrix eigen a.txt --part values --digits 15\n"
                   "  qmml matrix correlations airquality.csv --columns Ozone,Wind,Temp --complete");
    matrix->callback([options] { run(*options); });
}

} // namespace qmml::host
