#include "run/announce/RuntimeFolder.h"

#include "store/FileDescriptor.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t maxKept = 30;
constexpr off_t maxMessageBytes = 1 << 20;
constexpr const char* lookFile = "look";
constexpr std::chrono::seconds maxLookTime{15};

bool isOwnFolder(const fs::path& folder) {
    struct stat status {};
    return lstat(folder.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && status.st_uid == geteuid() &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

bool isAnnouncement(const std::string& name) {
    return (name.starts_with(runFilePrefix) || name.starts_with(messageFilePrefix) ||
            name.starts_with(jobFilePrefix)) &&
           name.ends_with(announcementEnding);
}

}  // namespace

fs::path runtimeFolder() {
    const char* const base = std::getenv("XDG_RUNTIME_DIR");
    if (!base || *base != '/') {
        return {};
    }
    fs::path folder = fs::path(base) / "velmorak";
    mkdir(folder.c_str(), S_IRWXU);  // It may exist.
    return isOwnFolder(folder) ? folder : fs::path();
}

bool isLocked(const fs::path& file) {
    const FileDescriptor descriptor(file, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    return descriptor.isOpen() && flock(descriptor.get(), LOCK_SH | LOCK_NB) != 0;
}

void removeOldAnnouncements(const fs::path& folder) {
    std::vector<std::pair<fs::file_time_type, fs::path>> files;
    std::error_code error;
    for (fs::directory_iterator at(folder, error); !error && at != fs::end(at); at.increment(error)) {
        std::error_code ignored;
        if (isAnnouncement(at->path().filename().string())) {
            files.emplace_back(at->last_write_time(ignored), at->path());
        }
    }
    if (files.size() <= maxKept) {
        return;
    }
    std::sort(files.begin(), files.end());
    files.resize(files.size() - maxKept);
    for (const auto& [time, file] : files) {
        if (!isLocked(file)) {
            fs::remove(file, error);
            fs::remove(file.string() + std::string(progressEnding), error);
            fs::remove(file.string() + std::string(liveEnding), error);
        }
    }
}

void announceJob(const fs::path& job) noexcept {
    try {
        const fs::path folder = runtimeFolder();
        if (folder.empty()) {
            return;
        }
        removeOldAnnouncements(folder);
        std::uint64_t number = 0xcbf29ce484222325U;  // FNV-1a: one file for each job.
        for (const char character : job.string()) {
            number = (number ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
        }
        const fs::path path =
            folder / (std::string(jobFilePrefix) + std::to_string(number) + std::string(announcementEnding));
        const FileDescriptor file(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
        if (file.isOpen()) {
            const nlohmann::ordered_json line{{"event", "job"}, {"time", millisecondsNow()}, {"folder", job.string()}};
            file.writeAll(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
        }
    } catch (const std::exception&) {
        return;
    }
}

void noteLook(const fs::path& folder) {
    const FileDescriptor file(folder / lookFile, O_WRONLY | O_CREAT | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (file.isOpen()) {
        futimens(file.get(), nullptr);  // Without it, pages show results at the end of a plug-in only.
    }
}

bool isLookedAt(const fs::path& folder) {
    struct stat status {};
    if (lstat((folder / lookFile).c_str(), &status) != 0) {
        return false;
    }
    const auto age = std::chrono::system_clock::now().time_since_epoch() - std::chrono::seconds(status.st_mtim.tv_sec);
    return age < maxLookTime && age > -maxLookTime;
}

void announceMessage(const std::string& sentence) noexcept {
    try {
        const fs::path folder = runtimeFolder();
        if (folder.empty()) {
            return;
        }
        const fs::path path =
            folder / (std::string(messageFilePrefix) + std::to_string(getpid()) + std::string(announcementEnding));
        const FileDescriptor file(path, O_WRONLY | O_CREAT | O_APPEND | O_NOFOLLOW, S_IRUSR | S_IWUSR);
        if (!file.isOpen() || lseek(file.get(), 0, SEEK_END) > maxMessageBytes) {
            return;
        }
        const nlohmann::ordered_json line{{"event", "message"}, {"time", millisecondsNow()}, {"text", sentence}};
        file.writeAll(line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
    } catch (const std::exception&) {
        return;
    }
}

long long millisecondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace velmorak
