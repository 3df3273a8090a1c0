#include "root/write/ObjectWriter.h"

#include "root/container/Record.h"

namespace velmorak::root {
namespace {

using Storage = WrittenMember::Storage;

/// The object of a member; a new one if it is not set.
ObjectPtr embedded(const Object& object, const std::string& name, const std::string& className) {
    const ObjectPtr found = object.object(name);
    return found ? found : std::make_shared<Object>(Object{.className = className, .members = {}});
}

std::string withoutStar(std::string type) {
    if (type.ends_with('*')) {
        type.pop_back();
    }
    return type;
}

/// The numbers of a member; none if it is not set.
template <typename Number>
std::span<const Number> numbersOf(const Object& object, std::string_view name) {
    const Member* member = object.find(name);
    const auto* numbers = member ? std::get_if<std::vector<Number>>(member) : nullptr;
    return numbers ? std::span<const Number>(*numbers) : std::span<const Number>();
}

std::int64_t integerOf(const Object& object, const WrittenMember& member) {
    return object.integer(member.name, static_cast<std::int64_t>(member.standard));
}

}  // namespace

void ObjectWriter::use(const std::string& className) {
    if (names.insert(className).second) {
        for (const std::string& base : classes.at(className).bases) {
            use(base);
        }
    }
}

void ObjectWriter::writeAs(const std::string& className, const Object& object) {
    use(className);
    const WrittenClass& described = classes.at(className);
    if (className == "TObject") {
        output.u16(static_cast<std::uint16_t>(described.version));
        for (const WrittenMember& member : described.members) {
            writeMember(member, object);
        }
        return;
    }
    const std::size_t place = output.beginCount();
    const bool isForeign = className.starts_with("ROOT::");
    output.u16(static_cast<std::uint16_t>(isForeign ? 0 : className == "THashList" ? 5 : described.version));
    if (isForeign) {
        output.u32(classes.checksum(described));
    }
    if (className == "TList" || className == "THashList") {
        writeList(object);
    } else if (className == "TObjArray") {
        writeObjectArray(object);
    } else {
        for (const std::string& base : described.bases) {
            writeBase(base, object);
        }
        for (const WrittenMember& member : described.members) {
            writeMember(member, object);
        }
    }
    output.endCount(place);
}

void ObjectWriter::writeBase(const std::string& className, const Object& object) {
    if (className.starts_with("TArray")) {
        writeArray(std::string(arrayMember), object);
    } else {
        writeAs(className, object);
    }
}

void ObjectWriter::writeMember(const WrittenMember& member, const Object& object) {
    switch (member.storage) {
        case Storage::Number:
            writeNumber(member.number, object.real(member.name, member.standard), integerOf(object, member));
            break;
        case Storage::Numbers:
            writeNumbers(member, object);
            break;
        case Storage::FixedArray:
            writeFixedArray(member, object);
            break;
        case Storage::Text:
            output.text(object.text(member.name));
            break;
        case Storage::Array:
            writeArray(member.name, object);
            break;
        case Storage::Object:
        case Storage::OwnedObject: {
            const std::string type = withoutStar(member.type);
            writeAs(type, *embedded(object, member.name, type));
            break;
        }
        case Storage::Pointer:
            writePointer(object.object(member.name));
    }
}

void ObjectWriter::writeNumber(int number, double value, std::int64_t integer) {
    if (number == 8) {
        output.real(value);
        return;
    }
    if (number == 5) {
        output.shortReal(static_cast<float>(value));
        return;
    }
    switch (bytesOfNumber(number)) {
        case 1:
            output.u8(static_cast<std::uint8_t>(integer));
            break;
        case 2:
            output.u16(static_cast<std::uint16_t>(integer));
            break;
        case 4:
            output.u32(static_cast<std::uint32_t>(integer));
            break;
        default:
            output.u64(static_cast<std::uint64_t>(integer));
    }
}

/// A byte that says whether there are any, then as many as the other member says.
void ObjectWriter::writeNumbers(const WrittenMember& member, const Object& object) {
    const std::span<const double> reals = numbersOf<double>(object, member.name);
    const std::span<const std::int64_t> integers = numbersOf<std::int64_t>(object, member.name);
    output.u8(reals.empty() && integers.empty() ? 0 : 1);
    if (member.number == 8) {
        output.reals(reals);
        return;
    }
    for (const std::int64_t each : integers) {
        writeNumber(member.number, 0.0, each);
    }
}

void ObjectWriter::writeFixedArray(const WrittenMember& member, const Object& object) {
    std::vector<std::int64_t> integers = object.integers(member.name);
    integers.resize(member.length);
    for (const std::int64_t each : integers) {
        writeNumber(member.number, 0.0, each);
    }
}

/// A TArrayD, or an empty array of another type.
void ObjectWriter::writeArray(const std::string& name, const Object& object) {
    const std::span<const double> reals = numbersOf<double>(object, name);
    output.u32(static_cast<std::uint32_t>(reals.size()));
    output.reals(reals);
}

void ObjectWriter::writeList(const Object& object) {
    const std::vector<ObjectPtr> items = object.objects(itemsMember);
    writeAs("TObject", object);
    output.text(object.text("fName"));
    output.u32(static_cast<std::uint32_t>(items.size()));
    for (const ObjectPtr& item : items) {
        writePointer(item);
        output.text("");  // How it is drawn.
    }
}

void ObjectWriter::writeObjectArray(const Object& object) {
    const std::vector<ObjectPtr> items = object.objects(itemsMember);
    writeAs("TObject", object);
    output.text(object.text("fName"));
    output.u32(static_cast<std::uint32_t>(items.size()));
    output.u32(0);  // Number of the first one.
    for (const ObjectPtr& item : items) {
        writePointer(item);
    }
}

std::size_t ObjectWriter::reference(std::size_t place) const {
    return headBytes + place + tagOffset;
}

/// Nothing, a reference to an object that is already written, or an object with its class.
void ObjectWriter::writePointer(const ObjectPtr& object) {
    if (!object) {
        output.u32(0);
        return;
    }
    if (const auto written = objects.find(object.get()); written != objects.end()) {
        output.u32(static_cast<std::uint32_t>(written->second));
        return;
    }
    const std::size_t place = output.beginCount();
    objects[object.get()] = reference(place);
    writeClass(object->className);
    writeAs(object->className, *object);
    output.endCount(place);
}

void ObjectWriter::writeClass(const std::string& className) {
    constexpr std::uint32_t newClass = 0xFFFFFFFF;
    constexpr std::uint32_t classMask = 0x80000000;
    const auto [known, isNew] = classReferences.try_emplace(className, reference(output.size()));
    if (!isNew) {
        output.u32(classMask | static_cast<std::uint32_t>(known->second));
        return;
    }
    output.u32(newClass);
    output.raw(className);
    output.u8(0);
}

}  // namespace velmorak::root
