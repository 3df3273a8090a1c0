#pragma once

#include "aida/binary/WbxmlText.h"
#include "aida/containers/Decompressor.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <velmorak/Run.h>

namespace velmorak::io {

/// The XML text of a file, whatever its compression, which is recognised by content and never by name. An archive holds
/// several documents, which are read one after the other.
/// Threads: one at a time.
class TextInput {
public:
    /// @throws Failure if the file cannot be opened, is empty, or contains no XML, with what was found instead.
    ///         Stopped if the run is stopping.
    /// @param context must outlive this.
    TextInput(const std::filesystem::path& file, const RunContext& context);

    /// @return the number of bytes written to the target; 0 at the end of the document, and if the file is damaged.
    std::size_t read(char* target, std::size_t size);
    /// The file is compressed, and so has a checksum, or an end that shows truncation.
    bool isPacked() const { return packed; }
    /// Skips bytes of the document. @return how many; 0 at its end, and if the file is damaged.
    std::size_t pass(char* target, std::size_t size) { return unpacker->read(target, size); }
    /// Why there are no more bytes, with the position in the file; empty if the file is intact.
    const std::string& damage() const;
    /// Part of the file that has been read, 0 to 1.
    double fraction() const;

    /// Goes to the next document of an archive. @return false if there is none.
    bool nextDocument();
    /// Name of the document in the archive, "run1/energy.IHistogram1D"; empty if the file is not an archive.
    const std::string& document() const { return name; }
    /// Names of the files in the archive so far that are not XML.
    const std::vector<std::string>& skipped() const { return notXml; }

private:
    /// @return false if the next bytes are not XML.
    bool beginDocument();
    std::size_t unpack(char* target, std::size_t size);
    int nextByte();

    const RunContext& context;
    bool packed = false;
    std::uint64_t fileSize = 0;
    std::unique_ptr<Decompressor> unpacker;
    std::string head;  ///< Bytes that were read ahead to recognise the format.
    std::size_t headTaken = 0;
    std::unique_ptr<WbxmlText> binary;  ///< Null for text.
    std::string binaryText;
    std::vector<char> binaryBytes;
    std::size_t binaryBegin = 0;
    std::size_t binaryEnd = 0;
    std::string name;
    std::vector<std::string> notXml;
};

}  // namespace velmorak::io
