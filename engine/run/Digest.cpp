#include "Digest.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace velmorak {
namespace {

constexpr std::array<std::uint32_t, 64> roundConstants{
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

std::uint32_t bigEndianAt(const std::uint8_t* bytes) {
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
           std::uint32_t{bytes[3]};
}

std::array<std::uint32_t, 64> schedule(const std::uint8_t* block) {
    std::array<std::uint32_t, 64> words;
    for (std::size_t i = 0; i < 16; ++i) {
        words[i] = bigEndianAt(block + 4 * i);
    }
    for (std::size_t i = 16; i < 64; ++i) {
        const std::uint32_t a = words[i - 15];
        const std::uint32_t b = words[i - 2];
        words[i] = words[i - 16] + (std::rotr(a, 7) ^ std::rotr(a, 18) ^ (a >> 3)) + words[i - 7] +
                   (std::rotr(b, 17) ^ std::rotr(b, 19) ^ (b >> 10));
    }
    return words;
}

}  // namespace

void Digester::absorb(const std::uint8_t* block) {
    const std::array<std::uint32_t, 64> words = schedule(block);
    auto [a, b, c, d, e, f, g, h] = state;
    for (std::size_t i = 0; i < 64; ++i) {
        const std::uint32_t first = h + (std::rotr(e, 6) ^ std::rotr(e, 11) ^ std::rotr(e, 25)) + ((e & f) ^ (~e & g)) +
                                    roundConstants[i] + words[i];
        const std::uint32_t second =
            (std::rotr(a, 2) ^ std::rotr(a, 13) ^ std::rotr(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + first;
        d = c;
        c = b;
        b = a;
        a = first + second;
    }
    const std::array<std::uint32_t, 8> mixed{a, b, c, d, e, f, g, h};
    for (std::size_t i = 0; i < state.size(); ++i) {
        state[i] += mixed[i];
    }
}

void Digester::add(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    std::size_t filled = total % pending.size();
    total += count;
    if (filled > 0) {
        const std::size_t taken = std::min(count, pending.size() - filled);
        std::memcpy(pending.data() + filled, from, taken);
        if (filled + taken < pending.size()) {
            return;
        }
        absorb(pending.data());
        from += taken;
        count -= taken;
    }
    for (; count >= pending.size(); count -= pending.size(), from += pending.size()) {
        absorb(from);
    }
    if (count > 0) {
        std::memcpy(pending.data(), from, count);
    }
}

void Digester::addText(std::string_view text) {
    addNumber(text.size());
    add(text.data(), text.size());
}

void Digester::addNumber(std::uint64_t number) {
    std::array<std::uint8_t, 8> bytes;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(number >> (56 - 8 * i));
    }
    add(bytes.data(), bytes.size());
}

Digest Digester::finish() {
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
