#include "root/ntuple/NTupleSchema.h"

#include "root/container/Compression.h"
#include "root/container/Record.h"

#include <fmt/format.h>
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <numeric>

namespace velmorak::root {
namespace {

constexpr std::size_t checksumBytes = 8;
/// Descriptions are small; anything larger is damaged.
constexpr std::uint64_t maxEnvelopeBytes = std::uint64_t{1} << 30;

template <typename Number>
Number littleEndian(const std::uint8_t* bytes) {
    std::uint64_t bits = 0;
    for (std::size_t i = sizeof(Number); i-- > 0;) {
        bits = bits << 8U | bytes[i];
    }
    return static_cast<Number>(bits);
}

struct Link {
    std::uint64_t position = 0;
    std::uint64_t bytes = 0;
    std::uint64_t unpackedBytes = 0;
};

/// Reads a description, whose numbers are little-endian.
class Envelope {
public:
    explicit Envelope(Bytes buffer) : buffer(buffer) {}

    template <typename Number>
    Number number() {
        return littleEndian<Number>(buffer.take(sizeof(Number)).data());
    }
    double real() { return std::bit_cast<double>(number<std::uint64_t>()); }
    std::string text() { return buffer.textOf(number<std::uint32_t>()); }

    /// Bits of features that a reader must support; none are defined.
    void flags();

    /// Calls `record` in a frame of its own.
    template <typename Record>
    void frame(Record&& record) {
        const std::size_t begin = buffer.position();
        const auto size = number<std::int64_t>();
        if (size < 8 || static_cast<std::uint64_t>(size) > buffer.size() - begin) {
            throw Failure("a frame is damaged");
        }
        record();
        buffer.seek(begin + static_cast<std::size_t>(size));
    }
    /// Calls `item` for each item of a list. `rest` reads what follows them in the list's frame.
    template <typename Item, typename Rest>
    void list(Item&& item, Rest&& rest) {
        const std::size_t begin = buffer.position();
        const auto size = number<std::int64_t>();
        const auto count = number<std::uint32_t>();
        if (size > -12 || static_cast<std::uint64_t>(-size) > buffer.size() - begin) {
            throw Failure("a frame is damaged");
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            item();
        }
        rest();
        buffer.seek(begin + static_cast<std::size_t>(-size));
    }
    template <typename Item>
    void list(Item&& item) {
        list(item, [] {});
    }

    Link locator();
    Link link();

private:
    Buffer buffer;
};

void Envelope::flags() {
    std::int64_t flags = 0;
    do {
        flags = number<std::int64_t>();
        if ((flags & INT64_MAX) != 0) {
            throw Failure("it uses unknown features");
        }
    } while (flags < 0);
}

Link Envelope::locator() {
    const std::size_t begin = buffer.position();
    const auto size = number<std::int32_t>();
    if (size >= 0) {
        return {number<std::uint64_t>(), static_cast<std::uint64_t>(size), 0};
    }
    constexpr unsigned large = 1;
    const auto word = static_cast<std::uint32_t>(size);
    if ((word >> 24U & 0x7FU) != large) {
        throw Failure("a position has an unknown format");
    }
    Link link;
    link.bytes = number<std::uint64_t>();
    link.position = number<std::uint64_t>();
    buffer.seek(begin + (word & 0xFFFFU));
    return link;
}

Link Envelope::link() {
    const auto unpackedBytes = number<std::uint64_t>();
    Link link = locator();
    link.unpackedBytes = unpackedBytes;
    return link;
}

/// The content of a description, after checking its checksum.
ByteVector envelopeAt(const File& file, const Link& link, unsigned type) {
    if (link.unpackedBytes > maxEnvelopeBytes || link.bytes > maxEnvelopeBytes) {
        throw Failure("a description is too large");
    }
    ByteVector bytes = unpacked(file.bytesAt(link.position, link.bytes), link.unpackedBytes);
    if (bytes.size() < 2 * checksumBytes) {
        throw Failure("a description ends early");
    }
    const std::size_t end = bytes.size() - checksumBytes;
    if (XXH3_64bits(bytes.data(), end) != littleEndian<std::uint64_t>(bytes.data() + end)) {
        throw Failure("the checksum of a description is wrong");
    }
    if ((littleEndian<std::uint64_t>(bytes.data()) & 0xFFFFU) != type) {
        throw Failure("a description has the wrong type");
    }
    return bytes;
}

class SchemaReader {
public:
    SchemaReader(const File& file, NTupleSchema& schema) : file(file), schema(schema) {}

    void read(const Key& anchor);

private:
    static Link linkIn(Buffer& buffer);

    void readHeaderEnvelope(const Link& link);

    void readFooter(const Link& link);

    void readDescription(Envelope& envelope);

    void readField(Envelope& envelope);

    void readColumn(Envelope& envelope);

    void readPageList(const Link& link);

    void readCluster(Envelope& envelope);

    static void readColumnPages(Envelope& envelope, NTupleCluster& cluster);

