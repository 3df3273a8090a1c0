#include "run/pass/FileStates.h"

#include "run/pass/WholeTables.h"
#include "run/record/KindBuild.h"
#include "store/StoreBytes.h"
#include "table/ByteReader.h"
#include "table/ByteWriter.h"
#include "table/Checksum.h"

#include <velmorak/StateBytes.h>

#include <algorithm>
#include <set>
#include <utility>

namespace velmorak {

namespace {

constexpr std::uint64_t fileStatesMark = 0x32'53'45'4c'49'46'6c'76;

void addSchema(Sha256& hash, const Schema& schema) {
    for (const ColumnInfo& column : schema.columns()) {
        hash.addText(column.name);
        hash.addText(column.unit);
        hash.addNumber(static_cast<std::uint64_t>(column.type));
        hash.addNumber(column.isList ? 1 : 0);
    }
}

bool isListed(const NamedFile& file, const std::vector<std::string>& lists) {
    return file && std::find(lists.begin(), lists.end(), *file) != lists.end();
}

}  // namespace

void FileStates::begin(SourceSet& sourceSet, OperatorChain& operatorChain) {
    sources = &sourceSet;
    chain = &operatorChain;
    isUsed = canBeUsed() && listFiles() && findKeys() && findOtherFiles();
    if (!isUsed) {
        return;
    }
    beginRows();
    std::vector<bool> isWanted(files.size(), true);
    for (std::size_t i = 0; i < files.size(); ++i) {
        find(i);
        isWanted[i] = files[i].kept.empty();
    }
    sources->readOnly(isWanted);
    for (std::size_t i = 0; i < chain->size(); ++i) {
        Operator& op = chain->at(i);
        if (op.accumulation) {
            const std::uint64_t first = sources->filesBefore(op.parents.front().firstSegment);
            op.merger->setFileListener([this, i, first](std::uint64_t file, const AccumulatorState& whole) {
                keep(i, static_cast<std::size_t>(first + file), whole);
            });
        }
    }
    explain();
}

/// All operators at work feed accumulators that see all files, and whose states do not depend on other files.
bool FileStates::canBeUsed() const {
    if (!disk.isUsed() || chain->size() == 0) {
        return false;
    }
    for (std::size_t i = 0; i < chain->size(); ++i) {
        const Operator& op = chain->at(i);
        const bool isUseful = op.hasChild || (op.accumulation && op.merger->hasFileStates());
        const bool seesAll = !op.accumulation || (op.sees(0) && op.sees(sources->size() - 1));
        // The keys of states do not cover other tables.
        const bool hasWhole = !wholeTables(state, op.node).empty();
        if (op.isDropped || op.countsRows || !isUseful || !seesAll || hasWhole) {
            return false;
        }
    }
    return true;
}

bool FileStates::listFiles() {
    for (std::size_t segment = 0; segment < sources->size(); ++segment) {
        const std::vector<std::filesystem::path>& paths = sources->pathsOf(segment);
        if (paths.size() != sources->filesOf(segment)) {
            return false;  // A stored table has no files.
        }
        for (const std::filesystem::path& path : paths) {
            files.push_back({segment, path, stampOf(path)});
        }
    }
    return files.size() > 1;
}

bool FileStates::findKeys() {
    for (std::size_t i = 0; i < chain->size(); ++i) {
        if (!chain->at(i).accumulation) {
            continue;
        }
        const std::optional<Digest>& key = keyOf(chain->at(i).node);
        if (!key) {
            return false;
        }
        keysOfOperators.emplace(i, *key);
    }
    return true;
}

const std::optional<Digest>& FileStates::keyOf(std::size_t node) {
    const auto known = keysOfNodes.find(node);
    if (known != keysOfNodes.end()) {
        return known->second;
    }
    std::optional<Digest> key = makeKey(node);
    return keysOfNodes.emplace(node, key).first->second;
}

/// Sums the other files that the sources have asked for, such as lists and tables of file properties.
bool FileStates::findOtherFiles() {
    std::set<std::string> read;
    for (const File& file : files) {
        read.insert(file.path.string());
    }
    for (std::size_t segment = 0; segment < sources->size(); ++segment) {
        Sha256 hash;
        const FileCircumstances* const circumstances = sources->circumstances(segment);
        for (const AskedFile& asked : state.runs[sources->sourceOf(segment)].context->askedFiles()) {
            if (!asked.stamp || (circumstances && isListed(asked.file, circumstances->lists()))) {
                continue;
            }
            const bool isOther = !read.contains(asked.path);
            const std::optional<Digest> content = isOther ? hashes.of(asked.path, state.stopping) : std::nullopt;
            if (isOther && !content) {
                return false;
            }
            if (isOther) {
                hash.add(content->data(), content->size());
            }
        }
        otherFiles.push_back(hash.finish());
    }
    return true;
}

/// Of a plug-in and everything before it but the files.
std::optional<Digest> FileStates::makeKey(std::size_t node) {
    const PipelineNode& plugin = state.node(node);
    const bool isSource = dynamic_cast<const Source*>(plugin.kind) != nullptr;
    Sha256 hash;
    hash.addText(plugin.name);
    hash.addText(plugin.kindName);
    hash.addNumber(static_cast<std::uint64_t>(plugin.kind->version()));
    hash.addText(buildOf(*plugin.kind));
    for (const PipelineInput& input : plugin.inputs) {
        hash.addText(input.spec.name);
        if (!addInput(hash, input, isSource)) {
            return std::nullopt;
        }
    }
    return hash.finish();
}

/// A value that comes by wire counts as such, wherever it was computed.
bool FileStates::addInput(Sha256& hash, const PipelineInput& input, bool isSource) {
    hash.addNumber(input.wire ? 1 : 0);
    if (!input.wire) {
        hash.addText(isSource && input.spec.name == "file" ? std::string() : input.value);
        return true;
    }
    hash.addText(input.wire->output);
    if (state.plan.isStream(input.wire->node)) {
        const std::optional<Digest>& key = keyOf(input.wire->node);
        if (key) {
            hash.add(key->data(), key->size());
        }
        return key.has_value();
    }
    const std::optional<std::string> bytes = bytesOf({state.runs[input.wire->node].report.outputs, {}, {}, {}});
    hash.addText(bytes.value_or(""));
    return bytes.has_value();
}

/// Where the reader does not say on what rows depend, the name of the file may be in a column; its number only if there
/// is a column for it.
Digest FileStates::keyOf(std::size_t op, std::size_t file, const Digest& content) const {
    const std::size_t segment = files[file].segment;
    const Schema& schema = sources->schema(segment);
    Sha256 hash;
    hash.addText("state of a file");
    hash.add(keysOfOperators.at(op).data(), sizeof(Digest));
    hash.addNumber(segment - chain->at(op).parents.front().firstSegment);
    const std::uint64_t number = file - sources->filesBefore(segment);
    if (const FileCircumstances* const circumstances = sources->circumstances(segment)) {
        hash.addText(circumstances->circumstancesOf(number));
    } else {
        hash.addNumber(schema.find("file_number") ? 1 + number : 0);
        hash.addText(files[file].path.string());
    }
    addSchema(hash, schema);
    hash.add(otherFiles[segment].data(), otherFiles[segment].size());
    hash.add(content.data(), content.size());
    return hash.finish();
}

void FileStates::find(std::size_t file) {
    const std::optional<FileStamp>& stamp = files[file].stamp;
    const std::optional<Digest> content =
        stamp ? hashes.ofKnown(files[file].path, *stamp, state.beganNs, state.stopping) : std::nullopt;
    std::map<std::size_t, Kept> found;
    for (const auto& [op, key] : keysOfOperators) {
        if (!content) {
            return;
        }
        if (!chain->at(op).sees(files[file].segment)) {
            continue;
        }
        std::optional<Kept> kept = read(keyOf(op, file, *content));
        if (!kept) {
            return;
        }
        found.emplace(op, *std::move(kept));
    }
    files[file].kept = std::move(found);
}

std::optional<FileStates::Kept> FileStates::read(const Digest& key) const {
    const std::optional<std::string> bytes = disk.read(key);
    if (!bytes) {
        return std::nullopt;
    }
    try {
        ByteReader reader(*bytes, fileStatesMark);
        Kept kept;
        kept.state = reader.list<std::string>();
        kept.rows = reader.list<std::vector<Rows>>();
        kept.rowsRead = reader.number<std::uint64_t>();
        reader.mustBeAtEnd();
        const auto isOfPass = [this](const Rows& rows) { return positions.contains(rows.op); };
        return std::all_of(kept.rows.begin(), kept.rows.end(), isOfPass) ? std::optional(std::move(kept))
                                                                         : std::nullopt;
    } catch (const std::invalid_argument&) {
        return std::nullopt;
    }
}

void FileStates::beginRows() {
    rowsBefore.resize(chain->size());
    rowsOfFile.resize(chain->size());
    for (std::size_t i = 0; i < chain->size(); ++i) {
        const Operator& op = chain->at(i);
        rowsOfFile[i].op = checksum(state.node(op.node).name) + op.parents.front().firstSegment;
        positions.emplace(rowsOfFile[i].op, i);
    }
}

/// Of the accumulator and the operators before it.
std::vector<FileStates::Rows> FileStates::rowsOf(std::size_t op) const {
    std::vector<Rows> rows;
    std::vector<std::size_t> open{op};
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        rows.push_back(rowsOfFile[at]);
        for (const Operator::Parent& parent : chain->at(at).parents) {
            if (parent.op) {
                open.push_back(*parent.op);
            }
        }
    }
    return rows;
}

