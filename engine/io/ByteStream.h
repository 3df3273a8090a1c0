#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::io {

/// The bytes of a plain or gzip file, unpacked. What the file is, its first bytes tell, never its name.
/// Threads: one at a time.
class ByteStream {
public:
    /// @throws Failure when the file cannot be opened, is empty, or is packed in another way; the sentence names that.
    explicit ByteStream(const std::filesystem::path& file);
    ~ByteStream();

    /// @return bytes put into the target; 0 at the end, and where the file is damaged.
    std::size_t read(char* target, std::size_t size);
    /// Why there are no more bytes, with the position in the file; empty where the file is whole.
    const std::string& damage() const { return reason; }
    /// Part of the file that has been read, 0 to 1.
    double fraction() const;

private:
    struct Inflater;

    void checkContent(const std::filesystem::path& file);
    std::size_t inflate(char* target, std::size_t size);
    bool refill();
    bool beginNextMember();
    void damaged(const std::string& what);

    std::ifstream input;
    std::vector<char> packed;
    std::size_t packedBegin = 0;
    std::size_t packedEnd = 0;
    std::uint64_t taken = 0;  ///< Bytes read from the file.
    std::uint64_t fileSize = 0;
    std::unique_ptr<Inflater> inflater;  ///< Null for a plain file.
    bool isFinished = false;
    std::string reason;
};

}  // namespace velmorak::io
