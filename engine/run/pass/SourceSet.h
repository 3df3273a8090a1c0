#pragma once

#include "run/RunState.h"
#include "run/pass/ChunkCheck.h"
#include "run/pass/ChunkTask.h"
#include "run/pass/PassRange.h"

#include <velmorak/FileCircumstances.h>
#include <velmorak/RowBounds.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The sources and stored tables of one stream. Their rows follow each other in segments, one for each time that a
/// source is read: a concatenation that takes a table twice has two segments of one source. Rows are numbered within a
/// segment, chunks within a file; the files of all segments follow each other.
///
/// Threads: open, read and fraction are called by one thread at a time; so are commit, close and finish. complete may
/// be called by several threads at once, for different chunks.
class SourceSet {
public:
    /// @param state outlives this.
    /// @param sources nodes in the order of their rows; one may occur twice.
    /// @param range chunks to read.
    SourceSet(RunState& state, const std::vector<std::size_t>& sources, PassRange range = {});
    ~SourceSet();

    /// @return false when a source cannot be opened; its node has then failed.
    bool open();
    /// Leaves out columns that nobody uses. Called before the first read. @param isNeeded by column of the segment's
    /// table.
    void selectColumns(std::size_t segment, const std::vector<bool>& isNeeded);
    /// Rows of the segment that fail a bound are dropped by the only operator that reads it. Called after
    /// selectColumns.
    void leaveOutBeyond(std::size_t segment, const std::vector<ColumnBound>& bounds);
    /// Leaves out some files. Called before the first read. @param isWanted by file of the pass.
    void readOnly(const std::vector<bool>& isWanted);
    /// Reads the next chunk that is wanted, perhaps without its columns. @return false when there is none, or a source
    /// has failed.
    bool read(ChunkTask& task);
    /// @return where the next chunk of the file that is being read begins; nothing if its reader cannot say.
    std::optional<std::string> bookmark() const;
    /// Makes the columns, unless that was done for an earlier operator. @return false when the source could not.
    bool complete(ChunkTask& task) const;

    /// Takes over the times and the error of a chunk, in chunk order. @return false after an error.
    bool commit(ChunkTask& task);
    /// The rest of the segment is not read.
    void close(std::size_t segment);
    /// The error ends the sources where they are being read now.
    void fail(const NodeError& error) { readError = error; }
    /// Reports rows and times. @return false after an error, with the node failed.
    bool finish();
    /// The error that ended the reading; null without one.
    const NodeError* error() const;
    /// Rows of the segment that were read and are in the range.
    std::uint64_t rowsOf(std::size_t segment) const;
    /// For rows that were read elsewhere.
    void addRows(std::size_t segment, std::uint64_t rows);
    /// Marks all sources as passed to their ends.
    void pass();

    std::size_t size() const { return segments.size(); }
    std::size_t sourceOf(std::size_t segment) const;
    /// Number of files in the segments before this one.
    std::uint64_t filesBefore(std::size_t segment) const;
    std::uint64_t filesOf(std::size_t segment) const;
    /// @return the files of a source; empty for a stored table.
    const std::vector<std::filesystem::path>& pathsOf(std::size_t segment) const;
    const Schema& schema(std::size_t segment) const;
    /// @return null if the reader does not say on what the rows of a file depend.
    const FileCircumstances* circumstances(std::size_t segment) const;
    /// The segment being read.
    std::size_t current() const { return position; }
    std::size_t currentSource() const;
    std::uint64_t rowsOfCurrent() const;
    /// File that is being read, counted from 0, and their number: in the current segment, as far as the range goes.
    std::pair<std::uint64_t, std::uint64_t> fileOfCurrent() const;
    /// Fraction of the current segment that is read; nothing when the source cannot say.
    std::optional<double> fraction();

private:
    struct Segment;

    void open(Segment& segment);
    void openSource(Segment& segment);
    void limit(Segment& segment) const;
    bool seek(Segment& segment);
    bool readNext(ChunkTask& task);
    bool readInto(ChunkTask& task);
    void number(ChunkTask& task);
    bool isAtEndOfRange() const;
    bool isLeftOut(const ChunkTask& task) const;

    RunState& state;
    const PassRange range;
    std::vector<bool> wanted;  ///< By file; empty for all.
    std::vector<std::unique_ptr<Segment>> segments;
    std::size_t position = 0;
    std::uint64_t chunks = 0;
    std::optional<NodeError> readError;
    std::optional<NodeError> commitError;  ///< Of a source that could not complete a chunk; the first in chunk order.
    std::size_t segmentOfCommitError = 0;
    std::atomic<bool> hasCommitError = false;
};

}  // namespace velmorak
