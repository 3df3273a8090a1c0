#pragma once

#include <string>
#include <string_view>

namespace velmorak::root {

enum class Packing { None, Zlib, Lz4, Zstd };

/// Compresses the content of a record, for unpacked (Compression.h).
/// @return the content itself where compression does not make it shorter.
std::string packed(std::string content, Packing packing);

/// @return the number by which files name an algorithm with its level.
int settingOf(Packing packing);

}  // namespace velmorak::root
