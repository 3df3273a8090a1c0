#pragma once

#include <velmorak/Mutex.h>

#include <fitsio.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// The CFITSIO library, which keeps buffers that all files share: every call of it is made under one lock.
namespace velmorak::fits {

class LibraryLock {
public:
    LibraryLock();

private:
    MutexLock lock;
};

struct CloseFile {
    void operator()(fitsfile* file) const;
};
using FilePtr = std::unique_ptr<fitsfile, CloseFile>;

/// Opens a file for reading, by its name alone: the library's syntax for parts of files and for other protocols is not
/// used. Called under the lock. @throws Failure.
FilePtr openFile(const std::filesystem::path& file);

/// @throws Failure with the library's sentence unless the status is 0.
void check(int status, const std::string& place);

/// A header and data unit that is a table or an image.
struct Unit {
    int number = 1;    ///< From 1.
    std::string name;  ///< EXTNAME; empty if there is none.
    bool isImage = false;
    std::uint64_t rows = 0;             ///< Of an image: its pixels.
    std::vector<std::uint64_t> axes{};  ///< Of an image.
    std::string problem{};

    /// As the input object takes it.
    std::string path() const { return name.empty() ? std::to_string(number) : name; }
};

/// Lists the units with data. Called under the lock. @throws Failure if the file is damaged.
std::vector<Unit> unitsOf(fitsfile* file, const std::string& place);

}  // namespace velmorak::fits
