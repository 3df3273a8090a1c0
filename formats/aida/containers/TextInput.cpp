#include "aida/containers/TextInput.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string_view>
#include <system_error>

namespace velmorak::io {

namespace {

constexpr std::size_t lookAhead = 512;
constexpr std::size_t binaryPiece = std::size_t{1} << 16;
constexpr std::string_view binaryMark("\x03\x00\x00\x6A", 4);

bool isXml(std::string_view bytes) {
    if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE")) {
        return true;
    }
    if (bytes.starts_with("\xEF\xBB\xBF")) {
        bytes.remove_prefix(3);
    }
    const auto first = bytes.find_first_not_of(" \t\r\n");
    return first == std::string_view::npos || bytes[first] == '<';
}

bool isZlib(std::string_view bytes) {
    return bytes.size() > 1 && bytes[0] == '\x78' &&
           (static_cast<unsigned char>(bytes[0]) * 256U + static_cast<unsigned char>(bytes[1])) % 31U == 0;
}

Packing packingOf(std::string_view bytes) {
    if (bytes.starts_with("\x1F\x8B")) {
        return Packing::Gzip;
    }
    if (bytes.starts_with("BZh")) {
        return Packing::Bzip2;
    }
    if (bytes.starts_with("PK\x03\x04")) {
        return Packing::Zip;
    }
    if (isZlib(bytes)) {
        return Packing::Zlib;
    }
    return isXml(bytes) || bytes.starts_with(binaryMark) ? Packing::Plain : Packing::RawDeflate;
}

std::string shown(std::string_view bytes) {
    std::string hex;
    for (const char byte : bytes.substr(0, 8)) {
        hex += fmt::format("{}{:02X}", hex.empty() ? "" : " ", static_cast<unsigned char>(byte));
    }
    return hex;
}

/// The file's first bytes. @throws Failure if it is empty.
std::string firstBytes(const std::filesystem::path& file) {
    std::string bytes(lookAhead, '\0');
    const auto plain = openPacked(file, Packing::Plain);
    bytes.resize(plain->read(bytes.data(), bytes.size()));
    if (bytes.empty()) {
        throw Failure(fmt::format("{} is empty", file.string()));
    }
    return bytes;
}

}  // namespace

TextInput::TextInput(const std::filesystem::path& file, const RunContext& context) : context(context) {
    const std::string first = firstBytes(file);
    std::error_code error;
    fileSize = std::filesystem::file_size(file, error);
    if (error) {
        fileSize = 0;
    }
    const Packing packing = packingOf(first);
    packed = packing != Packing::Plain;
    unpacker = openPacked(file, packing);
    if (packing == Packing::Zip) {
        if (!nextDocument()) {
            throw Failure(fmt::format("{} contains no XML{}{}", file.string(), damage().empty() ? "" : ": ", damage()));
        }
        return;
    }
    const bool isWithoutMark = packing == Packing::RawDeflate;
    if (beginDocument() && !(isWithoutMark && head.empty())) {
        return;
    }
    // Bytes without a known magic number are raw deflate if they decompress to XML.
    const bool isPacked = packing != Packing::Plain && !isWithoutMark;
    throw Failure(
        fmt::format("{} is not XML: first bytes {}", file.string(), shown(isPacked ? std::string_view(head) : first)));
}

bool TextInput::beginDocument() {
    head.assign(lookAhead, '\0');
    headTaken = 0;
    std::size_t count = 0;
    for (std::size_t more = 1; more != 0 && count < lookAhead; count += more) {
        more = unpacker->read(head.data() + count, lookAhead - count);
    }
    head.resize(count);
    binary.reset();
    binaryText.clear();
    binaryBegin = binaryEnd = 0;
    if (head.starts_with(binaryMark)) {
        binary = std::make_unique<WbxmlText>([this] { return nextByte(); });
    }
    // Damage at the beginning is reported when it is read.
    return binary || isXml(head);
}

bool TextInput::nextDocument() {
    while (unpacker->nextEntry()) {
        if (context.isStopping()) {
            throw Stopped();
        }
        name = unpacker->entryName();
        if (beginDocument()) {
            return true;
        }
        notXml.push_back(name);
    }
    return false;
}

const std::string& TextInput::damage() const {
    return binary && unpacker->damage().empty() ? binary->damage() : unpacker->damage();
}

double TextInput::fraction() const {
    const auto done = static_cast<double>(unpacker->position());
    return fileSize == 0 ? 0.0 : std::min(1.0, done / static_cast<double>(fileSize));
}

std::size_t TextInput::unpack(char* target, std::size_t size) {
    if (headTaken == head.size()) {
        return unpacker->read(target, size);
    }
    const std::size_t count = std::min(size, head.size() - headTaken);
    std::memcpy(target, head.data() + headTaken, count);
    headTaken += count;
    return count;
}

int TextInput::nextByte() {
    if (binaryBegin == binaryEnd) {
        binaryBytes.resize(binaryPiece);
        binaryBegin = 0;
        binaryEnd = unpack(binaryBytes.data(), binaryBytes.size());
        if (binaryEnd == 0) {
            return -1;
        }
    }
    return static_cast<unsigned char>(binaryBytes[binaryBegin++]);
}

std::size_t TextInput::read(char* target, std::size_t size) {
    if (!binary) {
        return unpack(target, size);
    }
    while (binaryText.size() < size && binary->append(binaryText)) {
    }
    const std::size_t count = std::min(size, binaryText.size());
    std::memcpy(target, binaryText.data(), count);
    binaryText.erase(0, count);
    return count;
}

}  // namespace velmorak::io
