#include "expression/Evaluation.h"

#include <algorithm>

namespace velmorak::expression {

namespace {

/// Rows per block where combinations are made, few enough that these stay in the processor's cache.
constexpr std::size_t rowsWithCombinations = 64;

const void* columnValues(const Column& column, std::size_t position) {
    return std::visit([&](const auto& values) { return static_cast<const void*>(values.data() + position); },
                      column.values);
}

template <typename Values, typename From>
void appendTo(Column& column, const void* from, std::size_t count) {
    const auto* values = static_cast<const From*>(from);
    auto& target = std::get<Values>(column.values);
    if constexpr (std::is_pointer_v<From>) {
        for (std::size_t i = 0; i < count; ++i) {
            target.push_back(*values[i]);
        }
    } else {
        target.insert(target.end(), values, values + count);
    }
}

}  // namespace

Evaluation::Evaluation(const Source& source, const Chunk& chunk)
    : source(source),
      code(source.code),
      chunk(chunk),
      buffers(std::make_unique_for_overwrite<Block[]>(code.buffers)),
      lists(code.lists),
      madeOffsets(code.madeShapes.size()),
      combinationsLeft(source.maxCombinations) {}

ColumnPtr Evaluation::run() {
    auto column = std::make_shared<Column>();
    prepare(*column);
    const std::size_t atOnce = code.makesCombinations ? rowsWithCombinations : blockRows;
    for (std::size_t begin = 0; begin < chunk.rows; begin += atOnce) {
        const std::size_t rows = std::min(atOnce, chunk.rows - begin);
        for (const Step& step : code.steps) {
            execute(step, begin, rows);
        }
        append(*column, begin, rows);
        madeTexts.clear();
    }
    return column;
}

void Evaluation::prepare(Column& column) const {
    switch (code.type) {
        case ColumnType::Real:
            column.values.emplace<Column::Reals>().reserve(chunk.rows);
            break;
        case ColumnType::Integer:
            column.values.emplace<Column::Integers>().reserve(chunk.rows);
            break;
        case ColumnType::Boolean:
            column.values.emplace<Column::Booleans>().reserve(chunk.rows);
            break;
        case ColumnType::Text:
            column.values.emplace<Column::Texts>().reserve(chunk.rows);
            break;
    }
    if (code.isList) {
        column.offsets.reserve(chunk.rows + 1);
        column.offsets.push_back(0);
    }
}

const std::uint64_t* Evaluation::offsetsAt(const Shape& shape, std::size_t row) const {
    return shape.isMade ? madeOffsets[shape.position].data() : chunk.columns[shape.position]->offsets.data() + row;
}

const void* Evaluation::valuesAt(const Operand& operand, std::size_t row) const {
    switch (operand.in) {
        case Operand::In::Buffer:
            return buffers[operand.position].bytes;
        case Operand::In::List:
            return lists[operand.position].data();
        case Operand::In::Constant:
            return code.constantAt[operand.position]->bytes;
        case Operand::In::Column: {
            const Column& column = *chunk.columns[operand.position];
            return columnValues(column, column.isList() ? column.offsets[row] : row);
        }
        case Operand::In::Nothing:
            break;
    }
    return nullptr;
}

void Evaluation::execute(const Step& step, std::size_t begin, std::size_t rows) {
    switch (step.domain) {
        case IterationDomain::Rows:
        case IterationDomain::RowsOfLists:
        case IterationDomain::Broadcast:
            return executeOnRows(step, begin, rows);
        case IterationDomain::Lists:
            return executeOnLists(step, begin, rows);
        case IterationDomain::Combinations:
        case IterationDomain::Repeat:
            return executeOnCombinations(step, begin, rows);
        case IterationDomain::WholeLists:
            return executeOnWholeLists(step, begin, rows);
        case IterationDomain::Lengths:
            return checkLengths(step, begin, rows);
    }
}

void Evaluation::executeOnRows(const Step& step, std::size_t begin, std::size_t rows) {
    KernelArgs args;
    args.rows = rows;
    if (step.domain != IterationDomain::Rows) {
        args.offsets = offsetsAt(step.shape, begin);
    }
    args.out = step.domain == IterationDomain::Broadcast ? listFor(step, args.offsets[rows] - args.offsets[0])
                                                         : buffers[step.out.position].bytes;
    for (std::size_t i = 0; i < 3; ++i) {
        args.in[i] = valuesAt(step.in[i], begin);
    }
    call(step, args, begin);
}

std::byte* Evaluation::listFor(const Step& step, std::size_t values) {
    auto& list = lists[step.out.position];
    if (list.size() < values * step.outBytes) {
        list.resize(values * step.outBytes);
    }
    return list.data();
}

void Evaluation::executeOnLists(const Step& step, std::size_t begin, std::size_t rows) {
    const std::uint64_t* offsets = offsetsAt(step.shape, begin);
    const std::size_t values = (offsets[rows] - offsets[0]) * step.width;
    std::byte* out = listFor(step, values);
    for (std::size_t first = 0; first < values; first += blockRows) {
        KernelArgs args;
        args.rows = std::min(blockRows, values - first);
        args.out = out + first * step.outBytes;
        for (std::size_t i = 0; i < 3; ++i) {
            if (step.in[i].in != Operand::In::Nothing) {
                args.in[i] = static_cast<const std::byte*>(valuesAt(step.in[i], begin)) + first * step.inBytes[i];
            }
        }
        call(step, args, begin);
    }
}

void Evaluation::executeOnCombinations(const Step& step, std::size_t begin, std::size_t rows) {
    const std::uint64_t* offsets = offsetsAt(step.shape, begin);
    KernelArgs args;
    args.rows = offsets[rows] - offsets[0];
    const bool isRepeat = step.domain == IterationDomain::Repeat;
    args.out = listFor(step, isRepeat ? args.rows * step.width : args.rows);
    args.offsets = evenOffsets(step.width, args.rows);
    args.in[0] = valuesAt(step.in[0], begin);
    call(step, args, begin);
}

const std::uint64_t* Evaluation::evenOffsets(std::size_t width, std::size_t combinations) {
    std::vector<std::uint64_t>& known = width == 2 ? offsetsOfPairs : offsetsOfTriples;
    while (known.size() <= combinations) {
        known.push_back(known.size() * width);
    }
    return known.data();
}

void Evaluation::executeOnWholeLists(const Step& step, std::size_t begin, std::size_t rows) {
    ListArgs args;
    args.rows = rows;
    args.width = step.width;
    args.secondWidth = step.secondWidth;
    for (std::size_t i = 0; i < 4; ++i) {
        args.in[i].values = valuesAt(step.in[i], begin);
        args.in[i].offsets = step.inShape[i] ? offsetsAt(*step.inShape[i], begin) : nullptr;
    }
    args.offsets = step.makesShape ? &madeOffsets[step.shape.position] : nullptr;
    args.out = &lists[step.out.position];
    args.combinationsLeft = &combinationsLeft;
    if (!step.listKernel(args)) {
        throwAt(source.text, step.offset,
                "there are more than " + std::to_string(source.maxCombinations) +
                    " combinations in a chunk, which the rows from " + std::to_string(chunk.firstRow + begin) +
                    " on exceed; shorten the lists by a condition, or set VELMORAK_COMBINATIONS to a higher number");
    }
}

void Evaluation::checkLengths(const Step& step, std::size_t begin, std::size_t rows) const {
    const std::uint64_t* offsets = offsetsAt(step.shape, begin);
    const std::uint64_t* others = offsetsAt(step.otherShape, begin);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint64_t length = offsets[row + 1] - offsets[row];
        const std::uint64_t other = others[row + 1] - others[row];
        if (length != other) {
            throwAt(source.text, step.offset,
                    "the lists " + nameOfShape(step.shape) + " and " + nameOfShape(step.otherShape) + " have " +
                        std::to_string(length) + " and " + std::to_string(other) + " values in row " +
                        std::to_string(chunk.firstRow + begin + row) + "; only lists of equal length can be combined");
        }
    }
}

