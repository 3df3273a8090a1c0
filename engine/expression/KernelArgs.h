#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>

/// Kernels: functions that compute one step of an expression for a block of rows.
namespace velmorak::expression {

/// Rows per block, few enough that the intermediate values stay in the processor's cache.
inline constexpr std::size_t blockRows = 1024;

/// Texts that kernels make. They stay where they are while others are added.
using MadeTexts = std::deque<std::string>;

/// Input and output arrays of a kernel, of double, std::int64_t, std::uint8_t or const std::string*.
struct KernelArgs {
    void* out = nullptr;
    const void* in[3] = {nullptr, nullptr, nullptr};
    /// For lists: row i has the values offsets[i] - offsets[0] to offsets[i + 1] - offsets[0] of in[0].
    const std::uint64_t* offsets = nullptr;
    std::size_t rows = 0;
    MadeTexts* texts = nullptr;  ///< Keeps what a kernel of texts makes.
};

/// @return false if a row has no integer result: an overflow, or a division by 0.
using Kernel = bool (*)(const KernelArgs&);

/// One step of reverse-mode automatic differentiation (A. Griewank, A. Walther, Evaluating Derivatives, SIAM 2008,
/// chapter 3). The adjoint of a value is the derivative of the whole with respect to it.
/// Shape: arrays of count values, one for each row.
struct AdjointStep {
    const void* value[3];         ///< Of the arguments: double, or std::uint8_t for the condition of a choice.
    double* adjoint[3];           ///< Of the arguments; null for one that has no derivative.
    const double* result;         ///< Value of the step.
    const double* resultAdjoint;  ///< Adjoint of the step.
    std::size_t count;
    std::uint8_t* hasAdjoint[3];  ///< 0 as long as adjoint is not initialised.
    bool isUniform[3];            ///< The argument has the same value in all rows.
};

/// Adds the contributions of a step to the adjoints of its arguments.
using ReverseKernel = void (*)(const AdjointStep&);

}  // namespace velmorak::expression
