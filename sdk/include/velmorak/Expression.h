#pragma once

#include <velmorak/Table.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// A formula over the columns of a table, compiled and type-checked before any row is read. docs/expressions.md
/// describes the language.
/// Threads: evaluate may be called by several threads at once.
class Expression {
public:
    /// @param numbers named constants beside the columns; a column of the same name hides the constant.
    /// @throws Failure whose message shows the expression with a caret under the mistake.
    Expression(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers = {});
    Expression(Expression&&) noexcept;
    Expression& operator=(Expression&&) noexcept;
    ~Expression();

    ColumnType type() const;
    bool isList() const;
    /// Schema positions of the columns that the expression reads, ascending.
    const std::vector<std::size_t>& usedColumns() const;
    /// Sets the entries of these columns to true. @param needed by column of the schema.
    void markColumns(std::vector<bool>& needed) const {
        for (const std::size_t position : usedColumns()) {
            needed[position] = true;
        }
    }

    /// @return one value per row (one list per row if isList()). The bits of a value do not depend on the position of
    ///         its row in the chunk.
    ColumnPtr evaluate(const Chunk& chunk) const;

    static constexpr std::uint64_t defaultMaxCombinations = 10'000'000;
    /// Limits the combinations of list values in a chunk, for the expressions that are compiled from now on. A program
    /// calls it once, before it compiles any.
    static void limitCombinations(std::uint64_t most);

private:
    struct Program;
    std::unique_ptr<Program> program;
};

/// @return the names that the expression uses as columns or numbers, each once, in order of appearance.
/// @throws Failure if the text is not an expression.
std::vector<std::string> namesIn(std::string_view text);

/// Checks the syntax of an expression that a user types.
/// @return the error message; empty if there is no mistake, and for an empty expression.
std::string expressionRefusal(std::string_view text);

}  // namespace velmorak
