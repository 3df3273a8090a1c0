#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace velmorak::bench {

/// A compressed record: where its content begins, its bytes, and those after decompression.
struct PackedRecord {
    std::uint64_t position = 0;
    std::size_t bytes = 0;
    std::size_t unpackedBytes = 0;
};

/// The records of some branches of the tree "events".
std::vector<PackedRecord> recordsOf(const std::filesystem::path& file, const std::vector<std::string>& branches);

/// Reads and decompresses the records with nothing but the library of their compression, on as many threads.
/// @return the sum of the unpacked bytes.
std::size_t unpackAll(const std::filesystem::path& file, const std::vector<PackedRecord>& records, unsigned threads);

}  // namespace velmorak::bench
