#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

/// A table travels along a wire as a stream of chunks: consecutive rows, stored column by column.
namespace velmorak {

/// Rows in each chunk of a source; the last one may be shorter. Results may depend on this number (rounding of sums),
/// but never on the number of threads, so it is a constant.
inline constexpr std::size_t chunkRows = 32768;

enum class ColumnType { Real, Integer, Boolean, Text };

/// @return "real", "integer", "boolean" or "text".
std::string_view nameOf(ColumnType type);

/// Describes a column before any row is read.
struct ColumnInfo {
    std::string name;
    ColumnType type = ColumnType::Real;
    bool isList = false;    ///< Each row holds a list of values (nested rows).
    std::string unit = {};  ///< Empty when unknown.

    bool operator==(const ColumnInfo&) const = default;
};

/// The columns of a table, in order. Names are unique.
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
    /// Open-addressing hash table of the names, at most half full: 1 + position of a column, or 0 if free. Not used for
    /// few columns.
    std::vector<std::uint32_t> slots;
};

/// The values of one column in one chunk. Booleans are bytes of 0 and 1. A list column holds the concatenated values of
/// all rows; offsets has rows + 1 entries, and row i has values [offsets[i], offsets[i + 1]).
struct Column {
    using Reals = std::vector<double>;
    using Integers = std::vector<std::int64_t>;
    using Booleans = std::vector<std::uint8_t>;
    using Texts = std::vector<std::string>;

    std::variant<Reals, Integers, Booleans, Texts> values;
    std::vector<std::uint64_t> offsets;  ///< Empty unless the column is a list.

    ColumnType type() const { return static_cast<ColumnType>(values.index()); }
    bool isList() const { return !offsets.empty(); }
    std::size_t valueCount() const;

    const Reals& reals() const { return std::get<Reals>(values); }
    const Integers& integers() const { return std::get<Integers>(values); }
    const Booleans& booleans() const { return std::get<Booleans>(values); }
    const Texts& texts() const { return std::get<Texts>(values); }
};

/// Columns are immutable and shared between chunks.
using ColumnPtr = std::shared_ptr<const Column>;

/// @param values numbers of any type, truth values, or texts.
/// @return a column of real numbers, integers, booleans or texts.
template <typename T>
ColumnPtr columnOf(const std::vector<T>& values) {
    static_assert(std::is_arithmetic_v<T> || std::is_same_v<T, std::string>,
                  "a column has numbers, truth values or texts (std::string)");
    using Values = std::conditional_t<
        std::is_same_v<T, bool>, Column::Booleans,
        std::conditional_t<std::is_integral_v<T>, Column::Integers,
                           std::conditional_t<std::is_floating_point_v<T>, Column::Reals, Column::Texts>>>;
    Values converted;
    converted.reserve(values.size());
    for (const auto& value : values) {
        converted.push_back(static_cast<typename Values::value_type>(value));
    }
    return std::make_shared<const Column>(Column{std::move(converted), {}});
}

/// Consecutive rows of a table. A row-wise kind keeps number and firstRow of its input chunk even if it drops rows.
struct Chunk {
    std::uint64_t number = 0;        ///< 0, 1, 2, ... in the order of the source's rows, from the first of each file.
    std::uint64_t firstRow = 0;      ///< Source row of the chunk's beginning, for messages; counted from 0.
    std::size_t rows = 0;            ///< Rows in the chunk, without dropped ones.
    std::vector<ColumnPtr> columns;  ///< In the order of the schema; null for a column that nobody uses.
    /// Rows of this table in all previous chunks; set only for a RowOperation that countsRows().
    std::uint64_t rowsBefore = 0;
    /// File of a source that reads several (TableReader::fileCount), counted from 0 in the order of its list.
    std::uint64_t file = 0;
    /// For the reader of the chunk alone, which may keep there what its complete needs, and releases it then.
    std::shared_ptr<const void> owner{};
};

/// Filters a column.
/// @param keep one byte per row; rows with 0 are dropped.
ColumnPtr keepRows(const Column& column, const std::vector<std::uint8_t>& keep);

/// Converts to real numbers: integers and booleans by value, texts to NaN.
/// @return the same pointer if the column is real already.
ColumnPtr asReals(const ColumnPtr& column);

}  // namespace velmorak
