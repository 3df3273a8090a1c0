#pragma once

#include "expression/Kernels.h"
#include "expression/ListKernels.h"
#include "expression/Syntax.h"

#include <compare>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::expression {

/// The location of a value: a buffer or list of the current block, a column of the chunk, or a constant.
struct Operand {
    enum class In { Nothing, Buffer, List, Column, Constant };
    In in = In::Nothing;
    std::size_t position = 0;
};

/// The lengths of lists: those of a column, or those of lists that a step makes.
struct Shape {
    bool isMade = false;
    std::size_t position = 0;  ///< Of the column, or among Code::madeShapes.

    auto operator<=>(const Shape&) const = default;  // NOLINT(modernize-use-nullptr,*-bool-conversion)
};

/// The values over which a step iterates. The elements of a list are single values, or combinations of width values.
enum class IterationDomain {
    Rows,          ///< One value per row.
    Lists,         ///< All list values of a block.
    RowsOfLists,   ///< Rows with their lists: the kernel uses the offsets.
    Combinations,  ///< As RowsOfLists, for the combinations of all lists in place of rows.
    Broadcast,     ///< Rows whose single value is repeated for each value of a list.
    Repeat,        ///< As Broadcast, for the values of lists that are repeated for each value of a combination.
    WholeLists,    ///< Rows with their lists, of which a list kernel makes others.
    Lengths        ///< Checks that two lists have equal lengths. Has no kernel.
};

struct Step {
    Kernel kernel = nullptr;
    const Function* function = nullptr;  ///< Null for conversions and what else no user writes.
    ReverseKernel reverse = nullptr;
    ColumnType type = ColumnType::Real;  ///< Of out.
    IterationDomain domain = IterationDomain::Rows;
    ListKernel listKernel = nullptr;  ///< In place of kernel, for WholeLists.
    Operand out;
    Operand in[4];
    ColumnType inType[4] = {};
    std::size_t outBytes = 0;  ///< Distance between values.
    std::size_t inBytes[4] = {};
    std::optional<Shape> inShape[4];  ///< For WholeLists.
    Shape shape;                      ///< Of the lists.
    Shape otherShape;
    bool makesShape = false;  ///< The list kernel makes the lengths, too.
    std::size_t width = 1;    ///< Values in each element of the lists.
    std::size_t secondWidth = 1;
    std::size_t offset = 0;  ///< In the expression, for messages.
};

/// One value repeated for all rows that are computed at once, so that kernels need not distinguish constants.
struct alignas(64) Block {
    Block() {}  // NOLINT(modernize-use-equals-default,cppcoreguidelines-pro-type-member-init): leaves the bytes alone.

    std::byte bytes[blockRows * 8];
};

/// @return the value of a constant that is not a text.
double numberIn(const Block& constant, ColumnType type);

/// A compiled expression: steps in execution order.
struct Code {
    Code() = default;
    Code(Code&&) = default;
    Code& operator=(Code&&) = default;

    std::vector<Step> steps;
    std::vector<std::size_t> usedColumns;
    std::list<Block> constants;
    std::vector<Block*> constantAt;
    MadeTexts texts;  ///< Storage of text constants.
    std::vector<std::shared_ptr<const void>> patterns;
    std::size_t buffers = 0;
    std::size_t lists = 0;
    std::vector<std::string> madeShapes;  ///< For each, the part of the expression that makes it.
    bool makesCombinations = false;
    Operand result;
    Shape resultShape;  ///< For a list.
    ColumnType type = ColumnType::Real;
    bool isList = false;
};

/// Checks the types and compiles an expression of columns.
/// @throws Failure whose message shows the expression with a caret under the mistake.
Code compile(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers);

}  // namespace velmorak::expression
