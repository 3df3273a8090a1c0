#pragma once

#include "root/container/Buffer.h"

#include <optional>

namespace velmorak::root {

/// References within a record are offsets from the beginning of its header, plus two.
inline constexpr std::size_t tagOffset = 2;

/// Header of an object: its version and, except for a few old classes, where it ends.
struct ObjectHeader {
    int version = 0;
    std::uint32_t checksum = 0;      ///< Of a class without a version number.
    bool isMemberWise = false;       ///< Of a collection: member by member instead of object by object.
    std::optional<std::size_t> end;  ///< Position in the buffer.

    /// Goes to the end of the object if it is known.
    void leave(Buffer& buffer) const {
        if (end) {
            buffer.seek(*end);
        }
    }
};

/// @param hasChecksum a version of 0 is followed by a checksum.
ObjectHeader readHeader(Buffer& buffer, bool hasChecksum = true);

/// The members of a TObject.
struct ObjectBase {
    std::uint32_t uniqueId = 0;
    std::uint32_t bits = 0;
};

ObjectBase readObjectBase(Buffer& buffer);

struct NameAndTitle {
    std::string name;
    std::string title;
};

NameAndTitle readNamed(Buffer& buffer);

}  // namespace velmorak::root
