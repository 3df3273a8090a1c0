#include "Table/kinds.h"

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

/// Far beyond any pipeline, so that a slip of the pen does not fill the memory with inputs.
constexpr std::size_t maxTables = 10'000;

std::string inputName(std::size_t position) {
    return position == 0 ? "table" : "table" + std::to_string(position + 1);
}

std::size_t tableCount(const ValueTexts& values) {
    const auto text = values.find("tables");
    double count = 2.0;
    if (text == values.end() || !readNumber(text->second, count) || !(count >= 2.0)) {
        return 2;
    }
    return static_cast<std::size_t>(std::min(count, static_cast<double>(maxTables)));
}

/// Converts the columns of one table to the positions and types of the result.
class JoinOperation : public RowOperation {
public:
    JoinOperation(const Schema& from, Schema to);

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;

private:
    Schema result;
    std::vector<std::size_t> places;
    std::vector<bool> areConverted;
};

JoinOperation::JoinOperation(const Schema& from, Schema to) : result(std::move(to)) {
    for (const ColumnInfo& column : result.columns()) {
        const std::size_t place = *from.find(column.name);
        places.push_back(place);
        areConverted.push_back(from[place].type != column.type);
    }
}

Chunk JoinOperation::apply(const Chunk& chunk) const {
    Chunk out = chunk;
    out.columns.clear();
    for (std::size_t i = 0; i < places.size(); ++i) {
        const ColumnPtr& column = chunk.columns[places[i]];
        out.columns.push_back(areConverted[i] && column ? asReals(column) : column);
    }
    return out;
}

void JoinOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    for (std::size_t i = 0; i < places.size(); ++i) {
        needed[places[i]] = wanted[i];
    }
}

bool isNumber(ColumnType type) {
    return type == ColumnType::Real || type == ColumnType::Integer;
}

/// Keeps the attributes of a column that also hold for the same column of another table.
void unite(ColumnInfo& column, const ColumnInfo& other, std::size_t table) {
    const bool haveOneType = column.type == other.type || (isNumber(column.type) && isNumber(other.type));
    if (column.isList != other.isList || !haveOneType) {
        throw Failure(inputName(table), "column \"" + column.name + "\" is " + (other.isList ? "a list of " : "") +
                                            std::string(nameOf(other.type)) + " here and " +
                                            (column.isList ? "a list of " : "") + std::string(nameOf(column.type)) +
                                            " in the previous tables");
    }
    if (column.type != other.type) {
        column.type = ColumnType::Real;
    }
    if (column.unit != other.unit && !column.unit.empty() && !other.unit.empty()) {
        throw Failure(inputName(table), "column \"" + column.name + "\" is in " + other.unit + " here and in " +
                                            column.unit + " in the previous tables");
    }
    if (column.unit.empty()) {
        column.unit = other.unit;
    }
}

void checkSameColumns(const Schema& schema, const Schema& first, std::size_t table) {
    for (const ColumnInfo& column : first.columns()) {
        if (!schema.find(column.name)) {
            throw Failure(inputName(table), "it has no column \"" + column.name + "\"");
        }
    }
    for (const ColumnInfo& column : schema.columns()) {
        if (!first.find(column.name)) {
            throw Failure(inputName(table), "the first table has no column \"" + column.name + "\"");
        }
    }
}

Schema unitedSchema(const std::vector<Schema>& schemas) {
    Schema result;
    for (ColumnInfo column : schemas.front().columns()) {
        bool isCommon = true;
        for (std::size_t table = 1; table < schemas.size(); ++table) {
            const std::optional<std::size_t> place = schemas[table].find(column.name);
            isCommon = isCommon && place;
            if (isCommon) {
                unite(column, schemas[table][*place], table);
            }
        }
        if (isCommon) {
            result.add(column);
        }
    }
    return result;
}

/// Concatenates tables.
class ConcatKind : public Concatenation {
public:
    std::string name() const override { return "Concat"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::vector<std::unique_ptr<RowOperation>> prepare(const Arguments& arguments, const std::vector<Schema>& schemas,
                                                       RunContext& context) const override;
};

}  // namespace

std::string ConcatKind::summary() const {
    return "Concatenates the rows of several tables.";
}

Ports ConcatKind::ports(const ValueTexts& values) const {
    Ports ports;
    const auto table = [](std::size_t position) {
        return InputSpec{.name = inputName(position),
                         .description = "Table number " + std::to_string(position + 1) +
                                        "; its rows follow those of the previous tables.",
                         .type = ValueType::Table};
    };
    ports.inputs = {
        table(0),
        table(1),
        {.name = "columns",
         .description = "Same: all tables must have the same column names, in any order. Common: "
                        "columns that are not in every table are left out.",
         .type = ValueType::Choice,
         .value = "same",
         .choices = {"same", "common"}},
        {.name = "tables",
         .description = "Number of tables, at least 2; each has its own input. A reader that is given several "
                        "files needs no Concat.",
         .value = "2",
         .minimum = 2,
         .maximum = static_cast<double>(maxTables),
         .isInteger = true}};
    for (std::size_t i = 2; i < tableCount(values); ++i) {
        ports.inputs.push_back(table(i));
    }
    ports.outputs = {{.name = "table",
                      .description = "All rows, with the columns in the order of the first table; a column that is "
                                     "real in one table and integer in another is real.",
                      .type = ValueType::Table}};
    return ports;
}

std::vector<std::unique_ptr<RowOperation>> ConcatKind::prepare(const Arguments& arguments,
                                                               const std::vector<Schema>& schemas, RunContext&) const {
    if (arguments.isWired("tables")) {
        throw Failure("tables", "the number cannot be wired, because it determines the inputs; enter it as a value");
    }
    if (arguments.text("columns") == "same") {
        for (std::size_t table = 1; table < schemas.size(); ++table) {
            checkSameColumns(schemas[table], schemas.front(), table);
        }
    }
    const Schema result = unitedSchema(schemas);
    if (result.size() == 0) {
        throw Failure("columns", "the tables have no column in common");
    }
    std::vector<std::unique_ptr<RowOperation>> operations;
    operations.reserve(schemas.size());
    for (const Schema& schema : schemas) {
        operations.push_back(std::make_unique<JoinOperation>(schema, result));
    }
    return operations;
}

std::unique_ptr<Kind> makeConcat() {
    return std::make_unique<ConcatKind>();
}

}  // namespace velmorak
