// Rows, columns, blocks and diagonals of the caller's matrices.
#include "matrix/array_call.h"
#include "matrix/blocks.h"
#include "matrix/work_copy.h"

#include <algorithm>
#include <qmml/matrix.h>

using namespace qmml::matrix;

namespace {

// An index from 1 that lies in 1..count, and a position in 0..count, where 0 stands for 1.
bool within(int index, int count) noexcept
{
    return index >= 1 && index <= count;
}
bool is_position(int position, int count) noexcept
{
    return position >= 0 && position <= count;
}

std::int64_t offset(int position) noexcept
{
    return std::max(position, 1) - 1;
}

// How many rows or columns a block has: what was asked for, -1 and 0 meaning all, but no more than there is room for.
std::int64_t block_count(int wanted, std::int64_t room) noexcept
{
    return wanted == -1 || wanted == 0 ? room : std::min<std::int64_t>(wanted, room);
}

// Where a block begins inside an array.
struct Corner {
    int row, col;

    double* in(double* data, Shape shape) const noexcept { return data + offset(col) * shape.rows + offset(row); }
    const double* in(const double* data, Shape shape) const noexcept
    {
        return data + offset(col) * shape.rows + offset(row);
    }
    Extent room_in(Shape shape) const noexcept { return {shape.rows - offset(row), shape.cols - offset(col)}; }
};

Extent block_extent(int rows, int cols, Extent room) noexcept
{
    const Extent block = {block_count(rows, room.rows), block_count(cols, room.cols)};
    return block.rows < 1 || block.cols < 1 ? Extent{0, 0} : block;
}

Extent smaller(Extent a, Extent b) noexcept
{
    return {std::min(a.rows, b.rows), std::min(a.cols, b.cols)};
}

Extent extent_of(Shape shape) noexcept
{
    return {shape.rows, shape.cols};
}

void copy_between(const double* from, Corner from_corner, Shape from_shape, double* to, Corner to_corner,
                  Shape to_shape, Extent block) noexcept
{
    if (block.rows > 0 && block.cols > 0)
        copy_block(from_corner.in(from, from_shape), from_shape.rows, to_corner.in(to, to_shape), to_shape.rows, block);
}

} // namespace

int QelMatrixGetColumn(const double* A, int col, double* v, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {v, {n, 1}}},
                      {{n == aR, Error::row_counts_differ}, {within(col, aC), Error::no_such_column}}, [&] {
                          copy_between(A, {1, col}, {aR, aC}, v, {1, 1}, {n, 1}, {aR, 1});
                          return Status::success;
                      });
}

int QelMatrixSetColumn(double* A, int col, const double* v, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {v, {n, 1}}},
                      {{n == aR, Error::row_counts_differ}, {within(col, aC), Error::no_such_column}}, [&] {
                          copy_between(v, {1, 1}, {n, 1}, A, {1, col}, {aR, aC}, {aR, 1});
                          return Status::success;
                      });
}

int QelMatrixGetRow(const double* A, int row, double* v, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {v, {1, n}}},
                      {{n == aC, Error::column_counts_differ}, {within(row, aR), Error::no_such_row}}, [&] {
                          copy_between(A, {row, 1}, {aR, aC}, v, {1, 1}, {1, n}, {1, aC});
                          return Status::success;
                      });
}

int QelMatrixSetRow(double* A, int row, const double* v, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {v, {1, n}}},
                      {{n == aC, Error::column_counts_differ}, {within(row, aR), Error::no_such_row}}, [&] {
                          copy_between(v, {1, 1}, {1, n}, A, {row, 1}, {aR, aC}, {1, aC});
                          return Status::success;
                      });
}

int QelMatrixExtract(const double* A, int row, int col, int nRows, int nCols, double* C, int aR, int aC, int cR, int cC)
{
    return array_call({{A, {aR, aC}}, {C, {cR, cC}}},
                      {{is_position(row, aR), Error::no_such_row}, {is_position(col, aC), Error::no_such_column}}, [&] {
                          const Corner corner = {row, col};
                          const Shape a = {aR, aC}, c = {cR, cC};
                          const Extent block = block_extent(nRows, nCols, smaller(corner.room_in(a), extent_of(c)));
                          copy_between(A, corner, a, C, {1, 1}, c, block);
                          return Status::success;
                      });
}

