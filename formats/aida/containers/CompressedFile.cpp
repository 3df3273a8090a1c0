#include <velmorak/CompressedFile.h>

#include "aida/containers/Decompressor.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string>
#include <system_error>

namespace velmorak {

namespace {

using io::Decompressor;
using io::Packing;

/// Only the formats whose magic bytes cannot begin a text; a text may begin like the others.
Packing packingOf(std::string_view bytes) {
    constexpr std::string_view bzip2Block = "1AY&SY";
    if (bytes.starts_with("\x1F\x8B")) {
        return Packing::Gzip;
    }
    if (bytes.starts_with("BZh") && bytes.substr(std::min<std::size_t>(4, bytes.size())).starts_with(bzip2Block)) {
        return Packing::Bzip2;
    }
    return bytes.starts_with("PK\x03\x04") || bytes.starts_with("PK\x05\x06") ? Packing::Zip : Packing::Plain;
}

Packing packingOf(Decompressor& plain) {
    std::array<char, 16> bytes{};
    return packingOf(std::string_view(bytes.data(), plain.read(bytes.data(), bytes.size())));
}

/// @throws Failure unless the archive contains exactly one file.
void mustHoldOne(const std::filesystem::path& file) {
    const auto archive = io::openPacked(file, Packing::Zip);
    std::string names;
    std::size_t count = 0;
    for (; count < 10 && archive->nextEntry(); ++count) {
        names += (count == 0 ? "" : ", ") + archive->entryName();
    }
    if (count == 0) {
        throw Failure(fmt::format("{} is an archive without files{}{}", file.string(),
                                  archive->damage().empty() ? "" : ": ", archive->damage()));
    }
    if (count > 1) {
        throw Failure(
            fmt::format("{} is an archive of several files; only archives of one file can be read: it contains {}",
                        file.string(), names));
    }
}

}  // namespace

struct CompressedFile::Impl {
    std::string name;
    std::uintmax_t size = 0;
    bool isPlain = false;
    std::unique_ptr<Decompressor> unpacker;
};

CompressedFile::CompressedFile(const std::filesystem::path& file) : part(std::make_unique<Impl>()) {
    part->name = file.string();
    part->unpacker = io::openPacked(file, Packing::Plain);
    std::error_code error;
    part->size = std::filesystem::file_size(file, error);
    if (error) {
        throw Failure(fmt::format("{} cannot be opened: {}", part->name, error.message()));
    }
    const Packing packing = packingOf(*part->unpacker);
    part->isPlain = packing == Packing::Plain;
    if (part->isPlain && part->unpacker->seek(0)) {
        return;
    }
    if (packing == Packing::Zip) {
        mustHoldOne(file);
    }
    part->unpacker = io::openPacked(file, packing);
    if (packing == Packing::Zip) {
        part->unpacker->nextEntry();
    }
}

CompressedFile::CompressedFile(CompressedFile&& other) noexcept = default;
CompressedFile& CompressedFile::operator=(CompressedFile&& other) noexcept = default;
CompressedFile::~CompressedFile() = default;

std::size_t CompressedFile::read(char* target, std::size_t size) {
    std::size_t count = 0;
    for (std::size_t more = 1; more != 0 && count < size; count += more) {
        more = part->unpacker->read(target + count, size - count);
    }
    if (count == 0 && size != 0 && !part->unpacker->damage().empty()) {
        throw Failure(fmt::format("{}: {}", part->name, part->unpacker->damage()));
    }
    return count;
}

std::optional<std::uint64_t> CompressedFile::place() const {
    return part->isPlain ? std::optional(part->unpacker->position()) : std::nullopt;
}

std::optional<std::uint64_t> CompressedFile::bytesLeft() const {
    const std::optional<std::uint64_t> next = place();
    return next ? std::optional(part->size - std::min<std::uint64_t>(*next, part->size)) : std::nullopt;
}

void CompressedFile::seek(std::uint64_t place) {
    if (place > part->size || !part->isPlain || !part->unpacker->seek(place)) {
        throw Failure(fmt::format("{} cannot be read from byte {} on", part->name, place));
    }
}

double CompressedFile::fraction() const {
    const auto done = static_cast<double>(part->unpacker->position());
    return part->size == 0 ? 1.0 : std::min(1.0, done / static_cast<double>(part->size));
}

}  // namespace velmorak
