#include "fits/FitsFile.h"

#include "fits/FitsColumns.h"

#include <velmorak/NameList.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <utility>

namespace velmorak {
namespace fits {
namespace {

/// The unit that an object names, else the only table, else the only image.
Unit unitNamed(const std::vector<Unit>& units, const std::string& object, const std::string& file) {
    std::vector<std::string> names;
    for (const Unit& unit : units) {
        if (!object.empty() && (unit.name == object || std::to_string(unit.number) == object)) {
            return unit;
        }
        names.push_back(unit.path());
    }
    if (names.empty()) {
        throw Failure(file + " contains no table and no image");
    }
    if (!object.empty()) {
        throw Failure("object", file + " contains nothing called " + velmorak::quoted(object) + "; it contains " +
                                    listOfNames(names));
    }
    const auto tables = std::ranges::count(units, false, &Unit::isImage);
    if (tables > 1 || (tables == 0 && units.size() > 1)) {
        throw Failure("object", file + " contains several tables or images; enter the name or number of one: " +
                                    listOfNames(names));
    }
    return tables == 1 ? *std::ranges::find(units, false, &Unit::isImage) : units.front();
}

class FitsReader : public TableReader {
public:
    FitsReader(const std::filesystem::path& path, const std::string& object, const std::vector<std::string>& wanted,
               RunContext& context);
    ~FitsReader() override;
    FitsReader(const FitsReader&) = delete;
    FitsReader& operator=(const FitsReader&) = delete;

    const Schema& schema() const override { return offered; }
    void selectColumns(const std::vector<bool>& wanted) override { needed = wanted; }
    bool next(Chunk& chunk) override;
    std::optional<double> fraction() const override;

private:
    void choose(const std::vector<FitsColumn>& all, const std::vector<std::string>& wanted);
    void add(const FitsColumn& column);

    std::string place;
    RunContext& context;
    FilePtr file;
    Unit unit;
    std::vector<FitsColumn> columns;
    Schema offered;
    std::vector<bool> needed;
    std::uint64_t row = 0;
};

FitsReader::~FitsReader() {
    const LibraryLock lock;
    file.reset();
}

std::optional<double> FitsReader::fraction() const {
    return unit.rows == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(unit.rows);
}

FitsReader::FitsReader(const std::filesystem::path& path, const std::string& object,
                       const std::vector<std::string>& wanted, RunContext& context)
    : place(path.string()), context(context) {
    const LibraryLock lock;
    FilePtr opened = openFile(path);
    unit = unitNamed(unitsOf(opened.get(), place), object, place);
    place += ", " + velmorak::quoted(unit.path());
    if (!unit.problem.empty()) {
        throw Failure(place + ": " + unit.problem);
    }
    int status = 0;
    fits_movabs_hdu(opened.get(), unit.number, nullptr, &status);
    check(status, place);
    choose(columnsOf(opened.get(), unit, place), wanted);
    needed.assign(columns.size(), true);
    file = std::move(opened);
}

void FitsReader::add(const FitsColumn& column) {
    if (!offered.find(column.about.info.name)) {
        offered.add(column.about.info);
        columns.push_back(column);
    }
}

void FitsReader::choose(const std::vector<FitsColumn>& all, const std::vector<std::string>& wanted) {
    std::vector<std::string> names;
    for (const FitsColumn& column : all) {
        names.push_back(column.about.info.name);
        if (wanted.empty() && column.about.problem.empty()) {
            add(column);
        } else if (wanted.empty()) {
            context.warn(place + ": the column " + velmorak::quoted(column.about.info.name) +
                         " is left out: " + column.about.problem);
        }
    }
    for (const std::string& name : wanted) {
        const auto found = std::ranges::find(names, name);
        if (found == names.end()) {
            throw Failure("columns",
                          "there is no column " + velmorak::quoted(name) + "; the columns are " + listOfNames(names));
        }
        const FitsColumn& column = all[static_cast<std::size_t>(found - names.begin())];
        if (!column.about.problem.empty()) {
            throw Failure("columns",
                          "the column " + velmorak::quoted(name) + " cannot be read: " + column.about.problem);
        }
        add(column);
    }
    if (columns.empty()) {
        throw Failure(place + " contains no column that can be read");
    }
}

bool FitsReader::next(Chunk& chunk) {
    if (context.isStopping()) {
        throw Stopped();
    }
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(rowsInChunk(offered), unit.rows - row));
    for (std::size_t i = 0; i < columns.size() && chunk.rows > 0; ++i) {
        if (!needed[i]) {
            chunk.columns.push_back(nullptr);
            continue;
        }
        const LibraryLock lock;
        chunk.columns.push_back(
            std::make_shared<const Column>(readRows(file.get(), unit, columns[i], row, chunk.rows, place)));
    }
    row += chunk.rows;
    return chunk.rows > 0;
}

}  // namespace
}  // namespace fits

bool isFits(const FileStart& start) {
    return start.bytes.starts_with("SIMPLE  =");
}

std::vector<FileObject> listFits(const std::filesystem::path& file) {
    const fits::LibraryLock lock;
    const fits::FilePtr opened = fits::openFile(file);
    std::vector<FileObject> objects;
    for (const fits::Unit& unit : fits::unitsOf(opened.get(), file.string())) {
        FileObject object{.path = unit.path(), .type = unit.isImage ? "image" : "table", .description = unit.problem};
        if (unit.problem.empty()) {
            int status = 0;
            fits_movabs_hdu(opened.get(), unit.number, nullptr, &status);
            fits::check(status, file.string());
            object.rows = unit.rows;
            object.isTable = true;
            for (const fits::FitsColumn& column : fits::columnsOf(opened.get(), unit, file.string())) {
                object.columns.push_back(column.about);
            }
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

std::unique_ptr<TableReader> openFitsTable(const std::filesystem::path& file, const std::string& object,
                                           const std::vector<std::string>& columns, RunContext& context) {
    return std::make_unique<fits::FitsReader>(file, object, columns, context);
}

}  // namespace velmorak
