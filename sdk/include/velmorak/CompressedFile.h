#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace velmorak {

/// Reads a file sequentially and decompresses gzip (any number of members), bzip2, and zip archives of one file. The
/// format is recognised by the first bytes, not by the name.
/// Threads: one at a time.
class CompressedFile {
public:
    /// @throws Failure if the file cannot be opened, or is a zip archive that does not hold exactly one file.
    explicit CompressedFile(const std::filesystem::path& file);
    CompressedFile(CompressedFile&& other) noexcept;
    CompressedFile& operator=(CompressedFile&& other) noexcept;
    ~CompressedFile();

    /// @return the number of bytes stored in target: size, fewer only before the end of the file, 0 at the end.
    /// @throws Failure with the position of the damage in a damaged file, once all bytes before it have been returned.
    std::size_t read(char* target, std::size_t size);
    /// Byte of the file that read returns next; nothing if the file is compressed.
    std::optional<std::uint64_t> place() const;
    /// Bytes that read has not returned yet; nothing if the file is compressed.
    std::optional<std::uint64_t> bytesLeft() const;
    /// Goes to such a byte. @throws Failure if the file is compressed, or ends before.
    void seek(std::uint64_t place);
    /// Fraction of the compressed file that has been read, 0 to 1.
    double fraction() const;

private:
    struct Impl;
    std::unique_ptr<Impl> part;
};

}  // namespace velmorak
