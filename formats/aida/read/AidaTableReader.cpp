#include "aida/read/AidaTableReader.h"

#include "aida/Vocabulary.h"
#include "aida/read/AidaTupleHandler.h"
#include "aida/read/ObjectList.h"

#include <velmorak/Aida.h>
#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <utility>

namespace velmorak {

namespace {

using io::AidaTupleHandler;
using io::XmlReader;

bool isTabular(const AidaEntry& entry) {
    return io::isAidaTable(entry.element);
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

/// Tuples and clouds, or all objects if there are none.
std::vector<AidaEntry> worthListing(const std::vector<AidaEntry>& entries) {
    std::vector<AidaEntry> tabular;
    std::copy_if(entries.begin(), entries.end(), std::back_inserter(tabular), isTabular);
    return tabular.empty() ? entries : tabular;
}

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& reason,
                         const std::vector<AidaEntry>& entries) {
    throw Failure(fmt::format("{} {}; it contains {}", file.string(), reason, io::listOf(worthListing(entries))));
}

/// Lists the objects of a file without warnings.
std::vector<AidaEntry> listed(const std::filesystem::path& file, RunContext& context, std::string& damage) {
    AidaTupleHandler handler(file, "", context);
    XmlReader reader(file, handler, context);
    handler.attach(reader);
    damage = io::readToEnd(reader, handler.entries());
    for (const std::string& more : handler.damages()) {
        damage += (damage.empty() ? "" : "; ") + more;
    }
    if (handler.entries().empty() && !damage.empty()) {
        throw Failure(damage);
    }
    return handler.entries();
}

std::string onlyPath(const std::filesystem::path& file, const std::vector<AidaEntry>& entries) {
    const auto first = std::find_if(entries.begin(), entries.end(), isTabular);
    if (first == entries.end()) {
        refuse(file, "contains no tuple or cloud", entries);
    }
    if (std::find_if(first + 1, entries.end(), isTabular) != entries.end()) {
        refuse(file, "contains several tuples or clouds; enter the path of one", entries);
    }
    return first->path;
}

/// Path of the only object with this name, which is given without its folder.
std::string pathOfName(const std::filesystem::path& file, const std::string& name,
                       const std::vector<AidaEntry>& entries) {
    std::vector<std::string> paths;
    for (const AidaEntry& entry : entries) {
        if (entry.path == io::normalPath(name)) {
            return entry.path;
        }
        if (isTabular(entry) && endsWith(entry.path, "/" + name)) {
            paths.push_back(entry.path);
        }
    }
    if (paths.size() > 1) {
        refuse(file, fmt::format(R"(contains several objects "{}"; enter the full path of one)", name), entries);
    }
    if (paths.empty()) {
        refuse(file, fmt::format(R"(contains no tuple or cloud "{}")", name), entries);
    }
    return paths[0];
}

std::string chosenPath(const std::filesystem::path& file, const std::string& object, RunContext& context) {
    if (!object.empty() && object.front() == '/') {
        return io::normalPath(object);
    }
    std::string damage;
    const auto entries = listed(file, context, damage);
    return object.empty() ? onlyPath(file, entries) : pathOfName(file, object, entries);
}

class AidaTable : public TableReader {
public:
    AidaTable(std::filesystem::path file, const std::string& path, RunContext& context, io::RowReading reading);

    const Schema& schema() const override { return tableSchema; }

    void selectColumns(const std::vector<bool>& needed) override { handler->selectColumns(needed); }

    bool next(Chunk& chunk) override;

    std::optional<double> fraction() const override;

private:
    /// @return false if there are no more rows.
    bool advance();

    /// Warns about damage after the rows: a wrong checksum may mean that the rows are wrong, too.
    void checkRest();

    /// Goes to the rows of the next tuple. A chain is replaced by its tuples.
    void beginNext(std::unique_ptr<io::TupleBuilder> rows);

    [[noreturn]] void throwMissing(const std::string& path) const;

    static constexpr std::size_t maxMembers = 1000;

