#include "run/RunMemory.h"

#include <string_view>
#include <utility>

namespace velmorak {
namespace {

Digest keyOf(std::string_view subject, const std::string& name) {
    Sha256 digester;
    digester.addText(subject);
    digester.addText(name);
    return digester.finish();
}

Digest keyOfDigests() {
    return keyOf("sums of files", "");
}

}  // namespace

RunMemory::RunMemory(CacheConfig config, DiskStore::Warn warn)
    : disk(std::move(config), std::move(warn)), store(disk) {}

void RunMemory::recall(const Pipeline& pipeline) {
    if (!historyKey) {
        if (const std::optional<std::string> bytes = disk.read(keyOfDigests())) {
            digests.restore(*bytes);
        }
    }
    const std::filesystem::path& about = pipeline.document.empty() ? pipeline.resultsFolder : pipeline.document;
    const Digest key = keyOf("history", about.string());
    if (historyKey == key) {
        return;
    }
    // Saving a pipeline for the first time does not make it another one.
    const bool isSaved = historyKey && wasUntitled;
    const std::optional<std::string> bytes = disk.read(key);
    if (bytes || (historyKey && !isSaved)) {
        history.fromBytes(bytes.value_or(""));
    }
    historyKey = key;
    wasUntitled = pipeline.document.empty();
}

void RunMemory::writeDown(const RunHistory& now) {
    if (historyKey) {
        disk.write(*historyKey, now.toBytes());
    }
    if (const std::optional<std::string> bytes = digests.changes()) {
        disk.write(keyOfDigests(), *bytes);
    }
}

}  // namespace velmorak
