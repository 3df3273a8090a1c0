#pragma once

#include "run/pass/PassRange.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace velmorak {

/// Cuts a pass into ranges of about the same size: between files, and between the chunks of a file that is larger than
/// a range.
/// @param bytes of each file; 0 where that is not known.
/// @param parts at most so many ranges, at least 1.
/// @param chunksOf number of chunks of a file, for which the file is read. Called only for files that may be cut.
/// @return at least one range; together they are the whole pass, in order, and none is empty.
std::vector<PassRange> cutPass(const std::vector<std::uint64_t>& bytes, std::size_t parts,
                               const std::function<std::uint64_t(std::uint64_t file)>& chunksOf);

}  // namespace velmorak
