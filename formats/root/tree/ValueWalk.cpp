#include "root/tree/ValueWalk.h"

#include "root/container/Record.h"

#include <algorithm>

namespace velmorak::root {
namespace {

using Kind = ValueType::Kind;

/// A step beyond every path: nothing there is selected.
constexpr std::size_t nowhere = SIZE_MAX;
constexpr std::uint32_t countMask = 0x40000000;
constexpr std::uint32_t newClass = 0xFFFFFFFF;

void skipPointer(Buffer& bytes) {
    const std::uint32_t first = bytes.u32();
    if (first == newClass) {
        throw Failure("an object has no length");
    }
    bytes.skip((first & countMask) != 0 ? first & ~countMask : 0);
}

void skipUnknown(Buffer& bytes) {
    const ObjectHeader header = readHeader(bytes, false);
    if (!header.end) {
        throw Failure("a value that cannot be read has no length");
    }
    header.leave(bytes);
}

/// Keys and values of a map are written as members of a pair.
bool hasOwnHeader(const ValueType& type) {
    return type.kind == Kind::List || type.kind == Kind::Map || (type.kind == Kind::Text && type.className == "string");
}

}  // namespace

bool readCollectionHeader(Buffer& bytes) {
    const bool isMemberWise = readHeader(bytes, false).isMemberWise;
    if (isMemberWise && bytes.i16() <= 0) {
        bytes.skip(4);  // Checksum of a class without a version.
    }
    return isMemberWise;
}

std::size_t ValueWalk::within(std::size_t step, std::size_t argument) const {
    return step < selection.path.size() && selection.path[step] == argument ? step + 1 : nowhere;
}

void ValueWalk::value(Buffer& bytes, const ValueType& type, bool isMemberWise) {
    if (isMemberWise) {
        memberWise(bytes, type, 0);
    } else {
        each(bytes, type, 0);
    }
}

void ValueWalk::number(Buffer& bytes, const ValueType& type) {
    switch (column.values.index()) {
        case 0:
            std::get<Column::Reals>(column.values).push_back(readReal(bytes, type.number, type.range));
            break;
        case 1:
            std::get<Column::Integers>(column.values).push_back(readInteger(bytes, type.number));
            break;
        default:
            std::get<Column::Booleans>(column.values)
                .push_back(static_cast<std::uint8_t>(readInteger(bytes, type.number)));
    }
}

void ValueWalk::text(Buffer& bytes, std::size_t step) {
    std::string found = bytes.text();
    if (step != nowhere) {
        std::get<Column::Texts>(column.values).push_back(std::move(found));
    }
}

/// The header of a collection is that of all in an array.
void ValueWalk::each(Buffer& bytes, const ValueType& type, std::size_t step) {
    if (type.hasHeader) {
        content(bytes, type, step, readCollectionHeader(bytes));
        return;
    }
    if (type.kind == Kind::Number && step == nowhere) {
        bytes.skip(type.length * sizeOf(type.number, type.range));
        return;
    }
    for (std::size_t i = 0; i < type.length; ++i) {
        one(bytes, type, step);
    }
}

void ValueWalk::one(Buffer& bytes, const ValueType& type, std::size_t step) {
    switch (type.kind) {
        case Kind::Number:
            return number(bytes, type);
        case Kind::Object:
            return object(bytes, type, step);
        case Kind::ObjectBase:
            readObjectBase(bytes);
            return;
        case Kind::Pointer:
            return skipPointer(bytes);
        case Kind::Unknown:
            return skipUnknown(bytes);
        default:
            return content(bytes, type, step, false);
    }
}

void ValueWalk::content(Buffer& bytes, const ValueType& type, std::size_t step, bool isMemberWise) {
    if (type.kind == Kind::Text) {
        text(bytes, step);
    } else if (isMemberWise) {
        memberWise(bytes, type, step);
    } else {
        collection(bytes, type, step);
    }
}

/// An array has a byte in front that says whether it is there.
void ValueWalk::counted(Buffer& bytes, const ValueType& type, std::size_t step, std::int64_t count) {
    const bool isThere = bytes.u8() != 0;
    for (std::int64_t i = 0; isThere && i < count; ++i) {
        each(bytes, type, step);
    }
}

void ValueWalk::object(Buffer& bytes, const ValueType& type, std::size_t step) {
    if (type.isBare) {
        members(bytes, type, step);
        return;
    }
    const ObjectHeader header = readHeader(bytes);
    const bool isSame = header.checksum != 0 ? header.checksum == type.checksum : header.version == type.version;
    if (type.version != 0 && !isSame) {
        throw Failure("an object is of another version of the class " + type.className);
    }
    members(bytes, type, step);
    header.leave(bytes);
}

void ValueWalk::members(Buffer& bytes, const ValueType& type, std::size_t step) {
    std::vector<std::int64_t> counts;
    for (std::size_t i = 0; i < type.arguments.size(); ++i) {
        const ValueType& member = type.arguments[i];
        if (member.isCount) {
            Buffer ahead = bytes;
            counts.resize(i + 1);
            counts[i] = readInteger(ahead, member.number);
        }
        if (member.count) {
            counted(bytes, member, within(step, i), counts.at(*member.count));
        } else {
            each(bytes, member, within(step, i));
        }
    }
}

void ValueWalk::keepCount(std::size_t count, std::size_t step) {
    if (step != selection.path.size() || selection.content == Selection::Content::Values) {
        return;
    }
    auto& kept = std::get<Column::Integers>(column.values);
    if (selection.content == Selection::Content::Counts) {
        kept.push_back(static_cast<std::int64_t>(count));
    } else {
        kept.insert(kept.end(), count, row);
    }
    ++row;
}

void ValueWalk::collection(Buffer& bytes, const ValueType& type, std::size_t step) {
    const std::size_t count = bytes.count(1);
    keepCount(count, step);
    if (type.kind == Kind::List) {
        items(bytes, type.arguments.front(), count, within(step, 0));
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        each(bytes, type.arguments[0], within(step, 0));
        each(bytes, type.arguments[1], within(step, 1));
    }
}

void ValueWalk::items(Buffer& bytes, const ValueType& type, std::size_t count, std::size_t step) {
    if (type.kind == Kind::Number && step == nowhere) {
        bytes.skip(count * sizeOf(type.number, type.range));
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        each(bytes, type, step);
    }
}

/// All values of the first member, then all of the second, and so on; a member that is a collection has one header for
/// all of its values.
void ValueWalk::memberWise(Buffer& bytes, const ValueType& type, std::size_t step) {
    const std::size_t count = bytes.count(1);
    keepCount(count, step);
    const bool isMap = type.kind == Kind::Map;
    const ValueType& holder = isMap ? type : type.arguments.front();
    if (!isMap && holder.kind != Kind::Object) {
        throw Failure("values that are not objects are written member by member");
    }
    const std::size_t inside = isMap ? step : within(step, 0);
    for (std::size_t i = 0; i < holder.arguments.size() && count > 0; ++i) {
        const ValueType& member = holder.arguments[i];
        if (member.count) {
            throw Failure("arrays of variable length cannot be read member by member");
        }
        manyOf(bytes, member, within(inside, i), count, member.hasHeader || (isMap && hasOwnHeader(member)));
    }
}

void ValueWalk::manyOf(Buffer& bytes, const ValueType& type, std::size_t step, std::size_t count, bool hasHeader) {
    const bool isMemberWise = hasHeader && readCollectionHeader(bytes);
    for (std::size_t i = 0; i < count; ++i) {
        if (hasHeader) {
            content(bytes, type, step, isMemberWise);
        } else {
            each(bytes, type, step);
        }
    }
}

}  // namespace velmorak::root
