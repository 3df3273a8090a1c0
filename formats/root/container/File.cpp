#include "root/container/File.h"

#include "root/container/Compression.h"

#include <velmorak/RegularFile.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace velmorak::root {
namespace {

constexpr std::size_t maxHeaderBytes = 100;
constexpr int bigFileVersion = 1000000;  ///< From here on, positions have 64 bits.
constexpr int bigKeyVersion = 1000;
constexpr int maxFolderDepth = 64;
constexpr std::size_t maxHeadBytes = 65535;

bool isDirectory(const std::string& className) {
    return className == "TDirectory" || className == "TDirectoryFile";
}

/// Excludes records that only belong to the file or to a tree.
bool isObject(const std::string& className) {
    return !className.empty() && className != "TBasket" && className != "TFile" && className != "TList" &&
           !isDirectory(className);
}

std::uint64_t positionIn(Buffer& buffer, bool isBig) {
    return isBig ? buffer.u64() : buffer.u32();
}

}  // namespace

Key readKey(Buffer& buffer) {
    Key key;
    const std::int32_t bytes = buffer.i32();
    const std::int16_t version = buffer.i16();
    key.unpackedBytes = buffer.u32();
    buffer.skip(4);  // Time of writing.
    key.headBytes = buffer.u16();
    key.cycle = buffer.u16();
    key.position = positionIn(buffer, version > bigKeyVersion);
    positionIn(buffer, version > bigKeyVersion);  // The directory's.
    key.className = buffer.text();
    key.name = buffer.text();
    key.title = buffer.text();
    if (bytes < 0 || static_cast<std::uint32_t>(bytes) < key.headBytes) {
        throw Failure("the header of a record is damaged");
    }
    key.bytes = static_cast<std::uint32_t>(bytes);
    return key;
}

File::Descriptor::Descriptor(const std::filesystem::path& path) : number(open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (number < 0) {
        throw Failure(fmt::format("cannot open {}: {}", path.string(), std::generic_category().message(errno)));
    }
}

File::Descriptor::~Descriptor() {
    close(number);
}

File::File(const std::filesystem::path& path) : filePath(path) {
    requireRegular(path);
    descriptor = std::make_shared<const Descriptor>(path);
    struct stat status {};
    if (fstat(descriptor->number, &status) != 0) {
        throw Failure("cannot read " + path.string());
    }
    fileSize = static_cast<std::uint64_t>(status.st_size);
    try {
        readHeader();
        try {
            readKeys(readDirectory(begin + nameBytes), "", 0);
        } catch (const Failure& failure) {
            complaint = failure.what();
        }
        if (all.empty()) {
            recover();
        }
    } catch (const Failure& failure) {
        throw Failure(path.string() + ": " + failure.what());
    }
}

ByteVector File::bytesAt(std::uint64_t position, std::size_t count) const {
    if (position > fileSize || count > fileSize - position) {
        throw Failure(fmt::format("the file ends at byte {}, before a record at byte {} with {} bytes does", fileSize,
                                  position, count));
    }
    ByteVector bytes(count);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t read =
            pread(descriptor->number, bytes.data() + done, count - done, static_cast<off_t>(position + done));
        if (read < 0 && errno == EINTR) {
            continue;
        }
        if (read <= 0) {
            throw Failure(
                fmt::format("cannot read at byte {}: {}", position + done,
                            read < 0 ? std::generic_category().message(errno) : "the file was truncated meanwhile"));
        }
        done += static_cast<std::size_t>(read);
    }
    return bytes;
}

