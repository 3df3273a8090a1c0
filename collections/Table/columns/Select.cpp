#include "Table/kinds.h"

#include "shared/ColumnList.h"

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

class SelectOperation : public RowOperation {
public:
    SelectOperation(const Schema& schema, std::vector<std::size_t> chosen);

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;

private:
    std::vector<std::size_t> places;
    Schema result;
};

SelectOperation::SelectOperation(const Schema& schema, std::vector<std::size_t> chosen) : places(std::move(chosen)) {
    for (const std::size_t place : places) {
        result.add(schema[place]);
    }
}

Chunk SelectOperation::apply(const Chunk& chunk) const {
    Chunk out = chunk;
    out.columns.clear();
    for (const std::size_t place : places) {
        out.columns.push_back(chunk.columns[place]);
    }
    return out;
}

void SelectOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    for (std::size_t i = 0; i < places.size(); ++i) {
        needed[places[i]] = wanted[i];
    }
}

std::vector<std::size_t> allBut(const std::vector<std::size_t>& places, const Schema& schema) {
    std::vector<std::size_t> others;
    for (std::size_t place = 0; place < schema.size(); ++place) {
        if (std::find(places.begin(), places.end(), place) == places.end()) {
            others.push_back(place);
        }
    }
    return others;
}

/// Keeps or drops some columns of a table.
class SelectKind : public RowWise {
public:
    std::string name() const override { return "Select"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string SelectKind::summary() const {
    return "Keeps or drops some columns of a table.";
}

Ports SelectKind::ports(const ValueTexts&) const {
    return {{{.name = "table", .description = "Table to select columns from.", .type = ValueType::Table},
             {.name = "columns",
              .description = "Names of columns, separated by blanks or commas; a name with blanks in back quotes.",
              .type = ValueType::Text},
             {.name = "mode",
              .description = "Keep: the named columns, in the order of the list. Drop: all other columns.",
              .type = ValueType::Choice,
              .value = "keep",
              .choices = {"keep", "drop"}}},
            {{.name = "table", .description = "All rows, with the selected columns.", .type = ValueType::Table}}};
}

std::string SelectKind::refusal(const std::string& input, const std::string& value) const {
    return input == "columns" ? columnListRefusal(input, value) : std::string();
}

std::unique_ptr<RowOperation> SelectKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    const std::vector<std::size_t> named = columnPositions("columns", arguments.text("columns"), schema);
    std::vector<std::size_t> chosen = arguments.text("mode") == "drop" ? allBut(named, schema) : named;
    if (chosen.empty()) {
        throw Failure("columns", "no column is left");
    }
    return std::make_unique<SelectOperation>(schema, std::move(chosen));
}

std::unique_ptr<Kind> makeSelect() {
    return std::make_unique<SelectKind>();
}

}  // namespace velmorak
