#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace velmorak::io {

/// Compression of a file, determined by its first bytes.
enum class Packing { Plain, Gzip, Zlib, Bzip2, Zip, RawDeflate };

/// Decompresses a file piece by piece, in bounded memory. Threads: one at a time.
class Decompressor {
public:
    virtual ~Decompressor() = default;
    /// @return the number of bytes written to the target; 0 at the end, and if the file is damaged.
    virtual std::size_t read(char* target, std::size_t size) = 0;
    /// Bytes of the file that have been consumed.
    virtual std::uint64_t position() const = 0;
    /// Goes to a byte of the file. @return false if that is not possible, as in compressed files.
    virtual bool seek(std::uint64_t /*byte*/) { return false; }
    /// Goes to the next file in an archive. @return false if there is none or the archive is damaged.
    virtual bool nextEntry() { return false; }
    /// Name of the file in the archive; empty if the file is not an archive.
    virtual std::string entryName() const { return {}; }

    /// Why there are no more bytes, with the position in the file; empty if the file is intact.
    const std::string& damage() const { return reason; }

protected:
    void damaged(std::string_view what);
    /// As damaged, for a message that already has a position.
    void isDamaged(const std::string& sentence);

private:
    std::string reason;
};

/// @throws Failure if the file cannot be opened. An archive is positioned before its first entry.
std::unique_ptr<Decompressor> openPacked(const std::filesystem::path& file, Packing packing);

/// zip, and bzip2 files of one stream or several.
std::unique_ptr<Decompressor> openArchive(const std::filesystem::path& file, Packing packing);

/// gzip of one member or several, zlib, and raw deflate, by zlib.
std::unique_ptr<Decompressor> openDeflated(const std::filesystem::path& file, Packing packing);

/// gzip, by the fastest library available at build time.
std::unique_ptr<Decompressor> openGzip(const std::filesystem::path& file);

}  // namespace velmorak::io
