#pragma once

#include <velmorak/ChunkSize.h>

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>

namespace velmorak {

/// Checks the chunks of one table before anyone reads them. A chunk that is not as the kit says ends in
/// std::logic_error, with a sentence that names the column.
/// Threads: check may be called by several threads at once.
class ChunkCheck {
public:
    explicit ChunkCheck(const Schema& promised)
        : promised(promised), maxRows(rowsInChunk(promised)), rowBytes(bytesInRow(promised)) {}

    const Schema& schema() const { return promised; }
    /// A chunk of a source, before its columns need to be there, with those before it: has it rows, and not too many;
    /// was the one before it allowed to be short? Threads: called for one chunk after the other.
    void checkRows(const Chunk& chunk);
    /// The columns are there, and are what the schema says.
    void check(const Chunk& chunk) const;

private:
    void checkColumn(const ColumnInfo& column, const ColumnPtr& values, std::size_t rows) const;
    void checkWidth(const Chunk& chunk) const;

    Schema promised;
    std::size_t maxRows;
    std::size_t rowBytes;       ///< Of a row without its texts and lists.
    std::size_t shortRows = 0;  ///< Of the chunk before, where it was too short not to be the last.
};

/// @param what was asked for.
/// @throws std::logic_error when a kind made nothing.
template <typename OperatorOutput>
std::unique_ptr<OperatorOutput> mustBe(std::unique_ptr<OperatorOutput> made, const char* what) {
    if (!made) {
        throw std::logic_error("the kind gives no " + std::string(what));
    }
    return made;
}

}  // namespace velmorak
