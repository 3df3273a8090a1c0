#pragma once

#include "expression/Emitter.h"
#include "expression/Program.h"
#include "fit/simd/FitKernels.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

/// The function of a fit: a compiled expression, evaluated with its derivatives for a block of points at once.
namespace velmorak::fitting {

/// Points per evaluation, few enough that the intermediate values stay in the processor's cache.
inline constexpr std::size_t blockPoints = expression::keptRows;

/// For arrays that are aligned to cache lines.
struct AlignedDelete {
    void operator()(double* values) const;
};
using AlignedValues = std::unique_ptr<double[], AlignedDelete>;
/// @return uninitialised values.
AlignedValues alignedValues(std::size_t count);

/// A step whose operands are the buffers of a workspace.
struct BoundStep {
    expression::Kernel kernel;
    expression::KernelArgs args;
    ColumnType type;     ///< Of the result.
    bool isUniform;      ///< The result has the same value at all points.
    std::size_t offset;  ///< In the expression, for messages.
};

/// A step of the reverse pass.
struct BoundReverse {
    expression::ReverseKernel kernel;
    expression::AdjointStep step;
    const std::uint8_t* hasAdjoint;  ///< Of the result; without one, the step contributes nothing.
};

/// The buffers of one thread for one program. Moving it leaves the buffers where they are.
struct Workspace {
    const FitKernels* kernels = nullptr;   ///< Any choice yields the same bits.
    std::size_t stride = 0;                ///< Room for points; a multiple of a cache line.
    AlignedValues values;                  ///< stride values for each slot.
    AlignedValues adjoints;                ///< Derivatives of the result with respect to each slot.
    std::vector<std::uint8_t> hasAdjoint;  ///< For each slot, whether its adjoints are initialised.
    std::vector<BoundStep> forward;        ///< The program's steps.
    std::vector<BoundReverse> reverse;     ///< Those that depend on parameters, the last step first.
};

/// Threads: a program is immutable once it is built; each thread uses its own workspace.
class Program {
public:
    Program() = default;
    /// @param program with Buffers::Kept and a real result; its columns are x and the parameters.
    Program(expression::Code program, std::size_t parameterCount, std::string text);

    const expression::Code& code() const { return steps; }
    std::size_t parameters() const { return parameterCount; }

    /// @param points largest number of points per evaluation.
    Workspace workspace(std::size_t points = blockPoints) const;
    /// Evaluates the function at count points, at most as many as the workspace has room for.
    /// @return the values, valid until the next call with the same workspace.
    /// @throws Failure with the text if an operation on integers has no result.
    const double* evaluate(const double* x, std::size_t count, const double* parameters, Workspace& space) const;
    /// Computes the derivatives with respect to all parameters by reverse-mode automatic differentiation (A. Griewank,
    /// A. Walther, Evaluating Derivatives, SIAM 2008, chapter 3), at the points of the last evaluate. Whatever has no
    /// influence, such as the branch that a choice does not take, contributes 0 even if its derivative is NaN.
    void backward(std::size_t count, Workspace& space) const;
    /// @return the derivatives of the last backward, one for each point.
    const double* derivative(std::size_t parameter, const Workspace& space) const {
        return space.adjoints.get() + (1 + parameter) * space.stride;
    }

private:
    /// What depends on the points and on the parameters.
    struct Dependence {
        bool onX = false;
        bool onParameters = false;  ///< By real values only: others have no derivative.
    };

    /// Slots hold x, then the parameters, then the buffers.
    std::size_t slotOf(const expression::Operand& operand) const;
    Dependence dependenceOf(const expression::Operand& operand) const;
    const void* valuesOf(const expression::Operand& operand, const Workspace& space) const;
    BoundStep bound(const expression::Step& step, const Workspace& space) const;
    BoundReverse boundReverse(const expression::Step& step, Workspace& space) const;
    void execute(BoundStep& step, std::size_t count, const Workspace& space) const;

    expression::Code steps;
    std::size_t parameterCount = 0;
    std::string text;
    std::vector<Dependence> dependences;  ///< For each slot.
};

}  // namespace velmorak::fitting
