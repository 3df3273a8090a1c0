#include "run/parts/PartFile.h"

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <utility>

// The file: a mark, the identity, states, the summary, and the position of the summary. Identity, summary and what
// precedes each state are sealed with a checksum; a saved state has one of its own.
namespace velmorak {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::string_view fileMark = "VlmPart1";
constexpr std::uint64_t identityMark = 0x64'69'74'72'61'70'6c'76;
constexpr std::uint64_t stateMark = 0x74'73'74'72'61'70'6c'76;
constexpr std::uint64_t summaryMark = 0x6d'73'74'72'61'70'6c'76;
constexpr unsigned maxLevel = 62;  ///< Of a node that ends before the largest number.
constexpr std::uint64_t footerBytes = sizeof(std::uint64_t) + fileMark.size();

std::string bytesOf(std::uint64_t number) {
    return {reinterpret_cast<const char*>(&number), sizeof number};
}

std::string sized(const std::string& bytes) {
    return bytesOf(bytes.size()) + bytes;
}

Json jsonOf(const std::vector<PartInput>& files) {
    Json all = Json::array();
    for (const PartInput& file : files) {
        all.push_back({file.path, file.sha256, file.bytes, file.modifiedNs, file.readNs, file.plugin, file.reason});
    }
    return all;
}

std::vector<PartInput> partInputsFrom(const Json& json) {
    std::vector<PartInput> files;
    for (const Json& file : json) {
        files.push_back({file.at(0).get<std::string>(), file.at(1).get<std::string>(), file.at(2).get<std::uint64_t>(),
                         file.at(3).get<std::int64_t>(), file.at(4).get<std::int64_t>(), file.at(5).get<std::string>(),
                         file.at(6).get<std::string>()});
    }
    return files;
}

std::string textOf(const PartSummary& summary) {
    Json operators = Json::array();
    for (const PartRows& rows : summary.operators) {
        operators.push_back({rows.plugin, rows.segment, rows.in, rows.out});
    }
    const Json json{{"operators", operators},
                    {"rows", summary.rowsRead},
                    {"files", jsonOf(summary.files)},
                    {"skipped", jsonOf(summary.skipped)},
                    {"states", summary.states}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

PartSummary summaryFrom(const std::string& text) {
    const Json json = Json::parse(text);
    PartSummary summary;
    for (const Json& rows : json.at("operators")) {
        summary.operators.push_back({rows.at(0).get<std::string>(), rows.at(1).get<std::size_t>(),
                                     rows.at(2).get<std::uint64_t>(), rows.at(3).get<std::uint64_t>()});
    }
    summary.rowsRead = json.at("rows").get<std::vector<std::uint64_t>>();
    summary.files = partInputsFrom(json.at("files"));
    summary.skipped = partInputsFrom(json.at("skipped"));
    summary.states = json.at("states").get<std::uint64_t>();
    return summary;
}

std::string headOf(const PartRecord& record) {
    ByteWriter writer;
    writer.number(stateMark);
    writer.list(record.plugin);
    writer.number<std::uint64_t>(record.segment);
    writer.number(static_cast<std::uint8_t>(record.piece.form));
    writer.number(record.piece.file);
    writer.number(record.piece.first);
    writer.number<std::uint32_t>(record.piece.level);
    return writer.sealed();
}

PartRecord recordFrom(const std::string& head) {
    ByteReader reader(head, stateMark);
    PartRecord record;
    record.plugin = reader.list<std::string>();
    record.segment = static_cast<std::size_t>(reader.number<std::uint64_t>());
    const auto form = reader.number<std::uint8_t>();
    if (form > static_cast<std::uint8_t>(StatePiece::Form::Next)) {
        throw std::invalid_argument("unknown form of a state");
    }
    record.piece.form = static_cast<StatePiece::Form>(form);
    record.piece.file = reader.number<std::uint64_t>();
    record.piece.first = reader.number<std::uint64_t>();
    record.piece.level = reader.number<std::uint32_t>();
    reader.mustBeAtEnd();
    if (record.piece.level > maxLevel || record.piece.first % (std::uint64_t{1} << record.piece.level) != 0) {
        throw std::invalid_argument("a state of numbers that belong to several nodes");
    }
    return record;
}

std::uint64_t sizeOf(std::ifstream& stream) {
    stream.seekg(0, std::ios::end);
    const auto end = stream.tellg();
    stream.seekg(0);
    return end < 0 ? 0 : static_cast<std::uint64_t>(end);
}

}  // namespace

PartWriter::PartWriter(const std::filesystem::path& file, const PartIdentity& identity)
    : target(file, "." + file.stem().string() + "-") {
    ByteWriter writer;
    writer.number(identityMark);
    writer.list(identity.plan);
    writer.number<std::uint64_t>(identity.number);
    writer.list(identity.build);
    head = std::string(fileMark) + sized(writer.sealed());
}

void PartWriter::write(const std::string& bytes) {
    try {
        const std::string more = std::exchange(head, {}) + bytes;
        target.write(more);
        position += more.size();
    } catch (const std::system_error& error) {
        problem = error.code();
        throw;
    }
}

void PartWriter::add(const PartRecord& record) {
    ++states;
    write(sized(headOf(record)));
    write(sized(record.bytes));
}

void PartWriter::commit(PartSummary summary) {
    const std::uint64_t end = head.size() + position;
    summary.states = states;
    ByteWriter writer;
    writer.number(summaryMark);
    writer.list(textOf(summary));
    write(sized(writer.sealed()) + bytesOf(end) + std::string(fileMark));
    try {
        target.commit();
    } catch (const std::system_error& error) {
        problem = error.code();
        throw;
    }
}

PartReader::PartReader(const std::filesystem::path& path) : path(path), stream(path, std::ios::binary) {
    if (!stream) {
        throw Failure("the part " + velmorak::quoted(path.string()) +
                      " cannot be read: " + std::generic_category().message(errno));
    }
    size = sizeOf(stream);
    endOfStates = size;
    try {
        if (size < fileMark.size() + footerBytes || take(fileMark.size()) != fileMark) {
            refuse();
        }
        const std::string head = takeSized();
        ByteReader reader(head, identityMark);
        read.plan = reader.list<std::string>();
        read.number = static_cast<std::size_t>(reader.number<std::uint64_t>());
        read.build = reader.list<std::string>();
        readSummary();
    } catch (const std::invalid_argument&) {
        refuse();
    } catch (const Json::exception&) {
        refuse();
    }
}

void PartReader::readSummary() {
    const std::uint64_t begin = position;
    position = size - footerBytes;
    stream.seekg(static_cast<std::streamoff>(position));
    std::uint64_t end = 0;
    const std::string number = take(sizeof end);
    std::copy(number.begin(), number.end(), reinterpret_cast<char*>(&end));
    if (take(fileMark.size()) != fileMark || end < begin || end > size - footerBytes) {
        refuse();
    }
    position = end;
    stream.seekg(static_cast<std::streamoff>(end));
    const std::string sealed = takeSized();
    ByteReader reader(sealed, summaryMark);
    whole = summaryFrom(reader.list<std::string>());
    position = begin;
    stream.seekg(static_cast<std::streamoff>(begin));
    endOfStates = end;
}

std::string PartReader::take(std::uint64_t bytes) {
    if (bytes > size - position) {
        refuse();
    }
    std::string taken(static_cast<std::size_t>(bytes), '\0');
    if (!stream.read(taken.data(), static_cast<std::streamsize>(bytes))) {
        refuse();
    }
    position += bytes;
    return taken;
}

std::string PartReader::takeSized() {
    std::uint64_t bytes = 0;
    const std::string number = take(sizeof bytes);
    std::copy(number.begin(), number.end(), reinterpret_cast<char*>(&bytes));
    return take(bytes);
}

std::optional<PartRecord> PartReader::next() {
    if (position >= endOfStates) {
        if (position != endOfStates || statesRead != whole.states) {
            refuse();
        }
        return std::nullopt;
    }
    try {
        PartRecord record = recordFrom(takeSized());
        record.bytes = takeSized();
        ++statesRead;
        return record;
    } catch (const std::invalid_argument&) {
        refuse();
    }
}

void PartReader::refuse() const {
    throw Failure("the part " + velmorak::quoted(path.string()) +
                  " is damaged or cut off; remove it and run the part again");
}

}  // namespace velmorak