void File::readHeader() {
    const ByteVector bytes = bytesAt(0, std::min<std::uint64_t>(maxHeaderBytes, fileSize));
    Buffer buffer(bytes);
    if (bytes.size() < 4 || buffer.textOf(4) != "root") {
        throw Failure("it is not a ROOT file, which begins with \"root\"");
    }
    const bool isBig = buffer.i32() >= bigFileVersion;
    begin = buffer.u32();
    end = positionIn(buffer, isBig);
    positionIn(buffer, isBig);  // Free segments.
    buffer.skip(8);             // Their number and bytes.
    nameBytes = buffer.u32();
    buffer.skip(5);  // The size of positions, and the compression of new records.
    streamerPosition = positionIn(buffer, isBig);
    streamerBytes = buffer.u32();
    buffer.skip(2);
    const Bytes id = buffer.take(uniqueId.size());
    std::copy(id.begin(), id.end(), uniqueId.begin());
}

File::Directory File::readDirectory(std::uint64_t position) const {
    constexpr std::size_t maxBytes = 64;
    const ByteVector bytes =
        bytesAt(position, std::min<std::uint64_t>(maxBytes, fileSize - std::min(fileSize, position)));
    Buffer buffer(bytes);
    const std::int16_t version = buffer.i16();
    buffer.skip(8);  // Times.
    Directory directory;
    directory.keyBytes = buffer.u32();
    buffer.skip(4);
    const bool isBig = version > bigKeyVersion;
    positionIn(buffer, isBig);
    positionIn(buffer, isBig);
    directory.keys = positionIn(buffer, isBig);
    return directory;
}

void File::readKeys(const Directory& directory, const std::string& folder, int depth) {
    if (directory.keys == 0 || depth > maxFolderDepth) {
        return;
    }
    const ByteVector bytes = bytesAt(directory.keys, directory.keyBytes);
    Buffer buffer(bytes);
    readKey(buffer);
    const std::size_t count = buffer.count(1);
    for (std::size_t i = 0; i < count; ++i) {
        const Key key = readKey(buffer);
        const std::string path = folder.empty() ? key.name : folder + "/" + key.name;
        if (isDirectory(key.className)) {
            readKeys(readDirectory(key.position + key.headBytes), path, depth + 1);
        } else {
            addEntry(path, key);
        }
    }
}

void File::addEntry(const std::string& path, const Key& key) {
    const auto [found, isNew] = positions.try_emplace(path, all.size());
    if (isNew) {
        all.push_back({path, key});
    } else if (all[found->second].key.cycle < key.cycle) {
        all[found->second].key = key;
    }
}

/// Scans the file record by record. A free segment has its size as a negative number.
void File::recover() {
    constexpr std::uint64_t minHead = 18;
    std::uint64_t position = begin;
    while (position + minHead < fileSize) {
        const ByteVector bytes = bytesAt(position, std::min<std::uint64_t>(maxHeadBytes, fileSize - position));
        Buffer buffer(bytes);
        const std::int64_t size = buffer.i32();
        if (size == 0 || (size > 0 && !recoverRecord(bytes, position))) {
            break;
        }
        position += static_cast<std::uint64_t>(size < 0 ? -size : size);
    }
    if (!all.empty()) {
        complaint = "the file was not closed; it was scanned record by record, and unwritten data are missing";
    }
}

/// @return false if there is no record.
bool File::recoverRecord(Bytes bytes, std::uint64_t position) {
    try {
        Buffer buffer(bytes);
        Key key = readKey(buffer);
        key.position = position;
        if (isObject(key.className) && position + key.bytes <= fileSize) {
            addEntry(key.name, key);
        }
        return true;
    } catch (const Failure&) {
        return false;
    }
}

ByteVector File::content(const Key& key) const {
    const ByteVector bytes = bytesAt(key.position, key.bytes);
    return unpacked(Bytes(bytes).subspan(key.headBytes), key.unpackedBytes);
}

std::optional<Key> File::streamerKey() const {
    if (streamerPosition == 0 || streamerBytes == 0) {
        return std::nullopt;
    }
    const ByteVector bytes = bytesAt(streamerPosition, streamerBytes);
    Buffer buffer(bytes);
    Key key = readKey(buffer);
    key.position = streamerPosition;
    return key;
}

}  // namespace velmorak::root
