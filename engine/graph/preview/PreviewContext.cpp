#include "graph/preview/PreviewContext.h"

#include <velmorak/Failure.h>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

/// Refuses pipes and devices, which may block for ever.
fs::path checked(const fs::path& file) {
    std::error_code missing;
    if (!file.empty() && !fs::is_regular_file(file, missing)) {
        throw Failure("there is no file " + file.string());
    }
    return file;
}

}  // namespace

fs::path PreviewContext::inputFile(const std::string& text) const {
    return checked(resolved(beside, text));
}

fs::path PreviewContext::commandLineAida() const {
    return checked(resolved(beside, std::nullopt));
}

fs::path PreviewContext::locate(const std::string& text) const {
    return text.empty() ? fs::path() : resolved(beside, text);
}

void PreviewContext::writeResult(const std::string& fileName, const std::function<void(const fs::path&)>& /*writer*/) {
    beginResult(fileName);
}

std::unique_ptr<ResultFile> PreviewContext::beginResult(const std::string& fileName) {
    throw Failure(fileName + " is not written: no run is going on.");
}

}  // namespace velmorak
