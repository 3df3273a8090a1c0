#include "InputFile.h"
#include "Target.h"

#include "run/parts/PartFile.h"
#include "table/Checksum.h"

#include <velmorak/Failure.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The file of a part. The first letter says what the rest is: the whole file, or the content of its identity, of what
// precedes a state, or of its summary, which are put into a file with right lengths and checksums.

namespace velmorak::fuzz {
namespace {

constexpr std::string_view fileMark = "VlmPart1";
constexpr std::uint64_t identityMark = 0x64'69'74'72'61'70'6c'76;
constexpr std::uint64_t stateMark = 0x74'73'74'72'61'70'6c'76;
constexpr std::uint64_t summaryMark = 0x6d'73'74'72'61'70'6c'76;

std::string bytesOf(std::uint64_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string sized(const std::string& bytes) {
    return bytesOf(bytes.size()) + bytes;
}

std::string sealed(std::uint64_t mark, std::string_view content) {
    const std::string bytes = bytesOf(mark) + std::string(content);
    return sized(bytes + bytesOf(checksum(bytes)));
}

std::string fileOf(std::string_view identity, std::string_view head, const std::string& summary) {
    const std::string begin = std::string(fileMark) + sealed(identityMark, identity);
    const std::string states = head.empty() ? "" : sealed(stateMark, head) + sized("state");
    return begin + states + sealed(summaryMark, sized(summary)) + bytesOf(begin.size() + states.size()) +
           std::string(fileMark);
}

std::string fileFrom(std::string_view text) {
    const std::string identity = sized("plan") + bytesOf(1) + sized("build");
    const std::string_view rest = text.substr(1);
    switch (text.front()) {
        case 'i':
            return fileOf(rest, "", R"({"operators":[],"rows":[],"files":[],"skipped":[],"states":0})");
        case 'h':
            return fileOf(identity, rest, R"({"operators":[],"rows":[],"files":[],"skipped":[],"states":1})");
        case 's':
            return fileOf(identity, "", std::string(rest));
        default:
            return std::string(rest);
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    if (size == 0) {
        return 0;
    }
    const fuzz::InputFile file(fuzz::fileFrom(fuzz::textOf(data, size)));
    try {
        PartReader reader(file.path());
        std::uint64_t states = 0;
        while (const std::optional<PartRecord> record = reader.next()) {
            ++states;
            fuzz::require(record->piece.level < 64, "a node has a size");
            fuzz::require(record->piece.first % (std::uint64_t{1} << record->piece.level) == 0, "a node is aligned");
        }
        fuzz::require(states == reader.summary().states, "a file has all of its states");
    } catch (const Failure&) {
    }
    return 0;
}
