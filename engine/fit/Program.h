#pragma once

#include "fit/Loops.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// A fit's function as a graph of steps, computed with its derivatives for a block of places at once.
namespace velmorak::fitting {

/// A function of one argument with its slope; y is the value at x.
struct UnaryFunction {
    std::string_view name;
    double (*value)(double x);
    double (*slope)(double x, double y);
};

/// @return null for an unknown name.
const UnaryFunction* findUnary(std::string_view name);
/// Names of all functions that findUnary knows.
std::vector<std::string> unaryNames();

/// A step; the steps of its arguments come before it. A truth is 1 or 0.
struct Step {
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    Op op = Op::Constant;
    std::size_t in[3] = {none, none, none};
    double constant = 0.0;
    std::size_t parameter = 0;
    const UnaryFunction* function = nullptr;
    bool dependsOnParameters = false;
    bool dependsOnPlace = false;
};

/// Places that are computed at once; their intermediate values stay in the processor's cache.
inline constexpr std::size_t blockPlaces = 256;

/// Begins where a cache line does.
struct AlignedDelete {
    void operator()(double* values) const;
};
using AlignedValues = std::unique_ptr<double[], AlignedDelete>;
/// Their values are not set.
AlignedValues alignedValues(std::size_t count);

/// Buffers of one thread for one program.
struct Workspace {
    const Loops* loops = nullptr;          ///< All give the same bits.
    std::size_t stride = 0;                ///< Places that there is room for; whole cache lines.
    AlignedValues values;                  ///< stride for each step.
    AlignedValues weights;                 ///< How the result changes with each step.
    std::vector<std::uint8_t> hasAdjoint;  ///< Whether weights are set.
};

/// Threads: a program is not changed once it is made; each thread brings a workspace of its own.
struct Program {
    std::vector<Step> steps;
    std::size_t result = 0;
    std::vector<std::size_t> stepOfParameter;

    /// @param places that are computed at once at most.
    Workspace workspace(std::size_t places = blockPlaces) const;
    /// Computes the function at count places, at most as many as the workspace has room for.
    /// @return the values; they stay until the next call with the same workspace.
    const double* values(const double* places, std::size_t count, const double* parameters, Workspace& space) const;
    /// Computes the derivatives with respect to all parameters by the chain rule from the result backwards (A.
    /// Griewank, A. Walther, Evaluating Derivatives, SIAM 2008, chapter 3), for the places of the last call of values.
    /// The branch that a choice does not take, and anything else without influence, contributes 0, also where it is no
    /// number.
    void backward(std::size_t count, Workspace& space) const;
    /// Of the last call of derive; count values.
    const double* derivative(std::size_t parameter, const Workspace& space) const {
        return space.weights.get() + stepOfParameter[parameter] * space.stride;
    }
};

/// Computes one step without its place in a program. The arguments are arrays of count values.
void perform(const Step& step, const double* const in[3], std::size_t count, double* out,
             const Loops& loops = bestLoops());

}  // namespace velmorak::fitting
