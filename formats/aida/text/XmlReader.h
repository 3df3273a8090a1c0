#pragma once

#include "aida/containers/TextInput.h"
#include "aida/read/FewWarnings.h"
#include "aida/text/RowBlocks.h"
#include "aida/text/TextRepair.h"
#include "aida/text/XmlHandler.h"
#include "aida/text/XmlNames.h"
#include "aida/text/XmlReferences.h"

#include <expat.h>

#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include <velmorak/Run.h>

namespace velmorak::io {

/// @return the value of an attribute; null when there is none. attributes is a list of names and values, ended by null.
const char* attributeOf(const char* const* attributes, const char* name);

/// How the rows of a tuple are read: where they are plain by a scanner made for them, with the same result.
enum class RowReading { Scanned, Parsed };

/// Reads an XML file piece by piece and tells a handler. Opens no other file and no address whatever the text names;
/// the defaults and entities of the AIDA document type are built in. Threads: one at a time. The handler lives as long
/// as the reader.
class XmlReader {
public:
    /// @throws Failure when the file cannot be opened or is no XML.
    XmlReader(const std::filesystem::path& file, XmlHandler& elements, RunContext& runContext,
              RowReading rowReading = RowReading::Scanned);

    /// Goes on until the handler calls pause or has taken rows, or to the end of the file.
    /// @return false at the end.
    /// @throws Failure where the file is damaged, with line and byte. Stopped when the run is to end. Whatever the
    ///         handler throws. Not to be called again after any of these.
    bool advance();
    /// From the handler: advance returns when the element has been handled.
    void pause();
    /// ", line 3, byte 712 of the text": where the parser stands.
    std::string where() const;
    /// Name of the file in an archive that is being read; empty where there is no archive.
    const std::string& document() const { return stream.document(); }
    /// Part of the file that has been read, 0 to 1.
    double fraction() const { return blocks ? blockFraction : stream.fraction(); }
    std::uint64_t repairedBytes() const { return repair.repaired(); }
    bool skippedEntity() const { return hasSkippedEntity; }
    /// Unpacks what stands behind the part of the document that was read, so that its check sum is compared. advance is
    /// not called any more. @return the damage; empty where there is none.
    std::string damageBehind();

private:
    struct Free {
        void operator()(XML_Parser expat) const { XML_ParserFree(expat); }
    };
    static void XMLCALL began(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL ended(void* self, const XML_Char* name);
    static int XMLCALL externalEntity(XML_Parser expat, const XML_Char* context, const XML_Char* base,
                                      const XML_Char* systemId, const XML_Char* publicId);
    static void XMLCALL declaredEntity(void* self, const XML_Char* name, int isParameter, const XML_Char* value,
                                       int length, const XML_Char* base, const XML_Char* systemId,
                                       const XML_Char* publicId, const XML_Char* notation);
    static void XMLCALL skippedEntity(void* self, const XML_Char* name, int isParameter);
    static void XMLCALL beganDoctype(void* self, const XML_Char* name, const XML_Char* systemId,
                                     const XML_Char* publicId, int hasInternalSubset);
    static void XMLCALL beganCdata(void* self);
    static void XMLCALL endedCdata(void* self);
    static void XMLCALL text(void* self, const XML_Char* characters, int length);

    void prepareParser();
    bool advanceInDocument();
    bool beginNextDocument();
    void keep(std::exception_ptr thrown);
    void check(XML_Status status);
    XML_Status feed();
    std::string_view nextPiece();
    XML_Status parse(std::string_view bytes, bool isLast);
    void noteEncoding(std::string_view bytes);
    std::size_t pendingBytes() const;
    std::string_view currentBytes(std::size_t count) const;
    std::size_t wantedBytes() const;
    void checkElement(const char* name, const char* const* attributes);
    [[noreturn]] void fail(const std::string& reason) const;
    [[noreturn]] void refuseEntity(const std::string& entity, std::string_view before) const;
    bool mayScan() const;
    bool isParserBetweenRows() const;
    bool takeRows();
    void passRows(RowBlocks::Block& block);
    std::string_view nextOddRows();

    /// That the parser is given at once, but for what is longer.
    static constexpr std::size_t pieceSize = std::size_t{1} << 16U;

    std::filesystem::path path;
    XmlHandler& handler;
    RunContext& context;
    TextInput stream;
    TextRepair repair;
    XmlReferences references;
    XmlNames names;
    FewWarnings warnings;
    std::size_t depth = 0;
    std::string piece;     ///< Raw bytes.
    std::string repaired;  ///< The same as valid UTF-8.
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser;
    std::exception_ptr failure;
    RowReading reading;
    std::unique_ptr<RowBlocks> blocks;  ///< From the first rows that may be plain to the end of the document.
    std::size_t cursor = 0;             ///< Bytes of the first block that have been read.
    std::size_t rowsTaken = 0;          ///< Of those that were scanned last.
    std::size_t oddRows = 1;            ///< That are parsed when the scanner does not get on.
    double blockFraction = 0.0;
    std::uint64_t parsedBytes = 0;   ///< Given to the parser.
    std::uint64_t scannedBytes = 0;  ///< Kept from the parser.
    std::uint64_t scannedLines = 0;
    bool isScannable = false;  ///< Encoding and document type leave a plain row its meaning.
    bool isInCdata = false;    ///< Text that may look like rows, and is told in pieces.
    bool isBegun = false;
    bool isSuspended = false;
    bool isAtEnd = false;
    bool repairs = false;
    bool hasSkippedEntity = false;
    std::size_t skippedFiles = 0;  ///< Of an archive, that were warned of.
};

}  // namespace velmorak::io
