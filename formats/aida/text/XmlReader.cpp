#include "aida/text/XmlReader.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velmorak::io {

namespace {

/// What the AIDA document type adds to a text: two entities, and the defaults of attributes.
constexpr std::string_view documentType = R"(<!ENTITY UNDERFLOW "-2">)"
                                          R"(<!ENTITY OVERFLOW "-1">)"
                                          R"(<!ATTLIST axis direction CDATA "x">)"
                                          R"(<!ATTLIST statistic direction CDATA "x">)"
                                          R"(<!ATTLIST column type CDATA "double">)"
                                          R"(<!ATTLIST item sticky CDATA "false">)"
                                          R"(<!ATTLIST function isNormalized CDATA "false">)";

/// Code point of each byte of an encoding, -1 for none.
bool fillMap(iconv_t converter, int* map) {
    for (int byte = 0; byte < 256; ++byte) {
        std::array<char, 1> in{static_cast<char>(byte)};
        std::array<unsigned char, 8> out{};
        char* from = in.data();
        char* to = reinterpret_cast<char*>(out.data());
        std::size_t fromLeft = in.size();
        std::size_t toLeft = out.size();
        iconv(converter, nullptr, nullptr, nullptr, nullptr);
        const bool isOne =
            iconv(converter, &from, &fromLeft, &to, &toLeft) != static_cast<std::size_t>(-1) && toLeft == 4;
        const unsigned code = (static_cast<unsigned>(out[0]) << 24U) | (static_cast<unsigned>(out[1]) << 16U) |
                              (static_cast<unsigned>(out[2]) << 8U) | static_cast<unsigned>(out[3]);
        map[byte] = isOne && code < 0x10000 ? static_cast<int>(code) : -1;
        if (byte < 0x80 && byte >= 0x20 && map[byte] != byte) {
            return false;
        }
    }
    return true;
}

/// For encodings that expat does not know: those with one byte a character that extend ASCII.
int XMLCALL unknownEncoding(void* /*data*/, const XML_Char* name, XML_Encoding* info) {
    iconv_t converter = iconv_open("UCS-4BE", name);
    // The value that says so is an integer in the clothes of a pointer.
    if (reinterpret_cast<std::intptr_t>(converter) == -1) {
        return XML_STATUS_ERROR;
    }
    const bool isUsable = fillMap(converter, info->map);
    iconv_close(converter);
    info->convert = nullptr;
    info->data = nullptr;
    info->release = nullptr;
    return isUsable ? XML_STATUS_OK : XML_STATUS_ERROR;
}

/// @return the encoding that the text's first line declares, in small letters; empty when it declares none.
std::string declaredEncoding(std::string_view text) {
    const std::string_view head = text.substr(0, text.find('>'));
    const auto begin = head.find("encoding");
    if (begin == std::string_view::npos || head.find("<?xml") == std::string_view::npos) {
        return {};
    }
    const auto open = head.find_first_of(R"("')", begin);
    if (open == std::string_view::npos) {
        return {};
    }
    std::string name(head.substr(open + 1, head.find(head[open], open + 1) - open - 1));
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return name;
}

}  // namespace

const char* attributeOf(const char* const* attributes, const char* name) {
    for (; *attributes; attributes += 2) {
        if (std::strcmp(*attributes, name) == 0) {
            return attributes[1];
        }
    }
    return nullptr;
}

XmlReader::XmlReader(const std::filesystem::path& file, XmlHandler& elements, RunContext& runContext,
                     RowReading rowReading)
    : path(file),
      handler(elements),
      context(runContext),
      stream(file, runContext),
      warnings(runContext),
      piece(pieceSize, '\0'),
      reading(rowReading) {
    parser.reset(XML_ParserCreate(nullptr));
    if (!parser) {
        throw std::bad_alloc();
    }
    prepareParser();
}

void XmlReader::prepareParser() {
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), began, ended);
    XML_SetCharacterDataHandler(parser.get(), text);
    XML_SetUnknownEncodingHandler(parser.get(), unknownEncoding, nullptr);
    XML_SetParamEntityParsing(parser.get(), XML_PARAM_ENTITY_PARSING_ALWAYS);
    XML_UseForeignDTD(parser.get(), XML_TRUE);
    XML_SetExternalEntityRefHandler(parser.get(), externalEntity);
    XML_SetEntityDeclHandler(parser.get(), declaredEntity);
    XML_SetSkippedEntityHandler(parser.get(), skippedEntity);
    XML_SetStartDoctypeDeclHandler(parser.get(), beganDoctype);
    XML_SetCdataSectionHandler(parser.get(), beganCdata, endedCdata);
}

bool XmlReader::advance() {
    do {
        try {
            if (advanceInDocument()) {
                return true;
            }
        } catch (const Failure& damage) {
            if (!handler.continuesAfter(damage.what())) {
                throw;
            }
        }
    } while (beginNextDocument());
    return false;
}

bool XmlReader::advanceInDocument() {
    while (!isAtEnd) {
        if (context.isStopping()) {
            throw Stopped();
        }
        if (!isSuspended && takeRows()) {
            return true;
        }
        const bool wasSuspended = isSuspended;
        isSuspended = false;
        check(wasSuspended ? XML_ResumeParser(parser.get()) : feed());
        if (isSuspended) {
            return true;
        }
    }
    return false;
}

