#include "root/objects/Classes.h"

#include "root/container/File.h"
#include "root/container/Record.h"

#include <functional>

namespace velmorak::root {
namespace {

/// Reads the objects of a list or an array, each preceded by its class; supports only what descriptions of classes
/// need.
class Descriptions {
public:
    Descriptions(Bytes buffer, std::size_t headBytes) : buffer(buffer), headBytes(headBytes) {}

    std::vector<ClassInfo> read();

private:
    /// An object preceded by its class; unread bytes are skipped.
    void readObject(const std::function<void(const std::string&)>& content);

    std::string readClassName(std::size_t tagAt);

    ClassInfo readInfo();

    void readElements(ClassInfo& info);

    Element readElement(const std::string& className);

    Element readElementBase(const std::string& className);

    Buffer buffer;
    std::size_t headBytes;                     ///< Tags are offsets from the beginning of the record's header.
    std::map<std::size_t, std::string> names;  ///< By the offset of the tag.
};

std::vector<ClassInfo> Descriptions::read() {
    const ObjectHeader header = readHeader(buffer);
    readObjectBase(buffer);
    buffer.text();
    const std::size_t count = buffer.count(1);
    std::vector<ClassInfo> found;
    for (std::size_t i = 0; i < count; ++i) {
        readObject([&](const std::string& name) {
            if (name == "TStreamerInfo") {
                found.push_back(readInfo());
            }
        });
        buffer.skip(buffer.u8());  // Draw option in the list.
    }
    header.leave(buffer);
    return found;
}

void Descriptions::readObject(const std::function<void(const std::string&)>& content) {
    constexpr std::uint32_t countMask = 0x40000000;
    const std::uint32_t bytes = buffer.u32();
    if (bytes == 0) {
        return;
    }
    if ((bytes & countMask) == 0) {
        throw Failure("the description of a class is damaged");
    }
    const std::size_t end = buffer.position() + (bytes & ~countMask);
    const std::size_t tagAt = buffer.position();
    const std::string name = readClassName(tagAt);
    content(name);
    buffer.seek(end);
}

std::string Descriptions::readClassName(std::size_t tagAt) {
    constexpr std::uint32_t newClass = 0xFFFFFFFF;
    constexpr std::uint32_t classMask = 0x80000000;
    const std::uint32_t tag = buffer.u32();
    if (tag == newClass) {
        std::string name = buffer.cText();
        names[tagAt] = name;
        return name;
    }
    if ((tag & classMask) == 0) {
        return {};
    }
    const auto found = names.find((tag & ~classMask) - headBytes - tagOffset);
    return found == names.end() ? std::string() : found->second;
}

ClassInfo Descriptions::readInfo() {
    const ObjectHeader header = readHeader(buffer);
    ClassInfo info;
    info.name = readNamed(buffer).name;
    info.checksum = buffer.u32();
    info.version = buffer.i32();
    readObject([&](const std::string&) { readElements(info); });
    header.leave(buffer);
    return info;
}

void Descriptions::readElements(ClassInfo& info) {
    const ObjectHeader header = readHeader(buffer);
    readObjectBase(buffer);
    buffer.text();
    const std::size_t count = buffer.count(1);
    buffer.skip(4);
    for (std::size_t i = 0; i < count; ++i) {
        readObject([&](const std::string& name) { info.elements.push_back(readElement(name)); });
    }
    header.leave(buffer);
}

Element Descriptions::readElement(const std::string& className) {
    const ObjectHeader outer = readHeader(buffer);
    std::optional<ObjectHeader> within;
    if (className == "TStreamerSTLstring") {
        within = readHeader(buffer);
    }
    Element element = readElementBase(className);
    if (className == "TStreamerBasicPointer" || className == "TStreamerLoop") {
        buffer.skip(4);
        element.countName = buffer.text();
    } else if (className == "TStreamerSTL") {
        element.collectionKind = buffer.i32();
        element.collectedKind = buffer.i32();
    }
    outer.leave(buffer);
    return element;
}

Element Descriptions::readElementBase(const std::string& className) {
    const ObjectHeader header = readHeader(buffer);
    Element element;
    element.className = className;
    const NameAndTitle named = readNamed(buffer);
    element.name = named.name;
    element.range = NumberRange::fromTitle(named.title);
    element.kind = buffer.i32();
    buffer.skip(4);
    const std::int32_t length = buffer.i32();
    element.arrayLength = length > 0 ? static_cast<std::size_t>(length) : 0;
    buffer.skip(4);
    buffer.skip(header.version == 1 ? 4 * buffer.count(4) : 20);
    element.typeName = buffer.text();
    header.leave(buffer);
    return element;
}

}  // namespace

Classes::Classes(Bytes record, std::size_t headBytes) {
    if (record.empty()) {
        return;
    }
    for (ClassInfo& info : Descriptions(record, headBytes).read()) {
        all[info.name][info.version] = std::move(info);
    }
}

const ClassInfo* Classes::find(const std::string& name, int version) const {
    const auto versions = all.find(name);
    if (versions == all.end() || versions->second.empty()) {
        return nullptr;
    }
    const auto found = versions->second.find(version);
    return found == versions->second.end() ? &versions->second.rbegin()->second : &found->second;
}

bool Classes::isAlone(const std::string& name) const {
    const auto versions = all.find(name);
    return versions != all.end() && versions->second.size() == 1;
}

const ClassInfo* Classes::findByChecksum(const std::string& name, std::uint32_t checksum) const {
    const auto versions = all.find(name);
    if (versions == all.end()) {
        return nullptr;
    }
    for (const auto& [version, info] : versions->second) {
        if (info.checksum == checksum) {
            return &info;
        }
    }
    return find(name, 1);
}

Classes classesOf(const File& file) {
    const std::optional<Key> key = file.streamerKey();
    return key ? Classes(file.content(*key), key->headBytes) : Classes();
}

}  // namespace velmorak::root
