#pragma once

#include "expression/Kernels.h"
#include "expression/Syntax.h"

#include <list>
#include <map>
#include <vector>

namespace velmorak::expression {

/// Where a value stands: in a block's buffer, in the lists of a block, in a column of the chunk, or in a constant of
/// the program.
struct Operand {
    enum class In { Nothing, Buffer, List, Column, Constant };
    In in = In::Nothing;
    std::size_t position = 0;
};

/// What a step goes over.
enum class IterationDomain {
    Rows,         ///< A value for each row.
    Lists,        ///< All values of the lists of a block.
    RowsOfLists,  ///< The rows, with the values of a list each: the kernel looks at the offsets.
    Broadcast,    ///< The rows, whose single value is repeated for each value of a list.
    Lengths       ///< The lengths of two lists, which must be equal. Has no kernel.
};

struct Step {
    Kernel kernel = nullptr;
    IterationDomain over = IterationDomain::Rows;
    Operand out;
    Operand in[3];
    std::size_t outBytes = 0;  ///< From one value to the next.
    std::size_t inBytes[3] = {};
    std::size_t shape = 0;  ///< Column whose offsets the lists have.
    std::size_t otherShape = 0;
    std::size_t place = 0;  ///< Byte of the expression, for a message.
};

/// One value, repeated for a block, so that a step need not know that it is a constant.
struct alignas(64) Block {
    std::byte bytes[blockRows * 8];
};

/// An expression in the order in which it is computed.
struct Code {
    std::vector<Step> steps;
    std::vector<std::size_t> usedColumns;
    std::list<Block> constants;
    std::vector<const Block*> constantAt;
    std::list<std::string> texts;  ///< That constants point to.
    std::size_t buffers = 0;
    std::size_t lists = 0;
    Operand result;
    std::size_t resultShape = 0;  ///< Where it is a list: the column whose offsets it has.
    ColumnType type = ColumnType::Real;
    bool isList = false;
};

/// Checks the types and lays out the steps.
/// @throws Failure with the expression and a caret under the place.
Code compile(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers);

/// @return whether the bare name means a constant where no column or number has it.
bool isConstant(std::string_view name);

}  // namespace velmorak::expression
