#pragma once

#include <cstddef>

namespace velmorak::fitting {

/// Sum of a * b in eight parts, so that it has the same bits with vectors of any width.
double product(const double* a, const double* b, std::size_t count);

/// Makes the columns of a matrix an upper triangle by Householder's reflections, which leave the lengths of columns and
/// their angles alone (G. Golub, C. Van Loan, Matrix Computations, 5.2). Below the triangle remains what tells the
/// reflections, and counts as 0.
/// Shape: column k begins at matrix + k * stride and has rows values; there are at least as many rows as columns.
void rotate(double* matrix, std::size_t rows, std::size_t columns, std::size_t stride);

}  // namespace velmorak::fitting
