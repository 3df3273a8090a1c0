#include "run/results/FormerResults.h"

#include "run/record/RunRecordFile.h"
#include "run/results/ResultsPlace.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

/// A file or a link, not a folder or a device.
bool isMovable(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::symlink_status(path, error);
    return !error && (fs::is_regular_file(status) || fs::is_symlink(status));
}

/// Whether a name may be that of a result: records can be damaged, or come from elsewhere.
bool isResultName(const std::string& name) {
    const fs::path path(name);
    return !name.empty() && path.is_relative() && path.has_filename() && *path.begin() != formerFolderName &&
           name != runRecordFileName && std::find(path.begin(), path.end(), "..") == path.end();
}

}  // namespace

std::string plainFileName(const std::string& name) {
    return fs::path(name).lexically_normal().string();
}

FormerResults::FormerResults(const Pipeline& pipeline) : pipeline(pipeline) {
    std::error_code error;
    if (!pipeline.resultsFolder.empty() && whyNoResultsFolder(pipeline).empty()) {
        folder = fs::weakly_canonical(fs::absolute(pipeline.resultsFolder), error);
        formerFolder = folder / formerFolderName;
        read();
    }
}

void FormerResults::read() {
    std::error_code error;
    if (!fs::exists(folder / runRecordFileName, error)) {
        return;
    }
    try {
        const StoredRunRecord record = readRunRecord(folder / runRecordFileName);
        if (pipeline.isResultsFolderChosen && record.documentFile.filename() != pipeline.document.filename()) {
            return;
        }
        const MutexLock lock(mutex);
        for (const FormerFile& file : record.files) {
            if (const std::string name = plainFileName(file.file); isResultName(name)) {
                files.emplace(name, file.plugin);
            }
        }
    } catch (const Failure&) {
        return;  // This run replaces a record that cannot be read.
    }
}

std::vector<FormerFile> FormerResults::known() const {
    const MutexLock lock(mutex);
    std::vector<FormerFile> all;
    for (const auto& [name, plugin] : files) {
        all.push_back({plugin, name});
    }
    return all;
}

bool FormerResults::hasFilesOf(const std::string& plugin) const {
    const MutexLock lock(mutex);
    return std::any_of(files.begin(), files.end(), [&](const auto& file) { return file.second == plugin; });
}

/// @return the path of the name; empty if links lead out of the results folder.
fs::path FormerResults::placeIn(const fs::path& base, const std::string& name) const {
    std::error_code error;
    const fs::path path = base / name;
    const fs::path parent = fs::weakly_canonical(path.parent_path(), error);
    return !error && isBelow(parent, folder) ? parent / path.filename() : fs::path();
}

bool FormerResults::isThere(const std::string& name) const {
    const fs::path path = placeIn(folder, name);
    return !path.empty() && isMovable(path);
}

std::vector<std::string> FormerResults::setAside(const std::set<std::string>& kept) {
    std::vector<std::string> complaints;
    const MutexLock lock(mutex);
    for (const auto& [name, plugin] : files) {
        if (kept.contains(name) || !isThere(name)) {
            continue;
        }
        try {
            move(plugin, name);
        } catch (const Failure& failure) {
            complaints.push_back("From an earlier run, and not moved away: " + std::string(failure.what()));
        }
    }
    return complaints;
}

void FormerResults::setAside(const std::string& plugin, const std::string& name) {
    const MutexLock lock(mutex);
    if (isThere(name)) {
        move(plugin, name);
        files[name] = plugin;
    }
}

void FormerResults::move(const std::string& /*plugin*/, const std::string& name) {
    std::error_code error;
    if (fs::is_symlink(formerFolder, error) || (fs::exists(formerFolder, error) && !fs::is_directory(formerFolder))) {
        throw Failure("the file \"" + name + "\" of an earlier run cannot be moved: " + formerFolder.string() +
                      " is not a folder; remove or rename it");
    }
    const fs::path target = placeIn(formerFolder, name);
    fs::create_directories(target.parent_path(), error);
    if (!error) {
        fs::rename(placeIn(folder, name), target, error);
    }
    if (error || target.empty()) {
        throw Failure("the file \"" + name + "\" of an earlier run cannot be moved to " + formerFolder.string() + ": " +
                      error.message());
    }
    moved.insert(name);
}

std::vector<FormerFile> FormerResults::missing() const {
    const MutexLock lock(mutex);
    return missingNow();
}

std::vector<FormerFile> FormerResults::missingNow() const {
    std::vector<FormerFile> all;
    for (const std::string& name : moved) {
        if (!isThere(name)) {
            all.push_back({files.at(name), name});
        }
    }
    return all;
}

std::vector<FormerFile> FormerResults::finish(bool isGood) {
    const MutexLock lock(mutex);
    std::vector<FormerFile> left;
    for (const auto& [name, plugin] : files) {
        const fs::path path = placeIn(formerFolder, name);
        if (path.empty() || !isMovable(path)) {
            continue;
        }
        if (isGood && (!moved.contains(name) || isThere(name))) {
            remove(name);
        } else {
            left.push_back({plugin, name});
        }
    }
    return left;
}

/// Removes the file and the folders that it leaves empty.
void FormerResults::remove(const std::string& name) const {
    std::error_code error;
    fs::path path = placeIn(formerFolder, name);
    while (!error && isBelow(path, formerFolder) && fs::remove(path, error)) {
        path = path.parent_path();
    }
}

}  // namespace velmorak
