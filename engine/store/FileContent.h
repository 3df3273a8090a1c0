#pragma once

#include "store/Sha256.h"

#include <optional>
#include <string>

namespace velmorak {

/// A file by the text that names it, so that another document finds its own file by the same text. Without a text:
/// the AIDA file of the command line.
using NamedFile = std::optional<std::string>;

/// A file that a result depends on, and the digest of its content at that time.
struct FileContent {
    NamedFile file;
    Digest digest{};
};

}  // namespace velmorak
