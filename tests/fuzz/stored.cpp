#include "Target.h"

#include "store/StoreBytes.h"
#include "table/Checksum.h"

#include <velmorak/ObjectBytes.h>

// What the store of results keeps. The bytes come without the checksum that only damage by accident would fail; the
// first letter says whether a stored result or one object follows.

namespace velmorak::fuzz {
namespace {

std::string sealed(std::string_view bytes) {
    std::string text(bytes);
    const std::uint64_t sum = checksum(bytes);
    text.append(reinterpret_cast<const char*>(&sum), sizeof sum);
    return text;
}

void readResult(std::string_view bytes) {
    const std::optional<StoredResult> result = storedResultFrom(sealed(bytes));
    if (!result) {
        return;
    }
    const std::optional<std::string> again = bytesOf(*result);
    require(again && storedResultFrom(*again).has_value(), "a result that was read can be kept and read again");
}

/// @param bytes a letter for the class, and the object without its checksum.
void readObject(std::string_view bytes) {
    try {
        const DataObjectPtr object = objectFrom(std::string(bytes.substr(0, 1)) + sealed(bytes.substr(1)));
        const std::string again = velmorak::bytesOf(*object);
        require(velmorak::bytesOf(*objectFrom(again)) == again, "an object that was read is the same when read again");
    } catch (const std::invalid_argument&) {
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes = velmorak::fuzz::textOf(data, size);
    if (bytes.starts_with('r')) {
        velmorak::fuzz::readResult(bytes.substr(1));
    } else if (bytes.starts_with('o') && bytes.size() > 1) {
        velmorak::fuzz::readObject(bytes.substr(1));
    }
    return 0;
}
