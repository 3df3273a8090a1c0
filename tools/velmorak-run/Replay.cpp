#include "Replay.h"

#include "Settings.h"

#include <velmorak/Failure.h>

#include <ostream>
#include <string>

namespace fs = std::filesystem;
using velmorak::StoredRunRecord;

StoredRunRecord readRecordToRepeat(const fs::path& file) {
    try {
        return velmorak::readRunRecord(file);
    } catch (const velmorak::Failure& failure) {
        throw UsageError(failure.what());
    }
}

fs::path documentFileOf(const StoredRunRecord& record, const fs::path& recordFile) {
    const fs::path& document = record.documentFile;
    if (!document.empty() && fs::is_directory(document.parent_path())) {
        return document;
    }
    const std::string name = document.empty() ? "untitled.zedra" : document.filename().string();
    return fs::absolute(recordFile).parent_path().parent_path() / name;
}

void compareInputs(const StoredRunRecord& before, const StoredRunRecord& repeated, std::ostream& stream) {
    for (const auto& [name, sum] : before.inputs) {
        if (const auto found = repeated.inputs.find(name); found != repeated.inputs.end() && found->second != sum) {
            stream << "The file " << (name.empty() ? "of -a" : "\"" + name + "\"") << " has changed since that run.\n";
        }
    }
}

bool compareResults(const StoredRunRecord& before, const StoredRunRecord& repeated, std::ostream& stream) {
    std::size_t compared = 0;
    bool isSame = true;
    for (const auto& [name, plugin] : before.plugins) {
        if (!plugin.isDone) {
            continue;
        }
        const auto found = repeated.plugins.find(name);
        const StoredRunRecord::Sums now =
            found == repeated.plugins.end() ? StoredRunRecord::Sums() : found->second.results;
        for (const auto& [result, sum] : plugin.results) {
            const auto other = now.find(result);
            ++compared;
            if (other == now.end() || other->second != sum) {
                stream << (other == now.end() ? "missing: " : "differs: ") << result << " of \"" << name << "\"\n";
                isSame = false;
            }
        }
    }
    if (isSame) {
        stream << "identical: " << compared << (compared == 1 ? " result\n" : " results\n");
    }
    return isSame;
}