int QelMatrixCopy(const double* S, int sRow, int sCol, int nRows, int nCols, double* D, int dRow, int dCol, int sR,
                  int sC, int dR, int dC)
{
    return array_call({{S, {sR, sC}}, {D, {dR, dC}}},
                      {{is_position(sRow, sR) && is_position(dRow, dR), Error::no_such_row},
                       {is_position(sCol, sC) && is_position(dCol, dC), Error::no_such_column}},
                      [&] {
                          const Corner from = {sRow, sCol}, to = {dRow, dCol};
                          const Shape s = {sR, sC}, d = {dR, dC};
                          const Extent block = block_extent(nRows, nCols, smaller(from.room_in(s), to.room_in(d)));
                          if (S != D) {
                              copy_between(S, from, s, D, to, d, block);
                              return Status::success;
                          }
                          WorkCopy copy(Array{S, s});
                          if (!copy)
                              return Status::out_of_memory;
                          copy_between(copy.data(), from, s, D, to, d, block);
                          return Status::success;
                      });
}

int QelMatrixFill(double value, double* A, int row, int col, int nRows, int nCols, int aR, int aC)
{
    return array_call({{A, {aR, aC}}},
                      {{is_position(row, aR), Error::no_such_row}, {is_position(col, aC), Error::no_such_column}}, [&] {
                          const Corner corner = {row, col};
                          const Shape a = {aR, aC};
                          const Extent block = block_extent(nRows, nCols, corner.room_in(a));
                          if (block.rows > 0)
                              fill_block(corner.in(A, a), aR, block, value);
                          return Status::success;
                      });
}

int QelMatrixDuplicate(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    const Shape a = {aR, aC}, c = {cR, cC};
    return array_call({{A, a}, {C, c}}, {{a == c, Error::shapes_differ}}, [&] {
        copy_block(A, aR, C, cR, extent_of(a));
        return Status::success;
    });
}

int QelMatrixSetToZero(double* A, int aR, int aC)
{
    return array_call({{A, {aR, aC}}}, {}, [&] {
        fill_block(A, aR, {aR, aC}, 0.0);
        return Status::success;
    });
}

int QelMatrixIdentity(double* A, int aR, int aC)
{
    return array_call({{A, {aR, aC}}}, {{aR == aC, Error::not_square}}, [&] {
        fill_block(A, aR, {aR, aC}, 0.0);
        for (std::int64_t i = 0; i < aR; ++i)
            A[i * aR + i] = 1.0;
        return Status::success;
    });
}

int QelMatrixCombineHoriz(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return array_call(
        {{A, {aR, aC}}, {B, {bR, bC}}, {C, {cR, cC}}},
        {{aR == bR, Error::row_counts_differ}, {cR == aR && cC == extent(aC) + extent(bC), Error::not_side_by_side}},
        [&] {
            copy_block(A, aR, C, cR, {aR, aC});
            copy_block(B, bR, C + extent(aC) * extent(cR), cR, {bR, bC});
            return Status::success;
        });
}

int QelMatrixCombineVert(const double* A, const double* B, double* C, int aR, int aC, int bR, int bC, int cR, int cC)
{
    return array_call({{A, {aR, aC}}, {B, {bR, bC}}, {C, {cR, cC}}},
                      {{aC == bC, Error::column_counts_differ},
                       {cR == extent(aR) + extent(bR) && cC == aC, Error::not_one_above_other}},
                      [&] {
                          copy_block(A, aR, C, cR, {aR, aC});
                          if (bC > 0)
                              copy_block(B, bR, C + extent(aR), cR, {bR, bC});
                          return Status::success;
                      });
}

int QelMatrixGetDiagonal(const double* A, double* v, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {v, {n, 1}}}, {{n == aR, Error::not_conforming}}, [&] {
        for (std::int64_t i = 0; i < n; ++i)
            v[i] = i < aC ? A[i * aR + i] : 0.0;
        return Status::success;
    });
}

int QelMatrixSetDiagonal(double* A, const double* v, int aR, int aC, int n)
{
    return array_call({{A, {aR, aC}}, {v, {n, 1}}}, {{n == aR, Error::not_conforming}}, [&] {
        for (std::int64_t i = 0; i < std::min(n, aC); ++i)
            A[i * aR + i] = v[i];
        return Status::success;
    });
}

int QelMatrixTranspose(const double* A, double* C, int aR, int aC, int cR, int cC)
{
    return array_call({{A, {aR, aC}}, {C, {cR, cC}}}, {{cR == aC && cC == aR, Error::not_conforming}}, [&] {
        if (A != C) {
            transpose(A, C, {aR, aC});
            return Status::success;
        }
        WorkCopy copy(Array{A, {aR, aC}});
        if (!copy)
            return Status::out_of_memory;
        transpose(copy.data(), C, {aR, aC});
        return Status::success;
    });
}
