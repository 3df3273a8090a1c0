#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The inner loops of a fit, compiled for several instruction sets. All variants yield the same bits.
namespace velmorak::fitting {

enum class Op : std::uint8_t {
    Constant,
    Variable,
    Parameter,
    Add,
    Subtract,
    Multiply,
    Divide,
    Remainder,
    NearestRemainder,
    CopySign,
    Negate,
    Square,
    Power,
    Arctangent2,
    Hypotenuse,
    Minimum,
    Maximum,
    Exponential,
    Function,
    Less,
    LessOrEqual,
    Equal,
    Unequal,
    And,
    Or,
    Not,
    Choice
};

/// One step of reverse-mode automatic differentiation. The adjoint of a value is the derivative of the function with
/// respect to it.
/// Shape: arrays of count values, one for each point.
struct AdjointStep {
    const double* value[3];       ///< Of the arguments.
    double* adjoint[3];           ///< Of the arguments; null for one that does not depend on parameters.
    const double* result;         ///< Value of the step.
    const double* resultAdjoint;  ///< Adjoint of the step.
    std::size_t count;
    std::uint8_t* hasAdjoint[3];  ///< 0 as long as adjoint is not initialised.
    bool isUniform[3];            ///< The argument has the same value at all points.
};

/// Number of rows that householderUpdate processes at once.
inline constexpr std::size_t rowsPerUpdate = 8;

/// Output arrays must not overlap any other array.
struct FitKernels {
    /// Computes one step of a program. @return false for an operation without a kernel.
    bool (*forward)(Op op, const double* const in[3], std::size_t count, double* out);
    /// Adds the contributions of one step to the adjoints of its arguments. @return false for an operation without a
    /// kernel.
    bool (*backward)(Op op, const AdjointStep& step);
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
