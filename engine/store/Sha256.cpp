#include "store/Sha256.h"

#include <algorithm>
#include <cstring>

namespace velmorak {
void Sha256::absorb(const std::uint8_t* blocks, std::size_t count) {
    if (hasDigestInstructions) {
        absorbBlocksByInstructions(state, blocks, count);
    } else {
        absorbBlocks(state, blocks, count);
    }
}

void Sha256::add(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    std::size_t filled = total % pending.size();
    total += count;
    if (filled > 0) {
        const std::size_t taken = std::min(count, pending.size() - filled);
        std::memcpy(pending.data() + filled, from, taken);
        if (filled + taken < pending.size()) {
            return;
        }
        absorb(pending.data(), 1);
        from += taken;
        count -= taken;
    }
    const std::size_t blocks = count / pending.size();
    absorb(from, blocks);
    if (count % pending.size() > 0) {
        std::memcpy(pending.data(), from + blocks * pending.size(), count % pending.size());
    }
}

void Sha256::addText(std::string_view text) {
    addNumber(text.size());
    add(text.data(), text.size());
}

void Sha256::addNumber(std::uint64_t number) {
    std::array<std::uint8_t, 8> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(number >> (56 - 8 * i));
    }
    add(bytes.data(), bytes.size());
}

Digest Sha256::finish() {
    const std::uint64_t bits = total * 8;
    constexpr std::array<std::uint8_t, 64> padding{0x80};
    const std::size_t filled = total % pending.size();
    add(padding.data(), filled < 56 ? 56 - filled : 120 - filled);
    addNumber(bits);
    Digest digest;
    for (std::size_t i = 0; i < digest.size(); ++i) {
        digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
    }
    return digest;
}

std::string hexOf(const Digest& digest) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : digest) {
        text += digits[byte >> 4U];
        text += digits[byte & 15U];
    }
    return text;
}

}  // namespace velmorak
