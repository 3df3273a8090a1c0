#include "root/RootFile.h"

#include "root/ntuple/NTuple.h"
#include "root/tree/Tree.h"

#include <fmt/format.h>
#include <velmorak/ChunkSize.h>
#include <velmorak/Parts.h>

#include <algorithm>
#include <optional>
#include <variant>

namespace velmorak {
namespace {

using root::classesOf;
using root::Entry;
using root::File;
using root::NTuple;
using root::Tree;

bool isTree(const std::string& className) {
    return className == "TTree" || className == "TNtuple" || className == "TNtupleD";
}

bool isNTuple(const std::string& className) {
    return className == "ROOT::RNTuple";
}

bool isTable(const std::string& className) {
    return isTree(className) || isNTuple(className);
}

constexpr std::size_t maxListedTexts = 20;

/// The first texts, and the number of further ones.
std::string listOf(const std::vector<std::string>& texts) {
    std::string list;
    for (std::size_t i = 0; i < std::min(texts.size(), maxListedTexts); ++i) {
        list += (i == 0 ? "\"" : ", \"") + texts[i] + "\"";
    }
    return texts.size() > maxListedTexts ? list + fmt::format(" and {} more", texts.size() - maxListedTexts) : list;
}

const Entry& tableNamed(const File& file, const std::string& wanted) {
    const std::string path = wanted.starts_with("/") ? wanted.substr(1) : wanted;
    std::vector<std::string> tables;
    const Entry* found = nullptr;
    for (const Entry& entry : file.entries()) {
        if (isTable(entry.key.className)) {
            tables.push_back(entry.path);
            found = path.empty() || entry.path == path ? &entry : found;
        }
    }
    if (tables.empty()) {
        throw Failure(fmt::format("{} contains no tree or ntuple", file.path().string()));
    }
    if (!found) {
        throw Failure("object", fmt::format("{} contains no tree or ntuple \"{}\"; it contains {}",
                                            file.path().string(), path, listOf(tables)));
    }
    if (path.empty() && tables.size() > 1) {
        throw Failure("object", fmt::format("{} contains several tables; enter the path of one: {}",
                                            file.path().string(), listOf(tables)));
    }
    return *found;
}

/// A tree or an RNTuple. Positions count all columns, including those that cannot be read.
class Table {
public:
    Table(const File& file, const Entry& entry);

    std::uint64_t entries() const { return tree ? tree->entries() : ntuple->entries(); }
    std::size_t columns() const { return tree ? tree->columns().size() : ntuple->columns().size(); }
    const ColumnInfo& info(std::size_t position) const;
    const std::string& complaint(std::size_t position) const;
    double variableBytes(std::size_t position) const;
    ColumnPtr read(std::size_t position, std::uint64_t first, std::size_t rows) const;

private:
    std::unique_ptr<Tree> tree;
    std::optional<NTuple> ntuple;
};

Table::Table(const File& file, const Entry& entry) {
    if (isNTuple(entry.key.className)) {
        ntuple.emplace(file, entry);
    } else {
        tree = std::make_unique<Tree>(file, classesOf(file), entry);
    }
}

const ColumnInfo& Table::info(std::size_t position) const {
    return tree ? tree->columns()[position].info : ntuple->columns()[position].info;
}

const std::string& Table::complaint(std::size_t position) const {
    return tree ? tree->columns()[position].complaint : ntuple->columns()[position].complaint;
}

double Table::variableBytes(std::size_t position) const {
    return tree ? tree->variableBytes(tree->columns()[position]) : ntuple->variableBytes(ntuple->columns()[position]);
}

ColumnPtr Table::read(std::size_t position, std::uint64_t first, std::size_t rows) const {
    return tree ? tree->read(tree->columns()[position], first, rows)
                : ntuple->read(ntuple->columns()[position], first, rows);
}

class RootTableReader : public TableReader, public SeekableReader {
public:
    RootTableReader(const std::filesystem::path& path, const std::string& object,
                    const std::vector<std::string>& columns, RunContext& context);

    const Schema& schema() const override { return offered; }

    void selectColumns(const std::vector<bool>& needed) override { isNeeded = needed; }

    bool next(Chunk& chunk) override;

    std::size_t rowsPerChunk() const override { return maxRows; }

    void complete(Chunk& chunk) const override;

    std::optional<double> fraction() const override;

    /// Any entry of a file can be read.
    std::optional<std::string> bookmark() const override { return std::string(); }

    void seek(std::uint64_t number, const ChunkStart& start) override;

private:
    void limitChunks();

