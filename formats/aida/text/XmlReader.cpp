#include "aida/text/XmlReader.h"

#include "aida/text/XmlEncoding.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace velmorak::io {

namespace {

/// Bytes that the parser is given at once, except for a longer tag or text.
constexpr std::size_t pieceSize = std::size_t{1} << 16U;
constexpr std::size_t maxPieceSize = std::size_t{32} << 20U;
constexpr std::size_t maxDepth = 1000;
constexpr std::size_t maxNameLength = 1000;
constexpr std::size_t maxTagLength = std::size_t{64} << 20U;
constexpr std::size_t maxTokenLength = std::size_t{256} << 20U;

}  // namespace

const char* attributeOf(const char* const* attributes, const char* name) {
    for (; *attributes; attributes += 2) {
        if (std::strcmp(*attributes, name) == 0) {
            return attributes[1];
        }
    }
    return nullptr;
}

std::string textOr(const char* text, const char* other) {
    return !text ? other : text;
}

XmlReader::XmlReader(const std::filesystem::path& path, XmlHandler& handler, RunContext& context, RowReading reading)
    : path(path),
      handler(handler),
      context(context),
      stream(path, context),
      warnings(context),
      piece(pieceSize, '\0'),
      reading(reading) {
    setCallbacks();
}

void XmlReader::setCallbacks() {
    XML_SetUserData(parser.get(), this);
    XML_SetElementHandler(parser.get(), elementBegan, elementEnded);
    XML_SetCharacterDataHandler(parser.get(), textRead);
    XML_SetUnknownEncodingHandler(parser.get(), unknownEncoding, nullptr);
    XML_SetParamEntityParsing(parser.get(), XML_PARAM_ENTITY_PARSING_ALWAYS);
    XML_UseForeignDTD(parser.get(), XML_TRUE);
    XML_SetExternalEntityRefHandler(parser.get(), externalEntity);
    XML_SetEntityDeclHandler(parser.get(), entityDeclared);
    XML_SetSkippedEntityHandler(parser.get(), entitySkipped);
    XML_SetStartDoctypeDeclHandler(parser.get(), doctypeBegan);
    XML_SetCdataSectionHandler(parser.get(), cdataBegan, cdataEnded);
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
        check(wasSuspended ? parser.resume() : feed());
        if (isSuspended) {
            return true;
        }
    }
    return false;
}

bool XmlReader::beginNextDocument() {
    rows.reset();
    const bool isThereOne = stream.nextDocument();
    for (; skippedFiles < stream.skipped().size(); ++skippedFiles) {
        warnings.add(fmt::format("{}: {} is not XML and is skipped", path.string(), stream.skipped()[skippedFiles]));
    }
    if (!isThereOne) {
        warnings.finish(path.string());
        if (!stream.damage().empty() && isAtEnd) {
            throw Failure(fmt::format("{}: {}", path.string(), stream.damage()));
        }
        return false;
    }
    parser.reset();
    setCallbacks();
    failure = nullptr;
    isBegun = isSuspended = isAtEnd = isScannable = isInCdata = false;
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
        return parser.parse(bytes, bytes.empty());
    }
    repaired.clear();
    if (bytes.empty()) {
        repair.finish(repaired);
    } else {
        repair.append(bytes, repaired);
    }
    return parser.parse(repaired, bytes.empty());
}

