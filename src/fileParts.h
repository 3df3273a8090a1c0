#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Owns a file descriptor and closes it.
class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    ~Descriptor();
    Descriptor(Descriptor&& other) noexcept : number(other.number) { other.number = -1; }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    Descriptor& operator=(Descriptor&&) = delete;

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }

private:
    int number;
};

/// A new file under a temporary name, deleted by the destructor unless it has replaced another file. It stays locked
/// for its lifetime, so that removeLeftovers recognises files in use.
class TemporaryFile {
public:
    TemporaryFile(const std::filesystem::path& folder, mode_t mode);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool isOpen() const { return file.isOpen(); }
    /// Copies owner, mode and extended attributes of another file.
    bool copyMetadata(const std::filesystem::path& model, const struct stat& status) const;
    /// Writes the whole text and flushes it to the disk.
    bool write(std::string_view text) const;
    bool renameTo(const std::filesystem::path& target);

private:
    std::filesystem::path path;
    Descriptor file;
};

/// Removes the temporary files that killed programs have left in a folder.
void removeLeftovers(const std::filesystem::path& folder);

inline constexpr mode_t privateFile = 0600;

bool writeAll(const Descriptor& file, std::string_view text);
bool flush(const Descriptor& file);  ///< Waits until the content is on the disk.
void flushFolder(const std::filesystem::path& folder);
std::filesystem::path folderOf(const std::filesystem::path& file);
std::optional<struct stat> statusOf(const std::filesystem::path& file);
/// @return nothing if it cannot be read or is not a regular file.
std::optional<std::string> contentOfFile(const std::filesystem::path& file);
