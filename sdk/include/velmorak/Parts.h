#pragma once

#include <velmorak/Run.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

/// What kinds and runs tell each other about tables that are not read as a whole: in parts, or without files whose
/// results are known.
namespace velmorak {

/// A second base of a TableReader of several files that can leave out some of them.
class FileSelection {
public:
    virtual ~FileSelection() = default;
    /// Called before the first TableReader::next, if at all. Files keep their numbers.
    /// @param isWanted by file.
    virtual void readOnly(const std::vector<bool>& isWanted) = 0;
};

/// Where a chunk begins in its file.
struct ChunkStart {
    std::uint64_t chunk = 0;  ///< Counted from 0.
    std::uint64_t row = 0;    ///< Rows of the file before it.
    std::string bookmark{};   ///< For the reader that made it.

    bool operator==(const ChunkStart&) const = default;
};

/// A second base of a TableReader that can begin in the middle of a file.
class SeekableReader {
public:
    virtual ~SeekableReader() = default;
    /// @return a text for seek, in this process or another: where in its file the next chunk begins; nothing if that
    ///         cannot be said.
    virtual std::optional<std::string> bookmark() const = 0;
    /// Makes the rows of a file begin at a chunk. Called before the first TableReader::next, after
    /// FileSelection::readOnly, if at all.
    /// @param file of the reader's, counted from 0; the earlier ones are not read.
    /// @throws Failure if the bookmark is not of this file.
    virtual void seek(std::uint64_t file, const ChunkStart& start) = 0;
};

/// A second base of a RunContext whose run several processes may share.
class SharedRun {
public:
    virtual ~SharedRun() = default;
    /// Whether the run is planned, or was.
    virtual bool isPlanned() const = 0;
    /// Answers factOf. Threads: the one on which the run called the kind.
    virtual std::string fact(const std::string& name, const std::function<std::string()>& find) = 0;
    /// Which rows the results lack, as a sentence without its end, if the user accepted that parts are missing.
    virtual std::string partial() const = 0;
};

/// A fact about input files that all processes of a run must agree on, and that is costly to find, such as the columns
/// that many files have in common.
/// @param name distinguishes the facts of one plug-in.
/// @param find finds the fact, as any bytes.
/// @return what find returned when the run was planned; in a run that was not planned, what it returned when the
///         plug-in first asked in this run.
inline std::string factOf(RunContext& context, const std::string& name, const std::function<std::string()>& find) {
    auto* const shared = dynamic_cast<SharedRun*>(&context);
    return shared ? shared->fact(name, find) : find();
}

/// @return whether the run is one of several that share facts.
inline bool isPlanned(const RunContext& context) {
    const auto* const shared = dynamic_cast<const SharedRun*>(&context);
    return shared != nullptr && shared->isPlanned();
}

/// @return which rows the results lack, as a sentence without its end; empty if they are complete. Kinds that write
///         files for people say so in them.
inline std::string partialRemark(const RunContext& context) {
    const auto* const shared = dynamic_cast<const SharedRun*>(&context);
    return shared ? shared->partial() : std::string();
}

/// A second base of a RowWise kind whose operations may be such as RowOperation::countsRows(). What comes after it
/// needs all rows before a chunk, so that it is not computed in parts.
class CountingKind {
public:
    virtual ~CountingKind() = default;
};

}  // namespace velmorak
