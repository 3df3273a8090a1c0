#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Files below one folder, reached without following any link, so that nothing outside of it can be read.
/// Threads: every operation may be called on any thread.
class FilesBelow {
public:
    struct Entry {
        std::string name;  ///< Relative to the folder.
        std::uint64_t size = 0;
        long long milliseconds = 0;  ///< Since 1970, of the last change.
    };

    /// An open regular file.
    class File {
    public:
        /// @param descriptor closed at the end.
        File(int descriptor, std::uint64_t bytes) : descriptor(descriptor), bytes(bytes) {}
        File(const File&) = delete;
        File& operator=(const File&) = delete;
        ~File();

        std::uint64_t size() const { return bytes; }
        /// @return at most so many bytes from there; empty at the end.
        std::string read(std::uint64_t offset, std::size_t most) const;

    private:
        const int descriptor;
        const std::uint64_t bytes;
    };

    /// @param folder absolute.
    explicit FilesBelow(std::string folder) : folder(std::move(folder)) {}

    /// @param name relative; "..", "." and empty parts are refused.
    /// @return a regular file; null for anything else.
    std::shared_ptr<const File> open(const std::string& name) const;
    /// All regular files, sorted by name; at most 5000, of folders at most four deep.
    std::vector<Entry> list() const;

private:
    std::string folder;
};
