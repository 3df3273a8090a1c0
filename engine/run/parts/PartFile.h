#pragma once

#include "run/pass/StateMerger.h"
#include "store/AtomicFile.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace velmorak {

/// Which part a file holds.
struct PartIdentity {
    std::string plan;        ///< Digest of the plan.
    std::size_t number = 0;  ///< Counted from 1; 0: all parts of a pass together.
    std::string build;       ///< Of the library and the kinds.
};

/// An input file that a part has read.
struct PartInput {
    std::string path;
    std::string sha256;
    std::uint64_t bytes = 0;
    std::int64_t modifiedNs = 0;
    std::int64_t readNs = 0;  ///< When the reading began.
    std::string plugin{};     ///< Of a file that could not be read to its end.
    std::string reason{};     ///< Why; empty for a complete one.
};

/// Rows that passed an operator.
struct PartRows {
    std::string plugin;
    std::size_t segment = 0;  ///< First one of the operator.
    std::uint64_t in = 0;
    std::uint64_t out = 0;
};

/// What a part knows at its end.
struct PartSummary {
    std::vector<PartRows> operators{};
    std::vector<std::uint64_t> rowsRead{};  ///< By segment.
    std::vector<PartInput> files{};
    std::vector<PartInput> skipped{};
    std::uint64_t states = 0;
};

/// A state of an accumulator.
struct PartRecord {
    std::string plugin;
    std::size_t segment = 0;  ///< First one of the operator.
    StatePiece piece;         ///< Without its state.
    std::string bytes;        ///< The saved state.
};

/// Writes the file of a part, which gets its name when it is complete.
class PartWriter {
public:
    /// Touches nothing in the file system yet. The other operations throw std::system_error.
    PartWriter(const std::filesystem::path& file, const PartIdentity& identity);

    void add(const PartRecord& record);
    /// Completes the file.
    void commit(PartSummary summary);

    /// Why the file could not be written; no error if it could.
    const std::error_code& error() const { return problem; }

private:
    void write(const std::string& bytes);

    AtomicFile target;
    std::string head;  ///< Until it is written.
    std::uint64_t position = 0;
    std::uint64_t states = 0;
    std::error_code problem;
};

/// Reads the file of a part. Every operation throws a Failure if the file is damaged.
class PartReader {
public:
    explicit PartReader(const std::filesystem::path& path);

    const PartIdentity& identity() const { return read; }
    const PartSummary& summary() const { return whole; }
    std::optional<PartRecord> next();

private:
    std::string take(std::uint64_t bytes);
    std::string takeSized();
    void readSummary();
    [[noreturn]] void refuse() const;

    std::filesystem::path path;
    std::ifstream stream;
    std::uint64_t position = 0;
    std::uint64_t size = 0;
    std::uint64_t endOfStates = 0;
    std::uint64_t statesRead = 0;
    PartIdentity read;
    PartSummary whole;
};

}  // namespace velmorak