    void addAll();

    void addNamed(const std::string& name);

    void add(std::size_t position);

    File file;
    Table table;
    RunContext& context;
    Schema offered;
    std::vector<std::size_t> positions;  ///< Of the offered columns in the table.
    std::vector<bool> isNeeded;          ///< By offered column; empty for all.
    std::uint64_t entries = 0;
    std::size_t maxRows = 0;  ///< In a chunk.
    std::uint64_t row = 0;
};

RootTableReader::RootTableReader(const std::filesystem::path& path, const std::string& object,
                                 const std::vector<std::string>& columns, RunContext& context)
    : file(path), table(file, tableNamed(file, object)), context(context) {
    if (!file.warning().empty()) {
        context.warn(path.string() + ": " + file.warning());
    }
    if (columns.empty()) {
        addAll();
    }
    for (const std::string& name : columns) {
        addNamed(name);
    }
    limitChunks();
}

/// Long lists and texts make the chunks of the whole table shorter, by what an entry takes on average: chunks are the
/// same whichever columns are needed. A table of which nothing can be read has no rows.
void RootTableReader::limitChunks() {
    entries = offered.size() == 0 ? 0 : table.entries();
    maxRows = rowsInChunk(offered);
    auto bytes = static_cast<double>(bytesInRow(offered));
    for (const std::size_t position : positions) {
        bytes += table.variableBytes(position);
    }
    if (static_cast<double>(maxRows) * bytes > static_cast<double>(maxChunkBytes)) {
        maxRows = static_cast<std::size_t>(std::max(1.0, static_cast<double>(maxChunkBytes) / bytes));
    }
}

bool RootTableReader::next(Chunk& chunk) {
    if (context.isStopping()) {
        throw Stopped();
    }
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(maxRows, entries - row));
    row += chunk.rows;
    return chunk.rows > 0;
}

void RootTableReader::seek(std::uint64_t /*number*/, const ChunkStart& start) {
    if (start.row > entries) {
        throw Failure("file", fmt::format("{} has no entry {}", file.path().string(), start.row));
    }
    row = start.row;
}

void RootTableReader::complete(Chunk& chunk) const {
    for (std::size_t i = 0; i < positions.size(); ++i) {
        if (context.isStopping()) {
            throw Stopped();
        }
        const bool isRead = isNeeded.empty() || isNeeded[i];
        chunk.columns.push_back(isRead ? table.read(positions[i], chunk.firstRow, chunk.rows) : nullptr);
    }
}

std::optional<double> RootTableReader::fraction() const {
    return entries == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(entries);
}

void RootTableReader::addAll() {
    std::vector<std::string> left;
    for (std::size_t i = 0; i < table.columns(); ++i) {
        if (table.complaint(i).empty()) {
            add(i);
        } else {
            left.push_back(table.info(i).name);
        }
    }
    if (!left.empty()) {
        context.warn(fmt::format("{} of {} columns cannot be read: {}", left.size(), table.columns(), listOf(left)));
    }
}

void RootTableReader::addNamed(const std::string& name) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < table.columns(); ++i) {
        if (table.info(i).name == name) {
            if (!table.complaint(i).empty()) {
                throw Failure("columns", fmt::format("the column \"{}\" cannot be read: {}", name, table.complaint(i)));
            }
            add(i);
            return;
        }
        names.push_back(table.info(i).name);
    }
    throw Failure("columns", fmt::format("there is no column \"{}\"; the columns are {}", name, listOf(names)));
}

void RootTableReader::add(std::size_t position) {
    if (offered.find(table.info(position).name)) {
        return;
    }
    offered.add(table.info(position));
    positions.push_back(position);
}

}  // namespace

std::vector<RootEntry> listRoot(const std::filesystem::path& file) {
    std::vector<RootEntry> entries;
    const File opened(file);
    for (const Entry& entry : opened.entries()) {
        entries.push_back({entry.path, entry.key.className, isTable(entry.key.className)});
    }
    return entries;
}

std::unique_ptr<TableReader> openRootTable(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context) {
    return std::make_unique<RootTableReader>(file, object, columns, context);
}

RootTableContent lookAtRootTable(const std::filesystem::path& file, const std::string& object) {
    const File opened(file);
    const Table table(opened, tableNamed(opened, object));
    RootTableContent content{.rows = table.entries(), .columns = {}};
    for (std::size_t i = 0; i < table.columns(); ++i) {
        content.columns.push_back({.info = table.info(i), .problem = table.complaint(i)});
    }
    return content;
}

}  // namespace velmorak
