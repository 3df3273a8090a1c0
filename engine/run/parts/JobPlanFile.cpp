#include "run/parts/JobPlan.h"

#include "run/record/WholeFile.h"
#include "store/Sha256.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>

namespace velmorak {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int formatVersion = 2;
constexpr const char* damaged = " is not a plan, or is damaged; plan the job again";
constexpr std::string_view hexDigits = "0123456789abcdef";

/// The keys of the format, for writer and reader alike.
namespace key {
constexpr const char* plan = "plan";
constexpr const char* velmorak = "velmorak";
constexpr const char* builds = "builds";
constexpr const char* time = "time";
constexpr const char* document = "document";
constexpr const char* aida = "aida";
constexpr const char* folder = "folder";
constexpr const char* results = "results";
constexpr const char* runs = "runs";
constexpr const char* parts = "parts";
constexpr const char* digest = "digest";
constexpr const char* text = "text";
constexpr const char* settings = "settings";
constexpr const char* passes = "passes";
constexpr const char* leftToMerge = "leftToMerge";
constexpr const char* otherFiles = "otherFiles";
constexpr const char* listings = "listings";
constexpr const char* round = "round";
constexpr const char* targets = "targets";
constexpr const char* needs = "needs";
constexpr const char* files = "files";
constexpr const char* plugin = "plugin";
constexpr const char* reason = "reason";
constexpr const char* path = "path";
constexpr const char* bytes = "bytes";
constexpr const char* modified = "modified";
constexpr const char* place = "place";
constexpr const char* sha256 = "sha256";
constexpr const char* facts = "facts";
constexpr const char* name = "name";
constexpr const char* value = "value";
constexpr const char* listing = "listing";
constexpr const char* names = "names";
constexpr const char* run = "run";
constexpr const char* pass = "pass";
constexpr const char* begin = "begin";
constexpr const char* end = "end";
constexpr const char* start = "start";
}  // namespace key

std::string hexOfBytes(const std::string& bytes) {
    std::string hex;
    hex.reserve(2 * bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += hexDigits[byte / 16U];
        hex += hexDigits[byte % 16U];
    }
    return hex;
}

/// Other characters count as 0: the plan has a digest, and the bytes have a checksum.
std::string bytesFromHex(const std::string& hex) {
    const auto digit = [](char c) {
        const std::size_t at = hexDigits.find(c);
        return static_cast<unsigned>(at == std::string_view::npos ? 0 : at);
    };
    std::string bytes;
    bytes.reserve(hex.size() / 2);
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes += static_cast<char>(digit(hex[i]) * 16U + digit(hex[i + 1]));
    }
    return bytes;
}

template <typename Items, typename Convert>
Json listOf(const Items& items, const Convert& convert) {
    Json all = Json::array();
    for (const auto& item : items) {
        all.push_back(convert(item));
    }
    return all;
}

Json jsonOf(const PlannedFile& file) {
    Json json{{key::path, file.path}, {key::bytes, file.bytes}, {key::modified, file.modifiedNs}};
    if (!file.place.empty()) {
        json[key::place] = file.place;
        json[key::sha256] = file.sha256;
    }
    return json;
}

Json factsOf(const PlannedRun& run) {
    Json all = Json::array();
    for (const auto& [fact, value] : run.facts) {
        all.push_back({{key::plugin, fact.first}, {key::name, fact.second}, {key::value, hexOfBytes(value)}});
    }
    return all;
}

Json jsonOf(const PlannedPass& pass) {
    return {{key::round, pass.round},
            {key::targets, pass.targets},
            {key::needs, pass.needs},
            {key::files, listOf(pass.files, [](const PlannedFile& file) { return jsonOf(file); })}};
}

Json jsonOf(const PlannedRun& run) {
    Json listings = Json::array();
    for (const auto& [listing, names] : run.listings) {
        listings.push_back({{key::listing, listing}, {key::names, names}});
    }
    return {{key::text, run.documentText},
            {key::settings, run.settings},
            {key::folder, run.folder},
            {key::passes, listOf(run.passes, [](const PlannedPass& pass) { return jsonOf(pass); })},
            {key::leftToMerge, listOf(run.leftToMerge,
                                      [](const LeftToMerge& left) {
                                          return Json{{key::plugin, left.plugin}, {key::reason, left.reason}};
                                      })},
            {key::otherFiles, listOf(run.otherFiles, [](const PlannedFile& file) { return jsonOf(file); })},
            {key::listings, std::move(listings)},
            {key::facts, factsOf(run)}};
}

Json jsonOf(const PlannedPart& part) {
    const auto place = [](ChunkPlace at) { return Json::array({at.file, at.chunk}); };
    Json json{{key::run, part.run},
              {key::pass, part.pass},
              {key::begin, place(part.range.begin)},
              {key::end, place(part.range.end)}};
    if (const std::optional<ChunkStart>& start = part.range.start) {
        json[key::start] = {start->row, start->bookmark};
    }
    return json;
}

Json jsonOf(const JobPlan& plan) {
    return {{key::plan, formatVersion},
            {key::velmorak, plan.program},
            {key::time, plan.time},
            {key::document, plan.document},
            {key::aida, plan.aidaFile},
            {key::folder, plan.folder},
            {key::results, plan.resultsFolder},
            {key::builds, plan.builds},
            {key::runs, listOf(plan.runs, [](const PlannedRun& run) { return jsonOf(run); })},
            {key::parts, listOf(plan.parts, [](const PlannedPart& part) { return jsonOf(part); })}};
}

