#include "files/FileChain.h"

#include "files/CommonSchema.h"
#include "files/FileAhead.h"

#include <velmorak/Tasks.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <utility>

namespace velmorak {

namespace {

/// Files that are open at once, with those that are opened ahead.
constexpr std::size_t maxOpenFiles = 64;
constexpr std::size_t maxFilesAhead = 8;
constexpr std::size_t maxNamesInMessage = 10;

/// A file whose rows are being read, or whose chunks are still being completed.
struct ReadFile {
    ReadFile(std::unique_ptr<TableReader> reader, std::shared_ptr<std::atomic<std::size_t>> count)
        : reader(std::move(reader)), count(std::move(count)) {
        ++*this->count;
    }
    ~ReadFile() { --*count; }
    ReadFile(const ReadFile&) = delete;
    ReadFile& operator=(const ReadFile&) = delete;

    std::unique_ptr<TableReader> reader;
    std::shared_ptr<std::atomic<std::size_t>> count;  ///< Of the files that are open.
    std::vector<std::size_t> position;                ///< Of each common column in the file.
    std::uint64_t firstRow = 0;                       ///< Rows of the files before.
    std::uint64_t chunks = 0;                         ///< That have been read.
};

ColumnPtr repeated(const Column& values, std::size_t row, std::size_t count) {
    return std::visit(
        [&](const auto& all) {
            std::decay_t<decltype(all)> copies(count, all[row]);
            return std::make_shared<const Column>(Column{std::move(copies), {}});
        },
        values.values);
}

/// Reads several files, one after the other.
class FileChain : public TableReader {
public:
    FileChain(FileList list, OpenFile open, const FileChainOptions& options, RunContext& context);
    ~FileChain() override;

    const Schema& schema() const override { return columns; }
    bool next(Chunk& chunk) override;
    std::uint64_t fileCount() const override { return list.files.size(); }
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    void findColumns();
    void addOwnColumns();
    void openAhead();
    std::unique_ptr<TableReader> readerOf(std::size_t position);
    bool openNext();
    bool readChunk(Chunk& chunk);
    void addOwnValues(Chunk& chunk) const;
    void skip(std::size_t position, const std::string& reason);

    const FileList list;
    const std::shared_ptr<const OpenFile> open;
    const FileChainOptions options;
    RunContext& context;
    const std::size_t filesAhead;
    Schema columns;
    std::size_t commonColumns = 0;  ///< The first columns; the others are made here.
    std::shared_ptr<const Schema> wanted;
    std::vector<bool> isSkipped;
    std::size_t skipped = 0;

