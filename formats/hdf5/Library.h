#pragma once

#include <velmorak/Mutex.h>

#include <hdf5.h>

#include <filesystem>
#include <string>
#include <utility>

/// The HDF5 library, which is not made for threads: every call of it is made under one lock of the whole program.
namespace velmorak::hdf5 {

/// Holds the lock. May not be nested.
class LibraryLock {
public:
    LibraryLock();

private:
    MutexLock lock;
};

/// An object of the library.
/// Threads: made and destroyed under the lock.
class Handle {
public:
    using Close = herr_t (*)(hid_t);

    Handle() = default;
    /// @param number negative for none.
    Handle(hid_t number, Close close) : number(number), close(close) {}
    Handle(Handle&& other) noexcept : number(std::exchange(other.number, -1)), close(other.close) {}
    Handle& operator=(Handle&& other) noexcept;
    ~Handle() { reset(); }

    hid_t id() const { return number; }
    explicit operator bool() const { return number >= 0; }

private:
    void reset();

    hid_t number = -1;
    Close close = nullptr;
};

/// @return what the library says about its last error; a call under the same lock made it.
std::string lastError();

/// @throws Failure with what could not be done and the library's reason if the number is negative.
void require(bool holds, const std::string& sentence);

/// Opens a file for reading. @throws Failure if it is missing, is not a regular file, or is not an HDF5 file.
Handle openFile(const std::filesystem::path& file);

}  // namespace velmorak::hdf5
