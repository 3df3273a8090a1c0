#include "run/record/KindBuild.h"

#include "run/HelperKind.h"
#include "store/FileHashes.h"

#include <elf.h>
#include <link.h>

#include <atomic>
#include <cstring>
#include <optional>
#include <typeinfo>

namespace velmorak {
namespace {

/// Looks for the build of the shared object that contains an address.
struct Search {
    const char* address = nullptr;
    std::string build{};
};

const char* addressIn(const dl_phdr_info& object, const ElfW(Phdr) & part) {
    // The loader gives the address of the object as a number.
    return reinterpret_cast<const char*>(object.dlpi_addr + part.p_vaddr);  // NOLINT(performance-no-int-to-ptr)
}

bool holds(const dl_phdr_info& object, const char* address) {
    for (ElfW(Half) i = 0; i < object.dlpi_phnum; ++i) {
        const ElfW(Phdr)& part = object.dlpi_phdr[i];
        const char* begin = addressIn(object, part);
        if (part.p_type == PT_LOAD && address >= begin && address < begin + part.p_memsz) {
            return true;
        }
    }
    return false;
}

std::size_t padded(std::size_t bytes) {
    return (bytes + 3U) & ~std::size_t{3};
}

/// The build id that the linker computes from the content; empty without one.
std::string buildIdIn(const char* notes, std::size_t bytes) {
    while (bytes >= sizeof(ElfW(Nhdr))) {
        ElfW(Nhdr) head{};
        std::memcpy(&head, notes, sizeof head);
        const std::size_t whole = sizeof head + padded(head.n_namesz) + padded(head.n_descsz);
        if (whole > bytes) {
            break;
        }
        const std::string_view name(notes + sizeof head, head.n_namesz);
        if (head.n_type == NT_GNU_BUILD_ID && name == std::string_view("GNU\0", 4)) {
            return {notes + sizeof head + padded(head.n_namesz), head.n_descsz};
        }
        notes += whole;
        bytes -= whole;
    }
    return "";
}

/// For an object without a build id.
std::string contentOf(const std::string& file) {
    const std::atomic<bool> isStopping = false;
    const std::optional<Digest> digest = FileHashes().of(file.empty() ? "/proc/self/exe" : file, isStopping);
    return digest ? hexOf(*digest) : file;
}

int look(dl_phdr_info* object, std::size_t /*bytes*/, void* data) {
    auto& search = *static_cast<Search*>(data);
    if (!holds(*object, search.address)) {
        return 0;
    }
    for (ElfW(Half) i = 0; i < object->dlpi_phnum && search.build.empty(); ++i) {
        const ElfW(Phdr)& part = object->dlpi_phdr[i];
        if (part.p_type == PT_NOTE) {
            search.build = buildIdIn(addressIn(*object, part), part.p_memsz);
        }
    }
    if (search.build.empty()) {
        search.build = contentOf(object->dlpi_name);
    }
    return 1;
}

std::string buildAt(const void* address) {
    Search search{static_cast<const char*>(address)};
    dl_iterate_phdr(look, &search);
    return search.build;
}

}  // namespace

std::string buildOf(const Kind& kind) {
    if (const auto* const elsewhere = dynamic_cast<const HelperKind*>(&kind)) {
        return elsewhere->build();
    }
    return buildAt(&typeid(kind)) + buildOfLibrary();
}

std::string buildOfLibrary() {
    return buildAt(&typeid(Search));
}

std::string buildTextOf(const Kind& kind) {
    Sha256 digester;
    digester.addText(buildOf(kind));
    return hexOf(digester.finish());
}

}  // namespace velmorak
