#include "files/FileChain.h"

#include <velmorak/Ahead.h>
#include "files/FileContext.h"

#include <velmorak/Parts.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <type_traits>
#include <utility>

namespace velmorak {

namespace {

/// Files that are open at once, with those that are opened ahead.
constexpr std::size_t maxOpenFiles = 64;
constexpr std::size_t maxFilesAhead = 8;

using OpenCount = std::shared_ptr<std::atomic<std::size_t>>;

/// A file whose rows are being read, or whose chunks are still being completed.
struct OpenedFile {
    OpenedFile(std::unique_ptr<FileContext> context, std::unique_ptr<TableReader> reader)
        : context(std::move(context)), reader(std::move(reader)) {}
    ~OpenedFile() {
        if (count) {
            --*count;
        }
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;

    void countIn(const OpenCount& openFiles) {
        count = openFiles;
        ++*count;
    }

    const std::unique_ptr<FileContext> context;
    const std::unique_ptr<TableReader> reader;
    OpenCount count;             ///< Of the files that are open.
    std::uint64_t firstRow = 0;  ///< Rows of the files before.
    std::uint64_t chunks = 0;    ///< That have been read.
};

/// Where a chunk comes from, until it is complete.
struct ChunkOrigin {
    std::shared_ptr<const OpenedFile> file;                     ///< Null when the file's columns are there.
    std::shared_ptr<const std::vector<std::size_t>> positions;  ///< Of each common column in the file.
    std::shared_ptr<const void> ofReader;                       ///< Chunk::owner of the file's reader.
    bool isLost = false;                                        ///< The file is damaged here.
};

Column emptyColumn(const ColumnInfo& info) {
    Column column;
    switch (info.type) {
        case ColumnType::Integer:
            column.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            column.values = Column::Booleans();
            break;
        case ColumnType::Text:
            column.values = Column::Texts();
            break;
        default:
            break;
    }
    if (info.isList) {
        column.offsets = {0};
    }
    return column;
}

ColumnPtr repeated(const Column& values, std::size_t row, std::size_t count) {
    return std::visit(
        [&](const auto& all) {
            std::decay_t<decltype(all)> copies(count, all[row]);
            return std::make_shared<const Column>(Column{std::move(copies), {}});
        },
        values.values);
}

/// Reads several files, one after the other.
class FileChain : public TableReader, public FileSelection, public SeekableReader {
public:
    FileChain(FileList list, std::shared_ptr<const FileOpener> opener, const FileChainOptions& options,
              RunContext& context);
    FileChain(const FileChain&) = delete;
    FileChain& operator=(const FileChain&) = delete;
    ~FileChain() override;

    const Schema& schema() const override { return columns; }
    void selectColumns(const std::vector<bool>& needed) override { isNeeded = needed; }
    bool next(Chunk& chunk) override;
    std::uint64_t fileCount() const override { return list.files.size(); }
    void readOnly(const std::vector<bool>& files) override { isWanted = files; }
    std::optional<std::string> bookmark() const override;
    void seek(std::uint64_t number, const ChunkStart& place) override {
        file = static_cast<std::size_t>(number);
        start = place;
    }
    std::size_t rowsPerChunk() const override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    using Opening = Ahead<std::shared_ptr<OpenedFile>>;

    void addOwnColumns();
    std::shared_ptr<OpenedFile> openFile(std::size_t position) const;
    void selectColumnsOf(TableReader& reader) const;
    void openAhead();
    std::shared_ptr<OpenedFile> opened(std::size_t position);
    bool openNext();
    std::vector<std::size_t> positionsIn(const Schema& schema) const;
    void seekIn(OpenedFile& opened);
    bool readChunk(Chunk& chunk);
    void hold(Chunk& chunk);
    bool completeInFile(Chunk& chunk, const ChunkOrigin& origin) const;
    void addOwnValues(Chunk& chunk) const;
    void lose(Chunk& chunk) const;
    void skipOrThrow(std::size_t position, const Failure& failure) const;

    const FileList list;
    const std::shared_ptr<const FileOpener> opener;
    const FileChainOptions options;
    RunContext& context;
    const std::size_t filesAhead;
    const std::shared_ptr<FileWarnings> warnings;
    const FileSurvey survey;
    Schema columns;  ///< The common ones, then those of the files themselves.

