#include "hdf5/Library.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>
#include <velmorak/SystemReason.h>

#include <fstream>

namespace velmorak::hdf5 {
namespace {

/// Never destroyed: readers may outlive every other object of the program.
Mutex& libraryMutex() {
    static auto* const theOne = new Mutex;
    return *theOne;
}

herr_t takeFirst(unsigned number, const H5E_error2_t* error, void* text) {
    if (number == 0 && error->desc) {
        *static_cast<std::string*>(text) = error->desc;
    }
    return 0;
}

/// The library's own reason names its functions rather than what is wrong.
void requireReadable(const std::filesystem::path& file) {
    errno = 0;
    if (!std::ifstream(file, std::ios::binary)) {
        throw Failure(file.string() + " cannot be opened" + systemReason(errno));
    }
}

}  // namespace

LibraryLock::LibraryLock() : lock(libraryMutex()) {
    H5Eset_auto2(H5E_DEFAULT, nullptr, nullptr);
}

Handle& Handle::operator=(Handle&& other) noexcept {
    if (this != &other) {
        reset();
        number = std::exchange(other.number, -1);
        close = other.close;
    }
    return *this;
}

void Handle::reset() {
    if (number >= 0) {
        close(number);
        number = -1;
    }
}

std::string lastError() {
    std::string text;
    H5Ewalk2(H5E_DEFAULT, H5E_WALK_UPWARD, takeFirst, &text);
    return text.empty() ? "the library gives no reason" : text;
}

void require(bool holds, const std::string& sentence) {
    if (!holds) {
        throw Failure(sentence + ": " + lastError());
    }
}

Handle openFile(const std::filesystem::path& file) {
    requireRegular(file);
    requireReadable(file);
    const Handle access(H5Pcreate(H5P_FILE_ACCESS), H5Pclose);
    // Locks fail on some file systems of clusters, and a reader needs none.
    H5Pset_file_locking(access.id(), false, true);
    Handle opened(H5Fopen(file.c_str(), H5F_ACC_RDONLY, access.id()), H5Fclose);
    require(static_cast<bool>(opened), file.string() + " cannot be opened");
    return opened;
}

}  // namespace velmorak::hdf5
