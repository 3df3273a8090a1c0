#pragma once

#include "expression/Program.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace velmorak::expression {

/// A value that the steps so far have made.
struct TypedOperand {
    Operand place;
    ColumnType type = ColumnType::Real;
    bool isList = false;
    std::size_t shape = 0;         ///< Of a list: the column that has as many values in each row.
    std::size_t elementBytes = 0;  ///< From one value to the next; 0 for a constant.
};

/// Writes the steps of an expression, and says which buffer each takes.
class Emitter {
public:
    /// A value that is the same in every row.
    template <typename T>
    TypedOperand constant(T value, ColumnType type) {
        Block& block = code.constants.emplace_back();
        std::fill_n(reinterpret_cast<T*>(block.bytes), blockRows, value);
        code.constantAt.push_back(&block);
        return {{Operand::In::Constant, code.constantAt.size() - 1}, type, false, 0, 0};
    }
    TypedOperand text(const std::string& value);
    TypedOperand column(std::size_t position, const ColumnInfo& info);

    /// Where one of the values is a list so is the result: a kernel then takes lists value by value. Lists of other
    /// columns are checked for equal lengths first, and a single value of a row is repeated for its list.
    TypedOperand emit(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type, std::size_t place);
    /// One value for each row of a list, by a kernel that looks at the offsets.
    TypedOperand emitReduction(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type,
                               std::size_t place);

    /// Takes the last step back where it made the value by this kernel, row by row.
    /// @return what the step took; nothing where another step made the value.
    std::optional<std::vector<TypedOperand>> popIfProducedBy(const TypedOperand& value, Kernel kernel);

    Code finish(const TypedOperand& whole) &&;

private:
    TypedOperand emitStep(Step step, const std::vector<TypedOperand>& values, ColumnType type);
    TypedOperand spread(const TypedOperand& value, std::size_t shape, std::size_t place);
    void demandEqualLengths(std::size_t shape, std::size_t other, std::size_t place);
    static std::size_t taken(std::vector<std::size_t>& free, std::size_t& count);

    std::vector<std::size_t> freeBuffers;
    std::vector<std::size_t> freeLists;
    std::vector<TypedOperand> lastValues;  ///< Of the last step.
    std::set<std::pair<std::size_t, std::size_t>> equalShapes;
    Code code;
};

}  // namespace velmorak::expression