    std::filesystem::path file;
    RunContext& context;
    io::RowReading reading;
    std::unique_ptr<AidaTupleHandler> handler;
    std::unique_ptr<XmlReader> reader;
    std::deque<std::string> members;  ///< Paths of the tuples that are still to be read.
    std::size_t begun = 0;            ///< Tuples and chains that have been begun.
    Schema tableSchema;
    bool isRestChecked = false;
    std::unique_ptr<Failure> failure;
    std::uint64_t chunkNumber = 0;
    std::uint64_t rowsTaken = 0;
};

AidaTable::AidaTable(std::filesystem::path file, const std::string& path, RunContext& context, io::RowReading reading)
    : file(std::move(file)), context(context), reading(reading), members{path} {
    beginNext(nullptr);
    tableSchema = handler->builder()->schema();
}

bool AidaTable::next(Chunk& chunk) {
    try {
        while (!failure && !handler->rows()->isFull() && advance()) {
        }
    } catch (const Failure& damage) {
        failure = std::make_unique<Failure>(damage);
    }
    // Complete rows before the damage are returned first.
    if (failure && handler->rows()->rows() == 0) {
        throw Failure(fmt::format("{} (after {} complete rows)", failure->what(), rowsTaken));
    }
    chunk.number = chunkNumber++;
    chunk.firstRow = rowsTaken;
    chunk.rows = handler->rows()->rows();
    chunk.columns = handler->rows()->take();
    rowsTaken += chunk.rows;
    return chunk.rows > 0;
}

std::optional<double> AidaTable::fraction() const {
    const auto before = static_cast<double>(begun - 1);
    return (before + reader->fraction()) / (before + 1.0 + static_cast<double>(members.size()));
}

bool AidaTable::advance() {
    if (!handler->isDone()) {
        return reader->advance();
    }
    checkRest();
    if (members.empty()) {
        return false;
    }
    beginNext(handler->release());
    return true;
}

void AidaTable::checkRest() {
    if (std::exchange(isRestChecked, true)) {
        return;
    }
    if (const std::string damage = reader->damageBehind(); !damage.empty()) {
        context.warn(damage + "; the rows may be wrong");
    }
}

void AidaTable::beginNext(std::unique_ptr<io::TupleBuilder> rows) {
    do {
        const std::string path = members.front();
        members.pop_front();
        ++begun;
        reader.reset();
        handler = std::make_unique<AidaTupleHandler>(file, path, context);
        handler->appendTo(std::move(rows));
        reader = std::make_unique<XmlReader>(file, *handler, context, reading);
        handler->attach(*reader);
        while (!handler->builder() && !handler->isDone() && reader->advance()) {
        }
        if (!handler->builder() && handler->chain().empty()) {
            throwMissing(path);
        }
        members.insert(members.begin(), handler->chain().begin(), handler->chain().end());
        if (begun + members.size() > maxMembers) {
            throw Failure(
                fmt::format("{}: {} is a chain of more than {} tuples, or of itself", file.string(), path, maxMembers));
        }
        if (!handler->builder()) {
            rows = handler->release();
        }
    } while (handler->builder() == nullptr);
}

void AidaTable::throwMissing(const std::string& path) const {
    for (const AidaEntry& entry : handler->entries()) {
        if (entry.path == path) {
            throw Failure(fmt::format("{}: {} is a {}, not a table", file.string(), path, entry.element));
        }
    }
    refuse(file, fmt::format("contains no object {}", path), handler->entries());
}

}  // namespace

std::vector<AidaEntry> listAida(const std::filesystem::path& file, RunContext& context) {
    std::string damage;
    auto entries = listed(file, context, damage);
    if (!damage.empty()) {
        context.warn(damage);
    }
    return entries;
}

std::string aidaTablePath(const std::filesystem::path& file, const std::string& object, RunContext& context) {
    return chosenPath(file, object, context);
}

std::unique_ptr<TableReader> openAidaTable(const std::filesystem::path& file, const std::string& object,
                                           RunContext& context) {
    return io::openAidaTable(file, object, context, io::RowReading::Scanned);
}

std::unique_ptr<TableReader> io::openAidaTable(const std::filesystem::path& file, const std::string& object,
                                               RunContext& context, RowReading reading) {
    return std::make_unique<AidaTable>(file, chosenPath(file, object, context), context, reading);
}

}  // namespace velmorak
