#include "Table/kinds.h"

#include "shared/ColumnList.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace velmorak {

namespace {

using Offsets = std::vector<std::uint64_t>;

template <typename Values>
Values repeatedValues(const Values& values, const Offsets& offsets) {
    Values repeated;
    repeated.reserve(offsets.back());
    for (std::size_t row = 0; row + 1 < offsets.size(); ++row) {
        repeated.insert(repeated.end(), offsets[row + 1] - offsets[row], values[row]);
    }
    return repeated;
}

/// Repeats each list as often as the offsets say.
template <typename Values>
Column repeatedLists(const Values& values, const Offsets& lists, const Offsets& offsets) {
    Values repeated;
    Column column{.values = {}, .offsets = {0}};
    for (std::size_t row = 0; row + 1 < offsets.size(); ++row) {
        for (std::uint64_t i = offsets[row]; i < offsets[row + 1]; ++i) {
            repeated.insert(repeated.end(), values.begin() + static_cast<std::ptrdiff_t>(lists[row]),
                            values.begin() + static_cast<std::ptrdiff_t>(lists[row + 1]));
            column.offsets.push_back(repeated.size());
        }
    }
    column.values = std::move(repeated);
    return column;
}

ColumnPtr repeated(const Column& column, const Offsets& offsets) {
    return std::visit(
        [&](const auto& values) {
            return std::make_shared<const Column>(column.isList() ? repeatedLists(values, column.offsets, offsets)
                                                                  : Column{repeatedValues(values, offsets), {}});
        },
        column.values);
}

ColumnPtr positionsIn(const Offsets& offsets) {
    Column::Integers positions(offsets.back());
    for (std::size_t row = 0; row + 1 < offsets.size(); ++row) {
        std::iota(positions.begin() + static_cast<std::ptrdiff_t>(offsets[row]),
                  positions.begin() + static_cast<std::ptrdiff_t>(offsets[row + 1]), 0);
    }
    return std::make_shared<const Column>(Column{std::move(positions), {}});
}

class ExplodeOperation : public RowOperation {
public:
    ExplodeOperation(const Schema& schema, std::vector<std::size_t> listPlaces, const std::string& index);

    const Schema& schema() const override { return result; }

    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;

private:
    void checkLengths(const Chunk& chunk, std::size_t place) const;

    std::vector<std::size_t> lists;
    bool hasIndex;
    Schema result;
};

ExplodeOperation::ExplodeOperation(const Schema& schema, std::vector<std::size_t> listPlaces, const std::string& index)
    : lists(std::move(listPlaces)), hasIndex(!index.empty()) {
    std::vector<ColumnInfo> columns = schema.columns();
    for (const std::size_t place : lists) {
        columns[place].isList = false;
    }
    result = Schema(std::move(columns));
    if (hasIndex) {
        result.add({.name = index, .type = ColumnType::Integer});
    }
}

Chunk ExplodeOperation::apply(const Chunk& chunk) const {
    const Offsets& offsets = chunk.columns[lists.front()]->offsets;
    for (const std::size_t place : lists) {
        checkLengths(chunk, place);
    }
    Chunk out = chunk;
    for (std::size_t place = 0; place < chunk.columns.size(); ++place) {
        if (!chunk.columns[place]) {
            continue;
        }
        const Column& column = *chunk.columns[place];
        const bool isExploded = std::find(lists.begin(), lists.end(), place) != lists.end();
        out.columns[place] =
            isExploded ? std::make_shared<const Column>(Column{column.values, {}}) : repeated(column, offsets);
    }
    if (hasIndex) {
        out.columns.push_back(positionsIn(offsets));
    }
    out.rows = offsets.back();
    return out;
}

/// The lengths of all lists are compared, whoever uses their values.
void ExplodeOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    std::copy_n(wanted.begin(), needed.size(), needed.begin());
    for (const std::size_t place : lists) {
        needed[place] = true;
    }
}

void ExplodeOperation::checkLengths(const Chunk& chunk, std::size_t place) const {
    const Offsets& expected = chunk.columns[lists.front()]->offsets;
    const Offsets& offsets = chunk.columns[place]->offsets;
    const auto difference = std::mismatch(expected.begin(), expected.end(), offsets.begin());
    if (difference.first == expected.end()) {
        return;
    }
    const auto row = static_cast<std::size_t>(difference.first - expected.begin()) - 1;
    const auto length = [row](const Offsets& of) { return std::to_string(of[row + 1] - of[row]); };
    throw Failure("columns", "lists in the same row have different lengths: \"" + result[lists.front()].name +
                                 "\" holds " + length(expected) + " and \"" + result[place].name + "\" " +
                                 length(offsets) + " values, in the part of the table that begins with row " +
                                 std::to_string(chunk.firstRow));
}

std::vector<std::size_t> listColumns(const Schema& schema) {
    std::vector<std::size_t> places;
    for (std::size_t place = 0; place < schema.size(); ++place) {
        if (schema[place].isList) {
            places.push_back(place);
        }
    }
    return places;
}

/// Makes one row for each value in list columns.
class ExplodeKind : public RowWise {
public:
    std::string name() const override { return "Explode"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string ExplodeKind::summary() const {
    return "Makes one row for each value in the list columns of a table.";
}

Ports ExplodeKind::ports(const ValueTexts&) const {
    return {{{.name = "table", .description = "Table with list columns.", .type = ValueType::Table},
             {.name = "columns",
              .description = "Names of the list columns to expand, separated by blanks or commas; in each row they "
                             "must have the same length. Empty: all list columns.",
              .type = ValueType::Text},
             {.name = "index",
              .description = "Name of a new column for the position in the list, counted from 0. Empty: none.",
              .type = ValueType::Text}},
            {{.name = "table",
              .description = "One row for each value; the other columns are repeated, and a row with empty lists "
                             "vanishes.",
              .type = ValueType::Table}}};
}

std::string ExplodeKind::refusal(const std::string& input, const std::string& value) const {
    return input == "columns" ? columnListRefusal(input, value) : std::string();
}

std::unique_ptr<RowOperation> ExplodeKind::prepare(const Arguments& arguments, const Schema& schema,
                                                   RunContext&) const {
    std::vector<std::size_t> places = columnPositions("columns", arguments.text("columns"), schema);
    for (const std::size_t place : places) {
        if (!schema[place].isList) {
            throw Failure("columns", "column \"" + schema[place].name + "\" is not a list column");
        }
    }
    if (places.empty()) {
        places = listColumns(schema);
    }
    if (places.empty()) {
        throw Failure("table", "the table has no list column");
    }
    const std::string& index = arguments.text("index");
    if (!index.empty() && schema.find(index)) {
        throw Failure("index", "the table already has a column \"" + index + "\"");
    }
    return std::make_unique<ExplodeOperation>(schema, std::move(places), index);
}

std::unique_ptr<Kind> makeExplode() {
    return std::make_unique<ExplodeKind>();
}

}  // namespace velmorak
