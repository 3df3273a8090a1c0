#include "Table/groups/Aggregates.h"

#include "Table/cuts/Cuts.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

namespace velmorak {

namespace {

constexpr std::array<std::pair<std::string_view, Aggregate>, 9> functions{{{"count", Aggregate::Count},
                                                                           {"sum", Aggregate::Sum},
                                                                           {"mean", Aggregate::Mean},
                                                                           {"spread", Aggregate::Spread},
                                                                           {"min", Aggregate::Min},
                                                                           {"max", Aggregate::Max},
                                                                           {"median", Aggregate::Median},
                                                                           {"first", Aggregate::First},
                                                                           {"last", Aggregate::Last}}};

constexpr const char* expected = "; expected one of count, sum, mean, spread, min, max, median, first and last";

[[noreturn]] void refuse(const std::string& entry, const std::string& why) {
    throw Failure("aggregates", velmorak::quoted(entry) + " " + why);
}

Aggregate functionIn(const std::string& entry, std::string_view name) {
    const auto found =
        std::find_if(functions.begin(), functions.end(), [&](const auto& known) { return known.first == name; });
    if (found == functions.end()) {
        std::vector<std::string> names;
        names.reserve(functions.size());
        for (const auto& known : functions) {
            names.emplace_back(known.first);
        }
        const std::string near = suggestion(name, names);
        refuse(entry, "is none of the aggregates" + (near.empty() ? expected : near));
    }
    return found->second;
}

std::string nameFor(const std::string& entry, std::string_view function, const std::string& expression) {
    if (expression.empty()) {
        return std::string(function);
    }
    const std::string column = plainColumn(expression);
    if (column.empty()) {
        refuse(entry, "needs a name; write name: " + entry);
    }
    return std::string(function) + "_" + column;
}

AggregateText aggregateOf(const Cut& entry) {
    const std::string_view text = entry.condition;
    const std::size_t bracket = text.find('(');
    const std::string_view function = trimmed(text.substr(0, bracket));
    AggregateText parsed{.name = entry.name, .function = functionIn(entry.condition, function)};
    if (bracket != std::string_view::npos) {
        if (text.back() != ')') {
            refuse(entry.condition, "does not end with a bracket");
        }
        parsed.expression = trimmed(text.substr(bracket + 1, text.size() - bracket - 2));
    }
    if (parsed.expression.empty() && parsed.function != Aggregate::Count) {
        refuse(entry.condition, "needs an expression, as in " + std::string(function) + "(x)");
    }
    if (entry.name == entry.condition) {
        parsed.name = nameFor(entry.condition, function, parsed.expression);
    }
    return parsed;
}

}  // namespace

std::vector<AggregateText> aggregatesIn(const std::string& text) {
    std::vector<AggregateText> aggregates;
    for (const Cut& entry : cutsIn(text)) {
        if (entry.condition.empty()) {
            refuse(entry.name, "has a name, but no aggregate");
        }
        aggregates.push_back(aggregateOf(entry));
    }
    return aggregates;
}

std::string plainColumn(const std::string& expression) {
    const std::string text(trimmed(expression));
    if (text.size() > 2 && text.front() == '`' && text.find('`', 1) == text.size() - 1) {
        return text.substr(1, text.size() - 2);
    }
    const auto isPartOfName = [](unsigned char c) { return std::isalnum(c) != 0 || c == '_'; };
    const bool isName = !text.empty() && std::all_of(text.begin(), text.end(), isPartOfName) &&
                        std::isdigit(static_cast<unsigned char>(text.front())) == 0;
    return isName ? text : std::string();
}

}  // namespace velmorak
