#pragma once

#include "run/RunState.h"
#include "run/pass/OperatorChain.h"
#include "run/pass/SourceSet.h"
#include "store/DiskStore.h"
#include "store/FileHashes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Keeps the states of accumulators for each file of a table from run to run, so that a run to which a file is added
/// reads this one only. A state is found again by everything that it depends on: the operators before it with their
/// values, the columns, the content of the file, and its name only if rows depend on it. What takes little time to read
/// is not worth keeping (CacheConfig). Threads: used by the thread that commits the chunks of one pass.
class FileStates {
public:
    /// @param state, disk and hashes outlive this.
    /// @param explains prints how many files are reused.
    FileStates(RunState& state, DiskStore& disk, FileHashes& hashes, bool explains)
        : state(state), disk(disk), hashes(hashes), explains(explains) {}

    /// Finds the files for which all accumulators have states, and which are therefore not read.
    /// @param sources and chain are prepared, and outlive this.
    void begin(SourceSet& sources, OperatorChain& chain);
    /// Called before a chunk of the file is committed, whose files are counted over the whole pass. Gives the states of
    /// earlier files to the accumulators.
    /// @param cost as ChunkTask::cost: the time between commits says nothing about a file where several threads work.
    void enter(std::uint64_t file, std::uint64_t rows, std::chrono::nanoseconds cost);
    /// Called after the last chunk of a pass without errors.
    void leave();

private:
    struct Rows {
        std::uint64_t op = 0;  ///< Of the operator's name and segment.
        std::uint64_t in = 0;
        std::uint64_t out = 0;
    };
    /// What one accumulator has of one file.
    struct Kept {
        std::string state;
        std::vector<Rows> rows;  ///< Of the operators of the pass.
        std::uint64_t rowsRead = 0;
    };
    struct File {
        std::size_t segment = 0;
        std::filesystem::path path;
        std::optional<FileStamp> stamp;
        std::map<std::size_t, Kept> kept{};  ///< By operator; empty unless the file is reused.
        bool isRead = false;
    };

    bool canBeUsed() const;
    bool listFiles();
    bool findKeys();
    bool findOtherFiles();
    void beginRows();
    std::vector<Rows> rowsOf(std::size_t op) const;
    const std::optional<Digest>& keyOf(std::size_t node);
    std::optional<Digest> makeKey(std::size_t node);
    bool addInput(Sha256& hash, const PipelineInput& input, bool isSource);
    Digest keyOf(std::size_t op, std::size_t file, const Digest& content) const;
    void find(std::size_t file);
    std::optional<Kept> read(const Digest& key) const;
    void endFile();
    void giveBefore(std::size_t file);
    void give(std::size_t file);
    void keep(std::size_t op, std::size_t file, const AccumulatorState& whole);
    bool isSkipped(std::size_t file) const;
    void explain() const;

    RunState& state;
    DiskStore& disk;
    FileHashes& hashes;
    const bool explains;
    SourceSet* sources = nullptr;
    OperatorChain* chain = nullptr;
    bool isUsed = false;
    std::vector<File> files;
    std::vector<Digest> otherFiles;  ///< By segment: the key that all files share.
    std::map<std::size_t, std::optional<Digest>> keysOfNodes;
    std::map<std::size_t, Digest> keysOfOperators;
    std::optional<std::size_t> current;              ///< File whose chunks are committed.
    std::size_t given = 0;                           ///< Files before it were given to the accumulators, or read.
    std::vector<Rows> rowsBefore;                    ///< By operator, at the beginning of the file.
    std::vector<Rows> rowsOfFile;                    ///< By operator, of the last file that has ended.
    std::map<std::uint64_t, std::size_t> positions;  ///< Of operators, by Rows::op.
    std::uint64_t rowsRead = 0;                      ///< Of the current file.
    std::uint64_t rowsReadOfFile = 0;
    std::chrono::nanoseconds cost{0};  ///< Of the current file.
    std::chrono::nanoseconds costOfFile{0};
};

}  // namespace velmorak