bool FileStates::isSkipped(std::size_t file) const {
    const std::size_t source = sources->sourceOf(files[file].segment);
    const std::vector<SkippedFile> skipped = state.runs[source].context->skippedFiles();
    return std::any_of(skipped.begin(), skipped.end(),
                       [&](const SkippedFile& each) { return each.file == files[file].path.string(); });
}

void FileStates::explain() const {
    const auto reused = static_cast<std::size_t>(
        std::count_if(files.begin(), files.end(), [](const File& file) { return !file.kept.empty(); }));
    if (explains && reused > 0) {
        const std::size_t node = sources->sourceOf(0);
        state.messages.line(titleOf(state.node(node)) + ": " + std::to_string(reused) +
                            (reused == 1 ? " file" : " files") + " reused, " + std::to_string(files.size() - reused) +
                            " read");
    }
}

void FileStates::enter(std::uint64_t file, std::uint64_t rows, std::chrono::nanoseconds chunkCost) {
    if (!isUsed) {
        return;
    }
    if (current != file) {
        endFile();
        giveBefore(static_cast<std::size_t>(file));
        current = static_cast<std::size_t>(file);
        files[*current].isRead = true;
    }
    rowsRead += rows;
    cost += chunkCost;
}

void FileStates::leave() {
    if (isUsed) {
        endFile();
        giveBefore(files.size());
    }
}

