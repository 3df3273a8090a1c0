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

/// Whether the buffer of a value is used again after its only use, or kept so that a step may use any earlier value
/// and a reverse pass finds all of them.
enum class Buffers { Reused, Kept };

/// A kernel with what derivatives and printing need to know of it.
struct Operation {
    Kernel kernel = nullptr;
    const Function* function = nullptr;
    ReverseKernel reverse = nullptr;
};

/// Emits the steps of an expression and allocates their buffers.
class Emitter {
public:
    explicit Emitter(Buffers use = Buffers::Reused) : buffers(use) {}

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
    /// equal lengths first, and single values are broadcast. A step of constants is computed at once.
    TypedOperand emit(const Operation& operation, const std::vector<TypedOperand>& values, ColumnType type,
                      std::size_t offset);
    /// Emits a step from a list to one value per row.
    TypedOperand emitReduction(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type,
                               std::size_t offset);

    /// Peephole optimisation: removes the last step if it computed the value by this kernel, row by row.
    /// @return the arguments of the removed step; no value if nothing was removed.
    std::optional<std::vector<TypedOperand>> popIfProducedBy(const TypedOperand& value, Kernel kernel);

    /// @return the number that a constant is; no value for anything else.
    std::optional<double> numberOf(const TypedOperand& value) const;

    Code finish(const TypedOperand& whole) &&;

private:
    /// @return no value if an operand is not a constant, or if there is no result.
    std::optional<TypedOperand> folded(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type);
    TypedOperand emitStep(Step step, const std::vector<TypedOperand>& values, ColumnType type);
    TypedOperand broadcast(const TypedOperand& value, std::size_t listColumn, std::size_t offset);
    void emitLengthCheck(std::size_t listColumn, std::size_t other, std::size_t offset);
    static std::size_t allocate(std::vector<std::size_t>& free, std::size_t& count);

    Buffers buffers;
    std::vector<std::size_t> freeBuffers;
    std::vector<std::size_t> freeLists;
    std::vector<TypedOperand> lastValues;  ///< Arguments of the last step.
    std::set<std::pair<std::size_t, std::size_t>> equalLengths;
    Code code;
};

}  // namespace velmorak::expression
