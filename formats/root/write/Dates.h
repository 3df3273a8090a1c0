#pragma once

#include <cstdint>

namespace velmorak::root {

/// The beginning of 1995, the first time that the format can express. All times in a file are this one, so that the
/// same contents give the same file.
inline constexpr std::uint32_t constantDate = 1U << 22U | 1U << 17U;

}  // namespace velmorak::root
