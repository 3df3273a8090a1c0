#include "Artefacts.h"

#include <velmorak/Aida.h>
#include <velmorak/HistogramList.h>

#include <unistd.h>
#include <bit>
#include <fstream>
#include <iterator>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// AIDA files keep every bit; they hold no lists.
std::string bitsOfObject(const DataObject& object) {
    if (const auto* list = dynamic_cast<const HistogramList*>(&object)) {
        return list->toBytes();
    }
    const fs::path file = fs::temp_directory_path() / ("velmorak-bits-" + std::to_string(getpid()) + ".aida");
    AidaFileWriter writer(file);
    writer.write(object, "/");
    writer.close();
    const std::string content = contentOf(file);
    fs::remove(file);
    return content;
}

}  // namespace

std::string textOf(const Pipeline& pipeline) {
    std::string text;
    for (const PipelineNode& node : pipeline.nodes) {
        text += node.name + ' ' + node.kindName + '\n';
        for (const PipelineInput& input : node.inputs) {
            text += "  " + input.spec.name + '=' + input.value;
            if (input.wire) {
                text += " <- " + pipeline.nodes.at(input.wire->node).name + '.' + input.wire->output;
            }
            text += '\n';
        }
    }
    return text;
}

std::string bitsOf(const Value& value) {
    if (const auto* number = std::get_if<double>(&value)) {
        return std::to_string(std::bit_cast<std::uint64_t>(*number));
    }
    if (const auto* number = std::get_if<NumberWithError>(&value)) {
        return bitsOf(Value(number->value())) + " with " + bitsOf(Value(number->error()));
    }
    if (const auto* words = std::get_if<std::string>(&value)) {
        return '"' + *words + '"';
    }
    if (const auto* object = std::get_if<DataObjectPtr>(&value)) {
        return bitsOfObject(**object);
    }
    return "nothing";
}

std::map<std::string, std::string> resultsOf(const Pipeline& pipeline, const RunReport& report) {
    std::map<std::string, std::string> results;
    for (std::size_t i = 0; i < report.nodes.size(); ++i) {
        const NodeReport& node = report.nodes[i];
        const bool isDone = node.status == NodeStatus::Done || node.status == NodeStatus::Reused;
        std::string& text = results[pipeline.nodes[i].name];
        text = isDone ? "done" : std::to_string(static_cast<int>(node.status)) + ' ' + node.sentence;
        for (const Value& value : node.outputs) {
            text += '\n' + bitsOf(value);
        }
    }
    return results;
}

std::map<std::string, std::string> filesIn(const fs::path& folder) {
    std::map<std::string, std::string> files;
    if (fs::exists(folder)) {
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                files[fs::relative(entry.path(), folder).string()] = contentOf(entry.path());
            }
        }
    }
    return files;
}

}  // namespace velmorak::test
