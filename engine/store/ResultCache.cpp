#include "store/ResultCache.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace velmorak {

Keeper::Keeper(RunState& state, ResultStore& store, FileDigests& digests)
    : state(state),
      store(store),
      digests(digests),
      number(store.beginRun()),
      keys(contentKeys(state)),
      isSeen(state.runs.size(), false),
      files(state.runs.size()),
      asked(state.runs.size()),
      written(state.runs.size()) {}

bool Keeper::reuse(std::size_t position) {
    if (!keys[position]) {
        return false;
    }
    std::optional<StoredResult> stored = store.find(*keys[position]);
    if (!stored || !isRight(*stored) || !claims(position, *stored)) {
        return false;
    }
    isSeen[position] = true;
    files[position] = std::move(stored->files);
    asked[position] = std::move(stored->asked);
    written[position] = std::move(stored->written);
    state.finish(position, Outcome::Reused, std::move(stored->outputs));
    return true;
}

bool Keeper::isRight(const StoredResult& stored) {
    const auto isAsItWas = [this](const FileContent& file) { return contentOf(file.file) == file.digest; };
    const auto isStillThere = [this](const FileContent& file) { return resultContentOf(*file.file) == file.digest; };
    return std::all_of(stored.files.begin(), stored.files.end(), isAsItWas) &&
           std::all_of(stored.written.begin(), stored.written.end(), isStillThere);
}

/// The files of a plug-in that is not executed are its own all the same: no other may write them.
bool Keeper::claims(std::size_t position, const StoredResult& stored) {
    const std::optional<Problem> problem = problemIn([&] {
        for (const FileContent& file : stored.written) {
            state.results.claim(state.node(position).name, *file.file);
        }
    });
    return !problem;
}

std::optional<Digest> Keeper::contentOf(const NamedFile& file) {
    return digests.of(resolved(state.pipeline, file), state.stopping);
}

std::optional<Digest> Keeper::resultContentOf(const std::string& fileName) {
    std::optional<Digest> digest;
    const std::optional<Problem> refusal =
        problemIn([&] { digest = digests.of(state.results.place(fileName), state.stopping); });
    return refusal ? std::nullopt : digest;
}

void Keeper::keep(const std::vector<std::size_t>& finished) {
    for (const std::size_t position : finished) {
        const NodeRun& run = state.runs[position];
        if (!run.isNeeded || isSeen[position] || !(run.isSettled || run.hasPassed)) {
            continue;
        }
        isSeen[position] = true;
        keep(position);
    }
}

void Keeper::keep(std::size_t position) {
    const bool hasFiles = gatherFiles(position);
    const NodeRun& run = state.runs[position];
    const bool isComplete = run.hasPassed || run.report.outcome == Outcome::Done;
    if (!isComplete || !hasFiles || !keys[position] || state.plan.tellsOfRun(position) || state.hasFailed(position) ||
        !gatherWritten(position)) {
        return;
    }
    std::string reason;
    const std::optional<Problem> problem = problemIn([&] {
        reason = store.keep(number, *keys[position],
                            {run.report.outputs, *files[position], asked[position], written[position]});
    });
    if (problem || !reason.empty()) {
        state.messages.line(titleOf(state.node(position)) +
                            ": the result is not kept for later: " + (problem ? problem->sentence : reason));
    }
}

bool Keeper::gatherFiles(std::size_t position) {
    std::vector<FileContent> all;
    bool isWhole = true;
    for (const AskedFile& file : state.runs[position].context->askedFiles()) {
        const std::optional<Digest> digest = contentOf(file.file);
        // A file that has changed since then may not be what the result was made from.
        if (digest && stampOf(resolved(state.pipeline, file.file)) == file.stamp) {
            asked[position].push_back({file.file, *digest});
        } else {
            isWhole = false;
        }
    }
    for (const std::size_t feeder : state.plan.feeders(position)) {
        if (files[feeder]) {
            all.insert(all.end(), files[feeder]->begin(), files[feeder]->end());
        }
        isWhole = isWhole && files[feeder];
    }
    all.insert(all.end(), asked[position].begin(), asked[position].end());
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.file < b.file; });
    all.erase(std::unique(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.file == b.file; }),
              all.end());
    files[position] = isWhole ? std::optional(std::move(all)) : std::nullopt;
    return isWhole;
}

std::vector<FileContent> Keeper::filesOf(const std::vector<std::size_t>& positions) {
    std::map<NamedFile, Digest> all;
    for (const std::size_t position : positions) {
        if (files[position]) {
            for (const FileContent& file : *files[position]) {
                all[file.file] = file.digest;
            }
        }
        for (const AskedFile& file : state.runs[position].context->askedFiles()) {
            all[file.file] = contentOf(file.file).value_or(Digest{});
        }
    }
    // A source also names the path of what it was given by another name.
    std::set<std::string> paths;
    for (const auto& [file, digest] : all) {
        const std::string path = resolved(state.pipeline, file).string();
        if (file != path) {
            paths.insert(path);
        }
    }
    std::vector<FileContent> contents;
    for (const auto& [file, digest] : all) {
        if (!file || !paths.contains(*file)) {
            contents.push_back({file, digest});
        }
    }
    return contents;
}

bool Keeper::gatherWritten(std::size_t position) {
    const auto left = state.results.writtenBy(state.node(position).name);
    if (!left) {
        return false;
    }
    for (const WrittenFile& file : *left) {
        const std::optional<Digest> digest = digests.of(file.path, state.stopping);
        const std::optional<FileStamp> now = stampOf(file.path);
        // Another program may have put a file of its own there meanwhile.
        if (!digest || !now || !hasSameContent(*now, file.stamp)) {
            return false;
        }
        written[position].push_back({file.fileName, *digest});
    }
    return true;
}

}  // namespace velmorak
