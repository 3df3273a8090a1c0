#pragma once

#include "store/FileDescriptor.h"

#include <cstddef>

namespace velmorak::isolation {

/// @return the descriptor of new memory without a name, of which two processes may map the same.
FileDescriptor newMemory();

/// Memory that two processes share. It grows, never shrinks, and is freed when both have ended.
/// Errors: std::system_error.
class Area {
public:
    explicit Area(FileDescriptor memory);
    Area(Area&& other) noexcept;
    Area& operator=(Area&&) = delete;
    ~Area();

    char* data() { return bytes; }
    std::size_t size() const { return length; }
    int descriptor() const { return memory.get(); }
    /// Makes room for so many bytes; what is there stays.
    void grow(std::size_t atLeast);
    /// Maps what the other side has made room for.
    void follow(std::size_t newLength);

private:
    FileDescriptor memory;
    char* bytes = nullptr;
    std::size_t length = 0;
};

}  // namespace velmorak::isolation
