#pragma once

#include "elementary/Loops.h"
#include "fit/simd/FitKernels.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The function of a fit as a graph of steps, evaluated with its derivatives for a block of points at once.
namespace velmorak::fitting {

/// A function of one argument and its derivative; y is the value at x.
struct UnaryFunction {
    std::string_view name;
    double (*value)(double x);
    double (*derivative)(double x, double y);
    /// Computes many values; null if value is as fast.
    elementary::LoopOfOne elementary::Loops::*loop = nullptr;
};

/// @return null for an unknown name.
const UnaryFunction* findUnary(std::string_view name);
/// Names of all functions that findUnary knows.
std::vector<std::string> unaryNames();

/// One operation of a program; the steps of its arguments precede it. Booleans are 1 and 0.
struct Step {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    Op op = Op::Constant;
    std::size_t in[3] = {none, none, none};
    double constant = 0.0;
    std::size_t parameter = 0;
    const UnaryFunction* function = nullptr;
    bool dependsOnParameters = false;
    bool dependsOnX = false;
};

/// Points per evaluation, few enough that the intermediate values stay in the processor's cache.
inline constexpr std::size_t blockPoints = 256;

/// For arrays that are aligned to cache lines.
struct AlignedDelete {
    void operator()(double* values) const;
};
using AlignedValues = std::unique_ptr<double[], AlignedDelete>;
/// @return uninitialised values.
AlignedValues alignedValues(std::size_t count);

/// The buffers of one thread for one program.
struct Workspace {
    const FitKernels* kernels = nullptr;   ///< Any choice yields the same bits.
    std::size_t stride = 0;                ///< Room for points; a multiple of a cache line.
    AlignedValues values;                  ///< stride values for each step.
    AlignedValues adjoints;                ///< Derivatives of the result with respect to each step.
    std::vector<std::uint8_t> hasAdjoint;  ///< For each step, whether its adjoints are initialised.
};

/// Threads: a program is immutable once it is built; each thread uses its own workspace.
struct Program {
    std::vector<Step> steps;
    std::size_t result = 0;
    std::vector<std::size_t> stepOfParameter;

    /// @param points largest number of points per evaluation.
    Workspace workspace(std::size_t points = blockPoints) const;
    /// Evaluates the function at count points, at most as many as the workspace has room for.
    /// @return the values, valid until the next call with the same workspace.
    const double* evaluate(const double* x, std::size_t count, const double* parameters, Workspace& space) const;
    /// Computes the derivatives with respect to all parameters by reverse-mode automatic differentiation (A. Griewank,
    /// A. Walther, Evaluating Derivatives, SIAM 2008, chapter 3), at the points of the last evaluate. Whatever has no
    /// influence, such as the branch that a choice does not take, contributes 0 even if its derivative is NaN.
    void backward(std::size_t count, Workspace& space) const;
    /// @return the derivatives of the last backward, one for each point.
    const double* derivative(std::size_t parameter, const Workspace& space) const {
        return space.adjoints.get() + stepOfParameter[parameter] * space.stride;
    }
};

/// Computes one step outside of a program. The arguments are arrays of count values.
void executeStep(const Step& step, const double* const in[3], std::size_t count, double* out,
                 const FitKernels& kernels = bestKernels());

}  // namespace velmorak::fitting
