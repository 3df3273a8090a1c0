#pragma once

#include "columnar/Bytes.h"

#include <filesystem>

namespace velmorak::columnar {

/// A file from which any bytes can be read.
/// Threads: any.
class FileBytes {
public:
    /// @throws Failure if the file cannot be opened.
    explicit FileBytes(const std::filesystem::path& path);
    ~FileBytes();
    FileBytes(const FileBytes&) = delete;
    FileBytes& operator=(const FileBytes&) = delete;

    const std::filesystem::path& path() const { return filePath; }
    std::uint64_t size() const { return fileSize; }
    /// @throws Failure if the file ends before, without memory having been taken.
    Block read(std::uint64_t position, std::uint64_t count) const;
    void read(std::uint64_t position, std::span<std::uint8_t> target) const;

private:
    std::filesystem::path filePath;
    int descriptor = -1;
    std::uint64_t fileSize = 0;
};

}  // namespace velmorak::columnar
