#include "run/pass/SourceSet.h"

#include <velmorak/Parts.h>
#include <velmorak/StoredTable.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

/// A reader that cannot leave out files reads all of them; the chunks of others are dropped.
void readFiles(TableReader& reader, const std::vector<bool>& isWanted) {
    if (auto* const selection = dynamic_cast<FileSelection*>(&reader)) {
        selection->readOnly(isWanted);
    }
}

}  // namespace

struct SourceSet::Segment {
    std::size_t source = 0;
    std::shared_ptr<const StoredTable> table;  ///< That the reader reads; null for a source.
    std::unique_ptr<TableReader> reader;
    std::vector<std::filesystem::path> paths;  ///< Of the files of a source.
    std::optional<ChunkCheck> check;           ///< As soon as there is a reader.
    std::atomic<bool> isClosed = false;        ///< No operator needs more of its rows.
    std::uint64_t filesBefore = 0;
    std::uint64_t files = 1;
    std::uint64_t firstFile = 0;  ///< Of the range.
    std::uint64_t filesInRange = 1;
    std::uint64_t file = 0;    ///< Being read.
    std::uint64_t chunks = 0;  ///< Of that file.
    std::uint64_t rows = 0;
    std::uint64_t rowsDropped = 0;  ///< Of these, in chunks that are not wanted.
    std::uint64_t rowsLost = 0;     ///< Of chunks that could not be read.
    std::chrono::nanoseconds time{0};
    std::chrono::nanoseconds timeCompleting{0};  ///< Of committed chunks.
};

SourceSet::SourceSet(RunState& state, const std::vector<std::size_t>& sources, PassRange range)
    : state(state), range(std::move(range)) {
    for (const std::size_t source : sources) {
        segments.push_back(std::make_unique<Segment>());
        segments.back()->source = source;
    }
}

SourceSet::~SourceSet() = default;

bool SourceSet::open() {
    std::uint64_t files = 0;
    for (const auto& segment : segments) {
        open(*segment);
        if (!segment->reader) {
            return false;
        }
        segment->filesBefore = files;
        files += segment->files;
        limit(*segment);
        if (!seek(*segment)) {
            return false;
        }
    }
    return true;
}

/// Begins in the middle of a file, where the range does and the reader can. @return false if that fails.
bool SourceSet::seek(Segment& segment) {
    const bool isHere =
        range.begin.file >= segment.filesBefore && range.begin.file < segment.filesBefore + segment.files;
    auto* const reader = dynamic_cast<SeekableReader*>(segment.reader.get());
    if (!range.start || !isHere || !reader) {
        return true;
    }
    const std::uint64_t file = range.begin.file - segment.filesBefore;
    if (const auto error = state.call(segment.source, [&] { reader->seek(file, *range.start); })) {
        state.fail(segment.source, *error);
        return false;
    }
    segment.file = file;
    segment.chunks = range.start->chunk;
    segment.rows = range.start->row;
    segment.rowsDropped = range.start->row;
    return true;
}

std::optional<std::string> SourceSet::bookmark() const {
    const auto* const reader =
        position < segments.size() ? dynamic_cast<const SeekableReader*>(segments[position]->reader.get()) : nullptr;
    return reader ? reader->bookmark() : std::nullopt;
}

/// Keeps files that are not in the range from being read.
void SourceSet::limit(Segment& segment) const {
    const std::uint64_t end = segment.filesBefore + segment.files;
    const std::uint64_t first = std::clamp(range.begin.file, segment.filesBefore, end);
    const std::uint64_t last = std::clamp(range.endFile(), first, end);
    segment.firstFile = first - segment.filesBefore;
    segment.filesInRange = last - first;
    if (first == last) {
        segment.isClosed = true;
    } else if (last - first < segment.files) {
        std::vector<bool> isRead(segment.files, false);
        std::fill_n(isRead.begin() + static_cast<std::ptrdiff_t>(first - segment.filesBefore), last - first, true);
        readFiles(*segment.reader, isRead);
    }
}