    const File& file;
    NTupleSchema& schema;
};

void SchemaReader::read(const Key& anchor) {
    const ByteVector content = file.content(anchor);
    Buffer buffer(content);
    readHeader(buffer);
    const std::size_t begin = buffer.position();
    const unsigned epoch = buffer.u16();
    const unsigned major = buffer.u16();
    buffer.skip(4);
    if (epoch != 1 || major != 0) {
        throw Failure(fmt::format("its format version is {}.{}; only 1.0 can be read", epoch, major));
    }
    const Link header = linkIn(buffer);
    const Link footer = linkIn(buffer);
    buffer.skip(8);
    const std::size_t fields = buffer.position() - begin;
    if (XXH3_64bits(content.data() + begin, fields) != buffer.u64()) {
        throw Failure("the checksum of its anchor is wrong");
    }
    readHeaderEnvelope(header);
    readFooter(footer);
}

Link SchemaReader::linkIn(Buffer& buffer) {
    Link link;
    link.position = buffer.u64();
    link.bytes = buffer.u64();
    link.unpackedBytes = buffer.u64();
    return link;
}

void SchemaReader::readHeaderEnvelope(const Link& link) {
    const ByteVector bytes = envelopeAt(file, link, 1);
    Envelope envelope(bytes);
    envelope.number<std::uint64_t>();
    envelope.flags();
    schema.name = envelope.text();
    schema.description = envelope.text();
    envelope.text();  // Program that wrote it.
    readDescription(envelope);
}

void SchemaReader::readFooter(const Link& link) {
    const ByteVector bytes = envelopeAt(file, link, 2);
    schema.footerChecksum = littleEndian<std::uint64_t>(bytes.data() + bytes.size() - checksumBytes);
    Envelope envelope(bytes);
    envelope.number<std::uint64_t>();
    envelope.flags();
    envelope.number<std::uint64_t>();  // The header's checksum.
    envelope.frame([&] { readDescription(envelope); });
    std::vector<Link> groups;
    envelope.list([&] {
        envelope.frame([&] {
            envelope.number<std::uint64_t>();
            envelope.number<std::uint64_t>();
            envelope.number<std::uint32_t>();
            groups.push_back(envelope.link());
        });
    });
    for (const Link& group : groups) {
        readPageList(group);
    }
}

void SchemaReader::readDescription(Envelope& envelope) {
    envelope.list([&] { envelope.frame([&] { readField(envelope); }); });
    envelope.list([&] { envelope.frame([&] { readColumn(envelope); }); });
    envelope.list([&] { envelope.frame([] {}); });  // Columns of projected fields: those of their sources.
    envelope.list([&] { envelope.frame([] {}); });
}

void SchemaReader::readField(Envelope& envelope) {
    NTupleField field;
    envelope.number<std::uint64_t>();  // Versions.
    field.parent = envelope.number<std::uint32_t>();
    const auto role = envelope.number<std::uint16_t>();
    const auto flags = envelope.number<std::uint16_t>();
    if (role > 4 || field.parent > schema.fields.size()) {
        throw Failure("the description of a field is damaged");
    }
    field.role = static_cast<NTupleField::Role>(role);
    field.name = envelope.text();
    field.typeName = envelope.text();
    envelope.text();
    field.description = envelope.text();
    if ((flags & 1U) != 0) {
        field.arraySize = envelope.number<std::uint64_t>();
    }
    if ((flags & 2U) != 0) {
        field.source = envelope.number<std::uint32_t>();
    }
    schema.fields.push_back(std::move(field));
}

void SchemaReader::readColumn(Envelope& envelope) {
    NTupleColumn column;
    column.type = envelope.number<std::uint16_t>();
    column.bits = envelope.number<std::uint16_t>();
    column.field = envelope.number<std::uint32_t>();
    const auto flags = envelope.number<std::uint16_t>();
    column.representation = envelope.number<std::uint16_t>();
    if ((flags & 1U) != 0) {
        envelope.number<std::int64_t>();  // The first element: those before are missing from the pages.
    }
    if ((flags & 2U) != 0) {
        column.low = envelope.real();
        column.high = envelope.real();
    }
    if (column.field >= schema.fields.size()) {
        throw Failure("the description of a column is damaged");
    }
    schema.columns.push_back(column);
}

void SchemaReader::readPageList(const Link& link) {
    const ByteVector bytes = envelopeAt(file, link, 3);
    Envelope envelope(bytes);
    envelope.number<std::uint64_t>();
    envelope.number<std::uint64_t>();
    const std::size_t first = schema.clusters.size();
    envelope.list([&] { envelope.frame([&] { readCluster(envelope); }); });
    std::size_t at = first;
    envelope.list([&] {
        if (at >= schema.clusters.size()) {
            throw Failure("a list of pages is damaged");
        }
        readColumnPages(envelope, schema.clusters[at++]);
    });
}

void SchemaReader::readCluster(Envelope& envelope) {
    constexpr unsigned countBits = 56;
    NTupleCluster cluster;
    cluster.firstEntry = envelope.number<std::uint64_t>();
    cluster.entries = envelope.number<std::uint64_t>() & ((std::uint64_t{1} << countBits) - 1);
    schema.entries = std::max(schema.entries, cluster.firstEntry + cluster.entries);
    schema.clusters.push_back(std::move(cluster));
}

void SchemaReader::readColumnPages(Envelope& envelope, NTupleCluster& cluster) {
    envelope.list([&] {
        NTuplePages pages;
        envelope.list(
            [&] {
                const auto count = envelope.number<std::int32_t>();
                const Link place = envelope.locator();
                const std::int64_t elements = count < 0 ? -static_cast<std::int64_t>(count) : count;
                pages.pages.push_back({static_cast<std::uint64_t>(elements), place.position, place.bytes, count < 0});
            },
            [&] { pages.isSuppressed = envelope.number<std::int64_t>() < 0; });
        cluster.columns.push_back(std::move(pages));
    });
}

}  // namespace

std::uint64_t NTuplePages::elements() const {
    return std::accumulate(pages.begin(), pages.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const NTuplePage& page) { return sum + page.elements; });
}

NTupleSchema NTupleSchema::read(const File& file, const Key& anchor) {
    NTupleSchema schema;
    SchemaReader(file, schema).read(anchor);
    return schema;
}

}  // namespace velmorak::root
