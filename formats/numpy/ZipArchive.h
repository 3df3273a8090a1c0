#pragma once

#include "binary/PlainFile.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::numpy {

/// A file in an archive.
struct ZipMember {
    std::string name;
    std::uint64_t position = 0;  ///< Of its packed bytes in the archive.
    std::uint64_t packedBytes = 0;
    std::uint64_t bytes = 0;
    std::uint32_t checksum = 0;
    bool isDeflated = false;  ///< Else its bytes are stored as they are.
};

/// Lists the members of a zip archive, also of one with 64-bit sizes.
/// @throws Failure if the file is none, is damaged, or a member is encrypted or packed by another method than deflate.
std::vector<ZipMember> zipMembers(const PlainFile& file);

/// Reads the bytes of a member from front to back.
class MemberStream {
public:
    /// @param file outlives this.
    MemberStream(const PlainFile& file, ZipMember member);
    ~MemberStream();
    MemberStream(const MemberStream&) = delete;
    MemberStream& operator=(const MemberStream&) = delete;

    /// @throws Failure if the member is damaged or ends before; with its last byte, the checksum is compared.
    void read(std::size_t count, char* target);
    void skip(std::uint64_t count);

private:
    struct Impl;
    std::unique_ptr<Impl> part;
};

}  // namespace velmorak::numpy