void SourceSet::open(Segment& segment) {
    const Stopwatch watch(state, segment.source);
    const std::optional<NodeError> error = state.call(segment.source, [&] {
        if (state.plan.storesTable(segment.source)) {
            segment.table = state.storedTable(segment.source);
            if (!segment.table) {
                throw std::logic_error("the kind has set no table");
            }
            segment.reader = mustBe(segment.table->open(), "reader");
        } else {
            openSource(segment);
        }
        segment.files = segment.reader->fileCount();
        if (segment.files == 0) {
            throw std::logic_error("the kind reads 0 files");
        }
        segment.check.emplace(segment.reader->schema(), segment.files);
    });
    if (error) {
        segment.reader.reset();
        state.fail(segment.source, *error);
    }
}

void SourceSet::openSource(Segment& segment) {
    NodeContext& context = *state.runs[segment.source].context;
    const auto& kind = dynamic_cast<const Source&>(*state.node(segment.source).kind);
    const NodeArguments arguments = state.arguments(segment.source);
    segment.paths = kind.files(arguments, context);
    for (const std::filesystem::path& file : segment.paths) {
        context.watchPlace(file);
    }
    segment.reader = mustBe(kind.open(arguments, context), "reader");
}

void SourceSet::selectColumns(std::size_t segment, const std::vector<bool>& isNeeded) {
    Segment& chosen = *segments[segment];
    chosen.check->selectColumns(isNeeded);
    const std::optional<NodeError> error = state.call(chosen.source, [&] { chosen.reader->selectColumns(isNeeded); });
    if (error && !readError) {
        readError = error;
        position = segment;
    }
}

void SourceSet::leaveOutBeyond(std::size_t segment, const std::vector<ColumnBound>& bounds) {
    Segment& chosen = *segments[segment];
    auto* const reader = dynamic_cast<BoundedReader*>(chosen.reader.get());
    if (!reader || bounds.empty()) {
        return;
    }
    const std::optional<NodeError> error = state.call(chosen.source, [&] { reader->leaveOutBeyond(bounds); });
    if (error && !readError) {
        readError = error;
        position = segment;
    }
}

bool SourceSet::read(ChunkTask& task) {
    do {
        if (readError || hasCommitError || isAtEndOfRange() || !readNext(task)) {
            return false;
        }
    } while (isLeftOut(task));
    return true;
}

bool SourceSet::isLeftOut(const ChunkTask& task) const {
    const ChunkPlace place{segments[position]->filesBefore + task.chunk.file, task.chunk.number};
    return place < range.begin || (!wanted.empty() && !wanted[place.file]);
}

void SourceSet::readOnly(const std::vector<bool>& isWanted) {
    wanted = isWanted;
    for (const auto& segment : segments) {
        const auto first = wanted.begin() + static_cast<std::ptrdiff_t>(segment->filesBefore);
        const auto end = first + static_cast<std::ptrdiff_t>(segment->files);
        if (std::find(first, end, true) == end) {
            segment->isClosed = true;
        } else if (std::find(first, end, false) != end) {
            readFiles(*segment->reader, {first, end});
        }
    }
}

bool SourceSet::isAtEndOfRange() const {
    if (position == segments.size()) {
        return true;
    }
    const Segment& segment = *segments[position];
    return ChunkPlace{segment.filesBefore + segment.file, segment.chunks} >= range.end;
}

bool SourceSet::readNext(ChunkTask& task) {
    task.chunk = {};
    while (position < segments.size() && !readInto(task)) {
        if (readError || ++position == segments.size()) {
            return false;
        }
        task.chunk = {};
    }
    if (position == segments.size()) {
        return false;
    }
    number(task);
    task.isComplete = false;
    task.error.reset();
    task.timeCompleting = {};
    const ChunkPlace place{segments[position]->filesBefore + task.chunk.file, task.chunk.number};
    if (isLeftOut(task) || place >= range.end) {
        segments[position]->rowsDropped += task.chunk.rows;
    }
    return place < range.end;
}

void SourceSet::number(ChunkTask& task) {
    Segment& segment = *segments[position];
    if (task.chunk.file != segment.file) {
        segment.file = task.chunk.file;
        segment.chunks = 0;
    }
    task.segment = position;
    task.sequence = chunks++;
    task.chunk.number = segment.chunks++;
    task.chunk.firstRow = segment.rows;
    task.rowsRead = task.chunk.rows;
    segment.rows += task.chunk.rows;
}

