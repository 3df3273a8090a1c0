#pragma once

#include <expat.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <type_traits>

namespace velmorak::io {

/// An expat parser that knows its position in the text that it has been given. Threads: one at a time.
class ExpatParser {
public:
    ExpatParser();

    /// For setting callbacks.
    XML_Parser get() const { return parser.get(); }
    /// Forgets the document and all callbacks.
    void reset();

    XML_Status parse(std::string_view bytes, bool isLast);
    XML_Status resume() { return XML_ResumeParser(parser.get()); }
    /// From a callback: parse returns after it, and resume continues.
    void pause() { XML_StopParser(parser.get(), XML_TRUE); }
    /// From a callback: parse returns after it with an error.
    void abort() { XML_StopParser(parser.get(), XML_FALSE); }

    /// The document has been parsed to its end.
    bool isAtEnd() const;
    /// Byte of the text, counted from 0, at which the current tag or text begins.
    std::uint64_t position() const;
    std::uint64_t line() const { return XML_GetCurrentLineNumber(parser.get()); }
    std::uint64_t column() const { return XML_GetCurrentColumnNumber(parser.get()); }
    /// Everything that parse was given has been reported to callbacks.
    bool isDrained() const;
    /// Bytes that are held because they do not yet make a whole tag, comment or text.
    std::size_t pendingBytes() const;
    /// @return the first bytes at position(), as the file has them.
    std::string_view currentBytes(std::size_t count) const;
    /// @return the tag whose callback is running, as the file has it.
    std::string_view currentTag() const;

private:
    struct Free {
        void operator()(XML_Parser expat) const { XML_ParserFree(expat); }
    };
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> parser;
    std::uint64_t givenBytes = 0;
};

/// Parses the part of the document type that AIDA files have in common, from the callback for external entities: two
/// entities, and the defaults of attributes. No file is opened.
/// @return false if expat reports an error.
bool parseAidaDocumentType(XML_Parser parser);

}  // namespace velmorak::io
