#pragma once

#include <velmorak/CompressedFile.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace velmorak {

enum class CsvEncoding { Automatic, Utf8, Latin1, Utf16 };

/// Reads a text file, compressed or not, from front to back: without a byte order mark, with the line ends of old Macs
/// as line feeds, and with UTF-16 and declared ISO-8859-1 converted to UTF-8. Other bytes are passed on as they are.
/// Threads: one at a time.
class CsvText {
public:
    /// @throws Failure for the input "file" if it cannot be opened, is in UTF-32, or is known to be no text.
    CsvText(const std::filesystem::path& path, CsvEncoding encoding);

    /// @return the number of bytes stored in target, which is 0 only at the end of the file. @param size at least 4.
    /// @throws Failure for the input "file" where the file is damaged, once all bytes before have been returned.
    std::size_t read(char* target, std::size_t size);
    /// Byte of the file that read returns next; nothing if the file is compressed, or is converted to UTF-8.
    std::optional<std::uint64_t> place() const;
    /// Goes to such a byte. @throws Failure for the input "file" if the file ends before.
    void seek(std::uint64_t place);
    /// Bytes of the file that are not read yet; nothing if the file is compressed.
    std::optional<std::uint64_t> bytesLeft() const { return in.bytesLeft(); }
    /// Bytes at the beginning of the file, as read returns them.
    std::string_view head() const { return {first.data() + firstPlace, first.size() - firstPlace}; }
    const std::string& name() const { return fileName; }
    /// Part of the file that has been read, 0 to 1.
    double fraction() const { return in.fraction(); }

private:
    bool isConverted() const { return encoding == CsvEncoding::Latin1 || encoding == CsvEncoding::Utf16; }
    void readHead(std::size_t size);
    void findEncoding();
    void findLineEnds();
    std::size_t readPlain(char* target, std::size_t size);
    std::size_t convert(char* target, std::size_t size);
    void readMore();
    bool convertOne(std::size_t& count, char* target, std::size_t size);
    unsigned unitAt(std::size_t place) const;

    std::string fileName;
    CompressedFile in;
    CsvEncoding encoding;
    bool isBigEndian = false;
    bool isOfMac = false;  ///< Lines end with a carriage return alone.
    std::string first;     ///< Bytes at the beginning, from firstPlace on not returned yet.
    std::size_t firstPlace = 0;
    std::string raw;  ///< Bytes to be converted.
    std::size_t rawPlace = 0;
    bool isAtEnd = false;  ///< raw holds the rest of the file.
};

}  // namespace velmorak
