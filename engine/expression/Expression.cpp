#include <velmorak/Expression.h>

#include <velmorak/Failure.h>
#include "expression/Program.h"

#include <algorithm>
#include <stdexcept>

namespace velmorak {

namespace {

using expression::Block;
using expression::blockRows;
using expression::Code;
using expression::IterationDomain;
using expression::KernelArgs;
using expression::Operand;
using expression::Step;

/// One evaluation: the columns of a chunk and the buffers of a thread.
class Evaluation {
public:
    Evaluation(const std::string& expressionText, const Code& program, const Chunk& rows);

    ColumnPtr run();

private:
    /// @return the offsets of a column, shifted to begin with 0.
    static std::vector<std::uint64_t> lengthsOf(const Column& list);

    void prepare(Column& column) const;

    static const void* columnValues(const Column& column, std::size_t position);

    const std::uint64_t* offsetsAt(std::size_t listColumn, std::size_t row) const;

    /// @return the values of the block that begins at the row.
    const void* valuesAt(const Operand& operand, std::size_t row) const;

    void execute(const Step& step, std::size_t begin, std::size_t rows);

    std::byte* listFor(const Step& step, std::size_t values);

    /// Processes lists in pieces of a block's length, because constants are no longer than that.
    void executeOnLists(const Step& step, std::size_t begin, std::size_t rows);

    void checkLengths(const Step& step, std::size_t begin, std::size_t rows) const;

    void call(const Step& step, const KernelArgs& args, std::size_t begin) const;

    template <typename Values, typename From>
    static void appendTo(Column& column, const void* from, std::size_t rows) {
        const auto* values = static_cast<const From*>(from);
        auto& target = std::get<Values>(column.values);
        if constexpr (std::is_pointer_v<From>) {
            for (std::size_t row = 0; row < rows; ++row) {
                target.push_back(*values[row]);
            }
        } else {
            target.insert(target.end(), values, values + rows);
        }
    }

    void append(Column& column, std::size_t begin, std::size_t rows) const;

