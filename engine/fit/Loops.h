#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The loops of a fit, each made for several widths of the processor's vectors. All give the same bits.
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

/// Values, and how the result changes with the step and its arguments. weight is null for an argument that does not
/// depend on parameters; hasAdjoint says whether there is something in it to add to.
struct AdjointStep {
    const double* value[3];
    double* weight[3];
    const double* result;
    const double* outer;
    std::size_t count;
    std::uint8_t* hasAdjoint[3];
    bool isUniform[3];  ///< Whether an argument has the same value at all places.
};

/// Rows are folded so many at once.
inline constexpr std::size_t foldedRows = 8;

/// Arrays may be anywhere; what is written overlaps nothing else.
struct Loops {
    /// Computes a step of a program from arrays of count values. @return false for what has no loop here.
    bool (*perform)(Op op, const double* const in[3], std::size_t count, double* out);
    /// Adds to the weights of the arguments what the step hands on. @return false for what has no loop here.
    bool (*backward)(Op op, const AdjointStep& chain);
    /// sum = factor * values, or more by as much.
    void (*addScaled)(const double* factor, const double* values, std::size_t count, bool isFirst, double* sum);
    /// Sum of a * b in eight parts, so that it has the same bits with vectors of any width.
    double (*product)(const double* a, const double* b, std::size_t count);
    /// Folds rows into an upper triangle by Householder's reflections, which leave the lengths of columns and their
    /// angles alone (G. Golub, C. Van Loan, Matrix Computations, 5.2); the rows are used up.
    /// Shape: column k of the triangle begins at triangle + k * columns; column k of the rows at rows + k * stride,
    /// with count values and room for a multiple of foldedRows.
    void (*householderUpdate)(double* rFactor, std::size_t columns, double* rows, std::size_t stride,
                              std::size_t count);
};

/// For every processor of the family.
const Loops& commonLoops();
/// Those for AVX2, which the processor must have to run them.
const Loops& avx2Loops();
/// Those for AVX-512 (F, BW, DQ, VL) beside it.
const Loops& avx512Loops();

/// @return those that the processor of this machine can run, the widest first; the common ones are the last.
std::vector<const Loops*> runnableLoops();
/// The first of them.
const Loops& bestLoops();

}  // namespace velmorak::fitting