bool SourceSet::readInto(ChunkTask& task) {
    Segment& segment = *segments[position];
    if (segment.isClosed) {
        return false;
    }
    const auto begin = state.environment.clock();
    bool hasRows = false;
    readError = state.call(segment.source, [&] {
        hasRows = segment.reader->next(task.chunk);
        if (hasRows) {
            segment.check->checkRows(task.chunk, segment.reader->rowsPerChunk());
        }
    });
    task.timeReading = state.environment.clock() - begin;
    segment.time += task.timeReading;
    return hasRows && !readError;
}

bool SourceSet::complete(ChunkTask& task) const {
    if (!task.isComplete) {
        const auto begin = state.environment.clock();
        Segment& segment = *segments[task.segment];
        task.error = state.call(segment.source, [&] {
            segment.reader->complete(task.chunk);
            if (task.chunk.rows != 0) {
                task.chunk.rows = task.rowsRead;  // They are counted already.
            }
            segment.check->check(task.chunk);
            segment.check->freeColumns(task.chunk);
        });
        task.isComplete = true;
        task.timeCompleting = state.environment.clock() - begin;
    }
    return !task.error;
}

bool SourceSet::commit(ChunkTask& task) {
    segments[task.segment]->timeCompleting += task.timeCompleting;
    segments[task.segment]->rowsLost += task.rowsRead - task.chunk.rows;
    if (task.error && !commitError) {
        commitError = std::move(task.error);
        segmentOfCommitError = task.segment;
        hasCommitError = true;
    }
    return !commitError;
}

void SourceSet::close(std::size_t segment) {
    segments[segment]->isClosed = true;
}

bool SourceSet::finish() {
    for (const auto& segment : segments) {
        state.runs[segment->source].report.rowsOut = segment->rows - segment->rowsDropped - segment->rowsLost;
        state.addSeconds(segment->source, segment->time + segment->timeCompleting);
    }
    if (commitError) {
        state.fail(segments[segmentOfCommitError]->source, *commitError);
    } else if (readError) {
        state.fail(segments[std::min(position, segments.size() - 1)]->source, *readError);
    }
    return !commitError && !readError;
}

void SourceSet::pass() {
    for (const auto& segment : segments) {
        state.pass(segment->source);
    }
}

const NodeError* SourceSet::error() const {
    return commitError ? &*commitError : readError ? &*readError : nullptr;
}

std::uint64_t SourceSet::rowsOf(std::size_t segment) const {
    return segments[segment]->rows - segments[segment]->rowsDropped - segments[segment]->rowsLost;
}

void SourceSet::addRows(std::size_t segment, std::uint64_t rows) {
    segments[segment]->rows += rows;
}

std::size_t SourceSet::sourceOf(std::size_t segment) const {
    return segments[segment]->source;
}

std::uint64_t SourceSet::filesOf(std::size_t segment) const {
    return segments[segment]->files;
}

std::uint64_t SourceSet::filesBefore(std::size_t segment) const {
    return segments[segment]->filesBefore;
}

const std::vector<std::filesystem::path>& SourceSet::pathsOf(std::size_t segment) const {
    return segments[segment]->paths;
}

const Schema& SourceSet::schema(std::size_t segment) const {
    return segments[segment]->check->schema();
}

const FileCircumstances* SourceSet::circumstances(std::size_t segment) const {
    return dynamic_cast<const FileCircumstances*>(segments[segment]->reader.get());
}

std::size_t SourceSet::currentSource() const {
    return segments[position]->source;
}

std::uint64_t SourceSet::rowsOfCurrent() const {
    return segments[position]->rows;
}

std::pair<std::uint64_t, std::uint64_t> SourceSet::fileOfCurrent() const {
    const Segment& segment = *segments[position];
    return {segment.file - std::min(segment.file, segment.firstFile), segment.filesInRange};
}

std::optional<double> SourceSet::fraction() {
    std::optional<double> read;
    readError = state.call(currentSource(), [&] { read = segments[position]->reader->fraction(); });
    return read;
}

}  // namespace velmorak