bool XmlReader::beginNextDocument() {
    blocks.reset();
    const bool isThereOne = stream.nextDocument();
    for (; skippedFiles < stream.skipped().size(); ++skippedFiles) {
        warnings.add(fmt::format("{}: {} is no XML and is left out", path.string(), stream.skipped()[skippedFiles]));
    }
    if (!isThereOne) {
        warnings.finish(path.string());
        if (!stream.damage().empty() && isAtEnd) {
            throw Failure(fmt::format("{}: {}", path.string(), stream.damage()));
        }
        return false;
    }
    XML_ParserReset(parser.get(), nullptr);
    prepareParser();
    failure = nullptr;
    isBegun = isSuspended = isAtEnd = isScannable = isInCdata = false;
    cursor = rowsTaken = 0;
    parsedBytes = scannedBytes = scannedLines = 0;
    depth = 0;
    references = XmlReferences();
    names = XmlNames();
    repair = TextRepair();
    handler.beginDocument();
    return true;
}

XML_Status XmlReader::feed() {
    const std::string_view bytes = nextPiece();
    if (bytes.empty() && !stream.damage().empty()) {
        throw Failure(fmt::format("{}: {}", path.string(), stream.damage()));
    }
    if (!isBegun) {
        noteEncoding(bytes);
    }
    isBegun = true;
    if (!repairs) {
        return parse(bytes, bytes.empty());
    }
    repaired.clear();
    if (bytes.empty()) {
        repair.finish(repaired);
    } else {
        repair.append(bytes, repaired);
    }
    return parse(repaired, bytes.empty());
}

XML_Status XmlReader::parse(std::string_view bytes, bool isLast) {
    parsedBytes += bytes.size();
    return XML_Parse(parser.get(), bytes.data(), static_cast<int>(bytes.size()), isLast ? 1 : 0);
}

std::string_view XmlReader::nextPiece() {
    if (!blocks && mayScan()) {
        blocks = std::make_unique<RowBlocks>(stream, *handler.plainColumns());
    }
    const std::size_t wanted = wantedBytes();
    if (blocks) {
        const std::string_view rows = nextOddRows();
        if (wanted == pieceSize || rows.empty()) {
            return rows;
        }
        piece = rows;
        for (std::string_view more = nextOddRows(); !more.empty(); more = nextOddRows()) {
            piece += more;
            if (piece.size() >= wanted) {
                break;
            }
        }
        return piece;
    }
    piece.resize(wanted);
    std::size_t size = 0;
    for (std::size_t more = 1; more > 0 && size < (wanted == pieceSize ? 1 : wanted); size += more) {
        more = stream.read(piece.data() + size, wanted - size);
    }
    return std::string_view(piece).substr(0, size);
}

void XmlReader::noteEncoding(std::string_view bytes) {
    const std::string encoding = declaredEncoding(bytes);
    const bool isUtf16 = bytes.substr(0, 2) == "\xFE\xFF" || bytes.substr(0, 2) == "\xFF\xFE";
    repairs = !bytes.empty() && !isUtf16 && (encoding.empty() || encoding == "utf-8" || encoding == "utf8");
    isScannable = repairs || (!isUtf16 && (encoding == "iso-8859-1" || encoding == "us-ascii"));
}

void XmlReader::check(XML_Status status) {
    if (failure) {
        std::rethrow_exception(failure);
    }
    if (status == XML_STATUS_SUSPENDED) {
        return;
    }
    XML_ParsingStatus state{};
    XML_GetParsingStatus(parser.get(), &state);
    isAtEnd = state.parsing == XML_FINISHED;
    if (status == XML_STATUS_OK) {
        return;
    }
    const XML_Error error = XML_GetErrorCode(parser.get());
    throw Failure(fmt::format("{}: the XML is damaged{}: {}", path.string(), where(), XML_ErrorString(error)));
}

void XmlReader::pause() {
    isSuspended = true;
    XML_StopParser(parser.get(), XML_TRUE);
}

std::string XmlReader::where() const {
    const auto byte = static_cast<std::uint64_t>(std::max<XML_Index>(0, XML_GetCurrentByteIndex(parser.get())));
    const std::string in = document().empty() ? "" : ", " + document();
    return fmt::format("{}, line {}, byte {} of the text", in, XML_GetCurrentLineNumber(parser.get()) + scannedLines,
                       byte - repair.repairedBefore(byte) + scannedBytes);
}

void XmlReader::keep(std::exception_ptr thrown) {
    failure = std::move(thrown);
    XML_StopParser(parser.get(), XML_FALSE);
}

// No exception may pass through the parser: it is kept, and thrown again when the parser has returned.
void XmlReader::began(void* self, const XML_Char* name, const XML_Char** attributes) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure) {
        return;
    }
    try {
        reader.checkElement(name, attributes);
        reader.handler.beginElement(name, attributes);
    } catch (...) {
        reader.keep(std::current_exception());
    }
}

void XmlReader::ended(void* self, const XML_Char* name) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure) {
        return;
    }
    try {
        --reader.depth;
        reader.handler.endElement(name);
    } catch (...) {
        reader.keep(std::current_exception());
    }
}

void XMLCALL XmlReader::text(void* self, const XML_Char* characters, int length) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure) {
        return;
    }
    try {
        reader.handler.characters({characters, static_cast<std::size_t>(length)});
    } catch (...) {
        reader.keep(std::current_exception());
    }
}

int XMLCALL XmlReader::externalEntity(XML_Parser expat, const XML_Char* context, const XML_Char* /*base*/,
                                      const XML_Char* /*systemId*/, const XML_Char* /*publicId*/) {
    // Only a part of the document type comes without a context; any other entity is left out, unopened.
    if (context) {
        static_cast<XmlReader*>(XML_GetUserData(expat))->hasSkippedEntity = true;
        return XML_STATUS_OK;
    }
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, Free> part(
        XML_ExternalEntityParserCreate(expat, context, nullptr));
    if (!part) {
        return XML_STATUS_ERROR;
    }
    return XML_Parse(part.get(), documentType.data(), static_cast<int>(documentType.size()), 1);
}

}  // namespace velmorak::io
