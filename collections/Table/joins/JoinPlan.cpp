#include "Table/joins/JoinPlan.h"

#include "Table/cuts/Cuts.h"
#include "Table/groups/Aggregates.h"
#include "shared/ColumnList.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

/// @return the position of the equals sign that divides the text; npos without one.
std::size_t dividingSign(const std::string& text) {
    constexpr std::string_view comparing = "<>=!";
    char quote = 0;
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'' || c == '`') {
            quote = c;
        } else if (c == '(' || c == '[') {
            ++depth;
        } else if (c == ')' || c == ']') {
            --depth;
        } else if (c == '=' && depth == 0) {
            const bool isComparison = (i > 0 && comparing.find(text[i - 1]) != std::string_view::npos) ||
                                      (i + 1 < text.size() && text[i + 1] == '=');
            if (!isComparison) {
                return i;
            }
        }
    }
    return std::string::npos;
}

Expression compiled(const std::string& input, const std::string& text, const Schema& schema, const char* table) {
    try {
        Expression expression(text, schema);
        if (expression.isList()) {
            throw Failure(input, velmorak::quoted(text) + " is a list in each row");
        }
        return expression;
    } catch (const Failure& failure) {
        throw Failure(input, std::string("in the ") + table + " table: " + failure.what(), failure.cause());
    }
}

bool isText(const Expression& expression) {
    return expression.type() == ColumnType::Text;
}

bool isReal(const Expression& expression) {
    return expression.type() == ColumnType::Real;
}

Expression number(const std::string& input, const std::string& text, const Schema& schema, const char* table) {
    Expression expression = compiled(input, text, schema, table);
    if (isText(expression)) {
        throw Failure(input, velmorak::quoted(text) + " is a text; expected a number");
    }
    return expression;
}

JoinPlan::Rows rowsFrom(const std::string& choice) {
    return choice == "inner" ? JoinPlan::Rows::Inner : choice == "anti" ? JoinPlan::Rows::Anti : JoinPlan::Rows::Left;
}

}  // namespace

std::vector<JoinKeyText> joinKeysIn(const std::string& text) {
    std::vector<JoinKeyText> keys;
    for (const Cut& entry : cutsIn(text)) {
        const std::string& key = entry.condition;
        const std::size_t sign = dividingSign(key);
        const std::string first(trimmed(key.substr(0, sign)));
        keys.push_back({first, sign == std::string::npos ? first : std::string(trimmed(key.substr(sign + 1)))});
    }
    return keys;
}

JoinPlan::JoinPlan(const Arguments& arguments, const Schema& first, const Schema& second)
    : which(rowsFrom(arguments.text("rows"))), result(first) {
    addKeys(arguments.text("keys"), first, second);
    addRange(arguments, first, second);
    if (all.empty() && !interval) {
        throw Failure("keys", "nothing says which rows belong together; name a key that both tables have");
    }
    chooseColumns(arguments, second);
    addColumns(arguments.text("prefix"), second);
    const std::string& matches = arguments.text("matches");
    hasCount = !matches.empty();
    if (hasCount && result.find(matches)) {
        throw Failure("matches", "the result already has a column " + velmorak::quoted(matches));
    }
    if (hasCount) {
        result.add({.name = matches, .type = ColumnType::Integer});
    }
}

void JoinPlan::addKeys(const std::string& text, const Schema& first, const Schema& second) {
    for (const JoinKeyText& key : joinKeysIn(text)) {
        Key made{compiled("keys", key.first, first, "first"), compiled("keys", key.second, second, "second")};
        if (isText(made.first) != isText(made.second)) {
            throw Failure("keys", velmorak::quoted(isText(made.first) ? key.first : key.second) + " is a text and " +
                                      velmorak::quoted(isText(made.first) ? key.second : key.first) + " a number");
        }
        made.isReal = isReal(made.first) || isReal(made.second);
        const std::string column = plainColumn(key.second);
        if (!column.empty() && column == plainColumn(key.first)) {
            secondKeys.push_back(column);
        }
        all.push_back(std::move(made));
    }
}

void JoinPlan::addRange(const Arguments& arguments, const Schema& first, const Schema& second) {
    const std::string& value = arguments.text("value");
    const std::string& from = arguments.text("from");
    const std::string& to = arguments.text("to");
    if (value.empty() != from.empty()) {
        throw Failure(value.empty() ? "value" : "from", "a range needs both value and from");
    }
    if (value.empty() && !to.empty()) {
        throw Failure("value", "a range needs value, from and to");
    }
    if (value.empty()) {
        return;
    }
    interval.emplace(
        Range{number("value", value, first, "first"), number("from", from, second, "second"), std::nullopt});
    if (!to.empty()) {
        interval->to.emplace(number("to", to, second, "second"));
    }
    interval->isReal = isReal(interval->value) || isReal(interval->from) || (interval->to && isReal(*interval->to));
}

void JoinPlan::chooseColumns(const Arguments& arguments, const Schema& second) {
    columns = columnPositions("columns", arguments.text("columns"), second);
    if (which == Rows::Anti) {
        columns.clear();
    } else if (columns.empty()) {
        for (std::size_t place = 0; place < second.size(); ++place) {
            if (std::find(secondKeys.begin(), secondKeys.end(), second[place].name) == secondKeys.end()) {
                columns.push_back(place);
            }
        }
    }
}

void JoinPlan::addColumns(const std::string& prefix, const Schema& second) {
    for (const std::size_t place : columns) {
        ColumnInfo column = second[place];
        column.name = prefix + column.name;
        const bool isWhole = column.type == ColumnType::Integer || column.type == ColumnType::Boolean;
        areMadeReal.push_back(which == Rows::Left && isWhole && !column.isList);
        column.type = areMadeReal.back() ? ColumnType::Real : column.type;
        if (result.find(column.name)) {
            throw Failure("prefix", "both tables have a column " + velmorak::quoted(column.name) +
                                        "; enter a prefix for the names of the second table, or choose its columns");
        }
        result.add(std::move(column));
    }
}

void JoinPlan::markFirst(std::vector<bool>& needed) const {
    for (const Key& key : all) {
        key.first.markColumns(needed);
    }
    if (interval) {
        interval->value.markColumns(needed);
    }
}

void JoinPlan::markSecond(std::vector<bool>& needed) const {
    for (const Key& key : all) {
        key.second.markColumns(needed);
    }
    if (interval) {
        interval->from.markColumns(needed);
        if (interval->to) {
            interval->to->markColumns(needed);
        }
    }
    for (const std::size_t place : columns) {
        needed[place] = true;
    }
}

}  // namespace velmorak
