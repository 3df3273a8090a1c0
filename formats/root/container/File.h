#pragma once

#include "root/container/Buffer.h"
#include "root/container/ByteVector.h"

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
#include <unordered_map>

namespace velmorak::root {

/// Header of a record: its class and name, and where its content is.
struct Key {
    std::uint64_t position = 0;  ///< Of the record in the file.
    std::uint32_t bytes = 0;     ///< Header and compressed content.
    std::uint32_t unpackedBytes = 0;
    std::uint16_t headBytes = 0;
    std::uint16_t cycle = 0;  ///< Incremented when an object is written again under the same name.
    std::string className;
    std::string name;
    std::string title;
};

/// @param position of the record, if the header does not contain it.
/// @throws Failure if it is not the header of a record.
Key readKey(Buffer& buffer);

/// An object in a file with its path, such as "run1/events".
struct Entry {
    std::string path;
    Key key;
};

/// A ROOT file: records with their keys in directories.
/// Threads: content and bytesAt may be called on several threads at once.
class File {
public:
    /// Reads the header and the directories. A file that was not closed is scanned record by record.
    /// @throws Failure if it cannot be opened or is not a ROOT file.
    explicit File(const std::filesystem::path& path);

    const std::filesystem::path& path() const { return filePath; }
    std::uint64_t size() const { return fileSize; }
    /// The keys of all directories, the newest cycle of each object only.
    const std::vector<Entry>& entries() const { return all; }
    /// Why the directories were not used; empty for a file that was closed.
    const std::string& warning() const { return complaint; }
    const std::array<std::uint8_t, 16>& uuid() const { return uniqueId; }

    /// @throws Failure if the file ends before.
    ByteVector bytesAt(std::uint64_t position, std::size_t count) const;
    /// The decompressed content of a record.
    ByteVector content(const Key& key) const;
    /// The header of the record with the descriptions of classes; empty if the file has none.
    std::optional<Key> streamerKey() const;

private:
    struct Descriptor {
        explicit Descriptor(const std::filesystem::path& path);
        ~Descriptor();
        Descriptor(const Descriptor&) = delete;
        Descriptor& operator=(const Descriptor&) = delete;
        int number;
    };
    struct Directory {
        std::uint64_t keys = 0;  ///< Position of the record with its keys; 0 if it was not written.
        std::size_t keyBytes = 0;
    };

    void readHeader();
    Directory readDirectory(std::uint64_t position) const;
    void readKeys(const Directory& directory, const std::string& folder, int depth);
    void addEntry(const std::string& path, const Key& key);
    void recover();
    bool recoverRecord(Bytes bytes, std::uint64_t position);

    std::filesystem::path filePath;
    std::shared_ptr<const Descriptor> descriptor;
    std::uint64_t fileSize = 0;
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t streamerPosition = 0;
    std::size_t streamerBytes = 0;
    std::size_t nameBytes = 0;
    std::array<std::uint8_t, 16> uniqueId{};
    std::vector<Entry> all;
    std::unordered_map<std::string, std::size_t> positions;  ///< In the list of all keys, by path.
    std::string complaint;
};

}  // namespace velmorak::root
