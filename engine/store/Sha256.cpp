#include "store/Sha256.h"

#include <openssl/evp.h>

#include <new>

namespace velmorak {
namespace {

/// The operations fail only without memory.
void check(int isDone) {
    if (isDone != 1) {
        throw std::bad_alloc();
    }
}

}  // namespace

void Sha256::Free::operator()(evp_md_ctx_st* context) const {
    EVP_MD_CTX_free(context);
}

Sha256::Sha256() : context(EVP_MD_CTX_new()) {
    check(context ? EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) : 0);
}

void Sha256::add(const void* bytes, std::size_t count) {
    check(EVP_DigestUpdate(context.get(), bytes, count));
}

void Sha256::addText(std::string_view text) {
    addNumber(text.size());
    add(text.data(), text.size());
}

void Sha256::addNumber(std::uint64_t number) {
    std::array<std::uint8_t, 8> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(number >> (56 - 8 * i));
    }
    add(bytes.data(), bytes.size());
}

Digest Sha256::finish() {
    Digest digest;
    check(EVP_DigestFinal_ex(context.get(), digest.data(), nullptr));
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
