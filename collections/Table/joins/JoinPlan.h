#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Kind.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// A key of both tables: "run", or "run = number" where the second table calls it otherwise.
struct JoinKeyText {
    std::string first;
    std::string second;
};

/// Parses keys, one a line or separated by semicolons. Only a single equals sign outside of quotes and brackets divides
/// the expressions.
std::vector<JoinKeyText> joinKeysIn(const std::string& text);

/// Which rows of two tables belong together, compiled for their columns.
class JoinPlan {
public:
    enum class Rows { Left, Inner, Anti };

    /// Reads all inputs of the kind but the tables.
    /// @throws Failure if they do not suit the schemas.
    JoinPlan(const Arguments& arguments, const Schema& first, const Schema& second);

    /// Expressions of one number or text in each table.
    struct Key {
        Expression first;
        Expression second;
        bool isReal = false;  ///< Compared as real numbers, because one of them is.
    };
    struct Range {
        Expression value;  ///< In the first table.
        Expression from;   ///< In the second, as is to.
        std::optional<Expression> to;
        bool isReal = false;
    };

    Rows rows() const { return which; }
    const std::vector<Key>& keys() const { return all; }
    const std::optional<Range>& range() const { return interval; }
    /// Columns of the second table that are added, in the order of the result.
    const std::vector<std::size_t>& added() const { return columns; }
    /// An integer or truth value becomes a real, because it may be missing.
    bool isMadeReal(std::size_t addedColumn) const { return areMadeReal[addedColumn]; }
    bool countsMatches() const { return hasCount; }
    const Schema& schema() const { return result; }

    /// Columns that the plan itself reads.
    void markFirst(std::vector<bool>& needed) const;
    void markSecond(std::vector<bool>& needed) const;

private:
    void addKeys(const std::string& text, const Schema& first, const Schema& second);
    void addRange(const Arguments& arguments, const Schema& first, const Schema& second);
    void chooseColumns(const Arguments& arguments, const Schema& second);
    void addColumns(const std::string& prefix, const Schema& second);

    Rows which = Rows::Left;
    std::vector<Key> all;
    std::vector<std::string> secondKeys;  ///< Columns of the second table that are keys of the same name in the first.
    std::optional<Range> interval;
    std::vector<std::size_t> columns;
    std::vector<bool> areMadeReal;
    bool hasCount = false;
    Schema result;
};

}  // namespace velmorak
