#include "root/write/FileWriter.h"

#include "root/write/ByteOutput.h"
#include "root/write/ClassList.h"
#include "root/write/Dates.h"
#include "root/write/ObjectWriter.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>
#include <xxhash.h>

#include <cerrno>
#include <system_error>

namespace velmorak::root {
namespace {

constexpr std::uint32_t programVersion = 62206;
constexpr std::uint32_t bigFile = 1000000;  ///< Added to the version: positions have 64 bits.
constexpr std::uint16_t bigRecord = 1000;   ///< The same for the version of a record.
constexpr std::uint32_t fileBegin = 100;
constexpr std::size_t directoryBytes = 60;

std::vector<std::string> partsOf(const std::string& folder) {
    std::vector<std::string> parts(1);
    for (const char c : folder) {
        if (c == '/') {
            parts.emplace_back();
        } else {
            parts.back() += c;
        }
    }
    std::erase(parts, "");
    return parts;
}

void releaseHash(XXH3_state_t* state) {
    XXH3_freeState(state);
}

/// A hash in the form of a UUID that is made from contents (RFC 9562, version 8).
std::string identityFrom(const XXH3_state_t& hash) {
    XXH128_canonical_t bytes;
    XXH128_canonicalFromHash(&bytes, XXH3_128bits_digest(&hash));
    std::string identity(reinterpret_cast<const char*>(bytes.digest), sizeof bytes.digest);
    identity[6] = static_cast<char>((static_cast<unsigned char>(identity[6]) & 0x0FU) | 0x80U);
    identity[8] = static_cast<char>((static_cast<unsigned char>(identity[8]) & 0x3FU) | 0x80U);
    return identity;
}

void putIdentity(ByteOutput& output, const std::string& identity) {
    output.u16(1);
    output.raw(identity);
}

}  // namespace

FileWriter::FileWriter(const Target& target, Packing packing)
    : path(target.path),
      how(packing),
      file(std::fopen(target.path.c_str(), "wb"), &std::fclose),
      hash(XXH3_createState(), &releaseHash),
      identity(16, '\0') {
    if (!file) {
        fail();
    }
    XXH3_128bits_reset(hash.get());
    beginFile(target.name);
    for (const std::string& part : partsOf(target.folder)) {
        beginFolder(part);
    }
}

FileWriter::~FileWriter() = default;

/// The header, which is written at the end, and the record of the file itself.
void FileWriter::beginFile(const std::string& name) {
    ByteOutput content;
    content.text(name);
    content.text("");
    const std::size_t titleBytes = content.size();
    content.raw(std::string(directoryBytes, '\0'));
    put(std::string(fileBegin, '\0'));
    const RecordHead head{.className = "TFile", .name = name, .title = ""};
    append(head, "", content.content());
    directories.push_back({.position = fileBegin, .nameBytes = head.bytes() + titleBytes, .head = head});
}

void FileWriter::beginFolder(const std::string& name) {
    const RecordHead head{.className = "TDirectory",
                          .name = name,
                          .title = name,
                          .contentBytes = directoryBytes,
                          .writtenBytes = directoryBytes,
                          .position = position,
                          .directory = directories.back().position};
    append(head, "", std::string(directoryBytes, '\0'));
    directories.back().keys.push_back(head);
    directories.push_back(
        {.position = head.position, .parent = head.directory, .nameBytes = head.bytes(), .head = head});
}

std::uint64_t FileWriter::append(RecordHead head, std::string_view more, std::string_view content) {
    head.position = position;
    if (head.directory == 0 && !directories.empty()) {
        head.directory = directories.back().position;
    }
    head.writtenBytes = content.size();
    head.contentBytes = head.contentBytes == 0 ? content.size() : head.contentBytes;
    put(head.written());
    put(more);
    put(content);
    return head.position;
}

void FileWriter::write(const Object& object) {
    RecordHead head{.className = object.className, .name = object.text("fName"), .title = object.text("fTitle")};
    ObjectWriter writer(classes, head.bytes());
    try {
        writer.write(object);
        usedClasses.insert(writer.used().begin(), writer.used().end());
        std::string content = writer.take();
        head.contentBytes = content.size();
        content = packed(std::move(content), how);
        head.writtenBytes = content.size();
        head.directory = directories.back().position;
        head.position = append(head, "", content);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("\"{}\" cannot be written to {}: {}", head.name, path.string(), failure.what()));
    }
    directories.back().keys.push_back(std::move(head));
}

