#pragma once

#include "parquet/Leaves.h"
#include "parquet/PageHeader.h"

#include <memory>

namespace velmorak::parquet {

/// A page in a file.
struct PageSpot {
    std::uint64_t position = 0;  ///< Of the content, after the header.
    PageHeader header;
    std::uint64_t firstRow = 0;  ///< In the row group.
    std::uint64_t rows = 0;      ///< That begin in the page.
    /// The page begins with further elements of the list in the row before firstRow.
    bool continues = false;
};

/// The rows that begin in a page. A list column has elements before offsets[0] where the page continues a row.
struct DecodedPage {
    Column column;            ///< Empty if there are stored values.
    columnar::Block block{};  ///< Holds the stored values.
    Bytes stored{};           ///< Reals or integers of a column without lists, as they are in memory.

    bool isStored() const { return !stored.empty(); }

    std::size_t bytes() const;
};

/// How the lists in a page are nested: levels of each value, also of those that are missing.
struct PageLevels {
    std::vector<std::uint8_t> repetitions{};
    std::vector<std::uint8_t> definitions{};
    std::vector<std::uint64_t> rowStarts{};  ///< Positions of the levels with which rows begin, and their number.

    std::size_t bytes() const;
};

/// Reads pages of one column in one row group.
class PageReader {
public:
    /// @param leaf outlives this, as the file does.
    PageReader(const columnar::FileBytes& file, const Leaf& leaf, Codec codec) : file(file), leaf(leaf), codec(codec) {}

    /// @throws Failure if the page is damaged.
    Column dictionary(const PageSpot& spot, ColumnType type) const;
    /// @param dictionary null if the column has none.
    DecodedPage page(const PageSpot& spot, const Column* dictionary, ColumnType type) const;
    /// Of a column with lists.
    PageLevels levels(const PageSpot& spot) const;
    /// Sets rows and continues of a page, for which its levels must be decoded unless its header tells them.
    void countRows(PageSpot& spot) const;

private:
    struct Content;
    enum class Needed { Levels, All };

    Content content(const PageSpot& spot, Needed needed = Needed::All) const;
    Content contentV2(const PageSpot& spot, columnar::Block&& packed, Needed needed) const;
    columnar::Block raw(const PageSpot& spot) const;
    static std::vector<std::uint8_t> takeLevels(Bytes& bytes, Encoding encoding, unsigned maximum, std::size_t count);
    Column values(const Content& content, const PageHeader& header, std::size_t count, const Column* dictionary,
                  ColumnType type) const;
    bool isStoredAsIs(const Content& content, const PageHeader& header, ColumnType type) const;
    DecodedPage list(const Content& content, const PageSpot& spot, const Column* dictionary, ColumnType type) const;

    const columnar::FileBytes& file;
    const Leaf& leaf;
    Codec codec;
};

}  // namespace velmorak::parquet
