#include "parquet/Page.h"

#include "columnar/Columns.h"
#include "parquet/BitRuns.h"
#include "parquet/Codecs.h"
#include "parquet/Values.h"

#include <velmorak/ChunkSize.h>

#include <zlib.h>

#include <algorithm>
#include <bit>
#include <string>
#include <utility>

namespace velmorak::parquet {

/// What an unpacked page consists of.
struct PageReader::Content {
    columnar::Block block;
    std::vector<std::uint8_t> repetitions;  ///< Empty without lists.
    std::vector<std::uint8_t> definitions;  ///< Empty if all are the largest.
    Bytes values;                           ///< In the block.
};

namespace {

constexpr const char* rowsDiffer = "a page does not have the rows that its header says";

bool hasDictionary(Encoding encoding) {
    return encoding == Encoding::PlainDictionary || encoding == Encoding::RleDictionary;
}

std::vector<std::uint8_t> readRuns(Bytes runs, unsigned maximum, std::size_t count) {
    std::vector<std::uint8_t> levels(count);
    BitRuns(runs, static_cast<unsigned>(std::bit_width(maximum))).read<std::uint8_t>(levels);
    return levels;
}

void checkLevels(const std::vector<std::uint8_t>& levels, unsigned maximum) {
    if (!levels.empty() && *std::max_element(levels.begin(), levels.end()) > maximum) {
        throw Failure("a level in a page is too large");
    }
}

Bytes take(Bytes& bytes, std::size_t count) {
    if (count > bytes.size()) {
        throw Failure("the levels of a page end early");
    }
    const Bytes taken = bytes.first(count);
    bytes = bytes.subspan(count);
    return taken;
}

}  // namespace

std::size_t DecodedPage::bytes() const {
    return bytesIn(column) + column.offsets.size() * sizeof(column.offsets[0]) + block.size();
}

std::size_t PageLevels::bytes() const {
    return repetitions.size() + definitions.size() + rowStarts.size() * sizeof(rowStarts[0]);
}

columnar::Block PageReader::raw(const PageSpot& spot) const {
    constexpr std::uint32_t maxBytes = 1U << 30U;
    const PageHeader& header = spot.header;
    if (header.unpackedBytes > maxBytes) {
        throw Failure("a page has " + std::to_string(header.unpackedBytes) +
                      " bytes when it is unpacked, and 2^30 are the most; write the file with smaller pages");
    }
    columnar::Block block = file.read(spot.position, header.packedBytes);
    if (header.checksum && crc32_z(0, block.data(), block.size()) != *header.checksum) {
        throw Failure("a page does not have the checksum that its header says");
    }
    return block;
}

Column PageReader::dictionary(const PageSpot& spot, ColumnType type) const {
    const PageHeader& header = spot.header;
    if (header.encoding != Encoding::Plain && header.encoding != Encoding::PlainDictionary) {
        throw Failure("the dictionary has an unknown encoding");
    }
    const columnar::Block packed = raw(spot);
    const columnar::Block block = unpacked(codec, packed.bytes(), header.unpackedBytes);
    return decodeValues(leaf, Encoding::Plain, block.bytes(), header.values, type);
}

PageReader::Content PageReader::content(const PageSpot& spot, Needed needed) const {
    const PageHeader& header = spot.header;
    columnar::Block packed = raw(spot);
    if (header.type == PageHeader::Type::DataV2) {
        return contentV2(spot, std::move(packed), needed);
    }
    Content content;
    content.block = codec == Codec::None && packed.size() == header.unpackedBytes
                        ? std::move(packed)
                        : unpacked(codec, packed.bytes(), header.unpackedBytes);
    content.values = content.block.bytes();
    content.repetitions = takeLevels(content.values, header.repetitionEncoding, leaf.maxRepetition, header.values);
    content.definitions = takeLevels(content.values, header.definitionEncoding, leaf.maxDefinition, header.values);
    checkLevels(content.repetitions, leaf.maxRepetition);
    checkLevels(content.definitions, leaf.maxDefinition);
    return content;
}

/// The levels are not compressed.
PageReader::Content PageReader::contentV2(const PageSpot& spot, columnar::Block&& packed, Needed needed) const {
    const PageHeader& header = spot.header;
    const std::size_t levelBytes = std::size_t{header.repetitionBytes} + header.definitionBytes;
    if (levelBytes > packed.size() || levelBytes > header.unpackedBytes) {
        throw Failure("the levels of a page are longer than the page");
    }
    Content content;
    Bytes rest = packed.bytes();
    const Bytes repetitions = take(rest, header.repetitionBytes);
    const Bytes definitions = take(rest, header.definitionBytes);
    if (leaf.maxRepetition > 0) {
        content.repetitions = readRuns(repetitions, leaf.maxRepetition, header.values);
    }
    if (leaf.maxDefinition > 0) {
        content.definitions = readRuns(definitions, leaf.maxDefinition, header.values);
    }
    checkLevels(content.repetitions, leaf.maxRepetition);
    checkLevels(content.definitions, leaf.maxDefinition);
    if (needed == Needed::Levels) {
        return content;
    }
    const bool isPlain = !header.isPacked || codec == Codec::None;
    content.block = isPlain ? std::move(packed) : unpacked(codec, rest, header.unpackedBytes - levelBytes);
    content.values = isPlain ? content.block.bytes().subspan(levelBytes) : content.block.bytes();
    return content;
}

std::vector<std::uint8_t> PageReader::takeLevels(Bytes& bytes, Encoding encoding, unsigned maximum, std::size_t count) {
    constexpr std::size_t lengthBytes = 4;
    if (maximum == 0) {
        return {};
    }
    if (encoding == Encoding::BitPacked) {
        const auto width = static_cast<unsigned>(std::bit_width(maximum));
        return unpackOldLevels(take(bytes, (count * width + 7) / 8), width, count);
    }
    if (encoding != Encoding::Rle) {
        throw Failure("the levels of a page have an unknown encoding");
    }
    const std::size_t length = columnar::littleEndian<std::uint32_t>(take(bytes, lengthBytes).data());
    return readRuns(take(bytes, length), maximum, count);
}

Column PageReader::values(const Content& content, const PageHeader& header, std::size_t count, const Column* dictionary,
                          ColumnType type) const {
    if (!hasDictionary(header.encoding)) {
        return decodeValues(leaf, header.encoding, content.values, count, type);
    }
    if (!dictionary) {
        throw Failure("a page needs a dictionary, but there is none");
    }
    return decodePositions(*dictionary, content.values, count);
}

DecodedPage PageReader::page(const PageSpot& spot, const Column* dictionary, ColumnType type) const {
    Content parts = content(spot);
    if (leaf.isList()) {
        return list(parts, spot, dictionary, type);
    }
    const std::vector<std::uint8_t>& definitions = parts.definitions;
    const auto present = static_cast<std::size_t>(
        definitions.empty() ? spot.header.values
                            : std::count(definitions.begin(), definitions.end(), leaf.maxDefinition));
    if (present == spot.header.values && isStoredAsIs(parts, spot.header, type)) {
        const Bytes stored = parts.values.first(present * sizeof(double));
        return {.column = {}, .block = std::move(parts.block), .stored = stored};
    }
    Column dense = values(parts, spot.header, present, dictionary, type);
    if (present == spot.header.values) {
        return {.column = std::move(dense)};
    }
    std::vector<std::uint8_t> isPresent(definitions.size());
    std::transform(definitions.begin(), definitions.end(), isPresent.begin(),
                   [this](unsigned level) { return level == leaf.maxDefinition ? 1 : 0; });
    return {.column = columnar::spread(std::move(dense), isPresent)};
}

/// Whether the values of a page without missing ones are in its bytes as they are in memory.
bool PageReader::isStoredAsIs(const Content& content, const PageHeader& header, ColumnType type) const {
    const SchemaElement& element = leaf.element;
    const bool isReal = element.type == Physical::Double && type == ColumnType::Real;
    const bool isInteger = element.type == Physical::Int64 && type == ColumnType::Integer;
    const bool hasMeaning = element.meaning != Meaning::None && element.meaning != Meaning::Integer;
    return std::endian::native == std::endian::little && header.encoding == Encoding::Plain && !hasMeaning &&
           (isReal || isInteger) && header.values > 0 && content.values.size() / sizeof(double) >= header.values;
}

/// Lists of lists are joined: every repetition above 0 continues the row.
DecodedPage PageReader::list(const Content& content, const PageSpot& spot, const Column* dictionary,
                             ColumnType type) const {
    std::vector<std::uint8_t> isPresent;
    std::vector<std::uint64_t> offsets;
    std::size_t present = 0;
    for (std::size_t i = 0; i < content.repetitions.size(); ++i) {
        if (content.repetitions[i] == 0) {
            offsets.push_back(isPresent.size());
        }
        if (content.definitions[i] >= leaf.elementDefinition()) {
            const bool isThere = content.definitions[i] == leaf.maxDefinition;
            isPresent.push_back(isThere ? 1 : 0);
            present += isThere ? 1 : 0;
        }
    }
    if (offsets.size() != spot.rows) {
        throw Failure(rowsDiffer);
    }
    offsets.push_back(isPresent.size());
    DecodedPage page{.column = columnar::spread(values(content, spot.header, present, dictionary, type), isPresent)};
    page.column.offsets = std::move(offsets);
    return page;
}

PageLevels PageReader::levels(const PageSpot& spot) const {
    Content parts = content(spot, Needed::Levels);
    PageLevels page{.repetitions = std::move(parts.repetitions), .definitions = std::move(parts.definitions)};
    for (std::size_t i = 0; i < page.repetitions.size(); ++i) {
        if (page.repetitions[i] == 0) {
            page.rowStarts.push_back(i);
        }
    }
    if (page.rowStarts.size() != spot.rows) {
        throw Failure(rowsDiffer);
    }
    page.rowStarts.push_back(page.repetitions.size());
    return page;
}

void PageReader::countRows(PageSpot& spot) const {
    if (!leaf.isList()) {
        spot.rows = spot.header.values;
        return;
    }
    if (spot.header.type == PageHeader::Type::DataV2) {
        spot.rows = spot.header.rows;
        return;
    }
    const Content parts = content(spot, Needed::Levels);
    const std::vector<std::uint8_t>& repetitions = parts.repetitions;
    spot.rows = static_cast<std::uint64_t>(std::count(repetitions.begin(), repetitions.end(), 0));
    spot.continues = !repetitions.empty() && repetitions[0] != 0;
}

}  // namespace velmorak::parquet