    std::size_t file = 0;  ///< Being read, or to be opened next.
    std::shared_ptr<ReadFile> current;
    std::uint64_t rows = 0;
    std::map<std::size_t, std::shared_ptr<FileAhead>> ahead;  ///< By position.
    std::shared_ptr<std::atomic<std::size_t>> openCount = std::make_shared<std::atomic<std::size_t>>(0);
};

FileChain::FileChain(FileList files, OpenFile opener, const FileChainOptions& options, RunContext& context)
    : list(std::move(files)),
      open(std::make_shared<const OpenFile>(std::move(opener))),
      options(options),
      context(context),
      filesAhead(runThreads() == 1 ? 0 : std::min(maxFilesAhead, runThreads())),
      isSkipped(list.files.size(), false) {
    findColumns();
    addOwnColumns();
}

FileChain::~FileChain() {
    for (const auto& [position, opened] : ahead) {
        opened->cancel();
    }
}

void FileChain::findColumns() {
    CommonSchema common(options.takesCommonColumns);
    for (std::size_t i = 0; i < list.files.size(); ++i) {
        if (context.isStopping()) {
            throw Stopped();
        }
        try {
            common.add(list.files[i].name, (*open)(list.files[i].path, nullptr)->schema());
        } catch (const Failure& failure) {
            if (!options.skipsDamaged) {
                throw;
            }
            skip(i, failure.what());
        }
        if (context.isPreview() && !common.columns().empty()) {
            break;
        }
    }
    if (skipped == list.files.size()) {
        throw Failure("file", "none of the " + std::to_string(skipped) + " files can be read");
    }
    if (!common.leftOut().empty() && !context.isPreview()) {
        std::string names;
        for (std::size_t i = 0; i < std::min(maxNamesInMessage, common.leftOut().size()); ++i) {
            names += (i == 0 ? "" : ", ") + velmorak::quoted(common.leftOut()[i]);
        }
        context.warn("leaves out columns that differ between the files: " + names +
                     (common.leftOut().size() > maxNamesInMessage
                          ? " and " + std::to_string(common.leftOut().size() - maxNamesInMessage) + " more"
                          : ""));
    }
    columns = Schema(common.columns());
    commonColumns = columns.size();
    wanted = std::make_shared<const Schema>(columns);
}

void FileChain::addOwnColumns() {
    const auto add = [this](const ColumnInfo& column) {
        if (columns.find(column.name)) {
            throw Failure("file", "the files have a column " + velmorak::quoted(column.name) + " already");
        }
        columns.add(column);
    };
    if (options.hasFileColumns) {
        add({.name = "file", .type = ColumnType::Text});
        add({.name = "file_number", .type = ColumnType::Integer});
    }
    for (const ColumnInfo& property : list.properties) {
        add(property);
    }
}

void FileChain::skip(std::size_t position, const std::string& reason) {
    if (!isSkipped[position]) {
        isSkipped[position] = true;
        ++skipped;
    }
    context.skipFile(list.files[position].path, reason);
}

/// Begins to open the next files on other threads.
void FileChain::openAhead() {
    const std::size_t end = std::min(list.files.size(), file + 1 + filesAhead);
    for (std::size_t i = file + 1; i < end && *openCount + ahead.size() + 1 < maxOpenFiles; ++i) {
        if (isSkipped[i] || ahead.contains(i)) {
            continue;
        }
        const auto next = std::make_shared<FileAhead>(
            [open = open, path = list.files[i].path, wanted = wanted] { return (*open)(path, wanted.get()); });
        ahead.emplace(i, next);
        spawnTask([next] { next->open(); });
    }
}

std::unique_ptr<TableReader> FileChain::readerOf(std::size_t position) {
    const auto found = ahead.find(position);
    if (found == ahead.end()) {
        return (*open)(list.files[position].path, wanted.get());
    }
    const std::shared_ptr<FileAhead> opened = found->second;
    ahead.erase(found);
    return opened->take();
}

/// Opens the next file that is not skipped. @return false if there is none.
bool FileChain::openNext() {
    for (; file < list.files.size(); ++file) {
        if (isSkipped[file]) {
            continue;
        }
        try {
            openAhead();
            current = std::make_shared<ReadFile>(readerOf(file), openCount);
        } catch (const Failure& failure) {
            if (!options.skipsDamaged) {
                throw;
            }
            skip(file, failure.what());
            continue;
        }
        current->firstRow = rows;
        for (std::size_t i = 0; i < commonColumns; ++i) {
            const std::optional<std::size_t> position = current->reader->schema().find(columns[i].name);
            if (!position) {
                throw Failure("file", velmorak::quoted(list.files[file].name) +
                                          " has changed since the run began: its column " +
                                          velmorak::quoted(columns[i].name) + " is gone");
            }
            current->position.push_back(*position);
        }
        return true;
    }
    return false;
}

/// Reads the next chunk of the current file. @return false at its end.
bool FileChain::readChunk(Chunk& chunk) {
    try {
        return current->reader->next(chunk);
    } catch (const Failure& failure) {
        if (!options.skipsDamaged) {
            throw;
        }
        skip(file, failure.what());
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
            chunk.owner = current;
            rows += chunk.rows;
            if (*openCount + ahead.size() + 1 >= maxOpenFiles) {
                complete(chunk);
            }
            return true;
        }
        current.reset();
        ++file;
    }
    chunk = {};
    return false;
}

void FileChain::complete(Chunk& chunk) const {
    if (!chunk.owner) {
        return;
    }
    const auto readFile = std::static_pointer_cast<const ReadFile>(chunk.owner);
    Chunk ofFile = chunk;
    ofFile.file = 0;
    ofFile.firstRow -= readFile->firstRow;
    readFile->reader->complete(ofFile);
    chunk.columns.clear();
    for (std::size_t i = 0; i < commonColumns; ++i) {
        const ColumnPtr& column = ofFile.columns[readFile->position[i]];
        const bool isReal = columns[i].type == ColumnType::Real;
        chunk.columns.push_back(isReal ? asReals(column) : column);
    }
    addOwnValues(chunk);
    chunk.owner.reset();
}

void FileChain::addOwnValues(Chunk& chunk) const {
    const ListedFile& from = list.files[chunk.file];
    const auto add = [&](const Column& column, std::size_t row) {
        chunk.columns.push_back(repeated(column, row, chunk.rows));
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
    return (static_cast<double>(file) + std::clamp(inFile, 0.0, 1.0)) / static_cast<double>(list.files.size());
}

}  // namespace

std::unique_ptr<TableReader> openFiles(FileList list, OpenFile open, const FileChainOptions& options,
                                       RunContext& context) {
    if (list.files.size() == 1 && list.properties.empty() && !options.hasFileColumns && !options.skipsDamaged) {
        return open(list.files.front().path, nullptr);
    }
    return std::make_unique<FileChain>(std::move(list), std::move(open), options, context);
}

}  // namespace velmorak
