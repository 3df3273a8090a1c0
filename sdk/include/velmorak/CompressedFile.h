#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

namespace velmorak {

/// The bytes of a text file from front to back, unpacked where its first bytes say that it is packed with gzip (in one
/// member or several) or bzip2, or is a zip archive of one file. Its name does not matter. Threads: one at a time.
class CompressedFile {
public:
    /// @throws Failure when the file cannot be opened, or is an archive of no file or of several.
    explicit CompressedFile(const std::filesystem::path& file);
    CompressedFile(CompressedFile&& other) noexcept;
    CompressedFile& operator=(CompressedFile&& other) noexcept;
    ~CompressedFile();

    /// @return bytes put into the target, as many as there is room for unless the file ends; 0 at its end.
    /// @throws Failure where the file is damaged, with the position in it. Bytes before the damage have come before.
    std::size_t read(char* target, std::size_t size);
    /// Part of the file that has been read, 0 to 1.
    double fraction() const;

private:
    struct Impl;
    std::unique_ptr<Impl> part;
};

}  // namespace velmorak
