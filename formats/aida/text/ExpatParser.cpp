#include "aida/text/ExpatParser.h"

#include <new>

namespace velmorak::io {

namespace {

constexpr std::string_view documentType = R"(<!ENTITY UNDERFLOW "-2">)"
                                          R"(<!ENTITY OVERFLOW "-1">)"
                                          R"(<!ATTLIST axis direction CDATA "x">)"
                                          R"(<!ATTLIST statistic direction CDATA "x">)"
                                          R"(<!ATTLIST column type CDATA "double">)"
                                          R"(<!ATTLIST item sticky CDATA "false">)"
                                          R"(<!ATTLIST function isNormalized CDATA "false">)";

}  // namespace

ExpatParser::ExpatParser() : parser(XML_ParserCreate(nullptr)) {
    if (!parser) {
        throw std::bad_alloc();
    }
}

void ExpatParser::reset() {
    XML_ParserReset(parser.get(), nullptr);
    givenBytes = 0;
}

XML_Status ExpatParser::parse(std::string_view bytes, bool isLast) {
    givenBytes += bytes.size();
    return XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), isLast ? 1 : 0);
}

bool ExpatParser::isAtEnd() const {
    XML_ParsingStatus state{};
    XML_GetParsingStatus(parser.get(), &state);
    return state.parsing == XML_FINISHED;
}

std::uint64_t ExpatParser::position() const {
    const XML_Index index = XML_GetCurrentByteIndex(parser.get());
    return index < 0 ? 0 : static_cast<std::uint64_t>(index);
}

bool ExpatParser::isDrained() const {
    return XML_GetCurrentByteIndex(parser.get()) >= 0 && position() == givenBytes;
}

std::size_t ExpatParser::pendingBytes() const {
    const std::uint64_t done = position();
    return done < givenBytes ? static_cast<std::size_t>(givenBytes - done) : 0;
}

std::string_view ExpatParser::currentBytes(std::size_t count) const {
    int offset = 0;
    int size = 0;
    const char* const context = XML_GetInputContext(parser.get(), &offset, &size);
    if (!context || offset < 0 || offset > size) {
        return {};
    }
    return std::string_view(context, static_cast<std::size_t>(size)).substr(static_cast<std::size_t>(offset), count);
}

std::string_view ExpatParser::currentTag() const {
    return currentBytes(static_cast<std::size_t>(XML_GetCurrentByteCount(parser.get())));
}

bool parseAidaDocumentType(XML_Parser parser) {
    struct Free {
        void operator()(XML_Parser expat) const { XML_ParserFree(expat); }
    };
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> inner(
        XML_ExternalEntityParserCreate(parser, nullptr, nullptr));
    return inner &&
           XML_Parse(inner.get(), documentType.data(), static_cast<int>(documentType.size()), 1) == XML_STATUS_OK;
}

}  // namespace velmorak::io
