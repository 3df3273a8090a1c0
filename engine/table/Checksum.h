#pragma once

#include <cstdint>
#include <string_view>

namespace velmorak {

inline constexpr std::uint64_t emptyChecksum = 0xcbf29ce484222325U;

/// @param sum checksum of the preceding bytes.
inline std::uint64_t checksum(std::string_view bytes, std::uint64_t sum = emptyChecksum) {
    for (const char byte : bytes) {
        sum = (sum ^ static_cast<unsigned char>(byte)) * 0x100000001b3U;
    }
    return sum;
}

}  // namespace velmorak
