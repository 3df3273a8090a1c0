#include "JobParts.h"

#include "PartText.h"

#include <ostream>

using velmorak::partNames;
using State = velmorak::JobFolder::State;

std::string numbered(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::vector<std::size_t> allParts(const velmorak::JobPlan& plan) {
    std::vector<std::size_t> parts(plan.parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        parts[i] = i;
    }
    return parts;
}

PartsDone partsDone(const velmorak::JobFolder& job, const velmorak::JobPlan& plan,
                    const std::vector<std::size_t>& parts, std::ostream& output) {
    PartsDone done;
    std::vector<std::size_t> unexplained;
    std::string reasons;
    for (const std::size_t part : parts) {
        const velmorak::JobFolder::Status status = job.statusOf(plan, part);
        (status.state == State::Done ? done.parts : done.missing).push_back(part);
        if (status.state == State::Missing) {
            unexplained.push_back(part);
        } else if (status.state != State::Done) {
            reasons += partNames({part}) + (status.state == State::Failed ? " failed: " : ": ") + status.reason + "\n";
        }
    }
    if (!unexplained.empty()) {
        output << "Missing: " << partNames(unexplained) << '\n';
    }
    output << reasons;
    return done;
}
