// The functions of glibc after 2.34 that the bundled libraries call, for systems that lack them.
#include <elf.h>
#include <errno.h>
#include <link.h>
#include <stdlib.h>
#include <sys/random.h>

#include <cstddef>
#include <cstdint>

/// As in <dlfcn.h> since glibc 2.35, on processors without DLFO_STRUCT_HAS_EH_DBASE.
struct FoundObject {
    unsigned long long flags;
    void* mapStart;
    void* mapEnd;
    link_map* linkMap;
    void* unwindTable;
    unsigned long long reserved[7];
};

namespace {

struct Search {
    ElfW(Addr) address;
    FoundObject* found;
};

/// Called for each loaded object. @return 1 for the one that has the address.
int look(dl_phdr_info* object, std::size_t, void* data) {
    auto* const search = static_cast<Search*>(data);
    ElfW(Addr) first = ~ElfW(Addr)(0);
    ElfW(Addr) last = 0;
    void* table = nullptr;
    bool isInside = false;
    for (int i = 0; i < object->dlpi_phnum; ++i) {
        const ElfW(Phdr)& segment = object->dlpi_phdr[i];
        const ElfW(Addr) begin = object->dlpi_addr + segment.p_vaddr;
        if (segment.p_type == PT_GNU_EH_FRAME) {
            table = reinterpret_cast<void*>(begin);
        } else if (segment.p_type == PT_LOAD) {
            const ElfW(Addr) end = begin + segment.p_memsz;
            isInside = isInside || (search->address >= begin && search->address < end);
            first = begin < first ? begin : first;
            last = end > last ? end : last;
        }
    }
    if (isInside) {
        *search->found = {.flags = 0,
                          .mapStart = reinterpret_cast<void*>(first),
                          .mapEnd = reinterpret_cast<void*>(last),
                          .linkMap = nullptr,
                          .unwindTable = table,
                          .reserved = {}};
    }
    return isInside ? 1 : 0;
}

}  // namespace

// Under names of their own here: the headers may declare the real ones, or not.
#define VISIBLE_AS(name) __asm__(name) __attribute__((visibility("default")))
int findObject(void* address, FoundObject* found) VISIBLE_AS("_dl_find_object");
void fillRandomly(void* buffer, std::size_t size) VISIBLE_AS("arc4random_buf");
std::uint32_t randomNumber() VISIBLE_AS("arc4random");

int findObject(void* address, FoundObject* found) {
    Search search{reinterpret_cast<ElfW(Addr)>(address), found};
    const bool isFound = dl_iterate_phdr(look, &search) == 1 && found->unwindTable != nullptr;
    return isFound ? 0 : -1;
}

void fillRandomly(void* buffer, std::size_t size) {
    auto* const bytes = static_cast<unsigned char*>(buffer);
    for (std::size_t done = 0; done < size;) {
        const ssize_t count = getrandom(bytes + done, size - done, 0);
        if (count < 0 && errno != EINTR) {
            abort();
        }
        done += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

std::uint32_t randomNumber() {
    std::uint32_t number = 0;
    fillRandomly(&number, sizeof number);
    return number;
}
