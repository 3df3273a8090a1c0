#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::numpy {

/// Writes a zip archive with sizes of 64 bits. It has no times, so that the same members give the same bytes.
class ZipOutput {
public:
    /// @param out can seek; outlives this.
    ZipOutput(std::ostream& out, bool deflates);
    ~ZipOutput();
    ZipOutput(const ZipOutput&) = delete;
    ZipOutput& operator=(const ZipOutput&) = delete;

    void begin(const std::string& name);
    void write(const char* bytes, std::size_t count);
    /// Ends the member. @throws Failure if there is too little memory, as write does.
    void end();
    /// Writes the list of the members.
    void finish();

private:
    struct Member {
        std::string name;
        std::uint64_t position = 0;
        std::uint64_t bytes = 0;
        std::uint64_t packedBytes = 0;
        std::uint32_t checksum = 0;
    };
    struct Packer;

    void put(const std::string& bytes);
    std::string headOf(const Member& member) const;
    std::string entryOf(const Member& member) const;

    std::ostream& out;
    const bool deflates;
    std::unique_ptr<Packer> packer;  ///< Of the member that is being written.
    std::uint64_t position = 0;
    std::vector<Member> members;
};

}  // namespace velmorak::numpy