    const std::string& text;
    const Code& code;
    const Chunk& chunk;
    std::unique_ptr<Block[]> buffers;
    std::vector<std::vector<std::byte>> lists;
};

Evaluation::Evaluation(const std::string& expressionText, const Code& program, const Chunk& rows)
    : text(expressionText),
      code(program),
      chunk(rows),
      buffers(std::make_unique_for_overwrite<Block[]>(program.buffers)),
      lists(program.lists) {}

ColumnPtr Evaluation::run() {
    auto column = std::make_shared<Column>();
    prepare(*column);
    if (code.isList) {
        column->offsets = lengthsOf(*chunk.columns[code.resultListColumn]);
    }
    for (std::size_t begin = 0; begin < chunk.rows; begin += blockRows) {
        const std::size_t rows = std::min(blockRows, chunk.rows - begin);
        for (const Step& step : code.steps) {
            execute(step, begin, rows);
        }
        append(*column, begin, rows);
    }
    return column;
}

std::vector<std::uint64_t> Evaluation::lengthsOf(const Column& list) {
    std::vector<std::uint64_t> offsets = list.offsets;
    for (std::uint64_t& offset : offsets) {
        offset -= list.offsets.front();
    }
    return offsets;
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
}

const void* Evaluation::columnValues(const Column& column, std::size_t position) {
    return std::visit([&](const auto& values) { return static_cast<const void*>(values.data() + position); },
                      column.values);
}

const std::uint64_t* Evaluation::offsetsAt(std::size_t listColumn, std::size_t row) const {
    return chunk.columns[listColumn]->offsets.data() + row;
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
    if (step.domain == IterationDomain::Lengths) {
        return checkLengths(step, begin, rows);
    }
    if (step.domain == IterationDomain::Lists) {
        return executeOnLists(step, begin, rows);
    }
    KernelArgs args;
    args.rows = rows;
    if (step.domain != IterationDomain::Rows) {
        args.offsets = offsetsAt(step.listColumn, begin);
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
    const std::uint64_t* offsets = offsetsAt(step.listColumn, begin);
    const std::size_t values = offsets[rows] - offsets[0];
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

void Evaluation::checkLengths(const Step& step, std::size_t begin, std::size_t rows) const {
    const std::uint64_t* offsets = offsetsAt(step.listColumn, begin);
    const std::uint64_t* others = offsetsAt(step.otherListColumn, begin);
    for (std::size_t row = 0; row < rows; ++row) {
        const std::uint64_t length = offsets[row + 1] - offsets[row];
        const std::uint64_t other = others[row + 1] - others[row];
        if (length != other) {
            expression::throwAt(text, step.offset,
                                "the lists have " + std::to_string(length) + " and " + std::to_string(other) +
                                    " values in row " + std::to_string(chunk.firstRow + begin + row) +
                                    "; only lists of equal length can be combined");
        }
    }
}

void Evaluation::call(const Step& step, const KernelArgs& args, std::size_t begin) const {
    if (!step.kernel(args)) {
        expression::throwAt(text, step.offset,
                            "no integer can hold a result in the rows from " + std::to_string(chunk.firstRow + begin) +
                                " on: it is too large, or a division by 0");
    }
}

void Evaluation::append(Column& column, std::size_t begin, std::size_t rows) const {
    if (code.isList) {
        rows = column.offsets[begin + rows] - column.offsets[begin];
    }
    const void* from = valuesAt(code.result, begin);
    switch (code.type) {
        case ColumnType::Real:
            return appendTo<Column::Reals, double>(column, from, rows);
        case ColumnType::Integer:
            return appendTo<Column::Integers, std::int64_t>(column, from, rows);
        case ColumnType::Boolean:
            return appendTo<Column::Booleans, std::uint8_t>(column, from, rows);
        case ColumnType::Text:
            return appendTo<Column::Texts, const std::string*>(column, from, rows);
    }
}

}  // namespace

struct Expression::Program {
    std::string text;
    Code code;
    std::vector<ColumnInfo> columns;
};

Expression::Expression(std::string_view text, const Schema& columns, const std::map<std::string, double>& numbers)
    : program(std::make_unique<Program>()) {
    program->text = text;
    program->code = expression::compile(text, columns, numbers);
    program->columns = columns.columns();
}

Expression::Expression(Expression&&) noexcept = default;
Expression& Expression::operator=(Expression&&) noexcept = default;
Expression::~Expression() = default;

ColumnType Expression::type() const {
    return program->code.type;
}

bool Expression::isList() const {
    return program->code.isList;
}

const std::vector<std::size_t>& Expression::usedColumns() const {
    return program->code.usedColumns;
}

ColumnPtr Expression::evaluate(const Chunk& chunk) const {
    const Code& code = program->code;
    for (const std::size_t position : code.usedColumns) {
        const ColumnInfo& info = program->columns[position];
        if (position >= chunk.columns.size() || !chunk.columns[position] ||
            chunk.columns[position]->type() != info.type || chunk.columns[position]->isList() != info.isList) {
            throw std::logic_error("the chunk is not of the schema that the expression was checked against");
        }
    }
    if (code.result.in == Operand::In::Column) {
        return chunk.columns[code.result.position];
    }
    return Evaluation(program->text, code, chunk).run();
}

std::vector<std::string> namesIn(std::string_view text) {
    std::vector<std::string> names;
    for (const expression::Node& node : expression::parse(text)) {
        const bool isName =
            node.form == expression::Form::Name && (node.isQuoted || !expression::isConstant(node.text));
        if (isName && std::find(names.begin(), names.end(), node.text) == names.end()) {
            names.push_back(node.text);
        }
    }
    return names;
}

std::string expressionRefusal(std::string_view text) {
    if (text.empty()) {
        return {};
    }
    try {
        expression::parse(text);
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

}  // namespace velmorak
