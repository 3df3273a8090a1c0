#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

/// What the readers of columnar files share.
namespace velmorak::columnar {

using Bytes = std::span<const std::uint8_t>;

/// @return the first bytes as a number; the caller has checked that they are there.
template <typename Number>
Number littleEndian(const std::uint8_t* bytes) {
    Number number;
    if constexpr (std::endian::native == std::endian::little) {
        std::memcpy(&number, bytes, sizeof number);
    } else {
        std::uint8_t turned[sizeof number];
        std::reverse_copy(bytes, bytes + sizeof number, turned);
        std::memcpy(&number, turned, sizeof number);
    }
    return number;
}

inline std::string_view textOf(Bytes bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Bytes in memory that are not set to zero first. Some zeros follow the end, so that eight bytes may be loaded
/// anywhere.
class Block {
public:
    static constexpr std::size_t padding = 16;

    Block() = default;
    explicit Block(std::size_t size)
        : content(std::make_unique_for_overwrite<std::uint8_t[]>(size + padding)), count(size) {
        std::memset(content.get() + size, 0, padding);
    }

    std::uint8_t* data() { return content.get(); }
    std::size_t size() const { return count; }
    Bytes bytes() const { return {content.get(), count}; }

private:
    std::unique_ptr<std::uint8_t[]> content;
    std::size_t count = 0;
};

}  // namespace velmorak::columnar
