#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>

namespace velmorak {

/// The bytes of a text file from front to back, unpacked where its first bytes say that it is packed with gzip (in one
/// member or several) or bzip2, or is a zip archive of one file. Its name does not matter. Threads: one at a time.
class PackedFile {
public:
    /// @throws Failure when the file cannot be opened, or is an archive of no file or of several.
    explicit PackedFile(const std::filesystem::path& file);
    PackedFile(PackedFile&& other) noexcept;
    PackedFile& operator=(PackedFile&& other) noexcept;
    ~PackedFile();

    /// @return bytes put into the target, as many as there is room for unless the file ends; 0 at its end.
    /// @throws Failure where the file is damaged, with the position in it. Bytes before the damage have come before.
    std::size_t read(char* target, std::size_t size);
    /// Part of the file that has been read, 0 to 1.
    double fraction() const;

private:
    struct Part;
    std::unique_ptr<Part> part;
};

}  // namespace velmorak
