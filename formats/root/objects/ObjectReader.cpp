#include "root/objects/ObjectReader.h"

#include <algorithm>
#include <map>

namespace velmorak::root {
namespace {

constexpr int maxObjectDepth = 200;
constexpr std::uint32_t countMask = 0x40000000;
constexpr std::uint32_t classMask = 0x80000000;
constexpr std::uint32_t newClass = 0xFFFFFFFF;

/// Counts the nesting depth of objects.
class Level {
public:
    explicit Level(int& depth);
    ~Level() { --depth; }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    int& depth;
};

Level::Level(int& depth) : depth(depth) {
    if (++depth > maxObjectDepth) {
        throw Failure("objects are nested too deep");
    }
}

std::optional<NumberType> arrayType(const std::string& className) {
    using enum NumberType;
    static const std::map<std::string, NumberType> types{{"TArrayC", Int8},  {"TArrayS", Int16},   {"TArrayI", Int32},
                                                         {"TArrayL", Int64}, {"TArrayL64", Int64}, {"TArrayF", Float},
                                                         {"TArrayD", Double}};
    const auto found = types.find(className);
    return found == types.end() ? std::nullopt : std::optional(found->second);
}

/// The name of a class without the mark of a pointer.
std::string withoutPointer(std::string name) {
    while (!name.empty() && (name.back() == '*' || name.back() == ' ')) {
        name.pop_back();
    }
    return name;
}

/// The text between the angle brackets of a template's name.
std::string argumentOf(const std::string& name) {
    const std::size_t open = name.find('<');
    const std::size_t close = name.rfind('>');
    return open == std::string::npos || close == std::string::npos || close < open
               ? std::string()
               : name.substr(open + 1, close - open - 1);
}

}  // namespace

ObjectReader::ObjectReader(Bytes bytes, std::size_t headBytes, const Classes& classes)
    : bytes(bytes), headBytes(headBytes), classes(classes) {}

ObjectPtr ObjectReader::read(const std::string& className) {
    return {owner, readClass(className).get()};
}

/// @return a pointer that does not own the object.
ObjectPtr ObjectReader::newObject(const std::string& className) {
    Object& object = owner->emplace_back();
    object.className = className;
    return {ObjectPtr(), &object};
}

ObjectPtr ObjectReader::readClass(const std::string& className) {
    ObjectPtr object = newObject(className);
    readInto(className, *object);
    return object;
}

void ObjectReader::readInto(const std::string& className, Object& object) {
    const Level level(depth);
    if (!readSpecial(className, object)) {
        readDescribed(className, object);
    }
}

bool ObjectReader::readSpecial(const std::string& className, Object& object) {
    const bool isOfTree = className.starts_with("TBranch") || className.starts_with("TLeaf");
    if (isOfTree) {
        return false;  // Most objects of a file; they are as it describes them.
    }
    if (className == "TObject") {
        const ObjectBase base = readObjectBase(bytes);
        object.members.emplace_back("fUniqueID", static_cast<std::int64_t>(base.uniqueId));
        object.members.emplace_back("fBits", static_cast<std::int64_t>(base.bits));
    } else if (className == "TNamed") {
        readNamedInto(object);
    } else if (className == "TString") {
        object.members.emplace_back("text", bytes.text());
    } else if (className == "TList" || className == "THashList") {
        readList(object);
    } else if (className == "TObjArray") {
        readObjectArray(object);
    } else if (className == "TDatime") {
        object.members.emplace_back("fDatime", static_cast<std::int64_t>(bytes.u32()));
    } else if (className == "TBasket") {
        readBasket(object);
    } else if (className.starts_with("TArray") && arrayType(className)) {
        readNumberArray(className, object);
    } else {
        return false;
    }
    return true;
}

void ObjectReader::readDescribed(const std::string& className, Object& object) {
    const ObjectHeader header = readHeader(bytes);
    const ClassInfo* info = header.checksum != 0 ? classes.findByChecksum(className, header.checksum)
                                                 : classes.find(className, header.version);
    if (!info) {
        if (!header.end) {
            throw Failure("the file does not describe the class " + className);
        }
        object.isWhole = false;
        header.leave(bytes);
        return;
    }
    try {
        readMembers(*this, *info, object);
    } catch (const Failure&) {
        if (!header.end) {
            throw;
        }
        object.isWhole = false;
    }
    header.leave(bytes);
}

void ObjectReader::readMembers(ObjectReader& reader, const ClassInfo& info, Object& object) {
    constexpr std::size_t usualMembersOfBases = 8;
    object.members.reserve(object.members.size() + info.elements.size() + usualMembersOfBases);
    for (const Element& element : info.elements) {
        reader.readMember(element, object);
    }
}

void ObjectReader::readMember(const Element& element, Object& object) {
    const int arithmetic = element.kind % Element::FixedArray;
    if (element.kind > 0 && element.kind < 60 && numberTypeOf(arithmetic)) {
        object.members.emplace_back(element.name, readArithmetic(element, object));
    } else if (!readOther(element, object)) {
        throw Failure("the member " + element.name + " of type " + element.typeName + " cannot be read");
    }
}

Member ObjectReader::readArithmetic(const Element& element, const Object& object) {
    const NumberType type = *numberTypeOf(element.kind % Element::FixedArray);
    if (element.kind > Element::CountedArray) {
        const bool hasValues = bytes.u8() != 0;
        const std::int64_t count = object.integer(element.countName);
        if (count < 0) {
            throw Failure("the length of " + element.name + " is negative");
        }
        return readNumbers(type, element.range, hasValues ? static_cast<std::size_t>(count) : 0);
    }
    if (element.kind > Element::FixedArray) {
        return readNumbers(type, element.range, element.arrayLength);
    }
    if (isReal(type)) {
        return readReal(bytes, type, element.range);
    }
    return readInteger(bytes, type);
}

Member ObjectReader::readNumbers(NumberType type, const NumberRange& range, std::size_t count) {
    if (count > bytes.remaining() / sizeOf(type, range)) {
        throw Failure("an array extends beyond its record");
    }
    if (isReal(type)) {
        std::vector<double> reals(count);
        std::generate(reals.begin(), reals.end(), [&] { return readReal(bytes, type, range); });
        return reals;
    }
    std::vector<std::int64_t> integers(count);
    std::generate(integers.begin(), integers.end(), [&] { return readInteger(bytes, type); });
    return integers;
}

bool ObjectReader::readOther(const Element& element, Object& object) {
    switch (element.kind) {
        case Element::Base:
        case Element::ObjectBase:
        case Element::NamedBase:
            if (element.className == "TStreamerBase") {
                readInto(element.name, object);
                return true;
            }
            object.members.emplace_back(element.name, readClass(withoutPointer(element.typeName)));
            return true;
        case Element::Text:
        case Element::StandardText:
            object.members.emplace_back(element.name, bytes.text());
            return true;
        case Element::EmbeddedObject:
        case Element::EmbeddedAny:
        case Element::EmbeddedPointer:
        case Element::EmbeddedAnyPointer:
            object.members.emplace_back(element.name, readClass(withoutPointer(element.typeName)));
            return true;
        case Element::Pointer:
        case Element::AnyPointer:
            object.members.emplace_back(element.name, readPointer());
            return true;
        case Element::Collection:
        case Element::Custom:
            object.members.emplace_back(element.name, readCollection(element));
            return true;
        default:
            return false;
    }
}

Member ObjectReader::readCollection(const Element& element) {
    const ObjectHeader header = readHeader(bytes, false);
    Member member;
    if (element.typeName == "string" || element.typeName == "std::string") {
        member = bytes.text();
    } else if (const auto type = numberTypeNamed(argumentOf(element.typeName)); type && !header.isMemberWise) {
        member = readNumbers(*type, {}, bytes.count(1));
    } else if (!header.end) {
        throw Failure("the member " + element.name + " of type " + element.typeName + " cannot be read");
    }
    header.leave(bytes);
    return member;
}

void ObjectReader::readNamedInto(Object& object) {
    const NameAndTitle named = readNamed(bytes);
    object.members.emplace_back("fName", named.name);
    object.members.emplace_back("fTitle", named.title);
}

void ObjectReader::readList(Object& object) {
    const ObjectHeader header = readHeader(bytes);
    std::vector<ObjectPtr> items;
    if (header.version > 3) {
        readObjectBase(bytes);
        bytes.text();
        const std::size_t count = bytes.count(4);
        for (std::size_t i = 0; i < count; ++i) {
            items.push_back(readPointer());
            if (header.version > 4) {
                bytes.text();  // Draw option in the list.
            }
        }
    }
    object.members.emplace_back(itemsMember, std::move(items));
    header.leave(bytes);
}

void ObjectReader::readObjectArray(Object& object) {
    const ObjectHeader header = readHeader(bytes);
    if (header.version > 2) {
        readObjectBase(bytes);
    }
    if (header.version > 1) {
        bytes.text();
    }
    const std::size_t count = bytes.count(4);
    bytes.skip(4);
    std::vector<ObjectPtr> items;
    for (std::size_t i = 0; i < count; ++i) {
        items.push_back(readPointer());
    }
    object.members.emplace_back(itemsMember, std::move(items));
    header.leave(bytes);
}

void ObjectReader::readNumberArray(const std::string& className, Object& object) {
    const NumberType type = *arrayType(className);
    const std::size_t count = bytes.count(sizeOf(type, {}));
    object.members.emplace_back(arrayMember, readNumbers(type, {}, count));
}

/// A basket that was still in memory when the tree was written. Its content is a separate member.
void ObjectReader::readBasket(Object& object) {
    constexpr int withoutOffsets = 80;
    constexpr int withDisplacements = 40;
    bytes.skip(4);
    const std::int16_t keyVersion = bytes.i16();
    bytes.skip(8);
    const std::int64_t keyBytes = bytes.u16();
    bytes.skip(2U + (keyVersion > 1000 ? 16U : 8U));
    bytes.text();
    bytes.text();
    bytes.text();
    bytes.skip(2U + 4U);
    if (bytes.i32() < 0) {
        bytes.skip(1);
    }
    const std::int32_t entries = bytes.i32();
    const std::int32_t last = bytes.i32();
    int flag = bytes.u8();
    const bool isGenerated = flag >= withoutOffsets;
    flag -= isGenerated ? withoutOffsets : 0;
    std::vector<std::int64_t> offsets;
    if (!isGenerated && flag != 0 && flag % 10 != 2) {
        if (entries > 0) {
            offsets = std::get<std::vector<std::int64_t>>(readNumbers(NumberType::Int32, {}, bytes.count(4)));
        }
        if (flag > withDisplacements) {
            bytes.skip(4 * bytes.count(4));
        }
    }
    if (last < keyBytes) {
        throw Failure("a basket within a tree is damaged");
    }
    object.members.emplace_back("fKeylen", keyBytes);
    object.members.emplace_back("fNevBuf", static_cast<std::int64_t>(entries));
    object.members.emplace_back("fEntryOffset", std::move(offsets));
    if (flag == 1 || flag > 10) {
        bytes.skip(static_cast<std::size_t>(keyBytes));
        object.members.emplace_back("content", bytes.textOf(static_cast<std::size_t>(last - keyBytes)));
    }
}

/// An object preceded by its class, or a reference to an earlier one.
ObjectPtr ObjectReader::readPointer() {
    const Level level(depth);
    const std::size_t begin = bytes.position();
    const std::uint32_t first = bytes.u32();
    if ((first & countMask) == 0 || first == newClass) {
        return readTagged(begin, 0, false, first);
    }
    const std::size_t tagAt = bytes.position();
    const std::size_t end = tagAt + (first & ~countMask);
    ObjectPtr object = readTagged(begin, tagAt, true, bytes.u32());
    bytes.seek(end);
    return object;
}

ObjectPtr ObjectReader::readTagged(std::size_t begin, std::size_t tagAt, bool hasCount, std::uint32_t tag) {
    if ((tag & classMask) == 0) {
        const auto found = objectTags.find(tag);
        return found == objectTags.end() ? nullptr : found->second;
    }
    ObjectPtr object = newObject("");
    if (tag == newClass) {
        object->className = bytes.cText();
        classTags[hasCount ? tagAt + headBytes + tagOffset : classTags.size() + objectTags.size() + 1] =
            object->className;
    } else if (const auto found = classTags.find(tag & ~classMask); found != classTags.end()) {
        object->className = found->second;
    } else {
        throw Failure("the class of an object is unknown");
    }
    objectTags[hasCount ? begin + headBytes + tagOffset : classTags.size() + objectTags.size() + 1] = object;
    try {
        readInto(object->className, *object);
    } catch (const Failure&) {
        if (!hasCount) {
            throw;
        }
        object->isWhole = false;
    }
    return object;
}

}  // namespace velmorak::root
