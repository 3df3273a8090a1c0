#pragma once

#include "expression/Program.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::expression {

/// A compiled expression with what its messages need.
struct Source {
    std::string text;
    Code code;
    std::vector<ColumnInfo> columns;
    std::uint64_t maxCombinations = 0;  ///< In a chunk.
};

/// One evaluation: the columns of a chunk and the buffers of a thread.
class Evaluation {
public:
    Evaluation(const Source& source, const Chunk& chunk);

    ColumnPtr run();

private:
    void prepare(Column& column) const;

    /// @return the offsets of the rows from this one on.
    const std::uint64_t* offsetsAt(const Shape& shape, std::size_t row) const;

    /// @return the values of the block that begins at the row.
    const void* valuesAt(const Operand& operand, std::size_t row) const;

    void execute(const Step& step, std::size_t begin, std::size_t rows);
    void executeOnRows(const Step& step, std::size_t begin, std::size_t rows);

    std::byte* listFor(const Step& step, std::size_t values);

    /// Processes lists in pieces of a block's length, because constants are no longer than that.
    void executeOnLists(const Step& step, std::size_t begin, std::size_t rows);
    void executeOnCombinations(const Step& step, std::size_t begin, std::size_t rows);
    const std::uint64_t* evenOffsets(std::size_t width, std::size_t combinations);
    void executeOnWholeLists(const Step& step, std::size_t begin, std::size_t rows);

    void checkLengths(const Step& step, std::size_t begin, std::size_t rows) const;
    std::string nameOfShape(const Shape& shape) const;

    void call(const Step& step, KernelArgs args, std::size_t begin);

    void append(Column& column, std::size_t begin, std::size_t rows) const;
    /// @return the number of values in the lists.
    std::size_t appendOffsets(Column& column, std::size_t begin, std::size_t rows) const;

    const Source& source;
    const Code& code;
    const Chunk& chunk;
    std::unique_ptr<Block[]> buffers;
    std::vector<std::vector<std::byte>> lists;
    std::vector<std::vector<std::uint64_t>> madeOffsets;  ///< Of the current block.
    std::vector<std::uint64_t> offsetsOfPairs;            ///< 0, 2, 4, ...
    std::vector<std::uint64_t> offsetsOfTriples;
    std::uint64_t combinationsLeft;
    MadeTexts madeTexts;  ///< Of the current block.
};

}  // namespace velmorak::expression
