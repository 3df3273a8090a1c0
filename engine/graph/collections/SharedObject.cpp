#include "graph/collections/SharedObject.h"

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

/// An open file, closed with the object.
class Descriptor {
public:
    explicit Descriptor(int number) : number(number) {}
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }
    /// Keeps it open to the end of the program.
    int release();

private:
    int number;
};

Descriptor::~Descriptor() {
    if (number >= 0) {
        close(number);
    }
}

int Descriptor::release() {
    const int kept = number;
    number = -1;
    return kept;
}

[[noreturn]] void failBySystem(const std::string& what) {
    throw std::runtime_error(what + ": " + std::generic_category().message(errno));
}

std::uint64_t sizeOf(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        failBySystem("it cannot be read");
    }
    return static_cast<std::uint64_t>(status.st_size);
}

template <typename Record>
Record recordAt(int descriptor, std::uint64_t position) {
    Record record{};
    if (pread(descriptor, &record, sizeof record, static_cast<off_t>(position)) != sizeof record) {
        throw std::runtime_error("it is truncated");
    }
    return record;
}

void requireBytes(std::uint64_t size, std::uint64_t begin, std::uint64_t count) {
    if (begin > size || count > size - begin) {
        throw std::runtime_error("it is truncated: it has " + std::to_string(size) +
                                 " bytes, its headers promise more");
    }
}

/// The loader maps as many bytes as the headers promise; reading past the end of the file would crash the program.
void checkSizes(int descriptor) {
    const std::uint64_t size = sizeOf(descriptor);
    if (size < sizeof(ElfW(Ehdr))) {
        throw std::runtime_error("it is not a shared object");
    }
    const auto head = recordAt<ElfW(Ehdr)>(descriptor, 0);
    if (std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0 || head.e_type != ET_DYN ||
        head.e_phentsize != sizeof(ElfW(Phdr))) {
        throw std::runtime_error("it is not a shared object");
    }
    requireBytes(size, head.e_phoff, std::uint64_t{head.e_phnum} * sizeof(ElfW(Phdr)));
    for (std::uint64_t i = 0; i < head.e_phnum; ++i) {
        const auto part = recordAt<ElfW(Phdr)>(descriptor, head.e_phoff + i * sizeof(ElfW(Phdr)));
        if (part.p_type != PT_NULL) {
            requireBytes(size, part.p_offset, part.p_filesz);
        }
    }
}

/// @return descriptor of a copy that no other program can write to.
int copyOf(const fs::path& file) {
    const Descriptor source(open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!source.isOpen()) {
        failBySystem("it cannot be opened");
    }
    Descriptor copy(memfd_create(file.filename().c_str(), MFD_CLOEXEC));
    if (!copy.isOpen()) {
        failBySystem("there is no memory for it");
    }
    constexpr std::size_t atOnce = std::size_t{1} << 30U;
    ssize_t copied = 1;
    while (copied > 0) {
        copied = sendfile(copy.get(), source.get(), nullptr, atOnce);
    }
    if (copied < 0) {
        failBySystem("it cannot be read");
    }
    checkSizes(copy.get());
    return copy.release();
}

}  // namespace

void* loadSharedObject(const fs::path& file) {
    // The descriptor stays open, and the path names this process, so that debuggers find the object.
    const int copy = copyOf(file);
    const std::string place = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(copy);
    void* object = dlopen(place.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!object) {
        close(copy);
        object = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    if (!object) {
        throw std::runtime_error(dlerror());
    }
    return object;
}

void* symbolIn(void* object, const char* name) {
    void* const symbol = dlsym(object, name);
    if (!symbol) {
        throw std::runtime_error("it does not offer " + std::string(name));
    }
    return symbol;
}

}  // namespace velmorak
