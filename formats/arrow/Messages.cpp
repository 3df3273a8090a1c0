#include "arrow/Messages.h"

#include <fmt/format.h>

namespace velmorak::arrow {
namespace {

constexpr std::string_view fileMark = "ARROW1";
constexpr std::uint32_t continuation = 0xFFFFFFFF;
constexpr std::int16_t version5 = 4;

enum class Header : std::uint8_t { None, Schema, Dictionary, Records };

std::uint64_t size(std::int64_t number) {
    constexpr std::int64_t most = std::int64_t{1} << 50U;
    if (number < 0 || number > most) {
        throw Failure("a size in a description is impossible");
    }
    return static_cast<std::uint64_t>(number);
}

Codec readCodec(const FlatTable& records) {
    const std::optional<FlatTable> compression = records.table(3);
    if (!compression) {
        return Codec::None;
    }
    const auto codec = compression->number<std::int8_t>(0, 0);
    if (codec != 0 && codec != 1) {
        throw Failure("it has a compression that does not exist");
    }
    return static_cast<Codec>(codec);
}

/// Messages of a file, each of which is a description and a body.
class MessageReader {
public:
    explicit MessageReader(const columnar::FileBytes& file) : file(file) {}

    Messages readFile();
    Messages readStream();

private:
    struct MessageRange {
        std::uint64_t metadata = 0;
        std::uint64_t metadataBytes = 0;
        std::uint64_t body = 0;
    };

    void readBlocks(const FlatList& blocks);
    std::uint64_t readMessage(const MessageRange& range);
    Batch readBatch(const FlatTable& records, std::uint64_t body, std::uint64_t bodyBytes) const;
    void readDictionary(const FlatTable& dictionary, std::uint64_t body, std::uint64_t bodyBytes);
    std::uint32_t wordAt(std::uint64_t position) const;

