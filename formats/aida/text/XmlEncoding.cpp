#include "aida/text/XmlEncoding.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace velmorak::io {

namespace {

/// Sets the code point of each byte of an encoding, -1 for none.
/// @return false if the encoding does not extend ASCII.
bool fillMap(iconv_t converter, int* map) {
    for (int byte = 0; byte < 256; ++byte) {
        std::array<char, 1> in{static_cast<char>(byte)};
        std::array<unsigned char, 8> out{};
        char* from = in.data();
        char* to = reinterpret_cast<char*>(out.data());
        std::size_t fromLeft = in.size();
        std::size_t toLeft = out.size();
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const bool isOne =
            iconv(converter, &from, &fromLeft, &to, &toLeft) != static_cast<std::size_t>(-1) && toLeft == 4;
        const unsigned code = (static_cast<unsigned>(out[0]) << 24U) | (static_cast<unsigned>(out[1]) << 16U) |
                              (static_cast<unsigned>(out[2]) << 8U) | static_cast<unsigned>(out[3]);
        map[byte] = isOne && code < 0x10000 ? static_cast<int>(code) : -1;
        if (byte < 0x80 && byte >= 0x20 && map[byte] != byte) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::string declaredEncoding(std::string_view text) {
    const std::string_view head = text.substr(0, text.find('>'));
    const auto begin = head.find("encoding");
    if (begin == std::string_view::npos || head.find("<?xml") == std::string_view::npos) {
        return {};
    }
    const auto open = head.find_first_of(R"("')", begin);
    if (open == std::string_view::npos) {
        return {};
    }
    std::string name(head.substr(open + 1, head.find(head[open], open + 1) - open - 1));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return name;
}

bool isUtf16(std::string_view text) {
    return text.starts_with("\xFE\xFF") || text.starts_with("\xFF\xFE");
}

int XMLCALL unknownEncoding(void* /*data*/, const XML_Char* name, XML_Encoding* info) {
    iconv_t converter = iconv_open("UCS-4BE", name);
    // iconv_open reports an error by an integer cast to a pointer.
    if (reinterpret_cast<std::intptr_t>(converter) == -1) {
        return XML_STATUS_ERROR;
    }
    const bool isUsable = fillMap(converter, info->map);
    iconv_close(converter);
    info->convert = nullptr;
    info->data = nullptr;
    info->release = nullptr;
    return isUsable ? XML_STATUS_OK : XML_STATUS_ERROR;
}

}  // namespace velmorak::io
