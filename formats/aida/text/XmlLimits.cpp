#include "aida/text/XmlReader.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string_view>

/// What a document may ask of the parser: it holds a tag, a comment or a text as a whole, and the names of all open
/// elements. docs/aida.md says the limits.
namespace velmorak::io {

namespace {

constexpr std::size_t deepest = 1000;
constexpr std::size_t maxNameLength = 1000;
constexpr std::size_t maxTagLength = std::size_t{64} << 20U;
constexpr std::size_t maxTokenLength = std::size_t{256} << 20U;
constexpr std::size_t maxPiece = std::size_t{32} << 20U;

}  // namespace

/// Bytes that the parser holds because they are no whole tag, comment or text yet.
std::size_t XmlReader::pendingBytes() const {
    const XML_Index place = XML_GetCurrentByteIndex(parser.get());
    const std::uint64_t done = place < 0 ? 0 : static_cast<std::uint64_t>(place);
    return done < parsedBytes ? static_cast<std::size_t>(parsedBytes - done) : 0;
}

/// What the parser stands at, as it is in the file.
std::string_view XmlReader::currentBytes(std::size_t count) const {
    int offset = 0;
    int size = 0;
    const char* const context = XML_GetInputContext(parser.get(), &offset, &size);
    if (!context || offset < 0 || offset > size) {
        return {};
    }
    return std::string_view(context, static_cast<std::size_t>(size)).substr(static_cast<std::size_t>(offset), count);
}

/// The parser begins anew with what it holds each time it gets more, and so gets as much more as that is.
std::size_t XmlReader::wantedBytes() const {
    const std::size_t pending = pendingBytes();
    if (pending <= pieceSize) {
        return pieceSize;
    }
    const std::string_view first = currentBytes(2);
    const bool isTag = first.size() == 2 && first[0] == '<' && first[1] != '!' && first[1] != '?';
    if (pending > (isTag ? maxTagLength : maxTokenLength)) {
        fail(isTag ? fmt::format("a tag is longer than {} MB", maxTagLength >> 20U)
                   : fmt::format("a comment or text is longer than {} MB", maxTokenLength >> 20U));
    }
    return std::min(pending, maxPiece);
}

void XmlReader::fail(const std::string& reason) const {
    throw Failure(fmt::format("{}{}: {}", path.string(), where(), reason));
}

void XmlReader::checkElement(const char* name, const char* const* attributes) {
    if (++depth > deepest) {
        fail(fmt::format("elements lie deeper than {}", deepest));
    }
    if (std::strlen(name) > maxNameLength) {
        fail(fmt::format("the name of an element is longer than {} bytes", maxNameLength));
    }
    if (!names.see(name, attributes)) {
        fail(fmt::format("there are more than {} different names of elements or attributes", XmlNames::most));
    }
    const std::string_view tag = currentBytes(static_cast<std::size_t>(XML_GetCurrentByteCount(parser.get())));
    if (const auto undefined = references.undefinedIn(tag)) {
        refuseEntity(undefined->name, tag.substr(0, undefined->position));
    }
}

/// @param before bytes between the parser's place and the reference.
void XmlReader::refuseEntity(const std::string& entity, std::string_view before) const {
    const auto lines = static_cast<std::uint64_t>(std::count(before.begin(), before.end(), '\n'));
    const std::string_view line = before.substr(before.rfind('\n') + 1);
    const auto isBegin = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80 && c != '\0'; };
    const auto characters = static_cast<std::uint64_t>(std::count_if(line.begin(), line.end(), isBegin));
    const std::uint64_t column = (lines == 0 ? XML_GetCurrentColumnNumber(parser.get()) : 0) + characters + 1;
    throw Failure(fmt::format(
        "{}{}{}, line {}, column {}: the entity &{}; is not defined", path.string(), document().empty() ? "" : ", ",
        document(), XML_GetCurrentLineNumber(parser.get()) + scannedLines + lines, column, entity.substr(0, 40)));
}

// The parser says what it calls with. NOLINTNEXTLINE(readability-function-size)
void XMLCALL XmlReader::declaredEntity(void* self, const XML_Char* name, int isParameter, const XML_Char* /*value*/,
                                       int /*length*/, const XML_Char* /*base*/, const XML_Char* /*systemId*/,
                                       const XML_Char* /*publicId*/, const XML_Char* /*notation*/) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure || isParameter != 0) {
        return;
    }
    try {
        reader.references.declare(name);
        if (reader.references.count() > XmlNames::most) {
            reader.fail(fmt::format("more than {} entities are declared", XmlNames::most));
        }
    } catch (...) {
        reader.keep(std::current_exception());
    }
}

void XMLCALL XmlReader::skippedEntity(void* self, const XML_Char* name, int isParameter) {
    auto& reader = *static_cast<XmlReader*>(self);
    if (reader.failure || isParameter != 0) {
        return;
    }
    try {
        reader.refuseEntity(name, {});
    } catch (...) {
        reader.keep(std::current_exception());
    }
}

std::string XmlReader::damageBehind() {
    blocks.reset();
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

}  // namespace velmorak::io
