#include "run/results/ResultCache.h"

#include "store/FolderListing.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace velmorak {

ResultCache::ResultCache(RunState& state, ResultStore& store, FileHashes& hashes, NeedsDigest needsDigest)
    : state(state),
      store(store),
      hashes(hashes),
      needsDigest(std::move(needsDigest)),
      runNumber(store.beginRun()),
      keys(cacheKeys(state)),
      isStored(state.runs.size(), false),
      files(state.runs.size()),
      asked(state.runs.size()),
      written(state.runs.size()) {}

bool ResultCache::reuse(std::size_t position) {
    if (!keys[position]) {
        return false;
    }
    std::optional<StoredResult> stored = store.find(*keys[position]);
    if (!stored || !isValid(*stored) || !claims(position, *stored)) {
        return false;
    }
    isStored[position] = true;
    files[position] = std::move(stored->files);
    asked[position] = std::move(stored->asked);
    written[position] = std::move(stored->written);
    state.finish(position, NodeStatus::Reused, std::move(stored->outputs));
    return true;
}

bool ResultCache::confirm(std::size_t position) {
    const std::optional<StoredResult> stored = keys[position] ? store.find(*keys[position]) : std::nullopt;
    if (!stored || !isValid(*stored) || !claims(position, *stored)) {
        return false;
    }
    written[position] = stored->written;
    return true;
}

bool ResultCache::isValid(const StoredResult& stored) {
    const auto isUnchanged = [this](const FileContent& file) { return contentOf(file.file) == file.digest; };
    const auto isStillThere = [this](const FileContent& file) { return resultContentOf(*file.file) == file.digest; };
    return std::all_of(stored.files.begin(), stored.files.end(), isUnchanged) &&
           std::all_of(stored.written.begin(), stored.written.end(), isStillThere);
}

bool ResultCache::claims(std::size_t position, const StoredResult& stored) {
    const std::optional<NodeError> error = errorIn([&] {
        for (const FileContent& file : stored.written) {
            state.results.claim(state.node(position).name, *file.file);
        }
    });
    return !error;
}

std::optional<Digest> ResultCache::contentOf(const NamedFile& file) {
    if (isFolderListing(file)) {
        return contentOfListing(*file, resolved(state.pipeline, folderOfListing(*file)));
    }
    return hashes.of(resolved(state.pipeline, file), state.stopping);
}

std::optional<Digest> ResultCache::contentOf(const AskedFile& file) {
    return isFolderListing(file.file) ? contentOf(file.file) : hashes.of(file.path, state.stopping);
}

std::optional<Digest> ResultCache::resultContentOf(const std::string& fileName) {
    std::optional<Digest> digest;
    const std::optional<NodeError> refusal =
        errorIn([&] { digest = hashes.of(state.results.place(fileName), state.stopping); });
    return refusal ? std::nullopt : digest;
}

void ResultCache::keep(const std::vector<std::size_t>& finished) {
    for (const std::size_t position : finished) {
        const NodeRun& run = state.runs[position];
        if (!run.isNeeded || isStored[position] || !(run.isFinal || run.hasStreamed)) {
            continue;
        }
        isStored[position] = true;
        keep(position);
    }
}

void ResultCache::keep(std::size_t position) {
    const bool hasFiles = collectFiles(position);
    const NodeRun& run = state.runs[position];
    const bool isComplete = run.hasStreamed || run.report.status == NodeStatus::Done;
    if (!isComplete || state.hasFailed(position) || !collectWritten(position)) {
        return;
    }
    if (!hasFiles || !keys[position] || state.plan.isRunReporter(position) || state.isIncomplete(position)) {
        return;
    }
    std::string reason;
    const std::optional<NodeError> error = errorIn([&] {
        reason = store.keep(runNumber, *keys[position],
                            {run.report.outputs, *files[position], asked[position], written[position]});
    });
    if (error || !reason.empty()) {
        state.messages.line(titleOf(state.node(position)) +
                            ": result not cached: " + (error ? error->sentence : reason));
    }
}

