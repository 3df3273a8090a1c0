#include "hdf5/Hdf5File.h"

#include "hdf5/Tables.h"

#include <velmorak/NameList.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

namespace velmorak {
namespace hdf5 {
namespace {

/// The table that an object names, or the only one.
Table tableNamed(std::vector<Table> tables, const std::string& object, const std::string& file) {
    const std::string path = object.size() > 1 && object.starts_with("/") ? object.substr(1) : object;
    std::vector<std::string> names;
    Table* found = nullptr;
    std::size_t candidates = 0;
    for (Table& table : tables) {
        if (!path.empty() && table.path == path) {
            return std::move(table);
        }
        if (!table.isScalar && table.problem.empty()) {
            names.push_back(table.path);
            if (!table.isInGroup) {
                found = &table;
                ++candidates;
            }
        }
    }
    if (names.empty()) {
        const auto refused = std::ranges::find_if(tables, [](const Table& table) { return !table.problem.empty(); });
        throw Failure(refused == tables.end()
                          ? file + " contains no table"
                          : file + ", " + velmorak::quoted(refused->path) + ": " + refused->problem);
    }
    if (!path.empty()) {
        throw Failure("object",
                      file + " contains no table " + velmorak::quoted(path) + "; it contains " + listOfNames(names));
    }
    if (candidates > 1) {
        throw Failure("object", file + " contains several tables; enter the path of one: " + listOfNames(names));
    }
    return std::move(*found);
}

class Hdf5Reader : public TableReader {
public:
    Hdf5Reader(const std::filesystem::path& file, const std::string& object, const std::vector<std::string>& wanted,
               RunContext& context);
    ~Hdf5Reader() override;
    Hdf5Reader(const Hdf5Reader&) = delete;
    Hdf5Reader& operator=(const Hdf5Reader&) = delete;

    const Schema& schema() const override { return offered; }
    void selectColumns(const std::vector<bool>& wanted) override { needed = wanted; }
    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    /// What must be closed under the lock.
    struct Held {
        Handle file;
        Table table;
        std::vector<std::unique_ptr<DatasetRows>> rows;
    };

    void addNamed(const std::string& name);
    void addAll(const std::string& file);
    void add(const TableColumn& column);

    RunContext& context;
    std::unique_ptr<Held> held;
    Schema offered;
    std::vector<DatasetColumn> columns;
    std::vector<bool> needed;
    std::uint64_t row = 0;
};

std::optional<double> Hdf5Reader::fraction() const {
    return held->table.rows == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(held->table.rows);
}

Hdf5Reader::Hdf5Reader(const std::filesystem::path& file, const std::string& object,
                       const std::vector<std::string>& wanted, RunContext& context)
    : context(context) {
    const LibraryLock lock;
    // Until the constructor has ended, a failure closes it here, under the lock.
    auto opened = std::make_unique<Held>();
    opened->file = openFile(file);
    opened->table = tableNamed(tablesIn(opened->file.id()), object, file.string());
    if (!opened->table.problem.empty()) {
        throw Failure(file.string() + ", " + velmorak::quoted(opened->table.path) + ": " + opened->table.problem);
    }
    for (const Dataset& dataset : opened->table.datasets) {
        opened->rows.push_back(std::make_unique<DatasetRows>(dataset, file.string()));
    }
    std::swap(held, opened);
    try {
        for (const std::string& name : wanted) {
            addNamed(name);
        }
        if (wanted.empty()) {
            addAll(file.string());
        }
    } catch (...) {
        held.reset();
        throw;
    }
    needed.assign(columns.size(), true);
}

Hdf5Reader::~Hdf5Reader() {
    const LibraryLock lock;
    held.reset();
}

void Hdf5Reader::add(const TableColumn& column) {
    if (!offered.find(column.about.info.name)) {
        offered.add(column.about.info);
        columns.push_back(column.source);
    }
}

void Hdf5Reader::addNamed(const std::string& name) {
    std::vector<std::string> names;
    for (const TableColumn& column : held->table.columns) {
        if (column.about.info.name == name) {
            if (!column.about.problem.empty()) {
                throw Failure("columns",
                              "the column " + velmorak::quoted(name) + " cannot be read: " + column.about.problem);
            }
            return add(column);
        }
        names.push_back(column.about.info.name);
    }
    throw Failure("columns",
                  "there is no column " + velmorak::quoted(name) + "; the columns are " + listOfNames(names));
}

void Hdf5Reader::addAll(const std::string& file) {
    for (const TableColumn& column : held->table.columns) {
        if (column.about.problem.empty()) {
            add(column);
        } else {
            context.warn(file + ": the column " + velmorak::quoted(column.about.info.name) +
                         " is left out: " + column.about.problem);
        }
    }
    if (columns.empty()) {
        throw Failure(file + ", " + velmorak::quoted(held->table.path) + " contains no column that can be read");
    }
}

bool Hdf5Reader::next(Chunk& chunk) {
    if (context.isStopping()) {
        throw Stopped();
    }
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(rowsInChunk(offered), held->table.rows - row));
    row += chunk.rows;
    return chunk.rows > 0;
}

Column emptyColumn(const ColumnInfo& info) {
    Column column;
    switch (info.type) {
        case ColumnType::Real:
            column.values = Column::Reals();
            break;
        case ColumnType::Integer:
            column.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            column.values = Column::Booleans();
            break;
        case ColumnType::Text:
            column.values = Column::Texts();
            break;
    }
    if (info.isList) {
        column.offsets.push_back(0);
    }
    return column;
}

void Hdf5Reader::complete(Chunk& chunk) const {
    std::vector<Column> made;
    for (const ColumnInfo& info : offered.columns()) {
        made.push_back(emptyColumn(info));
    }
    for (std::size_t i = 0; i < held->rows.size(); ++i) {
        DatasetRows::Targets targets;
        for (std::size_t j = 0; j < columns.size(); ++j) {
            if (columns[j].dataset == i && needed[j]) {
                targets.emplace_back(&columns[j], &made[j]);
            }
        }
        held->rows[i]->read(chunk.firstRow, chunk.rows, targets, context);
    }
    for (std::size_t j = 0; j < columns.size(); ++j) {
        chunk.columns.push_back(needed[j] ? std::make_shared<const Column>(std::move(made[j])) : nullptr);
    }
}

}  // namespace
}  // namespace hdf5

bool isHdf5(const FileStart& start) {
    constexpr std::string_view signature = "\x89HDF\r\n\x1a\n";
    for (std::size_t at = 0; at < start.bytes.size(); at = at == 0 ? 512 : 2 * at) {
        if (std::string_view(start.bytes).substr(at).starts_with(signature)) {
            return true;
        }
    }
    return false;
}

std::vector<FileObject> listHdf5(const std::filesystem::path& file) {
    const hdf5::LibraryLock lock;
    const hdf5::Handle opened = hdf5::openFile(file);
    std::vector<FileObject> objects;
    for (const hdf5::Table& table : hdf5::tablesIn(opened.id())) {
        FileObject object{.path = table.path, .type = table.type, .description = table.problem};
        if (table.isScalar && table.problem.empty()) {
            object.description = "a single value";
        }
        object.isTable = !table.isScalar && table.problem.empty();
        for (const hdf5::TableColumn& column : table.columns) {
            if (object.isTable) {
                object.rows = table.rows;
                object.columns.push_back(column.about);
            }
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

std::unique_ptr<TableReader> openHdf5Table(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context) {
    return std::make_unique<hdf5::Hdf5Reader>(file, object, columns, context);
}

}  // namespace velmorak
