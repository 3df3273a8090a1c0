#include "run/results/RunHistory.h"

#include "store/FolderListing.h"
#include "store/StoreBytes.h"

#include <velmorak/Text.h>

#include <fmt/format.h>

#include <algorithm>

namespace velmorak {
namespace {

constexpr const char* unfinished = "it was not finished in the run before";

constexpr std::uint64_t historyMark = 0x31'54'53'48'6b'6c'65'56;

std::string describe(const RunState& state, const PipelineInput& input) {
    if (!input.wire) {
        return input.value.empty() ? "nothing" : input.value;
    }
    const bool isThere = input.wire->node < state.runs.size();
    return (isThere ? velmorak::quoted(state.node(input.wire->node).name) : "nowhere") + " " + input.wire->output;
}

std::string titleOfFile(const NamedFile& file) {
    if (isFolderListing(file)) {
        return titleOfListing(*file);
    }
    return file ? "file " + *file : "the AIDA file of the command line";
}

/// @return the change of the first file whose content differs.
template <typename Contents>
std::string firstChange(const std::vector<FileContent>& files, const Contents& contents) {
    for (const FileContent& file : files) {
        const std::optional<Digest> now = contents(file.file);
        if (now != file.digest) {
            return titleOfFile(file.file) + (now ? " changed" : " is gone");
        }
    }
    return "";
}

/// Why a plug-in without changes is executed.
std::string needOf(const RunState& state, std::size_t position) {
    if (state.plan.isRunReporter(position)) {
        return "it tells of the whole run";
    }
    if (state.plan.isStream(position) || state.plan.storesTable(position)) {
        for (const std::size_t consumer : state.plan.consumers(position)) {
            if (state.runs[consumer].isNeeded && state.runs[consumer].report.status != NodeStatus::Reused) {
                return "its rows are needed by " + velmorak::quoted(state.node(consumer).name);
            }
        }
    }
    return "its result is not kept any more";
}

}  // namespace

RunHistory::Entry RunHistory::entryOf(const RunState& state, std::size_t position) {
    const PipelineNode& node = state.node(position);
    Entry entry{node.kindName, node.kind ? node.kind->version() : 0, {}, {}, {}, {}};
    for (const PipelineInput& input : node.inputs) {
        entry.inputs[input.spec.name] = describe(state, input);
    }
    return entry;
}

void RunHistory::explain(RunState& state, ResultCache& cache) const {
    std::vector<bool> isChanged(state.runs.size(), false);
    for (const std::size_t position : state.plan.order()) {
        NodeRun& run = state.runs[position];
        if (!run.isNeeded) {
            continue;
        }
        if (run.report.status == NodeStatus::Reused) {
            run.report.reason = "nothing changed";
            continue;
        }
        std::string reason = changeOf(state, position, cache);
        for (const std::size_t producer : state.plan.upstream(position)) {
            if (reason.empty() && isChanged[producer]) {
                reason = velmorak::quoted(state.node(producer).name) + " changed";
            }
        }
        isChanged[position] = !reason.empty();
        if (reason.empty()) {
            reason = lossOf(state, position, cache);
        }
        run.report.reason = reason.empty() ? needOf(state, position) : reason;
    }
}

std::string RunHistory::changeOf(const RunState& state, std::size_t position, ResultCache& cache) const {
    const auto found = entries.find(state.node(position).name);
    if (found == entries.end()) {
        return "never run";
    }
    const Entry& before = found->second;
    const Entry now = entryOf(state, position);
    if (before.kindName != now.kindName || before.version != now.version) {
        return fmt::format("version {} of {} was {} of {}", now.version, now.kindName, before.version, before.kindName);
    }
    for (const auto& [input, text] : now.inputs) {
        const auto former = before.inputs.find(input);
        if (former == before.inputs.end()) {
            return input + " is new";
        }
        if (former->second != text) {
            return fmt::format("{} changed from {} to {}", input, former->second, text);
        }
    }
    if (before.inputs.size() != now.inputs.size()) {
        return "it has fewer inputs than before";
    }
    const std::string change = firstChange(before.asked, [&](const NamedFile& file) { return cache.contentOf(file); });
    return change.empty() ? before.sentence : change;
}

std::string RunHistory::lossOf(const RunState& state, std::size_t position, ResultCache& cache) const {
    const Entry& before = entries.at(state.node(position).name);
    return firstChange(before.written, [&](const NamedFile& file) { return cache.resultContentOf(*file); });
}

RunHistory RunHistory::ifInterrupted(const RunState& state) const {
    RunHistory expected = *this;
    for (std::size_t position = 0; position < state.runs.size(); ++position) {
        if (state.runs[position].isNeeded && !state.runs[position].isFinal) {
            Entry& entry = expected.entries[state.node(position).name];
            entry = entryOf(state, position);
            entry.sentence = unfinished;
        }
    }
    return expected;
}

void RunHistory::remember(const RunState& state, const ResultCache& cache) {
    for (std::size_t position = 0; position < state.runs.size(); ++position) {
        const NodeRun& run = state.runs[position];
        const NodeStatus status = run.report.status;
        if (!run.isNeeded || status == NodeStatus::Reused || status == NodeStatus::Skipped) {
            continue;
        }
        Entry& entry = entries[state.node(position).name];
        entry = entryOf(state, position);
        entry.asked = cache.askedFiles(position);
        entry.written = cache.writtenFiles(position);
        if (status == NodeStatus::Failed) {
            entry.sentence = "it failed in the run before";
        } else if (status == NodeStatus::Unfinished) {
            entry.sentence = unfinished;
        }
    }
}

std::string RunHistory::toBytes() const {
    ByteWriter writer;
    writer.number(historyMark);
    writer.number<std::uint64_t>(entries.size());
    for (const auto& [plugin, entry] : entries) {
        writer.list(plugin);
        writer.list(entry.kindName);
        writer.number(entry.version);
        writer.number<std::uint64_t>(entry.inputs.size());
        for (const auto& [input, text] : entry.inputs) {
            writer.list(input);
            writer.list(text);
        }
        addFiles(writer, entry.asked);
        addFiles(writer, entry.written);
        writer.list(entry.sentence);
    }
    return writer.sealed();
}

void RunHistory::fromBytes(const std::string& bytes) {
    entries.clear();
    try {
        ByteReader reader(bytes, historyMark);
        for (auto count = reader.number<std::uint64_t>(); count > 0; --count) {
            Entry& entry = entries[reader.list<std::string>()];
            entry.kindName = reader.list<std::string>();
            entry.version = reader.number<int>();
            for (auto inputs = reader.number<std::uint64_t>(); inputs > 0; --inputs) {
                const auto input = reader.list<std::string>();
                entry.inputs[input] = reader.list<std::string>();
            }
            entry.asked = readFiles(reader);
            entry.written = readFiles(reader);
            entry.sentence = reader.list<std::string>();
        }
    } catch (const std::invalid_argument&) {
        entries.clear();
    }
}

}  // namespace velmorak
