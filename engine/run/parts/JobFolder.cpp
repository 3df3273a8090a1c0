#include "run/parts/JobFolder.h"

#include "run/announce/RuntimeFolder.h"
#include "run/messages/NodeError.h"
#include "store/Sha256.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include <array>
#include <climits>
#include <fstream>
#include <optional>
#include <sstream>
#include <system_error>

namespace velmorak {

namespace {

namespace fs = std::filesystem;

std::string nameOf(std::size_t part) {
    return fmt::format("{:05}", part + 1);
}

/// @return empty, or why the part is none of this plan.
std::string refusalOf(const PartIdentity& identity, const JobPlan& plan, std::size_t part, const fs::path& file) {
    const std::string name = "the part " + velmorak::quoted(file.string());
    if (identity.plan != plan.digest) {
        return name + " belongs to another plan; remove it and run the part again";
    }
    if (identity.number != part + 1) {
        return fmt::format("{} is part {}; it has got the name of another one", name, identity.number);
    }
    if (identity.build != buildOf(plan)) {
        return name + " was made by another build of the program; remove it and run the part again";
    }
    return "";
}

}  // namespace

fs::path JobFolder::partFile(std::size_t part) const {
    return folder / "parts" / (nameOf(part) + ".part");
}

fs::path JobFolder::failureFile(std::size_t part) const {
    return folder / "parts" / (nameOf(part) + ".failed");
}

fs::path JobFolder::mergedFile(std::size_t run, std::size_t pass, std::size_t neededBy) const {
    return folder / "merged" / fmt::format("{}-{}-for-{}.part", run + 1, pass + 1, neededBy + 1);
}

bool JobFolder::hasMerged(const JobPlan& plan, std::size_t run, std::size_t pass, std::size_t neededBy) const {
    const fs::path file = mergedFile(run, pass, neededBy);
    std::error_code ignored;
    bool isOfPlan = false;
    return fs::exists(file, ignored) && !errorIn([&] {
               const PartIdentity identity = PartReader(file).identity();
               isOfPlan = identity.plan == plan.digest && identity.number == 0 && identity.build == buildOf(plan);
           }) &&
           isOfPlan;
}

JobFolder::Status JobFolder::statusOf(const JobPlan& plan, std::size_t part) const {
    std::error_code error;
    const fs::path file = partFile(part);
    if (fs::exists(file, error)) {
        std::string refusal;
        const std::optional<NodeError> damage =
            errorIn([&] { refusal = refusalOf(PartReader(file).identity(), plan, part, file); });
        refusal = damage ? damage->sentence : refusal;
        return refusal.empty() ? Status{State::Done} : Status{State::Refused, refusal};
    }
    const std::ifstream note(failureFile(part));
    if (!note) {
        return {State::Missing};
    }
    std::ostringstream reason;
    reason << note.rdbuf();
    std::string text(trimmed(reason.str()));
    return {State::Failed, text.empty() ? "its reason could not be written" : std::move(text)};
}

void JobFolder::noteFailure(std::size_t part, const std::string& reason) const {
    std::ofstream(failureFile(part)) << reason << '\n';
}

void JobFolder::forgetFailure(std::size_t part) const {
    std::error_code ignored;
    fs::remove(failureFile(part), ignored);
}

fs::path JobFolder::workerFile(std::size_t part) const {
    return folder / "nodes" / (nameOf(part) + ".json");
}

void JobFolder::noteWorker(std::size_t part) const {
    std::error_code ignored;
    fs::create_directories(folder / "nodes", ignored);
    std::array<char, HOST_NAME_MAX + 1> host{};
    gethostname(host.data(), host.size() - 1);
    const nlohmann::ordered_json note{{"host", host.data()}, {"process", getpid()}, {"time", millisecondsNow()}};
    std::ofstream(workerFile(part)) << note.dump(-1, ' ', true, nlohmann::ordered_json::error_handler_t::replace)
                                    << '\n';
}

void JobFolder::forgetWorker(std::size_t part) const {
    std::error_code ignored;
    fs::remove(workerFile(part), ignored);
}

void JobFolder::removeLeftovers() const {
    std::error_code ignored;
    for (const char* const place : {"parts", "merged"}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder / place, ignored)) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with('.') && name.ends_with(".part")) {
                fs::remove(entry.path(), ignored);
            }
        }
    }
}

std::string buildOf(const JobPlan& plan) {
    Sha256 digester;
    digester.addText(plan.program);
    for (const auto& [kind, build] : plan.builds) {
        digester.addText(kind);
        digester.addText(build);
    }
    return hexOf(digester.finish());
}

}  // namespace velmorak
