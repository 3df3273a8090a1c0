#pragma once

#include "expression/Program.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velmorak::expression {

/// A value computed by the steps emitted so far.
struct TypedOperand {
    Operand operand;
    ColumnType type = ColumnType::Real;
    bool isList = false;
    Shape shape = {};                       ///< Of a list.
    std::size_t elementBytes = 0;           ///< Distance between values; 0 for a constant.
    std::size_t width = 1;                  ///< Values in each element of a list; more than one for combinations.
    std::optional<Shape> positionsIn = {};  ///< For positions that are all within the lists of this shape.
    bool areOfTwoLists = false;             ///< Positions in two lists in turn, the second of this shape:
    std::optional<Shape> positionsInSecond = {};
};

/// What a list kernel makes.
struct ListOperation {
    ListKernel kernel = nullptr;
    std::optional<Shape> shape = {};  ///< No value: one value for each row, unless the kernel makes the shape.
    std::string madeShape = {};       ///< What makes the shape; empty unless the kernel does.
    std::size_t width = 1;            ///< Of the elements made.
    std::size_t widthRead = 1;        ///< Of the elements of the first argument.
    bool makesCombinations = false;
};

/// Whether the buffer of a value is used again after its only use, or kept so that a step may use any earlier value
/// and a reverse pass finds all of them.
enum class Buffers { Reused, Kept };

/// Most rows at once of a program that keeps its buffers; its constants are repeated so often only.
inline constexpr std::size_t keptRows = 256;

/// A kernel with what derivatives and printing need to know of it.
struct Operation {
    Kernel kernel = nullptr;
    const Function* function = nullptr;
    ReverseKernel reverse = nullptr;
};

/// Emits the steps of an expression and allocates their buffers.
class Emitter {
public:
    explicit Emitter(Buffers buffers = Buffers::Reused)
        : buffers(buffers), constantRows(buffers == Buffers::Kept ? keptRows : blockRows) {}

    /// A value that is the same in all rows.
    template <typename T>
    TypedOperand constant(T value, ColumnType type) {
        Block& block = code.constants.emplace_back();
        std::fill_n(reinterpret_cast<T*>(block.bytes), constantRows, value);
        code.constantAt.push_back(&block);
        return {{Operand::In::Constant, code.constantAt.size() - 1}, type};
    }
    TypedOperand text(const std::string& value);
    /// @throws std::invalid_argument if the regular expression is invalid.
    TypedOperand pattern(const std::string& regularExpression);
    TypedOperand column(std::size_t position, const ColumnInfo& info);

    /// Emits an element-wise step. If a value is a list, so is the result: lists of different columns are checked for
    /// equal lengths first, and single values are broadcast. A step of constants is computed at once.
    TypedOperand emit(const Operation& operation, const std::vector<TypedOperand>& values, ColumnType type,
                      std::size_t offset);
    /// Emits a step from a list to one value per row, or from combinations to one value for each.
    TypedOperand emitReduction(Kernel kernel, const std::vector<TypedOperand>& values, ColumnType type,
                               std::size_t offset);
    TypedOperand emitLists(const ListOperation& operation, const std::vector<TypedOperand>& values, ColumnType type,
                           std::size_t offset);
    /// Emits a check that lists of two shapes have equal lengths, unless it is known.
    void emitLengthCheck(const Shape& shape, const Shape& other, std::size_t offset);

    /// Each value is used once, unless more uses are announced.
    void announceUses(const TypedOperand& value, std::size_t more);
    /// @return a value for one of several uses: a constant is copied, because folding overwrites it.
    TypedOperand forOneUse(const TypedOperand& value);
    /// Ends a use of a value that no step reads.
    void release(const TypedOperand& value);

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
    /// @return a value with one element for each of the list model.
    TypedOperand asLong(const TypedOperand& value, const TypedOperand& model, std::size_t offset);
    TypedOperand repeated(const TypedOperand& value, IterationDomain domain, const Shape& shape, std::size_t width,
                          std::size_t offset);
    static std::size_t allocate(std::vector<std::size_t>& free, std::size_t& count);

    Buffers buffers;
    std::size_t constantRows;
    std::vector<std::size_t> freeBuffers;
    std::vector<std::size_t> freeLists;
    std::vector<TypedOperand> lastValues;  ///< Arguments of the last step.
    bool areLastValuesFree = false;        ///< Nothing else uses the arguments of the last step.
    std::map<std::pair<Operand::In, std::size_t>, std::size_t> moreUses;
    std::set<std::pair<Shape, Shape>> equalLengths;
    Code code;
};

}  // namespace velmorak::expression
