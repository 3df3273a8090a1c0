#pragma once

#include "expression/Kernels.h"
#include "expression/Syntax.h"

#include <list>
#include <map>
#include <vector>

namespace velmorak::expression {

/// The location of a value: a buffer or list of the current block, a column of the chunk, or a constant.
struct Operand {
    enum class In { Nothing, Buffer, List, Column, Constant };
    In in = In::Nothing;
    std::size_t position = 0;
};

/// The values over which a step iterates.
enum class IterationDomain {
    Rows,         ///< One value per row.
    Lists,        ///< All list values of a block.
    RowsOfLists,  ///< Rows with their lists: the kernel uses the offsets.
    Broadcast,    ///< Rows whose single value is repeated for each value of a list.
    Lengths       ///< Checks that two lists have equal lengths. Has no kernel.
};

struct Step {
    Kernel kernel = nullptr;
    const Function* function = nullptr;  ///< Null for conversions and what else no user writes.
    ReverseKernel reverse = nullptr;
    ColumnType type = ColumnType::Real;  ///< Of out.
    IterationDomain domain = IterationDomain::Rows;
    Operand out;
    Operand in[3];
    ColumnType inType[3] = {};
    std::size_t outBytes = 0;  ///< Distance between values.
    std::size_t inBytes[3] = {};
    std::size_t listColumn = 0;  ///< Column whose offsets the lists share.
    std::size_t otherListColumn = 0;
    std::size_t offset = 0;  ///< In the expression, for messages.
};

/// One value repeated for a whole block, so that kernels need not distinguish constants.
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
    std::list<std::string> texts;  ///< Storage of text constants.
    std::size_t buffers = 0;
    std::size_t lists = 0;
    Operand result;
    std::size_t resultListColumn = 0;  ///< For a list: the column whose offsets it shares.
    ColumnType type = ColumnType::Real;
    bool isList = false;
};

/// Checks the types and compiles an expression of columns.
/// @throws Failure whose message shows the expression with a caret under the mistake.
Code compile(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers);

}  // namespace velmorak::expression
