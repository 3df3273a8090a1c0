#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace velmorak {

/// A regular file that is read at any position.
/// Threads: any number at once.
class PlainFile {
public:
    /// @throws Failure with the reason if it cannot be opened or is not a regular file.
    explicit PlainFile(const std::filesystem::path& path);
    ~PlainFile();
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;

    const std::filesystem::path& path() const { return name; }
    std::uint64_t size() const { return bytes; }
    /// @throws Failure if the file ends before, or cannot be read.
    void read(std::uint64_t position, std::size_t count, char* target) const;

private:
    std::filesystem::path name;
    std::uint64_t bytes = 0;
    int descriptor;
};

}  // namespace velmorak
