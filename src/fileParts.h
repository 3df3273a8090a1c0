#pragma once

#include <sys/stat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// A file descriptor that is closed with its holder.
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

/// A new file under a passing name, which goes with its holder unless it takes another's place. It is locked for as
/// long, by which removeLeftovers knows that it is in use.
class PassingFile {
public:
    PassingFile(const std::filesystem::path& folder, mode_t mode);
    ~PassingFile();
    PassingFile(const PassingFile&) = delete;
    PassingFile& operator=(const PassingFile&) = delete;

    bool isOpen() const { return file.isOpen(); }
    /// Gives it owner, mode and extended attributes of another file.
    bool becomeAlike(const std::filesystem::path& model, const struct stat& status) const;
    /// Writes all of the text, to the disk.
    bool write(std::string_view text) const;
    bool takePlaceOf(const std::filesystem::path& target);

private:
    std::filesystem::path path;
    Descriptor file;
};

/// Removes what killed programs have left of passing files in a folder.
void removeLeftovers(const std::filesystem::path& folder);

bool writeAll(const Descriptor& file, std::string_view text);
bool flush(const Descriptor& file);  ///< To the disk.
void flushFolder(const std::filesystem::path& folder);
std::filesystem::path folderOf(const std::filesystem::path& file);
std::optional<struct stat> statusOf(const std::filesystem::path& file);
/// @return nothing when it cannot be read or is no regular file.
std::optional<std::string> contentOfFile(const std::filesystem::path& file);
