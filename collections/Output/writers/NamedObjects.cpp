#include "NamedObjects.h"

#include "Output/Ports.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

/// @return the object at the input, or null for a table, which is not a value.
DataObjectPtr objectOrTable(const Arguments& arguments, const std::string& input, const std::string& file) {
    if (!arguments.isWired(input)) {
        throw Failure(input, "nothing is wired");
    }
    const Value& value = arguments.value(input);
    if (std::holds_alternative<std::monostate>(value)) {
        return nullptr;
    }
    if (!std::holds_alternative<DataObjectPtr>(value)) {
        throw Failure(
            input, "a number or text cannot be written to " + file + "; wire a table, a histogram or another object");
    }
    return std::get<DataObjectPtr>(value);
}

std::string unusedName(const std::string& name, const std::vector<NamedObject>& objects) {
    std::string candidate = name;
    const auto hasCandidate = [&](const NamedObject& object) { return object.name == candidate; };
    for (int number = 2; std::any_of(objects.begin(), objects.end(), hasCandidate); ++number) {
        candidate = name + "_" + std::to_string(number);
    }
    return candidate;
}

}  // namespace

std::vector<NamedObject> namedObjects(const Arguments& arguments, const std::string& plugin, const std::string& file) {
    std::vector<NamedObject> objects;
    bool hasTable = false;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        DataObjectPtr object = objectOrTable(arguments, input, file);
        if (!object && std::exchange(hasTable, true)) {
            throw Failure(input, "a file can hold only one table; use another " + plugin + " for the second one");
        }
        const bool hasName = object && !object->name.empty();
        const std::string& name = hasName ? object->name : arguments.sourceName(input);
        objects.push_back({.name = unusedName(name, objects), .object = std::move(object)});
    }
    return objects;
}

}  // namespace velmorak
