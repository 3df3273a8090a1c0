#include "csv/CsvMagic.h"

#include <array>
#include <utility>

namespace velmorak {

std::string_view binaryFormatOf(std::string_view head) {
    using namespace std::string_view_literals;
    constexpr std::array formats = {
        std::pair{"FEA1"sv, "a Feather file of version 1 (save it as version 2)"sv},
        std::pair{"%PDF-"sv, "a PDF document"sv},
        std::pair{"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv,
                  "a spreadsheet or document of an office program (save it as CSV)"sv},
        std::pair{"\x28\xB5\x2F\xFD"sv, "packed with zstd (unpack it first)"sv},
        std::pair{"\xFD\x37zXZ\0"sv, "packed with xz (unpack it first)"sv},
    };
    for (const auto& [magic, name] : formats) {
        if (head.starts_with(magic)) {
            return name;
        }
    }
    return {};
}

}  // namespace velmorak
