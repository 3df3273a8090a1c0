#pragma once

#include <velmorak/Expression.h>
#include <velmorak/NamedNumbers.h>

#include <compare>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

/// Keys by which rows are sorted, told apart, or matched.
namespace velmorak {

/// One line of a list of keys: an expression, or "expression descending".
struct KeyOrder {
    std::string expression;
    bool isDescending = false;
};

/// Parses keys, one a line or separated by semicolons; empty ones are skipped. The last word of a key may be ascending
/// or descending.
std::vector<KeyOrder> keyOrdersIn(const std::string& text);

/// @return the reason why the text cannot be a list of keys, or empty.
std::string keyOrdersRefusal(const std::string& text);

/// The same for NamedNumbers: one text for each key. @param input that holds the list.
std::vector<NamedNumbers::Text> keyTexts(const std::string& input, const std::string& list);

/// The keys of the rows of one chunk: bytes whose order, byte by byte, is the order of the rows.
class RowKeys {
public:
    std::size_t rows() const { return prefixes.size(); }
    /// The first eight bytes as a number: the smaller comes first. Keys that differ there need no further look.
    std::uint64_t prefix(std::size_t row) const { return prefixes[row]; }
    const std::vector<std::uint64_t>& allPrefixes() const { return prefixes; }
    /// Whether the prefix is the whole key, of all chunks with the same keys.
    bool isShort() const { return ends.empty(); }
    /// What follows the first eight bytes; empty if isShort.
    std::string_view rest(std::size_t row) const {
        return isShort() ? std::string_view() : std::string_view(bytes).substr(ends[row], ends[row + 1] - ends[row]);
    }
    /// The whole key, for tables of keys. Equal keys have equal bytes.
    std::string whole(std::size_t row) const;
    /// Number of rows in which some part of the key is missing: NaN or an empty text.
    std::size_t missing() const { return rowsWithoutKey; }
    std::size_t bytesInMemory() const {
        return prefixes.size() * sizeof(std::uint64_t) + ends.size() * sizeof(std::uint64_t) + bytes.size();
    }
    /// @return the same keys in another order. @param order has each row once.
    RowKeys inOrder(const std::vector<std::uint32_t>& order) const;

    static std::strong_ordering compare(const RowKeys& one, std::size_t row, const RowKeys& other,
                                        std::size_t otherRow) {
        if (const auto order = one.prefixes[row] <=> other.prefixes[otherRow]; std::is_neq(order) || one.isShort()) {
            return order;
        }
        return one.rest(row) <=> other.rest(otherRow);
    }

private:
    friend class KeyMaker;

    std::vector<std::uint64_t> prefixes;
    std::string bytes;                ///< Of all rows, without the prefixes.
    std::vector<std::uint64_t> ends;  ///< In bytes, rows + 1 of them; empty if isShort.
    std::size_t rowsWithoutKey = 0;
};

/// Computes keys. Numbers are ordered by value, -0 and 0 being equal; booleans false before true; texts by their bytes,
/// which is the order of Unicode. Missing values, NaN and empty texts, come last in either direction; all NaN are
/// equal. Threads: keysOf may be called by several threads at once.
class KeyMaker {
public:
    /// @param input of the list of keys, for messages.
    /// @throws Failure if an expression is invalid or gives lists.
    KeyMaker(const std::string& input, const std::vector<KeyOrder>& orders, const Schema& schema,
             const std::map<std::string, double>& numbers);

    RowKeys keysOf(const Chunk& chunk) const;
    /// Sets the entries of the columns that are used to true. @param needed by column of the schema.
    void markColumns(std::vector<bool>& needed) const;

private:
    struct KeyPart {
        Expression expression;
        bool isDescending = false;
    };

    void takeBytes(const std::vector<ColumnPtr>& columns, std::size_t rows, RowKeys& keys) const;

    std::vector<KeyPart> parts;
};

}  // namespace velmorak
