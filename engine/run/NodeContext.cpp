#include "run/NodeContext.h"

#include "run/messages/Visible.h"
#include "store/FolderListing.h"

#include <algorithm>
#include <system_error>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t maxSkippedShown = 10;

}  // namespace

std::string titleOf(const PipelineNode& node) {
    return shortened(node.kindName) + " \"" + shortened(node.name) + "\"";
}

namespace {

fs::path resolvedHere(const Pipeline& pipeline, const NamedFile& file) {
    if (!file) {
        return pipeline.commandLineAida;
    }
    fs::path named(*file);
    if (named.is_absolute()) {
        return named;
    }
    fs::path beside = pipeline.documentFolder / named;
    std::error_code error;
    if (!pipeline.documentFolder.empty() && !fs::exists(beside, error) && fs::exists(named, error)) {
        return named;
    }
    return beside;
}

}  // namespace

fs::path resolved(const Pipeline& pipeline, const NamedFile& file) {
    fs::path path = resolvedHere(pipeline, file);
    if (pipeline.moved.places.empty()) {
        return path;
    }
    for (const fs::path& planned : {path, pipeline.moved.folder / path, pipeline.moved.folder / file.value_or("")}) {
        const auto moved = pipeline.moved.places.find(planned.lexically_normal().string());
        if (moved != pipeline.moved.places.end()) {
            return moved->second;
        }
    }
    return path;
}

const KnownFact* KnownFacts::find(const std::string& plugin, const std::string& name) {
    const MutexLock lock(mutex);
    const auto found = facts.find({plugin, name});
    return found == facts.end() ? nullptr : &found->second;
}

const KnownFact& KnownFacts::add(const std::string& plugin, const std::string& name, KnownFact fact) {
    const MutexLock lock(mutex);
    return facts.insert_or_assign({plugin, name}, std::move(fact)).first->second;
}

NodeContext::NodeContext(const RunEnvironment& environment, const PipelineNode& node)
    : environment(environment), node(node) {}

fs::path NodeContext::inputFile(const std::string& text) const {
    if (text.empty()) {
        throw Failure("no file is named");
    }
    return watch(text);
}

fs::path NodeContext::commandLineAida() const {
    watch(std::nullopt);
    return environment.pipeline.commandLineAida;
}

fs::path NodeContext::locate(const std::string& text) const {
    return text.empty() ? fs::path() : placeOf(text);
}

/// A name keeps its place for the whole run: whether there is a file beside the document is asked once.
fs::path NodeContext::placeOf(const std::string& name) const {
    {
        const MutexLock lock(mutex);
        const auto found = places.find(name);
        if (found != places.end()) {
            return found->second;
        }
    }
    fs::path place = resolved(environment.pipeline, name);
    const MutexLock lock(mutex);
    return places.emplace(name, std::move(place)).first->second;
}

std::vector<std::string> NodeContext::namesIn(const std::string& folder, const std::string& pattern) const {
    std::string listing = folderListing(folder, pattern);
    std::optional<std::vector<std::string>> names;
    if (environment.listed) {
        names = environment.listed(listing);
    }
    if (!names) {
        names = namesInFolder(locate(folder), pattern);
    }
    const MutexLock lock(mutex);
    addAsked({std::move(listing), std::nullopt, digestOfNames(*names)});
    return *std::move(names);
}

/// The reason that is kept does not depend on the order in which the threads find the damage.
void NodeContext::skipFile(const fs::path& file, const std::string& reason) {
    const std::string path = file.string();
    {
        const MutexLock lock(mutex);
        const auto [known, isNew] = skipped.emplace(path, reason);
        if (!isNew) {  // In an earlier chunk or pass.
            known->second = std::min(known->second, reason);
            return;
        }
        if (skipped.size() > maxSkippedShown) {
            return;
        }
    }
    const bool isNamed = reason.find(path) != std::string::npos;
    warn("skips a damaged file: " + (isNamed ? reason : "\"" + path + "\": " + reason));
}

void NodeContext::warnOfMoreSkipped() {
    std::size_t more = 0;
    {
        const MutexLock lock(mutex);
        more = skipped.size() - std::min(skipped.size(), maxSkippedShown);
    }
    if (more > 0) {
        warn("skips " + std::to_string(more) + " more damaged " + (more == 1 ? "file" : "files") +
             "; run.json lists all of them");
    }
}

std::vector<SkippedFile> NodeContext::skippedFiles() const {
    const MutexLock lock(mutex);
    std::vector<SkippedFile> all;
    for (const auto& [file, reason] : skipped) {
        all.push_back({node.name, file, reason});
    }
    return all;
}

void NodeContext::writeResult(const std::string& fileName, const std::function<void(const fs::path&)>& writer) {
    const std::unique_ptr<ResultFile> file = beginResult(fileName);
    writer(file->path());
    file->keep();
}

std::unique_ptr<ResultFile> NodeContext::beginResult(const std::string& fileName) {
    return environment.results.begin(node.name, fileName);
}

std::string NodeContext::fact(const std::string& name, const std::function<std::string()>& find) {
    if (environment.fact) {
        return environment.fact(node, name, find);
    }
    if (const KnownFact* const fact = environment.facts->find(node.name, name)) {
        const MutexLock lock(mutex);
        for (const AskedFile& file : fact->asked) {
            addAsked(file);
        }
        return fact->bytes;
    }
    KnownFact fact{find(), askedFiles()};
    return environment.facts->add(node.name, name, std::move(fact)).bytes;
}

void NodeContext::warn(const std::string& sentence) {
    environment.messages.line(titleOf(node) + ": warning: " + sentence);
}

RunRecord NodeContext::record() const {
    return environment.recorder ? environment.recorder(node) : RunRecord{};
}

void NodeContext::tell(const std::string& text) {
    environment.messages.lines(titleOf(node) + ":", text);
}

fs::path NodeContext::watch(const NamedFile& file) const {
    fs::path path = file ? placeOf(*file) : resolved(environment.pipeline, file);
    const std::optional<FileStamp> stamp = stampOf(path);
    if (stamp && environment.asked) {
        environment.asked(path, *stamp);
    }
    const MutexLock lock(mutex);
    addAsked({file, stamp, std::nullopt, path.string()});
    return path;
}

void NodeContext::watchPlace(const fs::path& path) const {
    const std::string place = path.string();
    {
        const MutexLock lock(mutex);
        if (askedPlaces.contains(place)) {
            return;
        }
    }
    watch(place);
}

void NodeContext::addAsked(AskedFile file) const {
    if (known.insert(file).second) {
        askedPlaces.insert(file.path);
        asked.push_back(std::move(file));
    }
}

std::vector<AskedFile> NodeContext::askedFiles() const {
    const MutexLock lock(mutex);
    return asked;
}

}  // namespace velmorak
