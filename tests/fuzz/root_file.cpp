#include "RootInput.h"

#include <root/container/File.h>
#include <root/objects/Classes.h>

// A ROOT file as a container: header, directories, keys, descriptions of classes, and the content of every record.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile input(fuzz::textOf(data, size));
    fuzz::refusing([&] {
        const root::File file(input.path());
        fuzz::refusing([&] { root::classesOf(file); });
        for (const root::Entry& entry : file.entries()) {
            fuzz::refusing([&] { file.content(entry.key); });
        }
    });
    return 0;
}
