#include "Runs.h"

#include "run/announce/RuntimeFolder.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <system_error>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr std::size_t maxPiece = 4U << 20U;
constexpr std::size_t maxProgress = 4096;
constexpr std::chrono::milliseconds listPause{150};

bool isRun(const std::string& name) {
    return name.starts_with(velmorak::runFilePrefix);
}

/// The names that the library gives to announcements, and no others: they come from requests as well.
bool isId(const std::string& name) {
    const bool hasPrefix = isRun(name) || name.starts_with(velmorak::messageFilePrefix);
    if (!hasPrefix || !name.ends_with(velmorak::announcementEnding)) {
        return false;
    }
    const std::size_t begin = name.find('-') + 1;
    const std::size_t end = name.size() - velmorak::announcementEnding.size();
    return begin < end && std::all_of(name.begin() + static_cast<std::ptrdiff_t>(begin),
                                      name.begin() + static_cast<std::ptrdiff_t>(end),
                                      [](char c) { return (c >= '0' && c <= '9') || c == '-'; });
}

std::string textFrom(const fs::path& path, std::uint64_t from, std::size_t most) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(path, error);
    const std::uintmax_t left = error || size < from ? 0 : size - from;
    std::string text(static_cast<std::size_t>(std::min<std::uintmax_t>(left, most)), '\0');
    std::ifstream file(path, std::ios::binary);
    file.seekg(static_cast<std::streamoff>(from));
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(0, file.gcount())));
    return text;
}

Json progressOf(const fs::path& run) {
    const fs::path path = run.string() + std::string(velmorak::progressEnding);
    return Json::parse(textFrom(path, 0, maxProgress), nullptr, false);
}

/// Of the last change in nanoseconds; 0 if there is no such file.
std::int64_t timeOf(const fs::path& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec : 0;
}

Json entryOf(const fs::path& path) {
    std::error_code ignored;
    const std::string id = path.filename().string();
    Json entry{{"id", id}, {"size", fs::file_size(path, ignored)}};
    if (isRun(id)) {
        entry["alive"] = velmorak::isLocked(path);
        const Json progress = progressOf(path);
        entry["progress"] = progress.is_object() ? progress : Json();
        entry["live"] = timeOf(path.string() + std::string(velmorak::liveEnding));
    }
    return entry;
}

}  // namespace

std::string Runs::listing() const {
    std::vector<fs::path> paths;
    std::error_code error;
    for (fs::directory_iterator at(folder, error); !error && at != fs::end(at); at.increment(error)) {
        if (isId(at->path().filename().string()) && at->is_regular_file(error) && !at->is_symlink(error)) {
            paths.push_back(at->path());
        }
    }
    std::sort(paths.begin(), paths.end());
    Json all = Json::array();
    for (const fs::path& path : paths) {
        all.push_back(entryOf(path));
    }
    return all.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string Runs::list() {
    const std::string now = listing();
    const velmorak::MutexLock lock(mutex);
    if (now != last) {
        last = now;
        ++version;
    }
    return R"({"version":)" + std::to_string(version) + R"(,"runs":)" + last + "}";
}

std::string Runs::waitFor(std::uint64_t known, std::chrono::milliseconds longest, const std::function<bool()>& isOver) {
    const auto end = std::chrono::steady_clock::now() + longest;
    while (true) {
        std::string now = list();
        {
            const velmorak::MutexLock lock(mutex);
            if (version != known || isOver() || std::chrono::steady_clock::now() >= end) {
                return now;
            }
        }
        std::this_thread::sleep_for(listPause);
    }
}

std::optional<std::string> Runs::events(const std::string& id, std::uint64_t from) const {
    std::error_code error;
    const fs::path path = folder / id;
    if (!isId(id) || !fs::is_regular_file(fs::symlink_status(path, error))) {
        return std::nullopt;
    }
    std::string text = textFrom(path, from, maxPiece);
    text.resize(text.rfind('\n') == std::string::npos ? 0 : text.rfind('\n') + 1);
    return text;
}

std::optional<std::string> Runs::live(const std::string& id) const {
    std::error_code error;
    const fs::path path = folder / (id + std::string(velmorak::liveEnding));
    if (!isId(id) || !isRun(id) || !fs::is_regular_file(fs::symlink_status(path, error))) {
        return std::nullopt;
    }
    return textFrom(path, 0, maxPiece);
}

void Runs::noteLook() const {
    if (!folder.empty()) {
        velmorak::noteLook(folder);
    }
}

std::optional<std::string> Runs::resultsOf(const std::string& id) {
    {
        const velmorak::MutexLock lock(mutex);
        if (const auto found = resultFolders.find(id); found != resultFolders.end()) {
            return found->second;
        }
    }
    const std::optional<std::string> text = isRun(id) ? events(id, 0) : std::nullopt;
    const Json began = Json::parse(text ? text->substr(0, text->find('\n')) : "", nullptr, false);
    if (!began.is_object() || !began.contains("results") || !began.at("results").is_string()) {
        return std::nullopt;
    }
    const auto results = began.at("results").get<std::string>();
    if (!results.starts_with('/')) {
        return std::nullopt;
    }
    const velmorak::MutexLock lock(mutex);
    return resultFolders[id] = results;
}
