#include "run/parts/Bundle.h"

#include "store/FileHashes.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <system_error>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

constexpr const char* inputsFolder = "inputs";

/// Calls a function with each file of the passes and with each other file.
template <typename Plan, typename Work>
void forEachFile(Plan& plan, const Work& work) {
    for (auto& run : plan.runs) {
        for (auto& pass : run.passes) {
            for (auto& file : pass.files) {
                work(file, false);
            }
        }
        for (auto& file : run.otherFiles) {
            work(file, true);
        }
    }
}

/// Notes places and checksums.
class Bundling {
public:
    Bundling(const fs::path& job, const std::atomic<bool>& stopping) : job(job), stopping(stopping) {}

    void add(PlannedFile& file, bool isCopied);

private:
    /// @return the place of a copy in the folder of the job.
    std::string copied(const fs::path& path);

    const fs::path& job;
    const std::atomic<bool>& stopping;
    FileHashes hashes;
    std::map<std::string, std::string> places;  ///< By path.
    std::size_t copies = 0;
};

void Bundling::add(PlannedFile& file, bool isCopied) {
    if (file.path.empty()) {
        return;
    }
    const auto known = places.find(file.path);
    if (known == places.end()) {
        file.place = isCopied ? copied(file.path) : fs::path(file.path).lexically_relative(job).generic_string();
        places.emplace(file.path, file.place);
    } else {
        file.place = known->second;
    }
    const std::optional<Digest> digest = hashes.of(file.path, stopping);
    if (stopping) {
        throw Stopped();
    }
    file.sha256 = digest ? hexOf(*digest) : "";  // A damaged file that the run goes on without.
}

std::string Bundling::copied(const fs::path& path) {
    const fs::path place = fs::path(inputsFolder) / fmt::format("{}-{}", ++copies, path.filename().string());
    std::error_code error;
    fs::copy_file(path, job / place, fs::copy_options::overwrite_existing, error);
    if (error) {
        throw Failure("the file " + velmorak::quoted(path.string()) +
                      " cannot be copied to the folder of the job: " + error.message());
    }
    return place.generic_string();
}

void writeList(const JobPlan& plan, std::size_t part, const fs::path& file) {
    errno = 0;
    std::ofstream list(file);
    const PlannedPass& pass = plan.passOf(plan.parts[part]);
    const PassRange& range = plan.parts[part].range;
    for (std::uint64_t i = range.begin.file; i < std::min<std::uint64_t>(range.endFile(), pass.files.size()); ++i) {
        if (!pass.files[i].place.empty()) {
            list << pass.files[i].place << '\n';
        }
    }
    list.close();
    if (!list) {
        throw Failure(velmorak::quoted(file.string()) +
                      " cannot be written: " + std::generic_category().message(errno));
    }
}

bool isAsPlanned(const PlannedFile& file) {
    const std::optional<FileStamp> stamp = stampOf(file.path);
    return stamp && static_cast<std::uint64_t>(stamp->size) == file.bytes && stamp->modifiedNs == file.modifiedNs;
}

bool hasSize(const fs::path& path, std::uint64_t bytes) {
    const std::optional<FileStamp> stamp = stampOf(path);
    return stamp && static_cast<std::uint64_t>(stamp->size) == bytes;
}

}  // namespace

void bundleFiles(JobPlan& plan, const fs::path& job, const std::atomic<bool>& stopping) {
    std::error_code error;
    fs::create_directories(job / inputsFolder, error);
    if (error) {
        throw Failure("the folder " + velmorak::quoted((job / inputsFolder).string()) +
                      " cannot be created: " + error.message());
    }
    Bundling bundling(job, stopping);
    forEachFile(plan, [&](PlannedFile& file, bool isOther) { bundling.add(file, isOther); });
    for (std::size_t part = 0; part < plan.parts.size(); ++part) {
        writeList(plan, part, job / inputsFolder / fmt::format("{:05}.txt", part + 1));
    }
}

MovedFiles movedFiles(const JobPlan& plan, const fs::path& job) {
    MovedFiles moved{plan.folder, {}};
    forEachFile(plan, [&](const PlannedFile& file, bool) {
        if (file.place.empty() || moved.places.contains(file.path) || isAsPlanned(file)) {
            return;
        }
        for (const fs::path& path : {job / file.place, job.parent_path() / fs::path(file.path).filename()}) {
            if (hasSize(path, file.bytes)) {
                moved.places.emplace(file.path, path.lexically_normal());
                return;
            }
        }
    });
    return moved;
}

}  // namespace velmorak