/// Its states are merged when the next file begins.
void FileStates::endFile() {
    costOfFile = std::exchange(cost, {});
    for (std::size_t i = 0; i < chain->size(); ++i) {
        const Operator& op = chain->at(i);
        rowsOfFile[i].in = op.rowsIn - rowsBefore[i].in;
        rowsOfFile[i].out = op.rowsOut - rowsBefore[i].out;
    }
    rowsReadOfFile = std::exchange(rowsRead, 0);
    current.reset();
}

void FileStates::giveBefore(std::size_t file) {
    for (; given < file; ++given) {
        if (!files[given].kept.empty()) {
            give(given);
        }
    }
    for (std::size_t i = 0; i < chain->size(); ++i) {
        rowsBefore[i].in = chain->at(i).rowsIn;
        rowsBefore[i].out = chain->at(i).rowsOut;
    }
}

void FileStates::give(std::size_t file) {
    std::map<std::size_t, Rows> rows;  // By operator: several accumulators know those of a common one.
    std::uint64_t read = 0;
    for (const auto& entry : files[file].kept) {
        const std::size_t position = entry.first;
        const Kept& kept = entry.second;
        Operator& op = chain->at(position);
        if (op.isDropped) {
            continue;
        }
        const std::optional<NodeError> error = state.call(op.node, [&] {
            StatePiece piece;
            piece.first = file - sources->filesBefore(op.parents.front().firstSegment);
            piece.state = mustBe(op.accumulation->newState(), "state");
            loadState(*piece.state, kept.state, state.node(op.node).kindName);
            op.merger->take(std::move(piece));
        });
        if (error) {
            state.fail(op.node, *error);
            chain->drop(position);
        }
        for (const Rows& each : kept.rows) {
            rows.emplace(positions.at(each.op), each);
        }
        read = kept.rowsRead;
    }
    for (const auto& [position, each] : rows) {
        chain->at(position).rowsIn += each.in;
        chain->at(position).rowsOut += each.out;
    }
    sources->addRows(files[file].segment, read);
    files[file].kept.clear();
}

void FileStates::keep(std::size_t op, std::size_t file, const AccumulatorState& whole) {
    if (costOfFile < disk.minReadingTime() || !files[file].stamp || stampOf(files[file].path) != files[file].stamp ||
        isSkipped(file)) {
        return;
    }
    const std::optional<Digest> content = hashes.of(files[file].path, state.stopping);
    if (!content) {
        return;
    }
    ByteWriter writer;
    writer.number(fileStatesMark);
    const std::optional<NodeError> error = errorIn([&] {
        writer.list(savedState(whole, state.node(chain->at(op).node).kindName));
        writer.list(rowsOf(op));
        writer.number(rowsReadOfFile);
    });
    if (!error) {
        disk.write(keyOf(op, file, *content), writer.sealed());
    }
}

}  // namespace velmorak
