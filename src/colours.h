#pragma once

#include <cstdint>

/// Fill colours of a box ("fill_color_rgba"). The start plug-in is the first one in the manager's list.
namespace colours {
inline constexpr std::uint32_t start = 0x80e666e6;
inline constexpr std::uint32_t startSelected = 0xb2ff99e6;
inline constexpr std::uint32_t other = 0xe6e666e6;
inline constexpr std::uint32_t otherSelected = 0xffff99e6;
}  // namespace colours
