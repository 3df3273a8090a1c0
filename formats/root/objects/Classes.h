#pragma once

#include "root/container/Buffer.h"
#include "root/container/Number.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::root {

/// A member or base class of a class that a file describes.
struct Element {
    /// Number of the type in files; arithmetic types are below 20, arrays of them 20 more, counted arrays 40 more.
    enum Kind {
        Base = 0,
        FixedArray = 20,
        CountedArray = 40,
        EmbeddedObject = 61,
        EmbeddedAny = 62,
        EmbeddedPointer = 63,
        Pointer = 64,
        Text = 65,
        ObjectBase = 66,
        NamedBase = 67,
        EmbeddedAnyPointer = 68,
        AnyPointer = 69,
        EmbeddedObjects = 81,
        EmbeddedAnys = 82,
        Collection = 300,
        StandardText = 365,
        Custom = 500,
        CustomLoop = 501
    };

    std::string className;  ///< Of the description, such as TStreamerBase.
    std::string name;
    std::string typeName;
    int kind = 0;
    std::size_t arrayLength = 0;
    std::string countName;   ///< Member that holds the length of a counted array.
    int collectionKind = 0;  ///< Of a collection: 1 vector, 2 list, 3 deque, 4 map, 5 multimap, 6 set, 8 bitset.
    int collectedKind = 0;   ///< Of a collection: kind of its items.
    NumberRange range;       ///< Of Double32_t and Float16_t.
};

class File;

struct ClassInfo {
    std::string name;
    int version = 0;
    std::uint32_t checksum = 0;
    std::vector<Element> elements;
};

/// The classes that a file describes.
class Classes {
public:
    Classes() = default;
    /// @param record    content of the record with the descriptions; may be empty.
    /// @param headBytes length of the record's header.
    /// @throws Failure when it is damaged.
    Classes(Bytes record, std::size_t headBytes);

    /// @return the class in that version, or else in any; null if it is not described.
    const ClassInfo* find(const std::string& name, int version) const;
    /// Whether the class is described in one version only.
    bool isAlone(const std::string& name) const;
    const ClassInfo* findByChecksum(const std::string& name, std::uint32_t checksum) const;

private:
    std::map<std::string, std::map<int, ClassInfo>> all;
};

/// The classes that a file describes; none if it has no descriptions. @throws Failure if they are damaged.
Classes classesOf(const File& file);

}  // namespace velmorak::root
