#pragma once

#include "expression/Program.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace velmorak::expression {

/// A value computed by the steps emitted so far.
struct TypedOperand {
    Operand operand;
    ColumnType type = ColumnType::Real;
    bool isList = false;
    std::size_t listColumn = 0;    ///< For a list: the column whose offsets it shares.
    std::size_t elementBytes = 0;  ///< Distance between values; 0 for a constant.
};

/// Emits the steps of an expression and allocates their buffers.
class Emitter {
public:
    /// A value that is the same in all rows.
    template <typename T>
    TypedOperand constant(T value, ColumnType type) {
        Block& block = code.constants.emplace_back();
        std::fill_n(reinterpret_cast<T*>(block.bytes), blockRows, value);
        code.constantAt.push_back(&block);
        return {{Operand::In::Constant, code.constantAt.size() - 1}, type, false, 0, 0};
    }
    TypedOperand text(const std::string& value);
    TypedOperand column(std::size_t position, const ColumnInfo& info);

    /// Emits an element-wise step. If a value is a list, so is the result: lists of different columns are checked for
    /// equal lengths first, and single values are broadcast.
    TypedOperand emit(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type, std::size_t offset);
    /// Emits a step from a list to one value per row.
    TypedOperand emitReduction(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type,
                               std::size_t offset);

    /// Peephole optimisation: removes the last step if it computed the value by this kernel, row by row.
    /// @return the arguments of the removed step; no value if nothing was removed.
    std::optional<std::vector<TypedOperand>> popIfProducedBy(const TypedOperand& value, Kernel kernel);

    Code finish(const TypedOperand& whole) &&;

private:
    TypedOperand emitStep(Step step, const std::vector<TypedOperand>& values, ColumnType type);
    TypedOperand broadcast(const TypedOperand& value, std::size_t listColumn, std::size_t offset);
    void emitLengthCheck(std::size_t listColumn, std::size_t other, std::size_t offset);
    static std::size_t allocate(std::vector<std::size_t>& free, std::size_t& count);

    std::vector<std::size_t> freeBuffers;
    std::vector<std::size_t> freeLists;
    std::vector<TypedOperand> lastValues;  ///< Arguments of the last step.
    std::set<std::pair<std::size_t, std::size_t>> equalLengths;
    Code code;
};

}  // namespace velmorak::expression
