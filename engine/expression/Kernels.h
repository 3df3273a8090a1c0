#pragma once

#include "expression/KernelArgs.h"

#include <velmorak/Table.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The table of functions, and the kernels that compute them.
namespace velmorak::expression {

/// The argument types and the result type of a function.
enum class Rule {
    Real,        ///< Reals to a real.
    Arithmetic,  ///< Integers to an integer, otherwise numbers to a real.
    Comparison,  ///< Two numbers or two texts to a boolean.
    Logic,       ///< Booleans, or integers (true unless 0), to a boolean.
    Test,        ///< A real to a boolean.
    Texts,       ///< Values of types that the function names, to one of a type that it names.
    Choice       ///< A condition and two values of compatible types.
};

/// How a function depends on arguments that are linear in something.
enum class Linearity { None, Sum, Product, Quotient, Choice };

/// How a call is written: its arguments between these pieces of text, each in parentheses if its level of precedence is
/// lower than the one given. A function without pieces is written as name(argument,...).
struct Notation {
    std::string_view before;
    std::string_view between;
    std::string_view beforeThird;
    std::string_view after;
    int level = 10;  ///< Of the whole; 10 never needs parentheses.
    int firstLevel = 0;
    int otherLevel = 0;
};

/// The place of a function in docs/expressions.md.
struct Documentation {
    std::string_view subject;  ///< Row of the table of functions; empty for operators.
    std::string_view text;     ///< Markdown, such as "`pow(x, y)`".
};

/// A function or operator: an entry of the one table that columns, conditions, numbers, fits and fitted functions use.
/// Kernels are null for types that it does not support.
struct Function {
    std::string_view name;
    Rule rule = Rule::Real;
    std::size_t arguments = 1;
    bool takesMore = false;  ///< min and max: two or more arguments, combined in pairs.
    Kernel forReals = nullptr;
    Kernel forIntegers = nullptr;
    Kernel forTexts = nullptr;
    Kernel forBooleans = nullptr;
    ReverseKernel reverse = nullptr;  ///< Derivative of a real result; null for results of other types.
    Linearity linearity = Linearity::None;
    Notation notation{};
    Documentation documentation{};
    /// @name Functions of texts
    /// @{
    ColumnType result = ColumnType::Boolean;
    ColumnType takes[3] = {ColumnType::Text, ColumnType::Text, ColumnType::Text};
    bool hasDefault = false;    ///< The last argument, an integer, may be left out: it is then as large as can be.
    bool takesPattern = false;  ///< The last argument is a regular expression in quotes.
    /// @}
};

/// @return the table, in the order of docs/expressions.md.
std::span<const Function> allFunctions();
/// @return null for an unknown name.
const Function* findFunction(std::string_view name);
/// @return all names that a user may write, for suggestions.
std::vector<std::string> functionNames();

/// A name without quotes that means a number, unless a column, number or parameter has it.
struct Constant {
    std::string_view name;
    double value;
    std::string_view meaning;  ///< In docs/expressions.md.
};
std::span<const Constant> allConstants();
/// @return null for other names.
const double* findConstant(std::string_view name);
inline bool isConstant(std::string_view name) {
    return findConstant(name) != nullptr;
}

/// A function that reads whole lists or is composed of others: an entry of a table in docs/expressions.md.
struct NamedForm {
    std::string_view name;
    std::string_view usage;   ///< Such as "sort(list, by)".
    std::string_view result;  ///< Markdown.
};
std::span<const NamedForm> listForms();
std::span<const NamedForm> kinematicForms();
std::span<const NamedForm> missingForms();

/// A function over a whole list: sum, count, min, max, any, all, argmin, argmax.
struct Reduction {
    Kernel kernel = nullptr;  ///< Null if the element type is not supported.
    ColumnType type = ColumnType::Real;
};
bool isReduction(std::string_view name);
/// @param width 2 or 3 for combinations.
Reduction findReduction(std::string_view name, ColumnType element, std::size_t width = 1);

/// Takes the value at a position in each row's list: NaN, false or an empty text unless the position is an integer
/// within the list. Integers become reals, to allow for NaN.
Reduction findIndexing(ColumnType element);
/// Takes a value of each row's list, and the value of in[1] where the list is too short.
/// @param position 0, 1 or 2 from the beginning, or -1 for the last value.
Kernel elementKernel(ColumnType type, int position);
/// @return the kernel that repeats each row's value for every element of its list.
Kernel broadcastKernel(ColumnType type);

/// @return the kernel that converts between types; null for equal types and for impossible conversions.
Kernel conversion(ColumnType from, ColumnType to);
/// Kernel that stores the addresses of a text column's values.
bool addressTexts(const KernelArgs& args);

}  // namespace velmorak::expression
