#pragma once

#include "aida/containers/TextInput.h"
#include "aida/read/FewWarnings.h"
#include "aida/text/ExpatParser.h"
#include "aida/text/RowBlockReader.h"
#include "aida/text/TextRepair.h"
#include "aida/text/XmlHandler.h"
#include "aida/text/XmlNames.h"
#include "aida/text/XmlReferences.h"

#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <velmorak/Run.h>

namespace velmorak::io {

/// @return the value of an attribute; null if there is none. attributes is a list of names and values, ended by null.
const char* attributeOf(const char* const* attributes, const char* name);

/// @return the text, or the other one in place of a missing text.
std::string textOr(const char* text, const char* other);

/// How the rows of a tuple are read: by a scanner for plain rows where possible, or all by the parser. The result is
/// the same.
enum class RowReading { Scanned, Parsed };

/// Reads an XML file piece by piece and reports its elements to a handler. Opens no other file or address that the text
/// names; the defaults and entities of the AIDA document type are built in. Refuses documents that would take too much
/// memory, since the parser holds each tag, comment and text whole: docs/aida.md lists the limits.
/// Threads: one at a time. The handler must outlive the reader.
class XmlReader {
public:
    /// @throws Failure when the file cannot be opened or is not XML.
    XmlReader(const std::filesystem::path& path, XmlHandler& handler, RunContext& context,
              RowReading reading = RowReading::Scanned);

    /// Reads until the handler calls pause or has taken rows, or to the end of the file.
    /// @return false at the end.
    /// @throws Failure where the file is damaged, with line and byte; Stopped when the run is stopping; whatever the
    ///         handler throws. Must not be called again after any of these.
    bool advance();
    /// From the handler: advance returns after the current element.
    void pause();
    /// ", line 3, byte 712 of the text": position of the parser.
    std::string where() const;
    /// Name of the current file in an archive; empty if the file is not an archive.
    const std::string& document() const { return stream.document(); }
    /// Part of the file that has been read, 0 to 1.
    double fraction() const { return rows ? rows->fraction() : stream.fraction(); }
    std::uint64_t repairedBytes() const { return repair.repaired(); }
    bool skippedEntity() const { return hasSkippedEntity; }
    /// Reads the rest of a compressed document so that its checksum is compared. advance must not be called any more.
    /// @return a description of the damage; empty if there is none.
    std::string damageBehind();

private:
    // Callbacks of the parser; self is the reader.
    static void XMLCALL elementBegan(void* self, const XML_Char* name, const XML_Char** attributes);
    static void XMLCALL elementEnded(void* self, const XML_Char* name);
    static void XMLCALL textRead(void* self, const XML_Char* characters, int length);
    static int XMLCALL externalEntity(XML_Parser expat, const XML_Char* context, const XML_Char* base,
                                      const XML_Char* systemId, const XML_Char* publicId);
    static void XMLCALL entityDeclared(void* self, const XML_Char* name, int isParameter, const XML_Char* value,
                                       int length, const XML_Char* base, const XML_Char* systemId,
                                       const XML_Char* publicId, const XML_Char* notation);
    static void XMLCALL entitySkipped(void* self, const XML_Char* name, int isParameter);
    static void XMLCALL doctypeBegan(void* self, const XML_Char* name, const XML_Char* systemId,
                                     const XML_Char* publicId, int hasInternalSubset);
    static void XMLCALL cdataBegan(void* self);
    static void XMLCALL cdataEnded(void* self);

    template <typename Action>
    static void callback(void* self, const Action& action);

    void setCallbacks();
    bool advanceInDocument();
    bool beginNextDocument();
    void check(XML_Status status);
    XML_Status feed();
    std::string_view nextPiece();
    void noteEncoding(std::string_view bytes);
    std::size_t wantedBytes() const;
    void checkElement(const char* name, const char* const* attributes);
    [[noreturn]] void fail(const std::string& reason) const;
    [[noreturn]] void throwUndefined(const std::string& entity, std::string_view before) const;
    bool mayScan() const;
    bool takeRows();

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
    ExpatParser parser;
    std::exception_ptr failure;  ///< Thrown in a callback.
    RowReading reading;
    std::unique_ptr<RowBlockReader> rows;  ///< From the first rows that may be plain to the end of the document.
    bool isScannable = false;              ///< Encoding and document type do not change the meaning of a plain row.
    bool isInCdata = false;                ///< In text that may look like rows.
    bool isBegun = false;
    bool isSuspended = false;
    bool isAtEnd = false;
    bool repairs = false;
    bool hasSkippedEntity = false;
    std::size_t skippedFiles = 0;  ///< Files of an archive that have been warned about.
};

}  // namespace velmorak::io
