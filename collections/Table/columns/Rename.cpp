#include "Table/kinds.h"

#include "shared/ColumnList.h"
#include "shared/TextParts.h"

#include <velmorak/NamedNumbers.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velmorak {

namespace {

constexpr std::string_view arrow = "->";

/// One line of the list: "old -> new".
struct NewName {
    std::string from;
    std::string to;
};

std::string unquoted(std::string_view text) {
    const std::string_view name = trimmed(text);
    const bool isQuoted = name.size() >= 2 && name.front() == '`' && name.back() == '`';
    return std::string(isQuoted ? name.substr(1, name.size() - 2) : name);
}

/// @throws Failure
NewName newNameIn(const std::string& part) {
    const std::size_t at = part.find(arrow);
    if (at == std::string::npos) {
        throw Failure("names", "\"" + std::string(trimmed(part)) + "\" has no arrow; write: old -> new");
    }
    const std::string_view text = part;
    NewName name{unquoted(text.substr(0, at)), unquoted(text.substr(at + arrow.size()))};
    if (name.from.empty() || name.to.empty()) {
        throw Failure("names", "a name is missing in \"" + std::string(trimmed(part)) + "\"; write: old -> new");
    }
    if (!isColumnName(name.to)) {
        throw Failure("names",
                      "\"" + name.to + "\" is not a valid name for a column: expressions could not refer to it");
    }
    return name;
}

std::vector<NewName> newNamesIn(const std::string& text) {
    std::vector<NewName> names;
    for (const std::string& part : partsOutsideQuotes(text, "\n;,")) {
        if (!trimmed(part).empty()) {
            names.push_back(newNameIn(part));
        }
    }
    return names;
}

/// All at once, so that two columns can exchange their names.
Schema renamed(const Schema& schema, const std::vector<NewName>& names) {
    std::vector<ColumnInfo> columns = schema.columns();
    std::vector<bool> isRenamed(columns.size(), false);
    for (const NewName& name : names) {
        const std::size_t place = columnPosition("names", name.from, schema);
        if (isRenamed[place]) {
            throw Failure("names", "column \"" + name.from + "\" is listed twice");
        }
        isRenamed[place] = true;
        columns[place].name = name.to;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const auto isSame = [&](const ColumnInfo& other) { return other.name == columns[i].name; };
        if (isRenamed[i] && std::count_if(columns.begin(), columns.end(), isSame) > 1) {
            throw Failure("names", "there would be two columns \"" + columns[i].name + "\"");
        }
    }
    return Schema(std::move(columns));
}

class RenameOperation : public RowOperation {
public:
    explicit RenameOperation(Schema columns) : columns(std::move(columns)) {}

    const Schema& schema() const override { return columns; }
    Chunk apply(const Chunk& chunk) const override { return chunk; }
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override { needed = wanted; }

private:
    Schema columns;
};

/// Gives columns other names.
class RenameKind : public RowWise {
public:
    std::string name() const override { return "Rename"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string RenameKind::summary() const {
    return "Gives columns of a table other names.";
}

Ports RenameKind::ports(const ValueTexts&) const {
    return {
        {{.name = "table", .description = "Table whose columns are renamed.", .type = ValueType::Table},
         {.name = "names",
          .description = "Old and new names, one pair a line or separated by semicolons or commas: "
                         "Muon_pt -> pt; `x [mm]` -> x. All are renamed at once, so that two columns can exchange "
                         "their names.",
          .type = ValueType::Text}},
        {{.name = "table", .description = "The same rows and columns, with the new names.", .type = ValueType::Table}}};
}

std::string RenameKind::refusal(const std::string& input, const std::string& value) const {
    if (input != "names") {
        return {};
    }
    try {
        newNamesIn(value);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

std::unique_ptr<RowOperation> RenameKind::prepare(const Arguments& arguments, const Schema& schema, RunContext&) const {
    return std::make_unique<RenameOperation>(renamed(schema, newNamesIn(arguments.text("names"))));
}

std::unique_ptr<Kind> makeRename() {
    return std::make_unique<RenameKind>();
}

}  // namespace velmorak
