#pragma once

#include "root/Buffer.h"

#include <optional>

namespace velmorak::root {

/// References within a record count from the beginning of its head, and two more.
inline constexpr std::size_t tagOffset = 2;

/// What stands before the members of an object: its version and, but for a few old classes, where it ends.
struct ObjectHeader {
    int version = 0;
    std::uint32_t checksum = 0;      ///< Of a class without a version of its own.
    bool isMemberWise = false;       ///< Of a collection: member by member instead of object by object.
    std::optional<std::size_t> end;  ///< Position in the buffer.

    /// Goes to the end of the object, where it is known.
    void leave(Buffer& buffer) const {
        if (end) {
            buffer.seek(*end);
        }
    }
};

/// @param hasChecksum a version of 0 is followed by a checksum.
ObjectHeader readHeader(Buffer& buffer, bool hasChecksum = true);

/// Passes over what a TObject has, which is an identity and bits.
/// @return the bits.
std::uint32_t skipObjectBase(Buffer& buffer);

struct NameAndTitle {
    std::string name;
    std::string title;
};

NameAndTitle readNamed(Buffer& buffer);

}  // namespace velmorak::root
