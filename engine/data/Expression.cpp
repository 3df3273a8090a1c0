#include "velmorak/Expression.h"

#include "ExpressionProgram.h"
#include "velmorak/Failure.h"
#include "velmorak/Value.h"

#include <algorithm>
#include <stdexcept>

namespace velmorak {

namespace {

using expression::Block;
using expression::blockRows;
using expression::Code;
using expression::Lane;
using expression::Place;
using expression::Step;

/// The columns of one chunk and the buffers of one thread.
class Evaluation {
public:
    Evaluation(const std::string& expressionText, const Code& program, const Chunk& rows)
        : text(expressionText), code(program), chunk(rows), buffers(program.buffers) {}

    ColumnPtr run() {
        auto column = std::make_shared<Column>();
        prepare(*column);
        for (std::size_t begin = 0; begin < chunk.rows; begin += blockRows) {
            const std::size_t rows = std::min(blockRows, chunk.rows - begin);
            for (const Step& step : code.steps)
                perform(step, begin, rows);
            append(*column, begin, rows);
        }
        return column;
    }

private:
    void prepare(Column& column) const {
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

    const void* columnValues(const Column& column, std::size_t row) const {
        return std::visit([&](const auto& values) { return static_cast<const void*>(values.data() + row); },
                          column.values);
    }

    const void* valuesAt(const Place& place, std::size_t row) const {
        switch (place.in) {
            case Place::In::Buffer:
                return buffers[place.position].bytes;
            case Place::In::Constant:
                return code.constantAt[place.position]->bytes;
            case Place::In::Column:
                return columnValues(*chunk.columns[place.position], row);
            case Place::In::Nothing:
                break;
        }
        return nullptr;
    }

    void perform(const Step& step, std::size_t begin, std::size_t rows) {
        Lane lane;
        lane.rows = rows;
        lane.out = buffers[step.out.position].bytes;
        if (step.takesList) {
            const Column& list = *chunk.columns[step.in[0].position];
            lane.in[0] = columnValues(list, 0);
            lane.offsets = list.offsets.data() + begin;
        } else {
            for (std::size_t i = 0; i < 3; ++i)
                lane.in[i] = valuesAt(step.in[i], begin);
        }
        if (!step.kernel(lane))
            expression::refuse(text, step.place,
                               "no integer can hold a result in the rows from " +
                                   textOf(static_cast<double>(chunk.firstRow + begin)) +
                                   " on: it is too large, or a division by 0");
    }

    template <typename Values, typename From>
    static void appendTo(Column& column, const void* from, std::size_t rows) {
        const auto* values = static_cast<const From*>(from);
        auto& target = std::get<Values>(column.values);
        if constexpr (std::is_pointer_v<From>)
            for (std::size_t row = 0; row < rows; ++row)
                target.push_back(*values[row]);
        else
            target.insert(target.end(), values, values + rows);
    }

    void append(Column& column, std::size_t begin, std::size_t rows) const {
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

    const std::string& text;
    const Code& code;
    const Chunk& chunk;
    std::vector<Block> buffers;
};

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
        if (position >= chunk.columns.size() || chunk.columns[position]->type() != info.type ||
            chunk.columns[position]->isList() != info.isList)
            throw std::logic_error("the chunk is not of the schema that the expression was checked against");
    }
    if (code.result.in == Place::In::Column)
        return chunk.columns[code.result.position];
    return Evaluation(program->text, code, chunk).run();
}

std::vector<std::string> namesIn(std::string_view text) {
    std::vector<std::string> names;
    for (const expression::Node& node : expression::parse(text)) {
        const bool isName =
            node.form == expression::Form::Name && (node.isQuoted || !expression::isConstant(node.text));
        if (isName && std::find(names.begin(), names.end(), node.text) == names.end())
            names.push_back(node.text);
    }
    return names;
}

}  // namespace velmorak
