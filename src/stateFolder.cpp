#include "stateFolder.h"

#include "fileParts.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <set>

namespace {

namespace fs = std::filesystem;

constexpr mode_t ownFolder = 0700;
constexpr mode_t ownFile = 0600;
constexpr std::size_t maxRemoved = 50;

fs::path stateFolder() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state && fs::path(state).is_absolute()) {
        return fs::path(state) / "velmorak";
    }
    const char* const home = std::getenv("HOME");
    // Without a home, a place in which nothing can be made.
    return home && fs::path(home).is_absolute() ? fs::path(home) / ".local/state/velmorak" : "/dev/null/velmorak";
}

// @return where nothing can be made, a folder that is not there.
fs::path madeFolder(const char* name) {
    fs::path folder = stateFolder() / name;
    fs::path made;
    for (const fs::path& part : folder) {
        made /= part;
        mkdir(made.c_str(), ownFolder);
    }
    return folder;
}

bool put(const fs::path& file, std::string_view text) {
    PassingFile passing(folderOf(file), ownFile);
    return passing.isOpen() && passing.write(text) && passing.takePlaceOf(file);
}

fs::path originOf(fs::path file) {
    return file.replace_extension(".origin");
}

// The text is there only when its origin is.
bool putWithOrigin(const fs::path& file, std::string_view text, const std::string& origin) {
    removeLeftovers(folderOf(file));
    return put(originOf(file), origin) && put(file, text);
}

void removeWithOrigin(const fs::path& file) {
    unlink(file.c_str());
    unlink(originOf(file).c_str());
}

std::string pathOf(const fs::path& file) {
    std::error_code failure;
    const fs::path found = fs::weakly_canonical(fs::absolute(file, failure), failure);
    return failure ? file.string() : found.string();
}

// FNV-1a.
std::string digestOf(const std::string& text) {
    std::uint64_t hash = 0xcbf29ce484222325U;
    for (const char byte : text) {
        hash = (hash ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    std::array<char, 16> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), hash, 16).ptr;
    return {digits.data(), end};
}

fs::path copyBeside(const fs::path& target) {
    return folderOf(target) / ('.' + target.filename().string() + ".velmorak-new");
}

fs::path copyInState(const fs::path& target) {
    return stateFolder() / "saving" / (digestOf(pathOf(target)) + ".new");
}

// Names begin with the time, so their order is that of their making.
void removeOldest(const fs::path& folder) {
    std::set<std::string> stems;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        stems.insert(entry->path().stem().string());
    }
    while (stems.size() > maxRemoved) {
        removeWithOrigin(folder / (*stems.begin() + ".zedra"));
        stems.erase(stems.begin());
    }
}

std::string timeAndProcess() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
    gmtime_r(&now, &utc);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y%m%dT%H%M%SZ-", &utc);
    return std::string(text.data(), length) + std::to_string(getpid()) + '-';
}

}  // namespace

std::string keepRemoved(std::string_view text, const std::string& origin) {
    const fs::path folder = madeFolder("removed");
    const std::string stem = timeAndProcess();
    fs::path file;
    unsigned number = 0;
    std::error_code failure;
    do {
        file = folder / (stem + std::to_string(number++) + ".zedra");
    } while (fs::exists(file, failure));
    const bool isKept = putWithOrigin(file, text, origin.empty() ? std::string() : pathOf(origin));
    removeOldest(folder);
    return isKept ? file.string() : std::string();
}

void forgetRemoved(const std::string& kept) {
    if (!kept.empty()) {
        removeWithOrigin(kept);
    }
}

bool putCopy(const fs::path& target, std::string_view text) {
    if (put(copyBeside(target), text)) {
        return true;
    }
    madeFolder("saving");
    return putWithOrigin(copyInState(target), text, pathOf(target));
}

std::optional<fs::path> copyOf(const fs::path& target) {
    const auto beside = statusOf(copyBeside(target));
    const auto inState = statusOf(copyInState(target));
    if (!beside && !inState) {
        return std::nullopt;
    }
    const bool isBesideNewer = beside && (!inState || beside->st_mtime >= inState->st_mtime);
    return isBesideNewer ? copyBeside(target) : copyInState(target);
}

void removeCopies(const fs::path& target) {
    unlink(copyBeside(target).c_str());
    if (statusOf(copyInState(target))) {
        removeWithOrigin(copyInState(target));
    }
}
