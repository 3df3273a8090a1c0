#include "Jobs.h"

#include "run/announce/RuntimeFolder.h"
#include "run/parts/JobFolder.h"
#include "run/parts/JobPlan.h"

#include <velmorak/Failure.h>

#include <nlohmann/json.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr std::size_t maxNote = 4096;
constexpr std::size_t maxParts = 100000;
constexpr std::size_t maxJobs = 20;

std::string startOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(maxNote, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(0, file.gcount())));
    return text;
}

std::string thisHost() {
    std::array<char, HOST_NAME_MAX + 1> host{};
    gethostname(host.data(), host.size() - 1);
    return host.data();
}

/// Names of the files in a folder, and the times of their last change in milliseconds.
std::map<std::string, long long> filesIn(const fs::path& folder) {
    std::map<std::string, long long> files;
    std::error_code error;
    for (fs::directory_iterator at(folder, error); !error && at != fs::end(at); at.increment(error)) {
        struct stat status {};
        if (files.size() <= 3 * maxParts && lstat(at->path().c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            files.emplace(at->path().filename().string(),
                          status.st_mtim.tv_sec * 1000LL + status.st_mtim.tv_nsec / 1000000);
        }
    }
    return files;
}

/// What the folder says about one part.
class PartFiles {
public:
    using Files = std::map<std::string, long long>;

    PartFiles(const fs::path& folder, const Files& parts, const Files& nodes, std::size_t number);

    Json json() const;

private:
    std::string stateOf(const Json& note) const;

    /// Only of a process on this machine.
    static bool isDead(const Json& note);

    const fs::path& folder;
    const Files& parts;
    const Files& nodes;
    std::string name;
};

PartFiles::PartFiles(const fs::path& folder, const Files& parts, const Files& nodes, std::size_t number)
    : folder(folder), parts(parts), nodes(nodes) {
    std::ostringstream text;
    text.fill('0');
    text.width(5);
    text << number;
    name = text.str();
}

Json PartFiles::json() const {
    Json note = nodes.contains(name + ".json")
                    ? Json::parse(startOf(folder / "nodes" / (name + ".json")), nullptr, false)
                    : Json();
    note = note.is_object() ? note : Json::object();
    Json json{{"state", stateOf(note)}};
    if (note.contains("host") && note["host"].is_string()) {
        json["host"] = note["host"];
    }
    const bool hasTime = note.contains("time") && note["time"].is_number_integer();
    if (hasTime) {
        json["time"] = note["time"];
    }
    if (const auto done = parts.find(name + ".part"); done != parts.end() && hasTime) {
        json["seconds"] = std::max(0.0, static_cast<double>(done->second - note["time"].get<long long>()) / 1000.0);
    }
    if (json["state"] == "failed") {
        json["reason"] = startOf(folder / "parts" / (name + ".failed"));
    }
    return json;
}

std::string PartFiles::stateOf(const Json& note) const {
    if (parts.contains(name + ".part")) {
        return "done";
    }
    const auto failed = parts.find(name + ".failed");
    const bool isNewer = failed != parts.end() && note.contains("time") && note["time"].is_number_integer() &&
                         note["time"].get<long long>() > failed->second;
    if (failed != parts.end() && !isNewer) {
        return "failed";
    }
    if (note.empty()) {
        return "waiting";
    }
    return isDead(note) ? "died" : "running";
}

bool PartFiles::isDead(const Json& note) {
    return note.contains("host") && note["host"] == thisHost() && note.contains("process") &&
           note["process"].is_number_integer() && kill(note["process"].get<pid_t>(), 0) != 0 && errno == ESRCH;
}

}  // namespace

bool Jobs::isJob(const fs::path& folder) {
    std::error_code error;
    return fs::is_regular_file(velmorak::JobFolder(folder).planFile(), error) &&
           fs::is_directory(folder / "parts", error);
}

std::vector<fs::path> Jobs::folders() const {
    std::vector<std::pair<long long, fs::path>> found;
    for (const auto& [name, time] : runtime.empty() ? std::map<std::string, long long>() : filesIn(runtime)) {
        if (name.starts_with(velmorak::jobFilePrefix) && name.ends_with(velmorak::announcementEnding)) {
            const Json note = Json::parse(startOf(runtime / name), nullptr, false);
            const bool hasFolder = note.is_object() && note.contains("folder") && note.at("folder").is_string();
            const fs::path folder = hasFolder ? note.at("folder").get<std::string>() : std::string();
            if (folder.is_absolute() && isJob(folder)) {
                found.emplace_back(-time, folder);
            }
        }
    }
    std::sort(found.begin(), found.end());
    std::vector<fs::path> folders;
    if (!shown.empty()) {
        folders.push_back(shown);
    }
    for (const auto& [time, folder] : found) {
        if (folders.size() < maxJobs && std::find(folders.begin(), folders.end(), folder) == folders.end()) {
            folders.push_back(folder);
        }
    }
    return folders;
}

const Jobs::Plan& Jobs::planOf(const fs::path& folder) {
    const fs::path file = velmorak::JobFolder(folder).planFile();
    struct stat status {};
    stat(file.c_str(), &status);
    const std::int64_t modified = status.st_mtim.tv_sec * 1000000000LL + status.st_mtim.tv_nsec;
    Plan& plan = plans[folder];
    if (plan.modified == modified && plan.bytes == static_cast<std::uintmax_t>(status.st_size)) {
        return plan;
    }
    plan = {modified, static_cast<std::uintmax_t>(status.st_size), "", "", {}};
    try {
        const velmorak::JobPlan read = velmorak::readPlan(file);
        plan.document = read.document;
        for (std::size_t i = 0; i < std::min(read.parts.size(), maxParts); ++i) {
            const velmorak::PlannedPass& pass = read.passOf(read.parts[i]);
            Part part{read.runs[read.parts[i].run].folder, pass.round, ""};
            for (const std::string& target : pass.targets) {
                part.targets += (part.targets.empty() ? "" : ", ") + target;
            }
            plan.parts.push_back(std::move(part));
        }
    } catch (const velmorak::Failure& failure) {
        plan.error = failure.what();
    }
    return plan;
}

std::string Jobs::list() {
    Json all = Json::array();
    const velmorak::MutexLock lock(mutex);
    for (const fs::path& folder : folders()) {
        const Plan& plan = planOf(folder);
        const auto parts = filesIn(folder / "parts");
        const auto nodes = filesIn(folder / "nodes");
        Json job{{"folder", folder.string()}, {"document", plan.document}, {"parts", Json::array()}};
        if (!plan.error.empty()) {
            job["error"] = plan.error;
        }
        for (std::size_t i = 0; i < plan.parts.size(); ++i) {
            Json part = PartFiles(folder, parts, nodes, i + 1).json();
            part["round"] = plan.parts[i].round;
            part["run"] = plan.parts[i].run;
            part["targets"] = plan.parts[i].targets;
            job["parts"].push_back(std::move(part));
        }
        all.push_back(std::move(job));
    }
    return all.dump(-1, ' ', false, Json::error_handler_t::replace);
}
