#include <velmorak/CompressedFile.h>
#include <velmorak/FileFormat.h>
#include <velmorak/RegularFile.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmorak {
namespace {

std::string firstBytesOf(const std::filesystem::path& file) {
    requireRegular(file);
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        throw Failure(file.string() + " cannot be opened: " + std::generic_category().message(errno));
    }
    std::string bytes(FileStart::maxBytes, '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    return bytes;
}

bool isCompressed(std::string_view bytes) {
    constexpr std::array<std::string_view, 3> signatures = {"\x1f\x8b", "BZh", "PK\x03\x04"};
    return std::ranges::any_of(signatures, [&](std::string_view signature) { return bytes.starts_with(signature); });
}

/// @return the first bytes of the content; empty if it cannot be read.
std::string firstUnpackedBytesOf(const std::filesystem::path& file) {
    std::string bytes(FileStart::maxBytes, '\0');
    std::size_t count = 0;
    try {
        CompressedFile stream(file);
        count = stream.read(bytes.data(), bytes.size());
    } catch (const Failure&) {
        // An archive of several files, or a damaged one: its format is recognised by the packed bytes, if at all.
    }
    bytes.resize(count);
    return bytes;
}

}  // namespace

FileStart startOf(const std::filesystem::path& file) {
    FileStart start{.path = file, .bytes = firstBytesOf(file), .unpacked = {}};
    start.unpacked = isCompressed(start.bytes) ? firstUnpackedBytesOf(file) : start.bytes;
    return start;
}

bool FileFormats::add(std::unique_ptr<FileFormat> format) {
    const std::string name = format->name();
    if (std::ranges::any_of(formats, [&](const auto& known) { return known->name() == name; })) {
        return false;
    }
    formats.push_back(std::move(format));
    return true;
}

const FileFormat* FileFormats::recognise(const FileStart& start) const {
    const FileFormat* possible = nullptr;
    for (const std::unique_ptr<FileFormat>& format : formats) {
        const Recognition recognition = format->recognise(start);
        if (recognition == Recognition::Certain) {
            return format.get();
        }
        if (recognition == Recognition::Possible && !possible) {
            possible = format.get();
        }
    }
    return possible;
}

}  // namespace velmorak