PlannedFile fileFrom(const Json& json) {
    return {json.at(key::path).get<std::string>(), json.at(key::bytes).get<std::uint64_t>(),
            json.at(key::modified).get<std::int64_t>(), json.value(key::place, std::string()),
            json.value(key::sha256, std::string())};
}

std::vector<PlannedFile> plannedFilesFrom(const Json& json) {
    std::vector<PlannedFile> files;
    std::transform(json.begin(), json.end(), std::back_inserter(files), fileFrom);
    return files;
}

PlannedRun runFrom(const Json& json) {
    PlannedRun run;
    run.documentText = json.at(key::text).get<std::string>();
    run.settings = json.at(key::settings).get<std::vector<std::string>>();
    run.folder = json.at(key::folder).get<std::string>();
    for (const Json& pass : json.at(key::passes)) {
        run.passes.push_back(
            {pass.at(key::round).get<unsigned>(), pass.at(key::targets).get<std::vector<std::string>>(),
             pass.at(key::needs).get<std::vector<std::size_t>>(), plannedFilesFrom(pass.at(key::files))});
    }
    for (const Json& left : json.at(key::leftToMerge)) {
        run.leftToMerge.push_back({left.at(key::plugin).get<std::string>(), left.at(key::reason).get<std::string>()});
    }
    run.otherFiles = plannedFilesFrom(json.at(key::otherFiles));
    for (const Json& listing : json.at(key::listings)) {
        run.listings[listing.at(key::listing).get<std::string>()] =
            listing.at(key::names).get<std::vector<std::string>>();
    }
    for (const Json& fact : json.at(key::facts)) {
        run.facts[{fact.at(key::plugin).get<std::string>(), fact.at(key::name).get<std::string>()}] =
            bytesFromHex(fact.at(key::value).get<std::string>());
    }
    return run;
}

ChunkPlace placeFrom(const Json& json) {
    return {json.at(0).get<std::uint64_t>(), json.at(1).get<std::uint64_t>()};
}

PassRange rangeFrom(const Json& json) {
    PassRange range{placeFrom(json.at(key::begin)), placeFrom(json.at(key::end)), {}};
    if (json.contains(key::start)) {
        const Json& start = json.at(key::start);
        range.start = {range.begin.chunk, start.at(0).get<std::uint64_t>(), start.at(1).get<std::string>()};
    }
    return range;
}

JobPlan planFrom(const Json& json) {
    JobPlan plan;
    plan.program = json.at(key::velmorak).get<std::string>();
    plan.time = json.at(key::time).get<std::string>();
    plan.document = json.at(key::document).get<std::string>();
    plan.aidaFile = json.at(key::aida).get<std::string>();
    plan.folder = json.at(key::folder).get<std::string>();
    plan.resultsFolder = json.at(key::results).get<std::string>();
    plan.builds = json.at(key::builds).get<std::map<std::string, std::string>>();
    for (const Json& run : json.at(key::runs)) {
        plan.runs.push_back(runFrom(run));
    }
    for (const Json& part : json.at(key::parts)) {
        plan.parts.push_back(
            {part.at(key::run).get<std::size_t>(), part.at(key::pass).get<std::size_t>(), rangeFrom(part)});
    }
    return plan;
}

bool isWhole(const PlannedPart& part, const JobPlan& plan) {
    if (part.run >= plan.runs.size() || part.pass >= plan.runs[part.run].passes.size()) {
        return false;
    }
    return part.range.begin < part.range.end && part.range.endFile() <= plan.passOf(part).files.size();
}

bool isWhole(const PlannedRun& run) {
    for (std::size_t pass = 0; pass < run.passes.size(); ++pass) {
        const std::vector<std::size_t>& needs = run.passes[pass].needs;
        if (std::any_of(needs.begin(), needs.end(), [pass](std::size_t need) { return need >= pass; })) {
            return false;
        }
    }
    return true;
}

/// Parts and passes refer to each other as planRun leaves them.
bool isWhole(const JobPlan& plan) {
    for (std::size_t i = 0; i < plan.parts.size(); ++i) {
        if (!isWhole(plan.parts[i], plan) || (i > 0 && plan.roundOf(i) < plan.roundOf(i - 1))) {
            return false;
        }
    }
    return std::all_of(plan.runs.begin(), plan.runs.end(), [](const PlannedRun& run) { return isWhole(run); });
}

std::string digestOf(const Json& plan) {
    const std::string text = plan.dump(-1, ' ', false, Json::error_handler_t::replace);
    Sha256 digester;
    digester.add(text.data(), text.size());
    return hexOf(digester.finish());
}

}  // namespace

void writePlan(const fs::path& file, JobPlan& plan) {
    Json json = jsonOf(plan);
    plan.digest = digestOf(json);
    json[key::digest] = plan.digest;
    try {
        replaceFile(file, json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n");
    } catch (const std::system_error& error) {
        throw Failure("the plan " + velmorak::quoted(file.string()) + " cannot be written: " + error.code().message());
    }
}

JobPlan readPlan(const fs::path& file) {
    const std::string name = velmorak::quoted(file.string());
    try {
        Json json = Json::parse(contentOf(file, "the plan " + name));
        if (json.at(key::plan) != formatVersion) {
            throw Failure("the plan " + name + " is of another version of the program; plan the job again");
        }
        const auto digest = json.at(key::digest).get<std::string>();
        json.erase(key::digest);
        if (digest != digestOf(json)) {
            throw Failure("the plan " + name + " was changed after it was made; plan the job again");
        }
        JobPlan plan = planFrom(json);
        plan.digest = digest;
        if (isWhole(plan)) {
            return plan;
        }
    } catch (const Json::exception&) {
        throw Failure(name + damaged);
    }
    throw Failure(name + damaged);
}

}  // namespace velmorak
