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

/// The XML text of a file, however it is packed. What the file is, its first bytes tell, never its name. An archive
/// holds several documents, which come one after the other.
/// Threads: one at a time.
class TextInput {
public:
    /// @throws Failure when the file cannot be opened, is empty, or holds no XML; the sentence names what was found.
    ///         Stopped when the run is to end.
    /// @param runContext outlives this.
    TextInput(const std::filesystem::path& file, const RunContext& runContext);

    /// @return bytes put into the target; 0 at the end of the document, and where the file is damaged.
    std::size_t read(char* target, std::size_t size);
    /// The bytes are packed, and so have a check sum, or an end that can be told from a cut.
    bool isPacked() const { return packed; }
    /// Passes over bytes of the document. @return how many; 0 at its end, and where the file is damaged.
    std::size_t pass(char* target, std::size_t size) { return unpacker->read(target, size); }
    /// Why there are no more bytes, with the position in the file; empty where the file is whole.
    const std::string& damage() const;
    /// Part of the file that has been read, 0 to 1.
    double fraction() const;

    /// Goes to the next document of an archive. @return false when there is none.
    bool nextDocument();
    /// Name of the document in the archive, "run1/energy.IHistogram1D"; empty where the file is no archive.
    const std::string& document() const { return name; }
    /// Names of the files in the archive that are no XML, so far.
    const std::vector<std::string>& skipped() const { return notXml; }

private:
    /// @return false when the bytes that come now are no XML.
    bool beginDocument();
    std::size_t unpack(char* target, std::size_t size);
    int nextByte();

    const RunContext& context;
    bool packed = false;
    std::uint64_t fileSize = 0;
    std::unique_ptr<Decompressor> unpacker;
    std::string head;  ///< Bytes that have been looked at, and not yet given away.
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