    const columnar::FileBytes& file;
    Messages found;
    bool hasSchema = false;
    bool isStream = false;
};

std::uint32_t MessageReader::wordAt(std::uint64_t position) const {
    return columnar::littleEndian<std::uint32_t>(file.read(position, 4).bytes().data());
}

Messages MessageReader::readFile() {
    constexpr std::size_t tailBytes = 10;
    constexpr std::size_t headBytes = 8;
    if (file.size() < headBytes + tailBytes) {
        throw Failure("it ends early");
    }
    const columnar::Block tail = file.read(file.size() - tailBytes, tailBytes);
    if (columnar::textOf(tail.bytes().subspan(4)) != fileMark) {
        throw Failure("it does not end with \"ARROW1\": it was not written to its end, or is cut off");
    }
    const auto length = columnar::littleEndian<std::uint32_t>(tail.bytes().data());
    if (length > file.size() - tailBytes) {
        throw Failure("its description cannot be as long as it says");
    }
    const columnar::Block bytes = file.read(file.size() - tailBytes - length, length);
    const FlatTable footer = FlatTable::root(bytes.bytes());
    found.hasUnionValidity = footer.number<std::int16_t>(0, 0) < version5;
    found.fields = readSchema(footer.requiredTable(1));
    hasSchema = true;
    constexpr std::size_t blockBytes = 24;
    readBlocks(footer.list(2, blockBytes));
    readBlocks(footer.list(3, blockBytes));
    return std::move(found);
}

void MessageReader::readBlocks(const FlatList& blocks) {
    constexpr std::size_t lengthPlace = 8;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const std::uint64_t position = size(blocks.number<std::int64_t>(i));
        const std::uint64_t bytes = size(blocks.number<std::int32_t>(i, lengthPlace));
        const std::uint64_t head = wordAt(position) == continuation ? 8 : 4;
        if (bytes < head) {
            throw Failure("a description is damaged");
        }
        readMessage({position + head, bytes - head, position + bytes});
    }
}

/// A stream that was not closed has no end mark; a message that is cut off ends it too.
Messages MessageReader::readStream() {
    isStream = true;
    std::uint64_t position = 0;
    while (position + 4 <= file.size()) {
        const bool hasMark = wordAt(position) == continuation;
        const std::uint64_t head = hasMark ? 8 : 4;
        if (position + head > file.size()) {
            break;
        }
        const std::uint64_t length = wordAt(position + head - 4);
        if (length == 0) {
            return std::move(found);
        }
        position += head;
        if (length > file.size() - position) {
            break;
        }
        const std::uint64_t body = position + length;
        const std::uint64_t bodyBytes = readMessage({position, length, body});
        if (bodyBytes > file.size() - body) {
            break;
        }
        position = body + bodyBytes;
    }
    if (!hasSchema) {
        throw Failure("it has no schema");
    }
    if (position != file.size()) {
        found.warning = "the stream ends in the middle of a message; the rows before are read";
    }
    return std::move(found);
}

/// @return the length of the body.
std::uint64_t MessageReader::readMessage(const MessageRange& range) {
    const columnar::Block bytes = file.read(range.metadata, range.metadataBytes);
    const FlatTable message = FlatTable::root(bytes.bytes());
    const std::uint64_t bodyBytes = size(message.number<std::int64_t>(3, 0));
    const auto header = static_cast<Header>(message.number<std::uint8_t>(1, 0));
    const bool isWhole = range.body <= file.size() && bodyBytes <= file.size() - range.body;
    if (!isWhole && isStream) {
        return bodyBytes;
    }
    if (!isWhole) {
        throw Failure("the file ends before a message does");
    }
    if (header == Header::Schema && !hasSchema) {
        found.hasUnionValidity = message.number<std::int16_t>(0, 0) < version5;
        found.fields = readSchema(message.requiredTable(2));
        hasSchema = true;
    } else if (header == Header::Dictionary) {
        readDictionary(message.requiredTable(2), range.body, bodyBytes);
    } else if (header == Header::Records) {
        found.batches.push_back(readBatch(message.requiredTable(2), range.body, bodyBytes));
    }
    return bodyBytes;
}

void MessageReader::readDictionary(const FlatTable& dictionary, std::uint64_t body, std::uint64_t bodyBytes) {
    found.dictionaries.push_back({dictionary.number<std::int64_t>(0, 0), dictionary.boolean(2), found.batches.size(),
                                  readBatch(dictionary.requiredTable(1), body, bodyBytes)});
}

Batch MessageReader::readBatch(const FlatTable& records, std::uint64_t body, std::uint64_t bodyBytes) const {
    constexpr std::size_t pairBytes = 16;
    constexpr std::size_t second = 8;
    Batch batch;
    batch.rows = size(records.number<std::int64_t>(0, 0));
    batch.codec = readCodec(records);
    const FlatList nodes = records.list(1, pairBytes);
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        batch.nodes.push_back({size(nodes.number<std::int64_t>(i)), nodes.number<std::int64_t>(i, second) != 0});
    }
    const FlatList buffers = records.list(2, pairBytes);
    for (std::size_t i = 0; i < buffers.size(); ++i) {
        const std::uint64_t offset = size(buffers.number<std::int64_t>(i));
        const std::uint64_t bytes = size(buffers.number<std::int64_t>(i, second));
        if (offset > bodyBytes || bytes > bodyBytes - offset) {
            throw Failure("a buffer is not within its message");
        }
        batch.buffers.push_back({body + offset, bytes});
    }
    const FlatList views = records.list(4, sizeof(std::int64_t));
    for (std::size_t i = 0; i < views.size(); ++i) {
        batch.viewBuffers.push_back(size(views.number<std::int64_t>(i)));
    }
    return batch;
}

}  // namespace

Messages readMessages(const columnar::FileBytes& file) {
    constexpr std::size_t least = 8;
    if (file.size() < least) {
        throw Failure("it is neither an Arrow file nor an Arrow stream: it is too short");
    }
    const columnar::Block head = file.read(0, least);
    const std::string_view text = columnar::textOf(head.bytes());
    if (text.starts_with(fileMark)) {
        return MessageReader(file).readFile();
    }
    if (text.starts_with("FEA1")) {
        throw Failure("it is a file of Feather 1, which cannot be read; write it anew as Feather 2 (Arrow IPC)");
    }
    const auto first = columnar::littleEndian<std::uint32_t>(head.bytes().data());
    if (first != continuation && first > file.size()) {
        throw Failure("it is neither an Arrow file, which begins with \"ARROW1\", nor an Arrow stream");
    }
    return MessageReader(file).readStream();
}

}  // namespace velmorak::arrow
