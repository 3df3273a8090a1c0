#include "Journal.h"

#include <cstdlib>

namespace recording {

Journal& Journal::instance() {
    static Journal journal;
    return journal;
}

Journal::Journal() {
    if (const char* file = std::getenv("QZ_RECORDING_LOG")) {
        log.open(file, std::ios::app);
    }
}

void Journal::add(Entry entry) {
    const std::lock_guard lock(mutex);
    if (std::this_thread::get_id() != mainThread) {
        entry.text += " [worker]";
    }
    if (log.is_open()) {
        log << entry.text << std::endl;
    }
    entries.push_back(std::move(entry));
}

std::vector<std::string> Journal::texts(bool onlyEdits, const std::string& operation) {
    const std::lock_guard lock(mutex);
    std::vector<std::string> found;
    for (const Entry& entry : entries) {
        const std::string name = entry.operation.substr(entry.operation.rfind('.') + 1);
        if ((entry.edit || !onlyEdits) && (operation.empty() || name == operation)) {
            found.push_back(entry.text);
        }
    }
    return found;
}

void Journal::forget() {
    const std::lock_guard lock(mutex);
    entries.clear();
}

}  // namespace recording
