#pragma once

#include "aida/containers/TextInput.h"
#include "aida/text/RowFastPath.h"

#include <deque>
#include <exception>
#include <memory>
#include <string_view>
#include <vector>

namespace velmorak::io {

/// The text of a tuple's rows, cut into blocks behind rows, each scanned as if it held plain rows and nothing else. In
/// a run of several threads, idle ones decompress and scan ahead of the reader.
/// Threads: its operations are called by one at a time, which alone sees the block at the front.
class RowBlocks {
public:
    struct Block {
        explicit Block(const std::vector<PlainColumn>& columns) : rows(columns) {}

        std::string_view text() const { return {bytes.data(), size}; }
        /// Scans the text from a byte on.
        void scanFrom(std::size_t begin);

        std::vector<char> bytes;  ///< The text, followed by zeros.
        std::size_t size = 0;
        RowFastPath rows;
        std::size_t scannedFrom = 0;
        double fraction = 0.0;  ///< Of the file that has been read up to here.
        std::exception_ptr failure;
        bool isScanned = false;
        bool isBeingScanned = false;
    };

    /// @param bytes must outlive this, and must not be read by others until then.
    RowBlocks(TextInput& bytes, const std::vector<PlainColumn>& columns);
    ~RowBlocks();
    RowBlocks(const RowBlocks&) = delete;
    RowBlocks& operator=(const RowBlocks&) = delete;

    /// @return the first block that has not been popped, scanned from its beginning; null at the end of the text.
    /// @throws the exception of reading the block.
    Block* front();
    void pop();

private:
    struct Shared;

    std::shared_ptr<Shared> shared;  ///< Outlives this for helper tasks that start late; they find it closed.
    std::size_t threads;
};

}  // namespace velmorak::io
