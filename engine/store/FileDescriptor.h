#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace velmorak {

/// Owns the descriptor of an open file.
/// Errors: every operation throws std::system_error unless it says otherwise.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Does not throw: see isOpen, and errno for the reason.
    /// @param flags as of open(2); O_CLOEXEC is added.
    /// @param mode permissions of a file that is created, before the umask.
    FileDescriptor(const std::filesystem::path& file, int flags, mode_t mode = 0666);
    /// Takes over what was opened elsewhere; does not throw. @param opened negative: nothing is open.
    static FileDescriptor of(int opened);
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor();

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }

    /// @return everything from the current position on; @throws as well if it is not a regular file.
    std::string readAll() const;
    void writeAll(std::string_view bytes) const;
    /// Overwrites at an offset; the position for writeAll stays.
    void writeAllAt(off_t offset, std::string_view bytes) const;
    /// Waits until the content is on the device.
    void sync() const;
    /// Closes and reports what the file system could not write.
    void close();

private:
    int number = -1;
};

}  // namespace velmorak
