#include "TableFile.h"

#include "arrow/ArrowFile.h"

// A file or stream of Arrow.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::textOf(data, size));
    fuzz::refusing([&] {
        fuzz::readStopping(file.path(), "", [](const auto& path, const std::string& /*object*/, RunContext& context) {
            return openArrow(path, {}, nullptr, context);
        });
    });
    return 0;
}
