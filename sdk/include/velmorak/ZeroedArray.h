#pragma once

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace velmorak {

/// Memory filled with zeros. The system provides the pages of a large block only when they are first written, huge ones
/// where it has them: they save TLB misses at random addresses.
class ZeroedMemory {
public:
    /// @throws std::bad_alloc
    static void* allocate(std::size_t bytes, std::size_t alignment);
    static void release(void* memory, std::size_t bytes, std::size_t alignment) noexcept;
};

/// Array whose elements are all zero bytes until they are written. Unlike std::vector, it does not touch its memory.
template <typename T>
class ZeroedArray {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    ZeroedArray() = default;
    /// @throws std::bad_alloc
    explicit ZeroedArray(std::size_t size) : count(size) {
        if (size > static_cast<std::size_t>(-1) / sizeof(T)) {
            throw std::bad_array_new_length();
        }
        if (size > 0) {
            elements = static_cast<T*>(ZeroedMemory::allocate(bytes(), alignof(T)));
        }
    }
    ZeroedArray(const ZeroedArray& other) : ZeroedArray(other.count) {
        if (count > 0) {
            std::memcpy(static_cast<void*>(elements), other.elements, bytes());
        }
    }
    ZeroedArray(ZeroedArray&& other) noexcept
        : elements(std::exchange(other.elements, nullptr)), count(std::exchange(other.count, 0)) {}
    ZeroedArray& operator=(ZeroedArray other) noexcept {
        std::swap(elements, other.elements);
        std::swap(count, other.count);
        return *this;
    }
    ~ZeroedArray() {
        if (elements) {
            ZeroedMemory::release(elements, bytes(), alignof(T));
        }
    }

    T* data() { return elements; }
    const T* data() const { return elements; }
    std::size_t size() const { return count; }
    T& operator[](std::size_t position) { return elements[position]; }
    const T& operator[](std::size_t position) const { return elements[position]; }

private:
    std::size_t bytes() const { return count * sizeof(T); }

    T* elements = nullptr;
    std::size_t count = 0;
};

}  // namespace velmorak
