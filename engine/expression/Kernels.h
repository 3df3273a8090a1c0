#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Kernels: functions that compute one step of an expression for a block of rows.
namespace velmorak::expression {

/// Rows per block, few enough that the intermediate values stay in the processor's cache.
inline constexpr std::size_t blockRows = 1024;

/// Input and output arrays of a kernel, of double, std::int64_t, std::uint8_t or const std::string*.
struct KernelArgs {
    void* out = nullptr;
    const void* in[3] = {nullptr, nullptr, nullptr};
    /// For lists: row i has the values offsets[i] - offsets[0] to offsets[i + 1] - offsets[0] of in[0].
    const std::uint64_t* offsets = nullptr;
    std::size_t rows = 0;
};

/// @return false if a row has no integer result: an overflow, or a division by 0.
using Kernel = bool (*)(const KernelArgs&);

/// The argument types and the result type of a function.
enum class Rule {
    Real,        ///< Reals to a real.
    Arithmetic,  ///< Integers to an integer, otherwise numbers to a real.
    Comparison,  ///< Two numbers or two texts to a boolean.
    Logic,       ///< Booleans, or integers (true unless 0), to a boolean.
    Test,        ///< A real to a boolean.
    Choice       ///< A condition and two values of compatible types.
};

/// A function or operator with its kernels; null for types that it does not support.
struct Function {
    std::string_view name;
    Rule rule = Rule::Real;
    std::size_t arguments = 1;
    bool takesMore = false;  ///< min and max: two or more arguments, combined in pairs.
    Kernel forReals = nullptr;
    Kernel forIntegers = nullptr;
    Kernel forTexts = nullptr;
    Kernel forBooleans = nullptr;
};

/// @return null for an unknown name.
const Function* findFunction(std::string_view name);
/// @return all names that a user may write, for suggestions.
std::vector<std::string> functionNames();

/// A function over a whole list: sum, count, min, max, any, all.
struct Reduction {
    Kernel kernel = nullptr;  ///< Null if the element type is not supported.
    ColumnType type = ColumnType::Real;
};
bool isReduction(std::string_view name);
Reduction findReduction(std::string_view name, ColumnType element);

/// Takes the value at a position in each row's list: NaN, false or an empty text unless the position is an integer
/// within the list. Integers become reals, to allow for NaN.
Reduction findIndexing(ColumnType element);
/// @return the kernel that repeats each row's value for every element of its list.
Kernel broadcastKernel(ColumnType type);

/// @return the kernel that converts between types; null for equal types and for impossible conversions.
Kernel conversion(ColumnType from, ColumnType to);
/// Kernel that stores the addresses of a text column's values.
bool addressTexts(const KernelArgs& args);

}  // namespace velmorak::expression
