#pragma once

#include "root/objects/Object.h"
#include "root/write/Packing.h"
#include "root/write/RecordHead.h"
#include "root/write/WrittenClasses.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct XXH3_state_s;

namespace velmorak::root {

/// Writes a ROOT file from front to back: records, and at the end their keys and the descriptions of their classes. All
/// positions have 64 bits, so that a file may have any size. The file depends on its contents alone: it has no times,
/// and its identity is a hash of what was written.
/// Threads: one at a time.
class FileWriter {
public:
    struct Target {
        std::filesystem::path path;  ///< To write to.
        std::string name;            ///< That the file has in itself.
        std::string folder = "/";    ///< Of all objects, such as "/run1/muons".
    };

    /// @throws Failure if the file cannot be created.
    FileWriter(const Target& target, Packing packing);
    ~FileWriter();
    FileWriter(const FileWriter&) = delete;
    FileWriter& operator=(const FileWriter&) = delete;

    Packing packing() const { return how; }

    /// Appends a record that no list of keys names.
    /// @param head    its positions are set here.
    /// @param more    the end of the header, which is the record's own.
    /// @param content already compressed.
    /// @return the position of the record.
    /// @throws Failure if the disk is full.
    std::uint64_t append(RecordHead head, std::string_view more, std::string_view content);
    /// Appends an object with a key in the folder. Its name must be new.
    /// @throws Failure if it is too large for a ROOT file or the disk is full.
    void write(const Object& object);
    /// Writes all that a reader needs to find the records. Without it the file is not a ROOT file.
    void close();

private:
    struct Directory {
        std::uint64_t position = 0;  ///< Of its record.
        std::uint64_t parent = 0;    ///< 0 for the file itself.
        std::size_t nameBytes = 0;   ///< In front of its header.
        RecordHead head;             ///< Of its list of keys.
        std::vector<RecordHead> keys = {};
        std::uint64_t keysPosition = 0;
        std::size_t keysBytes = 0;
    };

    void beginFile(const std::string& name);
    void beginFolder(const std::string& name);
    void writeKeys(Directory& directory);
    void writeClasses();
    void writeFree();
    void writeHeads();
    std::string headerOf(const Directory& directory) const;
    void put(std::string_view bytes);
    void putAt(std::uint64_t place, std::string_view bytes);
    [[noreturn]] void fail() const;

    std::filesystem::path path;
    Packing how;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file;
    std::unique_ptr<XXH3_state_s, void (*)(XXH3_state_s*)> hash;
    std::uint64_t position = 0;
    WrittenClasses classes;
    std::set<std::string> usedClasses;
    std::vector<Directory> directories;  ///< From the file itself to the folder of the objects.
    std::uint64_t classesPosition = 0;
    std::size_t classesBytes = 0;
    std::uint64_t freePosition = 0;
    std::size_t freeBytes = 0;
    std::string identity;
};

}  // namespace velmorak::root