void FileWriter::close() {
    writeClasses();
    for (Directory& directory : directories) {
        writeKeys(directory);
    }
    identity = identityFrom(*hash);
    writeFree();
    writeHeads();
    if (std::fclose(file.release()) != 0) {
        fail();
    }
}

void FileWriter::writeClasses() {
    RecordHead head{.className = "TList", .name = "StreamerInfo", .title = "Doubly linked list"};
    ObjectWriter writer(classes, head.bytes());
    writer.write(classList(classes, usedClasses));
    std::string content = writer.take();
    head.contentBytes = content.size();
    content = packed(std::move(content), how);
    head.directory = fileBegin;
    classesPosition = append(head, "", content);
    classesBytes = head.bytes() + content.size();
}

void FileWriter::writeKeys(Directory& directory) {
    ByteOutput content;
    content.u32(static_cast<std::uint32_t>(directory.keys.size()));
    for (const RecordHead& key : directory.keys) {
        content.raw(key.written());
    }
    RecordHead head = directory.head;
    head.contentBytes = content.size();
    directory.keysPosition = append(head, "", content.content());
    directory.keysBytes = head.bytes() + content.size();
}

/// The list of free segments, which has only the one after the end of the file.
void FileWriter::writeFree() {
    constexpr std::size_t segmentBytes = 2 + 8 + 8;
    constexpr std::uint64_t step = 1000000000;
    const RecordHead head = directories.front().head;
    freePosition = position;
    freeBytes = head.bytes() + segmentBytes;
    const std::uint64_t end = position + freeBytes;
    ByteOutput content;
    content.u16(bigRecord + 1);
    content.u64(end);
    content.u64(std::max<std::uint64_t>(2, end / step + 1) * step);
    append(head, "", content.content());
}

void FileWriter::writeHeads() {
    ByteOutput header;
    header.raw("root");
    header.u32(bigFile + programVersion);
    header.u32(fileBegin);
    header.u64(position);
    header.u64(freePosition);
    header.u32(static_cast<std::uint32_t>(freeBytes));
    header.u32(1);  // Number of free segments.
    header.u32(static_cast<std::uint32_t>(directories.front().nameBytes));
    header.u8(8);  // Bytes of a position.
    header.u32(static_cast<std::uint32_t>(settingOf(how)));
    header.u64(classesPosition);
    header.u32(static_cast<std::uint32_t>(classesBytes));
    putIdentity(header, identity);
    putAt(0, header.content());
    for (const Directory& directory : directories) {
        putAt(directory.position + directory.nameBytes, headerOf(directory));
    }
}

std::string FileWriter::headerOf(const Directory& directory) const {
    ByteOutput header;
    header.u16(bigRecord + 5);
    header.u32(constantDate);
    header.u32(constantDate);
    header.u32(static_cast<std::uint32_t>(directory.keysBytes));
    header.u32(static_cast<std::uint32_t>(directory.nameBytes));
    header.u64(directory.position);
    header.u64(directory.parent);
    header.u64(directory.keysPosition);
    putIdentity(header, identity);
    return header.take();
}

void FileWriter::put(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
        fail();
    }
    XXH3_128bits_update(hash.get(), bytes.data(), bytes.size());
    position += bytes.size();
}

void FileWriter::putAt(std::uint64_t place, std::string_view bytes) {
    if (fseeko(file.get(), static_cast<off_t>(place), SEEK_SET) != 0 ||
        std::fwrite(bytes.data(), 1, bytes.size(), file.get()) != bytes.size()) {
        fail();
    }
}

void FileWriter::fail() const {
    throw Failure(fmt::format("{} cannot be written: {}", path.string(), std::generic_category().message(errno)));
}

}  // namespace velmorak::root
