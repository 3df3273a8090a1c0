#pragma once

#include "store/FileHashes.h"

#include <unistd.h>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

namespace velmorak::test {

/// A file that is large enough to be read for a while. It is removed with its owner.
struct LargeFile {
    LargeFile() {
        const std::string content(std::size_t{24} << 20, 'v');
        std::ofstream(path, std::ios::binary) << content;
        Sha256 hash;
        hash.add(content.data(), content.size());
        digest = hash.finish();
        oldStamp = *stampOf(path);
        oldStamp.changedNs -= std::chrono::nanoseconds(std::chrono::hours(1)).count();
    }
    ~LargeFile() { std::filesystem::remove(path); }
    LargeFile(const LargeFile&) = delete;
    LargeFile& operator=(const LargeFile&) = delete;

    const std::filesystem::path path =
        std::filesystem::temp_directory_path() / ("velmorak-large-file-" + std::to_string(getpid()));
    Digest digest{};
    FileStamp oldStamp;  ///< As if the file had not changed for an hour.
};

}  // namespace velmorak::test
