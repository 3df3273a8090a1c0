#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

namespace velmorak {

/// A SHA-256 sum. Two contents with the same digest are taken as the same.
using Digest = std::array<std::uint8_t, 32>;

/// Computes the SHA-256 sum of bytes (FIPS 180-4), by libcrypto.
class Sha256 {
public:
    /// @throws std::bad_alloc when there is no memory for the context.
    Sha256();

    void add(const void* bytes, std::size_t count);
    /// Adds a text with its length in front, so that no two sequences of texts give the same bytes.
    void addText(std::string_view text);
    /// Adds eight bytes, the most significant first.
    void addNumber(std::uint64_t number);
    /// Nothing may be added afterwards.
    Digest finish();

private:
    struct Free {
        void operator()(evp_md_ctx_st* context) const;
    };

    std::unique_ptr<evp_md_ctx_st, Free> context;
};

/// @return 64 hexadecimal digits.
std::string hexOf(const Digest& digest);

}  // namespace velmorak
