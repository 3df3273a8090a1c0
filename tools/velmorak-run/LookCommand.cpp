#include "LookCommand.h"

#include "StopOnSignal.h"

#include "run/messages/Visible.h"

#include <velmorak/FileFormat.h>
#include <velmorak/Utf8.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <iostream>
#include <ostream>
#include <string>
#include <vector>

namespace {

using velmorak::FileColumn;
using velmorak::FileFormat;
using velmorak::FileObject;
using velmorak::visible;
using Json = nlohmann::ordered_json;

/// Outside of any run: files may be read, and nothing is written.
class InspectionContext : public velmorak::RunContext {
public:
    bool isStopping() const override { return isStopped; }
    const std::string& pluginName() const override { return name; }
    std::filesystem::path inputFile(const std::string& text) const override { return text; }
    std::filesystem::path commandLineAida() const override { return {}; }
    void writeResult(const std::string& /*fileName*/,
                     const std::function<void(const std::filesystem::path&)>& /*writer*/) override;
    std::unique_ptr<velmorak::ResultFile> beginResult(const std::string& /*fileName*/) override;
    void warn(const std::string& sentence) override;
    void stop() { isStopped = true; }

private:
    std::atomic<bool> isStopped = false;
    std::string name = "look";
};

void InspectionContext::writeResult(const std::string& /*fileName*/,
                                    const std::function<void(const std::filesystem::path&)>& /*writer*/) {
    throw velmorak::Failure("a look at a file writes no results");
}

std::unique_ptr<velmorak::ResultFile> InspectionContext::beginResult(const std::string& /*fileName*/) {
    throw velmorak::Failure("a look at a file writes no results");
}

void InspectionContext::warn(const std::string& sentence) {
    std::cerr << "velmorak-run: " << velmorak::visibleMessage(sentence) << '\n';
}

std::string typeOf(const FileColumn& column) {
    return (column.info.isList ? "list of " : "") + std::string(nameOf(column.info.type));
}

Json jsonOf(const FileColumn& column) {
    Json json = {{"name", column.info.name}};
    if (!column.problem.empty()) {
        json["problem"] = column.problem;
        return json;
    }
    json["type"] = nameOf(column.info.type);
    json["list"] = column.info.isList;
    json["unit"] = column.info.unit;
    return json;
}

Json jsonOf(const FileObject& object) {
    Json json = {{"path", object.path}, {"type", object.type}, {"table", object.isTable}};
    if (object.rows) {
        json["rows"] = *object.rows;
    }
    if (object.isTable) {
        json["columns"] = Json::array();
        for (const FileColumn& column : object.columns) {
            json["columns"].push_back(jsonOf(column));
        }
    }
    if (!object.description.empty()) {
        json["description"] = object.description;
    }
    return json;
}

std::string padded(const std::string& text, std::size_t width) {
    const std::size_t characters = velmorak::characterCount(text);
    return text + std::string(characters < width ? width - characters : 0, ' ');
}

void printColumns(const std::vector<FileColumn>& columns, std::ostream& stream) {
    constexpr std::size_t maxWidth = 32;
    std::size_t width = 0;
    for (const FileColumn& column : columns) {
        width = std::max(width, std::min(maxWidth, visible(column.info.name).size()));
    }
    for (const FileColumn& column : columns) {
        stream << "    " << padded(visible(column.info.name), width) << "  ";
        if (!column.problem.empty()) {
            stream << "cannot be read: " << visible(column.problem) << '\n';
            continue;
        }
        stream << typeOf(column) << (column.info.unit.empty() ? "" : " [" + visible(column.info.unit) + "]") << '\n';
    }
}

void print(const FileObject& object, std::ostream& stream) {
    stream << "  " << (object.path.empty() ? "" : visible(object.path) + "  ") << visible(object.type);
    if (object.rows) {
        stream << ", " << *object.rows << (*object.rows == 1 ? " row" : " rows");
    }
    if (object.isTable && !object.columns.empty()) {
        stream << ", " << object.columns.size() << (object.columns.size() == 1 ? " column" : " columns");
    }
    stream << (object.description.empty() ? "" : ": " + visible(object.description)) << '\n';
    printColumns(object.columns, stream);
}

const FileFormat& formatOf(const std::filesystem::path& file, const velmorak::FileFormats& formats) {
    if (const FileFormat* format = formats.recognise(velmorak::startOf(file))) {
        return *format;
    }
    std::string names;
    for (const auto& format : formats.all()) {
        names += (names.empty() ? "" : ", ") + format->name();
    }
    throw velmorak::Failure(file.string() + " has no known format; known are " + names);
}

}  // namespace

void printContent(const std::filesystem::path& file, const velmorak::FileFormats& formats, bool isJson,
                  StopOnSignal& signals, std::ostream& stream) {
    InspectionContext context;
    const StopOnSignal::Stoppable stoppable(signals, [&context] { context.stop(); });
    const FileFormat& format = formatOf(file, formats);
    const std::vector<FileObject> objects = format.objects(file, context);
    if (isJson) {
        Json json = {{"file", file.string()}, {"format", format.name()}, {"objects", Json::array()}};
        for (const FileObject& object : objects) {
            json["objects"].push_back(jsonOf(object));
        }
        // Bytes that are not UTF-8 are replaced: a name in a file may hold any.
        stream << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
        return;
    }
    stream << visible(file.string()) << ": " << format.name() << '\n';
    for (const FileObject& object : objects) {
        print(object, stream);
    }
}
