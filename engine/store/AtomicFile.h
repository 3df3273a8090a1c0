#pragma once

#include "store/FileDescriptor.h"

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace velmorak {

/// A file that takes its name only when it is complete, so that nobody sees half of it. Until commit it lies under a
/// temporary name in the same folder; without commit, the destructor removes it.
/// Threads: one at a time.
/// Errors:  std::system_error.
class AtomicFile {
public:
    /// Touches nothing in the file system yet.
    /// @param temporaryPrefix of the temporary name. The name ends in the extension of the file, by which some writers
    ///        choose the format.
    /// @param mode permissions of the file, before the umask.
    AtomicFile(std::filesystem::path file, std::string temporaryPrefix, mode_t mode = 0666);
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;
    ~AtomicFile();

    /// For a writer that creates and closes the file by itself, which then replaces write.
    const std::filesystem::path& temporary() const { return temporaryPath; }

    /// Appends; the first call creates the file.
    void write(std::string_view bytes);
    /// Overwrites bytes that were written before.
    void writeAt(off_t offset, std::string_view bytes);

    /// Writes the content through to the device and gives the file its name. It replaces a file of that name.
    void commit();
    /// The same without waiting for the device: after a power failure the file may be damaged.
    void commitUnsynced();

private:
    void create();
    void chooseTemporaryPath();

    std::filesystem::path file;
    std::string temporaryPrefix;
    mode_t mode;
    unsigned attempt = 0;  ///< Temporary names that turned out to be in use.
    std::filesystem::path temporaryPath;
    FileDescriptor descriptor;
    bool isCommitted = false;
};

}  // namespace velmorak
