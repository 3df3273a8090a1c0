#include "NamedObjects.h"

#include "Output/Ports.h"

#include <velmorak/DataObjects.h>
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

std::vector<NamedValue> histogramsOf(const HistogramList& list, const std::string& name) {
    std::vector<NamedValue> values;
    for (const HistogramList::Group& group : list.groups()) {
        const std::string& own = group.histogram->name;
        values.push_back({own.empty() ? nameWithKey(name, group.key) : own, DataObjectPtr(group.histogram)});
    }
    return values;
}

}  // namespace

std::vector<NamedValue> unfolded(const Value& value, const std::string& name) {
    const auto* const object = std::get_if<DataObjectPtr>(&value);
    if (!object || !*object) {
        return {{name, value}};
    }
    const std::string& own = (*object)->name.empty() ? name : (*object)->name;
    return visit(**object, overloaded{
                               [&](const HistogramList& list) { return histogramsOf(list, own); },
                               [&](const DataObject&) {
                                   return std::vector<NamedValue>{{own, value}};
                               },
                           });
}

std::vector<InputSpec> writerInputs(const WriterInputs& inputs, const ValueTexts& values) {
    const InputSpec object = {
        .name = "object",
        .description = inputs.objects + ", under its name or that of the plug-in that made it." + inputs.objectsRemark,
        .type = ValueType::Any};
    Ports ports;
    ports.inputs = {
        object, writtenFileInput(inputs.ending, inputs.fileRemark),
        InputSpec{.name = "folder",
                  .description = "Folder of the objects within the file, for example " + inputs.folder + ".",
                  .type = ValueType::Text,
                  .value = "/"}};
    ports.inputs.insert(ports.inputs.end(), inputs.own.begin(), inputs.own.end());
    ports.inputs.push_back(countInput("objects", "Number of objects to write, 1 to 16; each has its own input."));
    addNumbered(ports, object, numberedCount(values, "objects"));
    return ports.inputs;
}

std::string folderRefusal(const std::string& folder) {
    return folder.starts_with('/') ? "" : "The folder must begin with \"/\".";
}

const std::string& folderInFile(const Arguments& arguments) {
    const std::string& folder = arguments.text("folder");
    if (const std::string reason = folderRefusal(folder); !reason.empty()) {
        throw Failure("folder", reason);
    }
    return folder;
}

std::vector<NamedObject> namedObjects(const Arguments& arguments, const std::string& plugin, const std::string& file) {
    std::vector<NamedObject> objects;
    bool hasTable = false;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        DataObjectPtr object = objectOrTable(arguments, input, file);
        if (!object && std::exchange(hasTable, true)) {
            throw Failure(input, "a file can hold only one table; use another " + plugin + " for the second one");
        }
        if (!object) {
            objects.push_back({.name = unusedName(arguments.sourceName(input), objects), .object = {}, .input = input});
            continue;
        }
        for (NamedValue& each : unfolded(object, arguments.sourceName(input))) {
            objects.push_back({.name = unusedName(each.name, objects),
                               .object = std::get<DataObjectPtr>(std::move(each.value)),
                               .input = input});
        }
    }
    return objects;
}

}  // namespace velmorak
