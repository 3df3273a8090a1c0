#include "run/NodeContext.h"

#include "run/Visible.h"

#include <system_error>

namespace velmorak {

namespace fs = std::filesystem;

std::string titleOf(const PipelineNode& node) {
    return shortened(node.kindName) + " \"" + shortened(node.name) + "\"";
}

fs::path resolved(const Pipeline& pipeline, const NamedFile& file) {
    if (!file) {
        return pipeline.commandLineAida;
    }
    fs::path named(*file);
    if (named.is_absolute()) {
        return named;
    }
    fs::path beside = pipeline.documentFolder / named;
    std::error_code error;
    if (!pipeline.documentFolder.empty() && !fs::exists(beside, error) && fs::exists(named, error)) {
        return named;
    }
    return beside;
}

NodeContext::NodeContext(const RunSurroundings& surroundings, const PipelineNode& node)
    : around(surroundings), node(node) {}

fs::path NodeContext::inputFile(const std::string& text) const {
    if (text.empty()) {
        throw Failure("no file is named");
    }
    watch(text);
    return resolved(around.pipeline, text);
}

fs::path NodeContext::commandLineAida() const {
    watch(std::nullopt);
    return around.pipeline.commandLineAida;
}

void NodeContext::writeResult(const std::string& fileName, const std::function<void(const fs::path&)>& writer) {
    const std::unique_ptr<ResultFile> file = beginResult(fileName);
    writer(file->path());
    file->keep();
}

std::unique_ptr<ResultFile> NodeContext::beginResult(const std::string& fileName) {
    return around.results.begin(node.name, fileName);
}

void NodeContext::warn(const std::string& sentence) {
    around.messages.line(titleOf(node) + ": warning: " + sentence);
}

RunRecord NodeContext::record() const {
    return around.recorder ? around.recorder(node) : RunRecord{};
}

void NodeContext::tell(const std::string& text) {
    around.messages.lines(titleOf(node) + ":", text);
}

void NodeContext::watch(const NamedFile& file) const {
    const fs::path path = resolved(around.pipeline, file);
    const std::optional<FileStamp> stamp = stampOf(path);
    if (stamp && around.asked) {
        around.asked(path, *stamp);
    }
    const std::scoped_lock lock(mutex);
    asked.push_back({file, stamp});
}

std::vector<AskedFile> NodeContext::askedFiles() const {
    const std::scoped_lock lock(mutex);
    return asked;
}

}  // namespace velmorak
