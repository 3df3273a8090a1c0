#pragma once

#include <velmorak/Table.h>

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// How an operation that drops rows lets the reader of a file leave out what these rows hold.
namespace velmorak {

/// What a number in a column must fulfil for its row to be kept, such as energy > 5. NaN fulfils none.
struct ColumnBound {
    enum class Relation { Less, LessEqual, Greater, GreaterEqual, Equal };

    std::size_t column = 0;  ///< Position in the schema.
    Relation relation = Relation::Less;
    double number = 0.0;

    /// @return whether no number from low to high fulfils it. @param low and high are not NaN.
    bool excludes(double low, double high) const;

    bool operator==(const ColumnBound&) const = default;
};

/// The parts "column relation number" of a conjunction. A row that fails one of them fails the whole expression,
/// whatever its other columns hold.
/// @return nothing if the expression uses a list, of which other values might be a mistake.
/// @throws Failure if the text is not an expression.
std::vector<ColumnBound> boundsIn(std::string_view expression, const Schema& columns,
                                  const std::map<std::string, double>& numbers);

/// A second base of a RowOperation that drops rows.
class BoundedOperation {
public:
    virtual ~BoundedOperation() = default;
    /// Every row that fails one of them is dropped. The run passes them to a source that nothing else reads from.
    virtual std::vector<ColumnBound> bounds() const = 0;
};

/// A second base of a TableReader that knows the range of the values in parts of its file.
class BoundedReader {
public:
    virtual ~BoundedReader() = default;
    /// Called after TableReader::selectColumns and before the first TableReader::next, if at all. Rows that fail a
    /// bound still come, in the same chunks, but with any values that fail it too, so that they need not be read.
    /// @param bounds columns are positions in TableReader::schema().
    virtual void leaveOutBeyond(const std::vector<ColumnBound>& bounds) = 0;
};

}  // namespace velmorak
