#pragma once

#include <cstddef>
#include <vector>

/// The linear algebra of a fit, compiled for several instruction sets. All variants yield the same bits.
namespace velmorak::fitting {

/// Number of rows that householderUpdate processes at once.
inline constexpr std::size_t rowsPerUpdate = 8;

/// Output arrays must not overlap any other array.
struct FitKernels {
    void (*fill)(double value, std::size_t count, double* values);
    /// sum = (isFirst ? 0 : sum) + factor * values.
    void (*addScaled)(const double* factor, const double* values, std::size_t count, bool isFirst, double* sum);
    /// Dot product, accumulated in eight partial sums so that its bits do not depend on the width of the vectors.
    double (*product)(const double* a, const double* b, std::size_t count);
    /// Updates the R factor of a QR decomposition with more rows by Householder reflections (G. Golub, C. Van Loan,
    /// Matrix Computations, 5.2). Overwrites the rows.
    /// Shape: column k of the R factor begins at rFactor + k * columns; column k of the rows at rows + k * stride, with
    ///        count values and room for a multiple of rowsPerUpdate.
    void (*householderUpdate)(double* rFactor, std::size_t columns, double* rows, std::size_t stride,
                              std::size_t count);
};

/// For every processor of the architecture.
const FitKernels& commonKernels();
/// Needs AVX2.
const FitKernels& avx2Kernels();
/// Needs AVX-512 (F, BW, DQ, VL).
const FitKernels& avx512Kernels();

/// @return the kernels that this processor can run, the widest first and commonKernels last.
std::vector<const FitKernels*> runnableKernels();
/// @return the first of runnableKernels.
const FitKernels& bestKernels();

}  // namespace velmorak::fitting
