#pragma once

#include <velmorak/Table.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// A formula over the columns of a table, checked against their types before any row is read. docs/expressions.md
/// describes the language.
/// Threads: evaluate may be called by several threads at once.
class Expression {
public:
    /// @param numbers named constants that stand beside the columns; a column of the same name hides them.
    /// @throws Failure with the expression and a caret under the place.
    Expression(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers = {});
    Expression(Expression&&) noexcept;
    Expression& operator=(Expression&&) noexcept;
    ~Expression();

    ColumnType type() const;
    bool isList() const;
    /// Positions in the schema of the columns that the expression reads, ascending.
    const std::vector<std::size_t>& usedColumns() const;

    /// @return one value for each row (a list for each where isList()). Every row is computed by the same instructions
    ///         in whatever place of a chunk it stands.
    ColumnPtr evaluate(const Chunk& chunk) const;

private:
    struct Program;
    std::unique_ptr<Program> program;
};

/// Names that stand in the expression as columns or numbers, each once, in order of appearance.
/// @throws Failure when the text is no expression.
std::vector<std::string> namesIn(std::string_view text);

/// @return an empty text, or the mistake in the expression. An empty expression is no mistake yet.
std::string expressionRefusal(std::string_view text);

}  // namespace velmorak