std::string Evaluation::nameOfShape(const Shape& shape) const {
    return shape.isMade ? code.madeShapes[shape.position] : source.columns[shape.position].name;
}

void Evaluation::call(const Step& step, KernelArgs args, std::size_t begin) {
    args.texts = &madeTexts;
    if (!step.kernel(args)) {
        throwAt(source.text, step.offset,
                "no integer can hold a result in the rows from " + std::to_string(chunk.firstRow + begin) +
                    " on: it is too large, or a division by 0");
    }
}

void Evaluation::append(Column& column, std::size_t begin, std::size_t rows) const {
    const std::size_t count = code.isList ? appendOffsets(column, begin, rows) : rows;
    const void* from = valuesAt(code.result, begin);
    switch (code.type) {
        case ColumnType::Real:
            return appendTo<Column::Reals, double>(column, from, count);
        case ColumnType::Integer:
            return appendTo<Column::Integers, std::int64_t>(column, from, count);
        case ColumnType::Boolean:
            return appendTo<Column::Booleans, std::uint8_t>(column, from, count);
        case ColumnType::Text:
            return appendTo<Column::Texts, const std::string*>(column, from, count);
    }
}

std::size_t Evaluation::appendOffsets(Column& column, std::size_t begin, std::size_t rows) const {
    const std::uint64_t* const offsets = offsetsAt(code.resultShape, begin);
    const std::uint64_t before = column.offsets.back();
    for (std::size_t row = 1; row <= rows; ++row) {
        column.offsets.push_back(before + offsets[row] - offsets[0]);
    }
    return offsets[rows] - offsets[0];
}

}  // namespace velmorak::expression
