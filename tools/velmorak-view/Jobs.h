#pragma once

#include <velmorak/Mutex.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// The jobs of the user that are done in many parts, by their folders: which parts there are, who does them, and which
/// have failed. The folders may be shared with other machines.
/// Threads: every operation may be called on any thread.
class Jobs {
public:
    /// @param runtime the folder in which jobs are announced; empty if there is none.
    /// @param shown folder of a job that is listed as well; may be empty.
    Jobs(std::filesystem::path runtime, std::filesystem::path shown)
        : runtime(std::move(runtime)), shown(std::move(shown)) {}

    /// Whether the folder has the plan of a job.
    static bool isJob(const std::filesystem::path& folder);

    std::string folderShown() const { return shown.string(); }
    /// @return all jobs as JSON, with the state of each part.
    std::string list();

private:
    struct Part {
        std::string run;  ///< Of a scan; else empty.
        unsigned round = 1;
        std::string targets;
    };
    struct Plan {
        std::int64_t modified = 0;
        std::uintmax_t bytes = 0;
        std::string document;
        std::string error;  ///< Why the plan cannot be read.
        std::vector<Part> parts;
    };

    std::vector<std::filesystem::path> folders() const;
    const Plan& planOf(const std::filesystem::path& folder) VELMORAK_REQUIRES(mutex);

    const std::filesystem::path runtime;
    const std::filesystem::path shown;
    velmorak::Mutex mutex;
    std::map<std::filesystem::path, Plan> plans VELMORAK_GUARDED_BY(mutex);  ///< By folder.
};
