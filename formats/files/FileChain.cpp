#include "files/FileChain.h"

#include "files/FileContext.h"
#include "files/OpenedFiles.h"
#include "files/OwnColumns.h"

#include <velmorak/FileCircumstances.h>
#include <velmorak/Parts.h>
#include <velmorak/RowBounds.h>
#include <velmorak/Tasks.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t maxFilesAhead = 8;

/// Where a chunk comes from, until it is complete.
struct ChunkOrigin {
    std::shared_ptr<const OpenedFile> file;                     ///< Null when the file's columns are there.
    std::shared_ptr<const std::vector<std::size_t>> positions;  ///< Of each common column in the file.
    std::shared_ptr<const void> ofReader;                       ///< Chunk::owner of the file's reader.
    bool isLost = false;                                        ///< The file is damaged here.
};

/// Reads several files, one after the other.
class FileChain : public TableReader,
                  public FileSelection,
                  public SeekableReader,
                  public FileCircumstances,
                  public BoundedReader {
public:
    FileChain(FileList list, std::shared_ptr<const FileOpener> opener, const FileChainOptions& options,
              RunContext& context);
    FileChain(const FileChain&) = delete;
    FileChain& operator=(const FileChain&) = delete;

    const Schema& schema() const override { return columns; }
    void selectColumns(const std::vector<bool>& needed) override { isNeeded = needed; }
    void leaveOutBeyond(const std::vector<ColumnBound>& limits) override { bounds = limits; }
    bool next(Chunk& chunk) override;
    std::uint64_t fileCount() const override { return list.files.size(); }
    void readOnly(const std::vector<bool>& isRead) override { isWanted = isRead; }
    std::optional<std::string> bookmark() const override;
    void seek(std::uint64_t number, const ChunkStart& place) override;
    std::string circumstancesOf(std::uint64_t number) const override;
    const std::vector<std::string>& lists() const override { return list.lists; }
    std::size_t rowsPerChunk() const override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    std::shared_ptr<OpenedFile> openFile(std::size_t position, OpenFiles::Permit permit) const;
    void selectColumnsOf(TableReader& reader) const;
    void leaveOutOf(TableReader& reader) const;
    bool openNext();
    std::vector<std::size_t> positionsIn(const Schema& schema) const;
    void seekIn(OpenedFile& opened);
    bool readChunk(Chunk& chunk);
    void hold(Chunk& chunk);
    bool completeInFile(Chunk& chunk, const ChunkOrigin& origin) const;
    void lose(Chunk& chunk) const;
    void skipOrThrow(std::size_t position, const Failure& failure) const;

    const FileList list;
    const std::shared_ptr<const FileOpener> opener;
    const FileChainOptions options;
    RunContext& context;
    const std::size_t filesAhead;
    const std::shared_ptr<FileWarnings> warnings;
    const FileSurvey survey;
    const OwnColumns own;
    Schema columns;  ///< The common ones, then those of the files themselves.

    std::vector<bool> isNeeded;  ///< By column.
    std::vector<ColumnBound> bounds;
    std::vector<bool> isWanted;  ///< By file.
    std::size_t file = 0;        ///< Being read, or to be opened next.
    std::shared_ptr<OpenedFile> current;
    std::shared_ptr<const std::vector<std::size_t>> positions;  ///< In the current file.
    std::optional<ChunkStart> start;                            ///< In that file, if it is not read from its beginning.
    std::uint64_t rows = 0;
    OpenedFiles files;  ///< Last: its threads use the members above.
};

void FileChain::seek(std::uint64_t number, const ChunkStart& place) {
    file = static_cast<std::size_t>(number);
    start = place;
}

std::string FileChain::circumstancesOf(std::uint64_t number) const {
    return own.circumstancesOf(static_cast<std::size_t>(number));
}

FileChain::FileChain(FileList fileList, std::shared_ptr<const FileOpener> fileOpener, const FileChainOptions& options,
                     RunContext& context)
    : list(std::move(fileList)),
      opener(std::move(fileOpener)),
      options(options),
      context(context),
      filesAhead(runThreads() == 1 ? 0 : std::min(maxFilesAhead, runThreads())),
      warnings(std::make_shared<FileWarnings>(context)),
      survey(surveyFiles(list, opener, options, context)),
      own(list, options.hasFileColumns),
      columns(survey.common),
      isWanted(list.files.size(), true),
      files(openFilesOfRun(context),
            [this](std::size_t position, OpenFiles::Permit permit) { return openFile(position, std::move(permit)); }) {
    own.addTo(columns);
    isNeeded.assign(columns.size(), true);
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
std::shared_ptr<OpenedFile> FileChain::openFile(std::size_t position, OpenFiles::Permit permit) const {
    const ListedFile& listed = list.files[position];
    auto ofFile = std::make_unique<FileContext>(context, listed.name, warnings);
    std::unique_ptr<TableReader> reader = opener->open(listed.path, &survey.common, *ofFile);
    selectColumnsOf(*reader);
    leaveOutOf(*reader);
    return std::make_shared<OpenedFile>(std::move(permit), std::move(ofFile), std::move(reader));
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

/// The columns that the file itself has not, such as its name, have no bounds.
void FileChain::leaveOutOf(TableReader& reader) const {
    auto* const bounded = dynamic_cast<BoundedReader*>(&reader);
    std::vector<ColumnBound> ofFile;
    for (ColumnBound bound : bounds) {
        const bool isOfFile = bound.column < survey.common.size();
        if (const auto position = isOfFile ? reader.schema().find(survey.common[bound.column].name) : std::nullopt) {
            bound.column = *position;
            ofFile.push_back(bound);
        }
    }
    if (bounded && !ofFile.empty()) {
        bounded->leaveOutBeyond(ofFile);
    }
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
            files.begin(file + 1, std::min(list.files.size(), file + 1 + filesAhead),
                        [this](std::size_t position) { return !survey.isSkipped[position] && isWanted[position]; });
            const std::shared_ptr<OpenedFile> next = files.take(file);
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
    if (files.isFull()) {
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
    own.addTo(chunk, isNeeded);
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
        const std::shared_ptr<OpenFiles> openFiles = openFilesOfRun(context);
        const auto open = [&] { return opener->open(list.files.front().path, nullptr, context); };
        if (std::unique_ptr<TableReader> reader = openAlone(*openFiles, open)) {
            return reader;
        }
    }
    return std::make_unique<FileChain>(std::move(list), std::move(opener), options, context);
}

}  // namespace velmorak
