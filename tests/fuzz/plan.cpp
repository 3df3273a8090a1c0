#include "InputFile.h"
#include "Target.h"

#include "run/parts/JobPlan.h"
#include "store/Sha256.h"

#include <velmorak/Failure.h>
#include <velmorak/TemporaryFolder.h>

#include <nlohmann/json.hpp>

#include <string>

// The plan of a job. The text comes without its digest, which only damage by accident would fail.

namespace velmorak::fuzz {
namespace {

std::string withDigest(std::string_view text) {
    auto json = nlohmann::ordered_json::parse(text, nullptr, false);
    if (!json.is_object()) {
        return std::string(text);
    }
    json.erase("digest");
    const std::string plain = json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    Sha256 digester;
    digester.add(plain.data(), plain.size());
    json["digest"] = hexOf(digester.finish());
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

void check(const JobPlan& plan) {
    unsigned round = 0;
    for (std::size_t i = 0; i < plan.parts.size(); ++i) {
        const PlannedPart& part = plan.parts[i];
        require(part.run < plan.runs.size(), "a part belongs to a run");
        require(part.pass < plan.runs[part.run].passes.size(), "a part belongs to a pass");
        require(part.range.begin < part.range.end, "a part has rows");
        require(part.range.endFile() <= plan.passOf(part).files.size(), "a part reads files of its pass");
        require(plan.roundOf(i) >= round, "parts are in the order of their rounds");
        round = plan.roundOf(i);
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::withDigest(fuzz::textOf(data, size)));
    JobPlan plan;
    try {
        plan = readPlan(file.path());
    } catch (const Failure&) {
        return 0;
    }
    fuzz::check(plan);
    const TemporaryFolder folder("fuzz-plan");
    writePlan(folder.path() / "plan.json", plan);
    const std::string digest = plan.digest;
    JobPlan again = readPlan(folder.path() / "plan.json");
    writePlan(folder.path() / "plan.json", again);
    fuzz::require(again.digest == digest, "a plan that was read is the same when written and read again");
    return 0;
}
