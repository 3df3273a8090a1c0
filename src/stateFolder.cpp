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

constexpr mode_t privateFolder = 0700;
constexpr std::size_t maxRemoved = 50;

fs::path stateFolder() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && fs::path(state).is_absolute()) {
        return fs::path(state) / "velmorak";
    }
    const char* const home = std::getenv("HOME");
    // Without a home, a folder that cannot be created.
    return home && fs::path(home).is_absolute() ? fs::path(home) / ".local/state/velmorak" : "/dev/null/velmorak";
}

// Creates the folder. @return its path, even if it could not be created.
fs::path createFolder(const char* name) {
    fs::path folder = stateFolder() / name;
    fs::path made;
    for (const fs::path& part : folder) {
        made /= part;
        mkdir(made.c_str(), privateFolder);
    }
    return folder;
}

bool put(const fs::path& file, std::string_view text) {
    TemporaryFile temporary(folderOf(file), privateFile);
    return temporary.isOpen() && temporary.write(text) && temporary.renameTo(file);
}

fs::path originOf(fs::path file) {
    return file.replace_extension(".origin");
}

// The origin comes first: a text never exists without it.
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

// Names begin with the time, so that they sort by age.
void removeOldest(const fs::path& folder) {
    std::set<std::string> stems;
    std::error_code failure;
    for (fs::directory_iterator entry(folder, failure); !failure && entry != fs::directory_iterator();
         entry.increment(failure)) {
        stems.insert(entry->path().stem().string());
    }
    while (stems.size() > maxRemoved) {
        removeWithOrigin(folder / (*stems.begin() + documentExtension));
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
    const fs::path folder = createFolder("removed");
    const std::string stem = timeAndProcess();
    fs::path file;
    unsigned number = 0;
    std::error_code failure;
    do {
        file = folder / (stem + std::to_string(number++) + documentExtension);
    } while (fs::exists(file, failure));
    const bool isWritten = putWithOrigin(file, text, origin.empty() ? std::string() : pathOf(origin));
    removeOldest(folder);
    return isWritten ? file.string() : std::string();
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
    createFolder("saving");
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
