#pragma once

#include <velmorak/Kind.h>
#include <velmorak/StateBytes.h>

#include <cstddef>
#include <string>

namespace velmorak {

/// A file that takes the rows of a table as text.
class RowFile {
public:
    /// Threads: several at once.
    virtual std::string format(const Chunk& chunk) const = 0;
    /// @throws Failure if the file cannot be written.
    virtual void append(const std::string& rows) const = 0;

protected:
    ~RowFile() = default;
};

/// Rows on their way to a file: formatted in parallel, appended in order. The state of the first rows gives them to the
/// file when they are many; others keep them.
class WrittenRows : public AccumulatorState {
public:
    /// @param file outlives this.
    explicit WrittenRows(const RowFile& file) : file(file) {}

    void fill(const Chunk& chunk) override { text += file.format(chunk); }
    void merge(AccumulatorState& other) override;
    /// @throws Failure if rows are in the file already.
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    void handOver();

private:
    static constexpr std::size_t maxBytesKept = std::size_t{1} << 20U;

    const RowFile& file;
    std::string text;
    bool hasWritten = false;
};

}  // namespace velmorak
