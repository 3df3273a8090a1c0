#pragma once

#include <velmorak/ChunkSize.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// Checks the chunks of one table before other plug-ins read them. A chunk that breaks the contract of the SDK ends in
/// std::logic_error with a message that names the column.
/// Threads: check may be called by several threads at once.
class ChunkCheck {
public:
    /// @param files number of files that the rows come from.
    explicit ChunkCheck(const Schema& promised, std::uint64_t files = 1)
        : promised(promised), rowBytes(bytesInRow(promised)), files(files) {}

    const Schema& schema() const { return promised; }
    /// From now on, a column may be null where nobody needs it. @param isNeeded by column.
    void selectColumns(std::vector<bool> isNeeded) { needed = std::move(isNeeded); }
    /// Frees the columns of a chunk that nobody needs.
    void freeColumns(Chunk& chunk) const;
    /// Checks the file and the number of rows of a source's chunk, whose columns may not exist yet: it has rows, not
    /// too many, and the chunk before it in the file was not too short. Threads: called for one chunk after the other.
    /// @param maxRows rows of a full chunk of this file.
    void checkRows(const Chunk& chunk, std::size_t maxRows);
    /// Checks the columns against the schema.
    void check(const Chunk& chunk) const;

private:
    bool isNeeded(std::size_t column) const { return needed.empty() || needed[column]; }
    void checkFile(const Chunk& chunk);
    void checkColumn(const ColumnInfo& column, const ColumnPtr& values, std::size_t rows) const;
    void checkWidth(const Chunk& chunk) const;

    Schema promised;
    std::vector<bool> needed{};  ///< By column; empty for all.
    std::size_t rowBytes;        ///< In a row, without texts and lists.
    std::uint64_t files;
    std::uint64_t file = 0;     ///< Of the previous chunk.
    std::size_t shortRows = 0;  ///< Rows of the previous chunk if only the last one of the file may be so short.
};

/// @param what names the object in the message.
/// @throws std::logic_error if a kind returned null.
template <typename OperatorOutput>
std::unique_ptr<OperatorOutput> mustBe(std::unique_ptr<OperatorOutput> made, const char* what) {
    if (!made) {
        throw std::logic_error("the kind gives no " + std::string(what));
    }
    return made;
}

}  // namespace velmorak
