#include "run/results/ResultFolder.h"

#include "run/messages/Visible.h"
#include "run/record/RunRecordFile.h"
#include "run/results/FormerResults.h"
#include "run/results/ResultsPlace.h"
#include "store/AtomicFile.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& fileName, const std::string& reason) {
    throw Failure("the file \"" + fileName + "\" " + reason);
}

/// Resolves links in the part of the path that exists.
fs::path resolveLinks(const fs::path& path) {
    const fs::path absolute = fs::absolute(path).lexically_normal();
    return fs::weakly_canonical(absolute.has_filename() ? absolute : absolute.parent_path());
}

}  // namespace

class ResultFolder::TemporaryFile : public ResultFile {
public:
    TemporaryFile(ResultFolder& results, const fs::path& path, std::string fileName)
        : results(results), finalPath(path), fileName(std::move(fileName)), file(path, std::string(temporaryMark)) {}

    const fs::path& path() const override { return file.temporary(); }
    void keep() override;

private:
    ResultFolder& results;
    fs::path finalPath;
    std::string fileName;
    AtomicFile file;
};

void ResultFolder::TemporaryFile::keep() {
    if (results.stopping) {
        throw Stopped();
    }
    const std::optional<FileStamp> stamp = stampOf(file.temporary());
    if (!stamp) {
        refuse(fileName, "was not written");
    }
    try {
        file.commitUnsynced();
    } catch (const std::system_error& error) {
        refuse(fileName, "cannot be put in its place: " + error.code().message());
    }
    results.note(finalPath, {fileName, finalPath, *stamp});
}

ResultFolder::ResultFolder(const Pipeline& pipeline, bool mayWriteAnywhere, const std::atomic<bool>& stopping)
    : folder(pipeline.resultsFolder),
      folderComplaint(whyNoResultsFolder(pipeline)),
      mayWriteAnywhere(mayWriteAnywhere),
      stopping(stopping) {}

std::unique_ptr<ResultFile> ResultFolder::begin(const std::string& plugin, const std::string& fileName) {
    claim(plugin, fileName);
    const fs::path file = place(fileName);
    std::error_code error;
    fs::create_directories(file.parent_path(), error);
    if (error) {
        refuse(fileName, "cannot be written: the folder " + file.parent_path().string() +
                             " cannot be created: " + error.message());
    }
    if (fs::is_directory(file, error)) {
        refuse(fileName, "cannot be written: a folder has that name");
    }
    displace(plugin, file);
    return std::make_unique<TemporaryFile>(*this, file, fileName);
}

void ResultFolder::displace(const std::string& plugin, const fs::path& file) {
    if (displaced == nullptr || folder.empty() || !isBelow(file, resolveLinks(folder))) {
        return;
    }
    {
        const MutexLock lock(mutex);
        if (owners[file].written) {
            return;  // It is of this run.
        }
    }
    displaced->setAside(plugin, file.lexically_relative(resolveLinks(folder)).string());
}

fs::path ResultFolder::place(const std::string& fileName) const {
    const fs::path name(fileName);
    if (fileName.empty()) {
        throw Failure("the name of the result file is empty");
    }
    if (hasControlCharacter(fileName)) {
        refuse(visible(fileName), "cannot be written: its name has a control character");
    }
    if (!name.has_filename() || name.filename() == "." || name.filename() == "..") {
        refuse(fileName, "cannot be written: this is not a file name");
    }
    if (folder.empty() && name.is_relative()) {
        refuse(fileName, "cannot be written: there is no results folder");
    }
    if (!folderComplaint.empty() && name.is_relative()) {
        refuse(fileName, "cannot be written: " + folderComplaint);
    }
    const fs::path base = folder.empty() ? fs::path() : resolveLinks(folder);
    // Links are resolved in the folder only: a link with the name of the file is replaced.
    fs::path file = resolveLinks((folder / name).parent_path()) / name.filename();
    const bool climbs = std::find(name.begin(), name.end(), "..") != name.end();
    if (!mayWriteAnywhere && (name.is_absolute() || climbs || !isBelow(file, base))) {
        refuse(fileName, "is outside the results folder; set VELMORAK_WRITE_ANYWHERE=1 to allow that");
    }
    return file;
}

void ResultFolder::claim(const std::string& plugin, const std::string& fileName) {
    const fs::path file = place(fileName);
    if (!folder.empty() && file == resolveLinks(folder) / runRecordFileName) {
        refuse(fileName, "is the name of the record of the run; choose another one");
    }
    if (!folder.empty() && isBelow(file, resolveLinks(folder) / formerFolderName)) {
        refuse(fileName, "is in the folder of files of earlier runs; choose another one");
    }
    const MutexLock lock(mutex);
    const auto [owner, isNew] = owners.emplace(file, Owned{plugin, {}});
    if (!isNew && owner->second.plugin != plugin) {
        refuse(fileName, "is already written by \"" + owner->second.plugin + "\"");
    }
    filesOf[plugin].insert(file);
}

void ResultFolder::note(const fs::path& file, WrittenFile written) {
    const MutexLock lock(mutex);
    owners[file].written = std::move(written);
}

std::optional<std::vector<WrittenFile>> ResultFolder::writtenBy(const std::string& plugin) {
    const MutexLock lock(mutex);
    std::vector<WrittenFile> all;
    for (const fs::path& file : filesOf[plugin]) {
        const Owned& owned = owners.at(file);
        if (!owned.written) {
            return std::nullopt;
        }
        all.push_back(*owned.written);
    }
    return all;
}

}  // namespace velmorak
