#pragma once

#include <cstdint>
#include <string>

namespace velmorak::root {

/// Header of a record, and its entry in a list of keys.
struct RecordHead {
    std::string className;
    std::string name;
    std::string title;
    std::size_t more = 0;          ///< Bytes of the record's own that count as header.
    std::size_t contentBytes = 0;  ///< After decompression.
    std::size_t writtenBytes = 0;  ///< Before, without the header.
    std::uint64_t position = 0;    ///< Of the record.
    std::uint64_t directory = 0;   ///< Position of the record of its directory.
    std::uint16_t cycle = 1;

    /// Length of the header.
    std::size_t bytes() const;
    /// @throws Failure if the header or the content is too long for a record.
    std::string written() const;
};

}  // namespace velmorak::root
