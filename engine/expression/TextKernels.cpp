#include "expression/TextKernels.h"

#include <velmorak/Dates.h>
#include <velmorak/Utf8.h>

#include <re2/re2.h>
#include <utf8proc.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace velmorak::expression {

namespace {

using TextPtr = const std::string*;

template <typename Make>
bool makeTexts(const KernelArgs& args, const Make& make) {
    auto* const out = static_cast<TextPtr*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = &args.texts->emplace_back(make(row));
    }
    return true;
}

std::string mapped(const std::string& text, utf8proc_int32_t (*mapping)(utf8proc_int32_t)) {
    std::string made;
    made.reserve(text.size());
    const auto* at = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto left = static_cast<utf8proc_ssize_t>(text.size());
    while (left > 0) {
        utf8proc_int32_t character = 0;
        const utf8proc_ssize_t length = utf8proc_iterate(at, left, &character);
        if (length > 0) {
            utf8proc_uint8_t bytes[4];
            const utf8proc_ssize_t written = utf8proc_encode_char(mapping(character), bytes);
            made.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(written));
        } else {
            made += static_cast<char>(*at);
        }
        const utf8proc_ssize_t step = std::max<utf8proc_ssize_t>(length, 1);
        at += step;
        left -= step;
    }
    return made;
}

bool mapTexts(const KernelArgs& args, utf8proc_int32_t (*mapping)(utf8proc_int32_t)) {
    const auto* const texts = static_cast<const TextPtr*>(args.in[0]);
    return makeTexts(args, [&](std::size_t row) { return mapped(*texts[row], mapping); });
}

/// @return the byte at which the characters after so many begin; the text's size if there are fewer.
std::size_t byteAfter(std::string_view text, std::size_t from, std::int64_t characters) {
    std::size_t at = from;
    for (; characters > 0 && at < text.size(); --characters) {
        do {
            ++at;
        } while (at < text.size() && isContinuationByte(text[at]));
    }
    return at;
}

std::string partOf(const std::string& text, std::int64_t first, std::int64_t count) {
    if (first < 0) {
        const auto characters = static_cast<std::int64_t>(
            std::count_if(text.begin(), text.end(), [](char c) { return !isContinuationByte(c); }));
        first = std::max<std::int64_t>(characters + first, 0);
    }
    const std::size_t begin = byteAfter(text, 0, first);
    return text.substr(begin, byteAfter(text, begin, count) - begin);
}

}  // namespace

bool lowerTexts(const KernelArgs& args) {
    return mapTexts(args, utf8proc_tolower);
}

bool upperTexts(const KernelArgs& args) {
    return mapTexts(args, utf8proc_toupper);
}

bool partsOfTexts(const KernelArgs& args) {
    const auto* const texts = static_cast<const TextPtr*>(args.in[0]);
    const auto* const firsts = static_cast<const std::int64_t*>(args.in[1]);
    const auto* const counts = static_cast<const std::int64_t*>(args.in[2]);
    return makeTexts(args, [&](std::size_t row) { return partOf(*texts[row], firsts[row], counts[row]); });
}

bool datesAsTexts(const KernelArgs& args) {
    const auto* const seconds = static_cast<const double*>(args.in[0]);
    return makeTexts(
        args, [&](std::size_t row) { return std::isnan(seconds[row]) ? std::string() : dateText(seconds[row]); });
}

std::shared_ptr<const void> compiledPattern(const std::string& pattern) {
    auto compiled = std::make_shared<RE2>(pattern, RE2::Quiet);
    if (!compiled->ok()) {
        throw std::invalid_argument(compiled->error());
    }
    return compiled;
}

bool searchTexts(const KernelArgs& args) {
    const auto* const texts = static_cast<const TextPtr*>(args.in[0]);
    const auto* const patterns = static_cast<const RE2* const*>(args.in[1]);
    auto* const out = static_cast<std::uint8_t*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = RE2::PartialMatch(*texts[row], *patterns[row]) ? 1 : 0;
    }
    return true;
}

}  // namespace velmorak::expression
