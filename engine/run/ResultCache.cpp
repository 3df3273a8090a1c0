#include "store/ResultCache.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace velmorak {

ResultCache::ResultCache(RunState& state, ResultStore& store, FileHashes& digests)
    : state(state),
      store(store),
      digests(digests),
      number(store.beginRun()),
      keys(cacheKeys(state)),
      isSeen(state.runs.size(), false),
      files(state.runs.size()),
      asked(state.runs.size()),
      written(state.runs.size()) {}

bool ResultCache::reuse(std::size_t position) {
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
    state.finish(position, NodeStatus::Reused, std::move(stored->outputs));
    return true;
}

bool ResultCache::isRight(const StoredResult& stored) {
    const auto isAsItWas = [this](const FileContent& file) { return contentOf(file.file) == file.digest; };
    const auto isStillThere = [this](const FileContent& file) { return resultContentOf(*file.file) == file.digest; };
    return std::all_of(stored.files.begin(), stored.files.end(), isAsItWas) &&
           std::all_of(stored.written.begin(), stored.written.end(), isStillThere);
}

/// The files of a plug-in that is not executed are its own all the same: no other may write them.
bool ResultCache::claims(std::size_t position, const StoredResult& stored) {
    const std::optional<NodeError> error = errorIn([&] {
        for (const FileContent& file : stored.written) {
            state.results.claim(state.node(position).name, *file.file);
        }
    });
    return !error;
}

std::optional<Digest> ResultCache::contentOf(const NamedFile& file) {
    return digests.of(resolved(state.pipeline, file), state.stopping);
}

std::optional<Digest> ResultCache::resultContentOf(const std::string& fileName) {
    std::optional<Digest> digest;
    const std::optional<NodeError> refusal =
        errorIn([&] { digest = digests.of(state.results.place(fileName), state.stopping); });
    return refusal ? std::nullopt : digest;
}

void ResultCache::keep(const std::vector<std::size_t>& finished) {
    for (const std::size_t position : finished) {
        const NodeRun& run = state.runs[position];
        if (!run.isNeeded || isSeen[position] || !(run.isFinal || run.hasStreamed)) {
            continue;
        }
        isSeen[position] = true;
        keep(position);
    }
}

void ResultCache::keep(std::size_t position) {
    const bool hasFiles = gatherFiles(position);
    const NodeRun& run = state.runs[position];
    const bool isComplete = run.hasStreamed || run.report.status == NodeStatus::Done;
    if (!isComplete || !hasFiles || !keys[position] || state.plan.isRunReporter(position) ||
        state.hasFailed(position) || !gatherWritten(position)) {
        return;
    }
    std::string reason;
    const std::optional<NodeError> error = errorIn([&] {
        reason = store.keep(number, *keys[position],
                            {run.report.outputs, *files[position], asked[position], written[position]});
    });
    if (error || !reason.empty()) {
        state.messages.line(titleOf(state.node(position)) +
                            ": the result is not kept for later: " + (error ? error->sentence : reason));
    }
}

bool ResultCache::gatherFiles(std::size_t position) {
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
    for (const std::size_t feeder : state.plan.upstream(position)) {
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

std::vector<FileContent> ResultCache::filesOf(const std::vector<std::size_t>& positions) {
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

bool ResultCache::gatherWritten(std::size_t position) {
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
