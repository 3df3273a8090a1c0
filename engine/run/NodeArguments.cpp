#include "run/NodeArguments.h"

#include "run/ValueCheck.h"

#include <velmorak/FormatMeasurement.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

/// @param value not monostate.
ValueType typeOf(const Value& value) {
    if (const auto* object = std::get_if<DataObjectPtr>(&value)) {
        return (*object)->type();
    }
    return std::holds_alternative<std::string>(value) ? ValueType::Text : ValueType::Number;
}

}  // namespace

bool mayFeed(ValueType output, ValueType input) {
    return input == ValueType::Any || output == ValueType::Any || output == input ||
           (hasTextForm(output) && hasTextForm(input));
}

NodeArguments::NodeArguments(const PipelineNode& node, const std::vector<Arrival>& arrivals) {
    for (std::size_t i = 0; i < node.inputs.size(); ++i) {
        entries.emplace(node.inputs[i].spec.name, entryOf(node.inputs[i], arrivals[i]));
    }
}

NodeArguments::Entry NodeArguments::entryOf(const PipelineInput& input, const Arrival& arrival) {
    const InputSpec& spec = input.spec;
    Entry entry{&spec, arrival, input.value};
    const bool hasArrived = !std::holds_alternative<std::monostate>(arrival.value);
    if (hasArrived && !mayFeed(typeOf(arrival.value), spec.type)) {
        throw Failure(spec.name, "a " + std::string(nameOf(typeOf(arrival.value))) + " was received where a " +
                                     std::string(nameOf(spec.type)) + " is needed");
    }
    if (!hasTextForm(spec.type)) {
        return entry;
    }
    if (const std::optional<NumberWithError> number = numberIn(arrival.value)) {
        entry.text = formatNumber(number->value());
        entry.number = number->value();
        entry.hasNumber = true;
    } else if (const auto* text = std::get_if<std::string>(&arrival.value)) {
        entry.text = *text;
    }
    const bool isMissing = spec.type == ValueType::Number && !hasArrived && entry.text.empty();
    if (const std::string error = isMissing ? "" : typeError(spec, entry.text); !error.empty()) {
        throw Failure(spec.name, error);
    }
    if (spec.type == ValueType::Number && !entry.hasNumber && !isMissing) {
        entry.hasNumber = readNumber(entry.text, entry.number);
    }
    return entry;
}

const NodeArguments::Entry& NodeArguments::find(const std::string& input) const {
    const auto found = entries.find(input);
    if (found == entries.end()) {
        throw std::logic_error("the kind asks for an input \"" + input + "\" that it does not have");
    }
    return found->second;
}

const NodeArguments::Entry& NodeArguments::findNumber(const std::string& input) const {
    const Entry& entry = find(input);
    if (entry.spec->type != ValueType::Number) {
        throw std::logic_error("the kind asks for a number from its input \"" + input + "\"");
    }
    if (!entry.hasNumber) {
        throw Failure(input, "it has no value");
    }
    return entry;
}

double NodeArguments::number(const std::string& input) const {
    return findNumber(input).number;
}

NumberWithError NodeArguments::numberWithError(const std::string& input) const {
    const Entry& entry = findNumber(input);
    return numberIn(entry.arrival.value).value_or(NumberWithError(entry.number));
}

std::int64_t NodeArguments::integer(const std::string& input) const {
    const double number = findNumber(input).number;
    // 2^63 is the smallest number that does not fit.
    if (!(number >= -0x1p63 && number < 0x1p63) || number != std::trunc(number)) {
        throw Failure(input, textOf(number) + " is not a whole number from -2^63 to 2^63 - 1");
    }
    return static_cast<std::int64_t>(number);
}

const std::string& NodeArguments::text(const std::string& input) const {
    const Entry& entry = find(input);
    if (entry.spec->type != ValueType::Text && entry.spec->type != ValueType::Choice) {
        throw std::logic_error("the kind asks for a text from its input \"" + input + "\"");
    }
    return entry.text;
}

const Value& NodeArguments::value(const std::string& input) const {
    const Entry& entry = find(input);
    if (hasTextForm(entry.spec->type)) {
        throw std::logic_error("the kind asks for an object from its input \"" + input + "\"");
    }
    return entry.arrival.value;
}

bool NodeArguments::isWired(const std::string& input) const {
    return find(input).arrival.isWired;
}

bool NodeArguments::has(const std::string& input) const {
    return entries.find(input) != entries.end();
}

std::string NodeArguments::whyMissing(const std::string& input) const {
    return find(input).arrival.failure;
}

const std::string& NodeArguments::sourceName(const std::string& input) const {
    return find(input).arrival.sourceName;
}

const std::string& NodeArguments::sourceOutput(const std::string& input) const {
    return find(input).arrival.sourceOutput;
}

NodeResults::NodeResults(const std::vector<OutputSpec>& outputs)
    : outputs(outputs), all(outputs.size()), left(outputs.size()) {}

/// @return the position of the output.
std::size_t NodeResults::check(const std::string& output, const Value& value) const {
    const auto found =
        std::find_if(outputs.begin(), outputs.end(), [&](const OutputSpec& spec) { return spec.name == output; });
    if (found == outputs.end()) {
        throw std::logic_error("the kind sets an output \"" + output + "\" that it does not have");
    }
    const auto* object = std::get_if<DataObjectPtr>(&value);
    if (std::holds_alternative<std::monostate>(value) || (object && !*object) || !mayFeed(typeOf(value), found->type)) {
        throw std::logic_error("the kind sets its output \"" + output + "\" to a value of another type than " +
                               std::string(nameOf(found->type)));
    }
    return static_cast<std::size_t>(found - outputs.begin());
}

void NodeResults::set(const std::string& output, Value value) {
    const std::size_t position = check(output, value);
    if (const auto* number = std::get_if<NumberWithError>(&value); number && !number->hasError()) {
        value = number->value();
    }
    all[position] = std::move(value);
}

void NodeResults::leave(const std::string& output, Value value) {
    const std::size_t position = check(output, value);
    left[position] = std::move(value);
}

}  // namespace velmorak