std::string_view XmlReader::nextPiece() {
    if (!rows && mayScan()) {
        rows = std::make_unique<RowBlockReader>(stream, *handler.plainColumns());
    }
    const std::size_t wanted = wantedBytes();
    if (rows) {
        const std::string_view first = rows->nextSlowRows();
        if (wanted == pieceSize || first.empty()) {
            return first;
        }
        piece = first;
        for (std::string_view more = rows->nextSlowRows(); !more.empty(); more = rows->nextSlowRows()) {
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
    const bool isWide = isUtf16(bytes);
    repairs = !bytes.empty() && !isWide && (encoding.empty() || encoding == "utf-8" || encoding == "utf8");
    isScannable = repairs || (!isWide && (encoding == "iso-8859-1" || encoding == "us-ascii"));
}

/// Each time that the parser gets more of an incomplete token it scans that from its beginning, so it gets as many
/// bytes as it holds: the time stays linear.
std::size_t XmlReader::wantedBytes() const {
    const std::size_t pending = parser.pendingBytes();
    if (pending <= pieceSize) {
        return pieceSize;
    }
    const std::string_view first = parser.currentBytes(2);
    const bool isTag = first.size() == 2 && first[0] == '<' && first[1] != '!' && first[1] != '?';
    if (pending > (isTag ? maxTagLength : maxTokenLength)) {
        fail(isTag ? fmt::format("a tag is longer than {} MB", maxTagLength >> 20U)
                   : fmt::format("a comment or text is longer than {} MB", maxTokenLength >> 20U));
    }
    return std::min(pending, maxPieceSize);
}

void XmlReader::check(XML_Status status) {
    if (failure) {
        std::rethrow_exception(failure);
    }
    if (status == XML_STATUS_SUSPENDED) {
        return;
    }
    isAtEnd = parser.isAtEnd();
    if (status == XML_STATUS_OK) {
        return;
    }
    throw Failure(fmt::format("{}: the XML is damaged{}: {}", path.string(), where(),
                              XML_ErrorString(XML_GetErrorCode(parser.get()))));
}

bool XmlReader::mayScan() const {
    return reading == RowReading::Scanned && isScannable && handler.plainColumns() != nullptr;
}

/// @return false if what comes next is for the parser.
bool XmlReader::takeRows() {
    const bool isBetweenRows = rows && mayScan() && handler.isBetweenRows() && !isInCdata && !repair.hasRest();
    return isBetweenRows && parser.isDrained() && rows->takeRows(handler);
}

void XmlReader::pause() {
    isSuspended = true;
    parser.pause();
}

std::string XmlReader::where() const {
    const std::uint64_t byte = parser.position();
    const std::string in = document().empty() ? "" : ", " + document();
    return fmt::format("{}, line {}, byte {} of the text", in, parser.line() + (rows ? rows->bypassedLines() : 0),
                       byte - repair.repairedBefore(byte) + (rows ? rows->bypassedBytes() : 0));
}

void XmlReader::fail(const std::string& reason) const {
    throw Failure(fmt::format("{}{}: {}", path.string(), where(), reason));
}

void XmlReader::checkElement(const char* name, const char* const* attributes) {
    if (++depth > maxDepth) {
        fail(fmt::format("elements are nested deeper than {}", maxDepth));
    }
    if (std::strlen(name) > maxNameLength) {
        fail(fmt::format("the name of an element is longer than {} bytes", maxNameLength));
    }
    if (!names.see(name, attributes)) {
        fail(fmt::format("there are more than {} different names of elements or attributes", XmlNames::maxNames));
    }
    const std::string_view tag = parser.currentTag();
    if (const auto undefined = references.undefinedIn(tag)) {
        throwUndefined(undefined->name, tag.substr(0, undefined->position));
    }
}

/// @param before bytes between the parser's position and the reference.
void XmlReader::throwUndefined(const std::string& entity, std::string_view before) const {
    const auto lines = static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    const auto isBegin = [](char c) { return !isContinuationByte(c) && c != '\0'; };
    const auto characters = static_cast<std::uint64_t>(std::count_if(line.begin(), line.end(), isBegin));
    const std::uint64_t column = (lines == 0 ? parser.column() : 0) + characters + 1;
    throw Failure(fmt::format(
        "{}{}{}, line {}, column {}: the entity &{}; is not defined", path.string(), document().empty() ? "" : ", ",
        document(), parser.line() + (rows ? rows->bypassedLines() : 0) + lines, column, entity.substr(0, 40)));
}

std::string XmlReader::damageBehind() {
    rows.reset();
    if (!stream.isPacked()) {
        return {};
    }
    while (stream.pass(piece.data(), piece.size()) > 0) {
        if (context.isStopping()) {
            throw Stopped();
        }
    }
    return stream.damage().empty() ? std::string() : fmt::format("{}: {}", path.string(), stream.damage());
}

/// No exception may propagate through the parser: it is stored, and check throws it when the parser has returned.
template <typename Action>
void XmlReader::callback(void* self, const Action& action) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure) {
        return;
    }
    try {
        action(reader);
    } catch (...) {
        reader.failure = std::current_exception();
        reader.parser.abort();
    }
}

void XMLCALL XmlReader::elementBegan(void* self, const XML_Char* name, const XML_Char** attributes) {
    callback(self, [&](XmlReader& reader) {
        reader.checkElement(name, attributes);
        reader.handler.beginElement(name, attributes);
    });
}

void XMLCALL XmlReader::elementEnded(void* self, const XML_Char* name) {
    callback(self, [&](XmlReader& reader) {
        --reader.depth;
        reader.handler.endElement(name);
    });
}

void XMLCALL XmlReader::textRead(void* self, const XML_Char* characters, int length) {
    callback(self, [&](XmlReader& reader) {
        reader.handler.characters({characters, static_cast<std::size_t>(length)});
    });
}

int XMLCALL XmlReader::externalEntity(XML_Parser expat, const XML_Char* context, const XML_Char* /*base*/,
                                      const XML_Char* /*systemId*/, const XML_Char* /*publicId*/) {
    // Only the document type has no context; any other entity is skipped, unopened.
    if (context) {
        static_cast<XmlReader*>(XML_GetUserData(expat))->hasSkippedEntity = true;
        return XML_STATUS_OK;
    }
    return parseAidaDocumentType(expat) ? XML_STATUS_OK : XML_STATUS_ERROR;
}

// The parser determines the parameters. NOLINTNEXTLINE(readability-function-size)
void XMLCALL XmlReader::entityDeclared(void* self, const XML_Char* name, int isParameter, const XML_Char* /*value*/,
                                       int /*length*/, const XML_Char* /*base*/, const XML_Char* /*systemId*/,
                                       const XML_Char* /*publicId*/, const XML_Char* /*notation*/) {
    if (isParameter != 0) {
        return;
    }
    callback(self, [&](XmlReader& reader) {
        reader.references.declare(name);
        if (reader.references.count() > XmlNames::maxNames) {
            reader.fail(fmt::format("more than {} entities are declared", XmlNames::maxNames));
        }
    });
}

void XMLCALL XmlReader::entitySkipped(void* self, const XML_Char* name, int isParameter) {
    if (isParameter == 0) {
        callback(self, [&](XmlReader& reader) { reader.throwUndefined(name, {}); });
    }
}

void XMLCALL XmlReader::doctypeBegan(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                     const XML_Char* /*publicId*/, int hasInternalSubset) {
    // The internal subset may change what a row means, by defaults of attributes for example.
    if (hasInternalSubset != 0) {
        static_cast<XmlReader*>(self)->isScannable = false;
    }
}

void XMLCALL XmlReader::cdataBegan(void* self) {
    static_cast<XmlReader*>(self)->isInCdata = true;
}

void XMLCALL XmlReader::cdataEnded(void* self) {
    static_cast<XmlReader*>(self)->isInCdata = false;
}

}  // namespace velmorak::io
