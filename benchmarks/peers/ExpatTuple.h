#pragma once

#include <cstddef>
#include <filesystem>
#include <vector>

namespace velmorak::bench {

/// The peer that reads a tuple of reals as one would by hand: expat, fed with pieces of the file, and std::from_chars.
/// @return the values of each column.
std::vector<std::vector<double>> readWithExpat(const std::filesystem::path& file, std::size_t columns);

/// Unpacks a gzip file with zlib or with ISA-L and drops the bytes. @return how many there were.
std::size_t inflateWithZlib(const std::filesystem::path& file);
std::size_t inflateWithIsal(const std::filesystem::path& file);

}  // namespace velmorak::bench
