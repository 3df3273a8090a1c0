#include "graph/collections/Examples.h"

#include "graph/Paths.h"
#include "graph/document/Document.h"

#include <algorithm>
#include <map>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

std::string readable(std::string folderName) {
    std::ranges::replace(folderName, '_', ' ');
    return validUtf8(folderName);
}

/// Empty for an example that cannot be read; opening it reports the reason.
std::string summaryOf(const fs::path& document) {
    try {
        return parseDocument(readWholeFile(document)).summary.value_or("");
    } catch (const DocumentError&) {
        return {};
    }
}

std::vector<fs::path> sortedEntries(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        entries.push_back(at->path());
    }
    std::ranges::sort(entries);
    return entries;
}

std::vector<QzExample> examplesIn(const fs::path& groupFolder) {
    std::vector<QzExample> found;
    for (const fs::path& file : sortedEntries(groupFolder)) {
        std::error_code missing;
        if (file.extension() == documentExtension && fs::is_regular_file(file, missing)) {
            found.push_back({file.filename().string(), readable(groupFolder.filename().string()),
                             fs::absolute(groupFolder).lexically_normal().string(), summaryOf(file)});
        }
    }
    return found;
}

}  // namespace

std::vector<QzExample> listExamples(const std::vector<fs::path>& folders) {
    std::vector<QzExample> all;
    std::map<std::string, std::size_t> groupOrder;
    for (const fs::path& folder : folders) {
        for (const fs::path& groupFolder : sortedEntries(folder)) {
            for (QzExample& example : examplesIn(groupFolder)) {
                groupOrder.emplace(example.group, groupOrder.size());
                all.push_back(std::move(example));
            }
        }
    }
    std::ranges::stable_sort(all, {}, [&](const QzExample& each) { return groupOrder.at(each.group); });
    return all;
}

}  // namespace velmorak