    std::vector<bool> isNeeded;  ///< By column.
    std::vector<bool> isWanted;  ///< By file.
    std::size_t file = 0;        ///< Being read, or to be opened next.
    std::shared_ptr<OpenedFile> current;
    std::shared_ptr<const std::vector<std::size_t>> positions;  ///< In the current file.
    std::optional<ChunkStart> start;                            ///< In that file, if it is not read from its beginning.
    std::uint64_t rows = 0;
    std::map<std::size_t, std::shared_ptr<Opening>> ahead;  ///< By position.
    const OpenCount openCount = std::make_shared<std::atomic<std::size_t>>(0);
};

FileChain::FileChain(FileList files, std::shared_ptr<const FileOpener> fileOpener, const FileChainOptions& options,
                     RunContext& context)
    : list(std::move(files)),
      opener(std::move(fileOpener)),
      options(options),
      context(context),
      filesAhead(runThreads() == 1 ? 0 : std::min(maxFilesAhead, runThreads())),
      warnings(std::make_shared<FileWarnings>(context)),
      survey(surveyFiles(list, opener, options, context)),
      columns(survey.common),
      isWanted(list.files.size(), true) {
    addOwnColumns();
    isNeeded.assign(columns.size(), true);
}

FileChain::~FileChain() {
    for (const auto& [position, opening] : ahead) {
        opening->cancel();
    }
}

void FileChain::addOwnColumns() {
    const auto add = [this](const ColumnInfo& column, const std::string& origin) {
        if (columns.find(column.name)) {
            throw Failure("file", "the column " + velmorak::quoted(column.name) + " of " + origin +
                                      " has the name of another column; rename one of them");
        }
        columns.add(column);
    };
    if (options.hasFileColumns) {
        add({.name = "file", .type = ColumnType::Text}, "\"file_columns\"");
        add({.name = "file_number", .type = ColumnType::Integer}, "\"file_columns\"");
    }
    for (const ColumnInfo& property : list.properties) {
        add(property, "the table of file properties");
    }
}

/// Reports a damaged file if it may be skipped. @throws the failure, with the file's name, if not.
void FileChain::skipOrThrow(std::size_t position, const Failure& failure) const {
    if (options.skipsDamaged && isDamage(failure)) {
        context.skipFile(list.files[position].path, failure.what());
        return;
    }
    const std::string sentence = failure.what();
    const std::string& name = list.files[position].name;
    const bool isNamed = sentence.find(name) != std::string::npos;
    throw Failure(failure.input(), isNamed ? sentence : velmorak::quoted(name) + ": " + sentence);
}

/// Threads: any, also several at once.
std::shared_ptr<OpenedFile> FileChain::openFile(std::size_t position) const {
    const ListedFile& listed = list.files[position];
    auto ofFile = std::make_unique<FileContext>(context, listed.name, warnings);
    std::unique_ptr<TableReader> reader = opener->open(listed.path, &survey.common, *ofFile);
    selectColumnsOf(*reader);
    return std::make_shared<OpenedFile>(std::move(ofFile), std::move(reader));
}

void FileChain::selectColumnsOf(TableReader& reader) const {
    const Schema& ofFile = reader.schema();
    std::vector<bool> neededOfFile(ofFile.size(), false);
    for (std::size_t i = 0; i < survey.common.size(); ++i) {
        if (const std::optional<std::size_t> position = ofFile.find(survey.common[i].name)) {
            neededOfFile[*position] = isNeeded[i];
        }
    }
    reader.selectColumns(neededOfFile);
}

/// Begins to open the next files on other threads.
void FileChain::openAhead() {
    const std::size_t end = std::min(list.files.size(), file + 1 + filesAhead);
    for (std::size_t i = file + 1; i < end && *openCount + ahead.size() + 1 < maxOpenFiles; ++i) {
        if (!survey.isSkipped[i] && isWanted[i] && !ahead.contains(i)) {
            ahead.emplace(i, Opening::begin([this, i] { return openFile(i); }));
        }
    }
}

std::shared_ptr<OpenedFile> FileChain::opened(std::size_t position) {
    const auto found = ahead.find(position);
    if (found == ahead.end()) {
        return openFile(position);
    }
    const std::shared_ptr<Opening> opening = found->second;
    ahead.erase(found);
    return opening->take();
}

std::vector<std::size_t> FileChain::positionsIn(const Schema& schema) const {
    std::vector<std::size_t> all;
    for (const ColumnInfo& column : survey.common.columns()) {
        const std::optional<std::size_t> position = schema.find(column.name);
        if (!position) {
            throw Failure("file", velmorak::quoted(list.files[file].name) +
                                      " has changed since the run began: its column " + velmorak::quoted(column.name) +
                                      " is gone");
        }
        all.push_back(*position);
    }
    return all;
}

/// Opens the next file that is not skipped. @return false if there is none.
bool FileChain::openNext() {
    for (; file < list.files.size(); ++file) {
        if (context.isStopping()) {
            throw Stopped();
        }
        if (survey.isSkipped[file] || !isWanted[file]) {
            continue;
        }
        try {
            openAhead();
            const std::shared_ptr<OpenedFile> next = opened(file);
            next->countIn(openCount);
            next->firstRow = rows;
            if (start) {
                seekIn(*next);
            }
            positions = std::make_shared<const std::vector<std::size_t>>(positionsIn(next->reader->schema()));
            current = next;
            return true;
        } catch (const Failure& failure) {
            skipOrThrow(file, failure);
        }
    }
    return false;
}

void FileChain::seekIn(OpenedFile& opened) {
    const ChunkStart place = *std::exchange(start, std::nullopt);
    auto* const reader = dynamic_cast<SeekableReader*>(opened.reader.get());
    if (!reader) {
        throw Failure("file", velmorak::quoted(list.files[file].name) + " cannot be read from row " +
                                  std::to_string(place.row + 1) + " on");
    }
    reader->seek(0, place);
    opened.chunks = place.chunk;
    rows += place.row;
}

std::optional<std::string> FileChain::bookmark() const {
    const auto* const reader = current ? dynamic_cast<const SeekableReader*>(current->reader.get()) : nullptr;
    return reader ? reader->bookmark() : std::nullopt;
}

/// Reads the next chunk of the current file. @return false at its end, or where it is damaged.
bool FileChain::readChunk(Chunk& chunk) {
    try {
        return current->reader->next(chunk);
    } catch (const Failure& failure) {
        skipOrThrow(file, failure);
        return false;
    }
}

bool FileChain::next(Chunk& chunk) {
    while (current || openNext()) {
        chunk = {};
        if (readChunk(chunk)) {
            chunk.file = file;
            chunk.number = current->chunks++;
            chunk.firstRow = rows;
            rows += chunk.rows;
            hold(chunk);
            return true;
        }
        current.reset();
        ++file;
    }
    chunk = {};
    return false;
}

/// Keeps the file open until the chunk is complete, or completes it now if too many are open.
void FileChain::hold(Chunk& chunk) {
    auto origin = std::make_shared<ChunkOrigin>(ChunkOrigin{current, positions, std::move(chunk.owner)});
    if (*openCount + ahead.size() + 1 >= maxOpenFiles) {
        origin->isLost = !completeInFile(chunk, *origin);
        origin->file.reset();
        origin->ofReader.reset();
    }
    chunk.owner = std::move(origin);
}

std::size_t FileChain::rowsPerChunk() const {
    return current ? current->reader->rowsPerChunk() : TableReader::rowsPerChunk();
}

/// Makes the columns as the file has them. @return false if they cannot be read.
bool FileChain::completeInFile(Chunk& chunk, const ChunkOrigin& origin) const {
    Chunk ofFile = chunk;
    ofFile.file = 0;
    ofFile.firstRow -= origin.file->firstRow;
    ofFile.owner = origin.ofReader;
    try {
        origin.file->reader->complete(ofFile);
    } catch (const Failure& failure) {
        skipOrThrow(chunk.file, failure);
        return false;
    }
    chunk.columns = std::move(ofFile.columns);
    return true;
}

void FileChain::complete(Chunk& chunk) const {
    const auto origin = std::static_pointer_cast<const ChunkOrigin>(chunk.owner);
    if (!origin) {
        return;
    }
    if (origin->isLost || (origin->file && !completeInFile(chunk, *origin))) {
        lose(chunk);
        return;
    }
    std::vector<ColumnPtr> ofFile = std::exchange(chunk.columns, {});
    for (std::size_t i = 0; i < survey.common.size(); ++i) {
        const ColumnPtr& column = ofFile[(*origin->positions)[i]];
        const bool isReal = column && survey.common[i].type == ColumnType::Real;
        chunk.columns.push_back(isReal ? asReals(column) : column);
    }
    addOwnValues(chunk);
    chunk.owner.reset();
}

/// Leaves a chunk without rows.
void FileChain::lose(Chunk& chunk) const {
    chunk.rows = 0;
    chunk.columns.clear();
    for (const ColumnInfo& column : columns.columns()) {
        chunk.columns.push_back(std::make_shared<const Column>(emptyColumn(column)));
    }
    chunk.owner.reset();
}

void FileChain::addOwnValues(Chunk& chunk) const {
    const ListedFile& from = list.files[chunk.file];
    const auto add = [&](const Column& column, std::size_t row) {
        const bool isUsed = isNeeded[chunk.columns.size()];
        chunk.columns.push_back(isUsed ? repeated(column, row, chunk.rows) : nullptr);
    };
    if (options.hasFileColumns) {
        add({Column::Texts{from.name}, {}}, 0);
        add({Column::Integers{static_cast<std::int64_t>(chunk.file)}, {}}, 0);
    }
    for (const ColumnPtr& property : list.values) {
        add(*property, from.row);
    }
}

std::optional<double> FileChain::fraction() const {
    const double inFile = current ? current->reader->fraction().value_or(0.0) : 0.0;
    const auto at = static_cast<std::ptrdiff_t>(file);
    const auto read = static_cast<double>(std::count(isWanted.begin(), isWanted.begin() + at, true));
    const auto wanted = static_cast<double>(std::count(isWanted.begin(), isWanted.end(), true));
    return (read + std::clamp(inFile, 0.0, 1.0)) / std::max(1.0, wanted);
}

}  // namespace

std::unique_ptr<TableReader> openFiles(FileList list, std::shared_ptr<const FileOpener> opener,
                                       const FileChainOptions& options, RunContext& context) {
    const bool isPlain = list.properties.empty() && !options.hasFileColumns && !options.skipsDamaged;
    if (list.files.size() == 1 && isPlain && !isPlanned(context)) {
        return opener->open(list.files.front().path, nullptr, context);
    }
    return std::make_unique<FileChain>(std::move(list), std::move(opener), options, context);
}

}  // namespace velmorak
