#pragma once

#include <expat.h>

#include <string>
#include <string_view>

namespace velmorak::io {

/// @return the encoding that the XML declaration at the beginning of the text names, in lower case; empty without one.
std::string declaredEncoding(std::string_view text);

/// @return whether the text begins with the byte order mark of UTF-16.
bool isUtf16(std::string_view text);

/// Callback for encodings that expat does not know: supports those of one byte a character that extend ASCII.
int XMLCALL unknownEncoding(void* data, const XML_Char* name, XML_Encoding* info);

}  // namespace velmorak::io
