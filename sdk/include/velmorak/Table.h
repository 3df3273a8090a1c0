#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Tables flow on wires as a stream of chunks: a run of rows, stored column by column.
namespace velmorak {

/// Rows in each chunk that a source yields, but for its last one, which may be shorter. Results depend on this length
/// and never on the number of threads, so it is the same everywhere.
inline constexpr std::size_t chunkRows = 32768;

enum class ColumnType { Real, Integer, Boolean, Text };

/// @return "real", "integer", "boolean" or "text".
std::string_view nameOf(ColumnType type);

/// What is known of a column before any row is read.
struct ColumnInfo {
    std::string name;
    ColumnType type = ColumnType::Real;
    bool isList = false;    ///< Each row holds any number of values (nested rows).
    std::string unit = {};  ///< Empty when unknown.

    bool operator==(const ColumnInfo&) const = default;
};

/// The columns of a table in order. Names are unique.
class Schema {
public:
    Schema() = default;
    /// @throws std::invalid_argument if two columns share a name.
    explicit Schema(std::vector<ColumnInfo> columns);

    const std::vector<ColumnInfo>& columns() const { return all; }
    std::size_t size() const { return all.size(); }
    const ColumnInfo& operator[](std::size_t position) const { return all[position]; }
    std::optional<std::size_t> find(std::string_view name) const;
    /// @throws std::invalid_argument if the name is taken.
    void add(ColumnInfo column);

    bool operator==(const Schema& other) const { return all == other.all; }

private:
    std::size_t slotOf(std::string_view name) const;
    void growIndex();

    std::vector<ColumnInfo> all;
    /// A table by the hash of the names, half of it free: 1 + the position of a column, or 0. Empty for few columns.
    std::vector<std::uint32_t> slots;
};

/// The values of one column in one chunk. Booleans are bytes of 0 and 1. A list column holds the values of all rows
/// one after the other, and in offsets rows + 1 positions: row i has values [offsets[i], offsets[i + 1]).
struct Column {
    using Reals = std::vector<double>;
    using Integers = std::vector<std::int64_t>;
    using Booleans = std::vector<std::uint8_t>;
    using Texts = std::vector<std::string>;

    std::variant<Reals, Integers, Booleans, Texts> values;
    std::vector<std::uint64_t> offsets;  ///< Empty for a column that is not a list.

    ColumnType type() const { return static_cast<ColumnType>(values.index()); }
    bool isList() const { return !offsets.empty(); }
    std::size_t valueCount() const;

    const Reals& reals() const { return std::get<Reals>(values); }
    const Integers& integers() const { return std::get<Integers>(values); }
    const Booleans& booleans() const { return std::get<Booleans>(values); }
    const Texts& texts() const { return std::get<Texts>(values); }
};

/// Columns are shared between chunks, never changed after they are made.
using ColumnPtr = std::shared_ptr<const Column>;

/// A run of rows. A row-wise kind keeps number and firstRow of the chunk that it was given, also when it drops rows.
struct Chunk {
    std::uint64_t number = 0;        ///< 0, 1, 2, ... in the order of the source.
    std::uint64_t firstRow = 0;      ///< Row of the source that the chunk begins with, for messages; counted from 0.
    std::size_t rows = 0;            ///< Rows that are left in the chunk.
    std::vector<ColumnPtr> columns;  ///< As in the table's schema.
    /// Rows of this table in the chunks before; set only for an operation that counts rows.
    std::uint64_t rowsBefore = 0;
};

/// @return the column with only those rows for which keep is not 0. keep has a byte for each row.
ColumnPtr keepRows(const Column& column, const std::vector<std::uint8_t>& keep);

/// @return a copy as reals: integers and booleans are converted, a text is NaN; the same pointer if they are reals.
ColumnPtr asReals(const ColumnPtr& column);

}  // namespace velmorak