bool ResultCache::needsDigestOf(const AskedFile& file) const {
    return isFolderListing(file.file) || needsDigest(file.path);
}

bool ResultCache::collectFiles(std::size_t position) {
    const std::vector<AskedFile> own = state.runs[position].context->askedFiles();
    if (!std::all_of(own.begin(), own.end(), [&](const AskedFile& file) { return needsDigestOf(file); })) {
        return false;
    }
    std::vector<FileContent> all;
    bool isWhole = state.runs[position].context->skippedFiles().empty();
    for (const AskedFile& file : own) {
        const std::optional<Digest> digest = contentOf(file);
        // What has changed since the node asked for it may differ from what the result was made from.
        const bool isUnchanged = file.listing ? digest == file.listing : stampOf(file.path) == file.stamp;
        if (digest && isUnchanged) {
            asked[position].push_back({file.file, *digest});
        } else {
            isWhole = false;
        }
    }
    for (const std::size_t upstream : state.plan.upstream(position)) {
        if (files[upstream]) {
            all.insert(all.end(), files[upstream]->begin(), files[upstream]->end());
        }
        isWhole = isWhole && files[upstream];
    }
    all.insert(all.end(), asked[position].begin(), asked[position].end());
    std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.file < b.file; });
    all.erase(std::unique(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.file == b.file; }),
              all.end());
    files[position] = isWhole ? std::optional(std::move(all)) : std::nullopt;
    return isWhole;
}

std::vector<FileContent> ResultCache::filesOf(const std::vector<std::size_t>& positions) {
    struct Content {
        Digest digest{};
        std::string path;
    };
    std::map<NamedFile, Content> all;
    for (const std::size_t position : positions) {
        for (const AskedFile& file : state.runs[position].context->askedFiles()) {
            if (needsDigestOf(file)) {
                all[file.file] = {contentOf(file).value_or(Digest{}), file.path};
            }
        }
    }
    for (const std::size_t position : positions) {
        if (!files[position]) {
            continue;
        }
        for (const FileContent& file : *files[position]) {
            if (!all.contains(file.file)) {
                all[file.file] = {file.digest, resolved(state.pipeline, file.file).string()};
            }
        }
    }
    // The same file may appear by alias and by resolved path; keep one.
    std::set<std::string> paths;
    for (const auto& [file, content] : all) {
        if (file != content.path) {
            paths.insert(content.path);
        }
    }
    std::vector<FileContent> contents;
    for (const auto& [file, content] : all) {
        if (!isFolderListing(file) && (!file || !paths.contains(*file))) {
            contents.push_back({file, content.digest});
        }
    }
    return contents;
}

std::vector<std::string> ResultCache::filesInOrder(std::size_t position) const {
    const std::vector<AskedFile> own = state.runs[position].context->askedFiles();
    std::map<NamedFile, std::string> places;
    for (const AskedFile& file : own) {
        places.emplace(file.file, file.path);
    }
    std::set<std::string> known;
    std::vector<std::string> names;
    const auto add = [&](const NamedFile& file) {
        const auto place = places.find(file);
        const std::string path = place == places.end() ? resolved(state.pipeline, file).string() : place->second;
        // The same file may appear by alias and by resolved path.
        if (!isFolderListing(file) && known.insert(path).second) {
            names.push_back(file.value_or(""));
        }
    };
    for (const FileContent& file : asked[position]) {
        add(file.file);
    }
    for (const AskedFile& file : own) {
        add(file.file);
    }
    return names;
}

bool ResultCache::collectWritten(std::size_t position) {
    const auto left = state.results.writtenBy(state.node(position).name);
    if (!left) {
        return false;
    }
    for (const WrittenFile& file : *left) {
        const std::optional<Digest> digest = hashes.of(file.path, state.stopping);
        const std::optional<FileStamp> now = stampOf(file.path);
        // Another program may have replaced the file meanwhile.
        if (!digest || !now || !hasSameContent(*now, file.stamp)) {
            return false;
        }
        written[position].push_back({file.fileName, *digest});
    }
    return true;
}

}  // namespace velmorak
