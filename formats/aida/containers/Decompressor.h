#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmorak::io {

/// How a file is packed, as its first bytes tell.
enum class Packing { Plain, Gzip, Zlib, Bzip2, Zip, RawDeflate };

/// Gives the bytes that are packed in a file, piece by piece, in bounded memory. Threads: one at a time.
class Decompressor {
public:
    virtual ~Decompressor() = default;
    /// @return bytes put into the target; 0 at the end, and where the file is damaged.
    virtual std::size_t read(char* target, std::size_t size) = 0;
    /// Bytes of the file that have been used up.
    virtual std::uint64_t position() const = 0;
    /// Goes to the next file in an archive. @return false when there is none, and where the archive is damaged.
    virtual bool nextEntry() { return false; }
    /// Name of the file in the archive; empty where the file is no archive.
    virtual std::string entryName() const { return {}; }

    /// Why there are no more bytes, with the position in the file; empty where the file is whole.
    const std::string& damage() const { return reason; }

protected:
    void damaged(std::string_view what);
    /// As damaged, with a sentence that has its position already.
    void isDamaged(const std::string& sentence);

private:
    std::string reason;
};

/// @throws Failure when the file cannot be opened. An archive stands before its first entry.
std::unique_ptr<Decompressor> openPacked(const std::filesystem::path& file, Packing packing);

/// zip, and files in one bzip2 stream or several.
std::unique_ptr<Decompressor> openArchive(const std::filesystem::path& file, Packing packing);

/// gzip of one member or several, zlib, and deflate without a head, by zlib.
std::unique_ptr<Decompressor> openDeflated(const std::filesystem::path& file, Packing packing);

/// gzip, by the fastest way that was there when the library was built.
std::unique_ptr<Decompressor> openGzip(const std::filesystem::path& file);

}  // namespace velmorak::io
