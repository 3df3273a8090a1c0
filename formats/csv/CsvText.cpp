#include "csv/CsvText.h"

#include "csv/CsvMagic.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t headBytes = 1U << 16U;
constexpr std::size_t shortHeadBytes = 1U << 14U;
constexpr std::size_t rawBytes = 1U << 18U;

/// Turns failures into failures of the input that names the file.
template <typename Work>
auto ofTheFile(Work&& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        throw Failure("file", failure.what());
    }
}

constexpr bool isHighSurrogate(unsigned unit) {
    return unit >= 0xD800U && unit < 0xDC00U;
}

constexpr bool isLowSurrogate(unsigned unit) {
    return unit >= 0xDC00U && unit < 0xE000U;
}

}  // namespace

CsvText::CsvText(const std::filesystem::path& path, CsvEncoding encoding)
    : fileName(path.string()), in(ofTheFile([&] { return CompressedFile(path); })), encoding(encoding) {
    readHead(shortHeadBytes);
    findEncoding();
    // Line ends of old Macs, or a header that may be long.
    if (first.size() == shortHeadBytes && (first.find('\n') == std::string::npos || head().starts_with('#'))) {
        readHead(headBytes);
    }
    if (isConverted()) {
        raw = std::exchange(first, {});
        rawPlace = std::exchange(firstPlace, 0);
        std::string converted(headBytes, '\0');
        converted.resize(convert(converted.data(), converted.size()));
        first = std::move(converted);
    }
    if (const std::string_view format = binaryFormatOf(head()); !format.empty()) {
        throw Failure("file", "\"" + fileName + "\" is " + std::string(format) + ", not a text file with rows");
    }
    findLineEnds();
}

/// Reads more, up to so many bytes. Damage after the first ones is for read to report, once it has returned these.
void CsvText::readHead(std::size_t size) {
    const std::size_t before = first.size();
    first.resize(size);
    std::size_t more = 0;
    try {
        more = readPlain(first.data() + before, size - before);
    } catch (const Failure&) {
        if (before == 0) {
            throw;
        }
    }
    first.resize(before + more);
}

/// Looks at the byte order mark.
void CsvText::findEncoding() {
    if (first.starts_with(std::string_view("\xFF\xFE\0\0", 4)) ||
        first.starts_with(std::string_view("\0\0\xFE\xFF", 4))) {
        throw Failure("file", "\"" + fileName + "\" is encoded in UTF-32; save it as UTF-8");
    }
    const bool isLittle = first.starts_with("\xFF\xFE");
    const bool isBig = first.starts_with("\xFE\xFF");
    if (encoding == CsvEncoding::Automatic && (isLittle || isBig)) {
        encoding = CsvEncoding::Utf16;
    }
    if (encoding == CsvEncoding::Utf16) {
        // Without a mark, a text that begins with an ASCII character shows the order of the bytes.
        isBigEndian = isBig || (!isLittle && first.size() > 1 && first[0] == '\0' && first[1] != '\0');
        firstPlace = isLittle || isBig ? 2 : 0;
    } else if (first.starts_with("\xEF\xBB\xBF") && encoding != CsvEncoding::Latin1) {
        firstPlace = 3;
    }
}

void CsvText::findLineEnds() {
    const std::string_view text = head();
    const std::size_t carriageReturn = text.find('\r');
    // A carriage return at the end of the head may belong to a CR LF pair.
    isOfMac = text.find('\n') == std::string_view::npos && carriageReturn != std::string_view::npos &&
              (carriageReturn + 1 < text.size() || text.size() < headBytes);
    if (isOfMac) {
        std::replace(first.begin(), first.end(), '\r', '\n');
    }
}

std::size_t CsvText::read(char* target, std::size_t size) {
    if (firstPlace < first.size()) {
        const std::size_t count = std::min(size, first.size() - firstPlace);
        std::copy_n(first.data() + firstPlace, count, target);
        firstPlace += count;
        return count;
    }
    if (!first.empty()) {
        first = {};
        firstPlace = 0;
    }
    const std::size_t count = isConverted() ? convert(target, size) : readPlain(target, size);
    if (isOfMac) {
        std::replace(target, target + count, '\r', '\n');
    }
    return count;
}

std::optional<std::uint64_t> CsvText::place() const {
    const std::optional<std::uint64_t> next = isConverted() ? std::nullopt : in.place();
    return next ? std::optional(*next - (first.size() - firstPlace)) : std::nullopt;
}

void CsvText::seek(std::uint64_t place) {
    first = {};
    firstPlace = 0;
    ofTheFile([&] { in.seek(place); });
}

std::size_t CsvText::readPlain(char* target, std::size_t size) {
    return ofTheFile([&] { return in.read(target, size); });
}

/// Fills the target as far as whole characters fit.
std::size_t CsvText::convert(char* target, std::size_t size) {
    std::size_t count = 0;
    while (size - count >= 4) {
        if (convertOne(count, target, size)) {
            continue;
        }
        if (isAtEnd) {
            break;
        }
        try {
            readMore();
        } catch (const Failure&) {
            if (count == 0) {
                throw;
            }
            break;
        }
    }
    return count;
}

/// Reads bytes that are still to be converted. Bytes from before an error stay.
void CsvText::readMore() {
    raw.erase(0, std::exchange(rawPlace, 0));
    const std::size_t before = raw.size();
    raw.resize(before + rawBytes);
    std::size_t more = 0;
    try {
        more = readPlain(raw.data() + before, rawBytes);
    } catch (const Failure&) {
        raw.resize(before);
        throw;
    }
    raw.resize(before + more);
    isAtEnd = more == 0;
}

unsigned CsvText::unitAt(std::size_t place) const {
    const unsigned a = static_cast<unsigned char>(raw[place]);
    const unsigned b = static_cast<unsigned char>(raw[place + 1]);
    return isBigEndian ? a << 8U | b : b << 8U | a;
}

/// Converts characters that are there completely. @return false if there is none, or no more.
bool CsvText::convertOne(std::size_t& count, char* target, std::size_t size) {
    constexpr unsigned replacement = 0xFFFDU;
    const std::size_t before = count;
    while (size - count >= 4 && rawPlace < raw.size()) {
        if (encoding == CsvEncoding::Latin1) {
            count += writeUtf8(static_cast<unsigned char>(raw[rawPlace++]), target + count);
            continue;
        }
        const std::size_t left = raw.size() - rawPlace;
        if (left < 2) {
            rawPlace = isAtEnd ? raw.size() : rawPlace;
            break;
        }
        unsigned code = unitAt(rawPlace);
        std::size_t used = 2;
        if (isHighSurrogate(code)) {
            if (left < 4 && !isAtEnd) {
                break;
            }
            const unsigned low = left < 4 ? 0 : unitAt(rawPlace + 2);
            used = isLowSurrogate(low) ? 4 : 2;
            code = isLowSurrogate(low) ? 0x10000U + ((code - 0xD800U) << 10U) + (low - 0xDC00U) : replacement;
        } else if (isLowSurrogate(code)) {
            code = replacement;
        }
        rawPlace += used;
        count += writeUtf8(code, target + count);
    }
    return count > before;
}

}  // namespace velmorak
