#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The steps that an expression is computed in: each takes a block of rows through one function.
namespace velmorak::expression {

/// Rows that are computed at once; their intermediate values stay in the processor's cache.
inline constexpr std::size_t blockRows = 1024;

/// Where a step finds and puts its values: an array each, of double, std::int64_t, std::uint8_t or const std::string*.
struct KernelArgs {
    void* out = nullptr;
    const void* in[3] = {nullptr, nullptr, nullptr};
    /// Of lists: in[0] holds the values from those of the first row on, which stand at offsets[0] of the chunk.
    const std::uint64_t* offsets = nullptr;
    std::size_t rows = 0;
};

/// @return false when a row has no integer result: the result is too large, or a division is by 0.
using Kernel = bool (*)(const KernelArgs&);

/// Which types a function takes, and what comes out.
enum class Rule {
    Real,        ///< Takes reals, gives a real.
    Arithmetic,  ///< Integers give an integer, anything with a real a real.
    Comparison,  ///< Two numbers or two texts; gives a boolean.
    Logic,       ///< Booleans, or integers that are not 0; gives a boolean.
    Test,        ///< Takes a real, gives a boolean.
    Choice       ///< A condition and two values of like types.
};

/// A function or operator with its kernels, as far as it has them for a type.
struct Function {
    std::string_view name;
    Rule rule = Rule::Real;
    std::size_t arguments = 1;
    bool takesMore = false;  ///< min and max: any number from two on, taken in pairs.
    Kernel forReals = nullptr;
    Kernel forIntegers = nullptr;
    Kernel forTexts = nullptr;
    Kernel forBooleans = nullptr;
};

/// @return null for an unknown name.
const Function* findFunction(std::string_view name);
/// All names that a user may write, for suggestions.
std::vector<std::string> functionNames();

/// A function of a whole list: sum, count, min, max, any, all.
struct Reduction {
    Kernel kernel = nullptr;  ///< Null when there is none for this type.
    ColumnType type = ColumnType::Real;
};
bool isReduction(std::string_view name);
Reduction findReduction(std::string_view name, ColumnType element);

/// The value at a position in each row's list. Beyond the end, and for a position that is no whole number from 0 on,
/// it is NaN, false or an empty text; integers become real for that.
Reduction findIndexing(ColumnType element);
/// @return the kernel that repeats each row's value for its list.
Kernel spreading(ColumnType type);

/// @return the kernel that makes one type of another; null for the same type, and where there is no such way.
Kernel conversion(ColumnType from, ColumnType to);
/// Takes the addresses of a text column's values.
bool addressTexts(const KernelArgs& lane);

}  // namespace velmorak::expression
