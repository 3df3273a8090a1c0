#include "root/RootObjects.h"

#include "root/container/File.h"
#include "root/objects/Classes.h"
#include "root/objects/Histograms.h"
#include "root/objects/ObjectReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace velmorak {
namespace {

using root::Classes;
using root::classesOf;
using root::Entry;
using root::File;
using root::histogramAxes;
using root::histogramFrom;
using root::isGraph;
using root::Object;
using root::ObjectPtr;
using root::ObjectReader;
using root::pointsFrom;
using root::profileAxes;
using root::profileFrom;

constexpr std::size_t maxListedEntries = 20;

bool isParameter(std::string_view className) {
    return className.starts_with("TParameter<");
}

bool isText(std::string_view className) {
    return className == "TObjString" || className == "TNamed";
}

std::string wordFor(ValueType type) {
    return type == ValueType::Points ? "graph" : std::string(nameOf(type));
}

std::string listOf(const std::vector<const Entry*>& entries) {
    std::string list;
    for (std::size_t i = 0; i < std::min(entries.size(), maxListedEntries); ++i) {
        list += (i == 0 ? "" : ", ") + entries[i]->path + " (" + entries[i]->key.className + ")";
    }
    return entries.size() > maxListedEntries ? list + fmt::format(" and {} more", entries.size() - maxListedEntries)
                                             : list;
}

bool isNamed(const Entry& entry, const std::string& path) {
    return entry.path == path || (path.find('/') == std::string::npos && entry.path.ends_with("/" + path));
}

/// @return the object with that path, or else those with that name.
std::vector<const Entry*> matching(const std::vector<const Entry*>& entries, const std::string& path) {
    std::vector<const Entry*> found;
    for (const Entry* entry : entries) {
        if (entry->path == path) {
            return {entry};
        }
        if (path.empty() || isNamed(*entry, path)) {
            found.push_back(entry);
        }
    }
    return found;
}

const Entry& entryNamed(const File& file, const std::string& wanted, ValueType type) {
    const std::string path = wanted.starts_with("/") ? wanted.substr(1) : wanted;
    std::vector<const Entry*> ofType;
    std::vector<const Entry*> ofOthers;
    for (const Entry& entry : file.entries()) {
        (rootObjectType(entry.key.className) == type ? ofType : ofOthers).push_back(&entry);
    }
    const std::vector<const Entry*> found = matching(ofType, path);
    if (found.size() == 1) {
        return *found.front();
    }
    const std::string name = file.path().string();
    if (const auto other = matching(ofOthers, path); !path.empty() && found.empty() && !other.empty()) {
        throw Failure("object", fmt::format("\"{}\" in {} is a {}, which is not a {}", path, name,
                                            other.front()->key.className, wordFor(type)));
    }
    if (ofType.empty()) {
        throw Failure("object", fmt::format("{} contains no {}; it contains {}", name, wordFor(type),
                                            ofOthers.empty() ? "no objects" : listOf(ofOthers)));
    }
    if (found.empty()) {
        throw Failure("object", fmt::format("{} contains no {} \"{}\"; it contains {}", name, wordFor(type), path,
                                            listOf(ofType)));
    }
    throw Failure("object",
                  fmt::format("{} contains several of that type; enter the path of one: {}", name, listOf(found)));
}

Value valueOf(const Object& object, ValueType type) {
    switch (type) {
        case ValueType::Histogram:
            return histogramFrom(object);
        case ValueType::Profile:
            return profileFrom(object);
        case ValueType::Points:
            return pointsFrom(object);
        case ValueType::Number:
            if (!object.find("fVal")) {
                throw Failure("the parameter has no value");
            }
            return object.real("fVal");
        case ValueType::Text:
            return object.text(object.className == "TNamed" ? "fTitle" : "fString");
        default:
            throw Failure(fmt::format("a {} cannot be read", object.className));
    }
}

/// @throws Failure that names file and object.
Value valueIn(const File& file, const Classes& classes, const Entry& entry) {
    try {
        const root::ByteVector content = file.content(entry.key);
        const ObjectPtr object = ObjectReader(content, entry.key.headBytes, classes).read(entry.key.className);
        return valueOf(*object, rootObjectType(entry.key.className));
    } catch (const Failure& failure) {
        throw Failure(fmt::format("{}: {}: {}", file.path().string(), entry.path, failure.what()));
    }
}

}  // namespace

ValueType rootObjectType(const std::string& className) {
    if (histogramAxes(className) > 0) {
        return ValueType::Histogram;
    }
    if (profileAxes(className) > 0) {
        return ValueType::Profile;
    }
    if (isGraph(className)) {
        return ValueType::Points;
    }
    return isParameter(className) ? ValueType::Number : isText(className) ? ValueType::Text : ValueType::Any;
}

struct RootObjectReader::Opened {
    explicit Opened(const std::filesystem::path& path) : file(path), classes(classesOf(file)) {}

    File file;
    Classes classes;
};

RootObjectReader::RootObjectReader(const std::filesystem::path& file) : opened(std::make_unique<Opened>(file)) {}

RootObjectReader::~RootObjectReader() = default;

Value RootObjectReader::read(const std::string& path) const {
    for (const Entry& entry : opened->file.entries()) {
        if (entry.path == path) {
            return valueIn(opened->file, opened->classes, entry);
        }
    }
    throw Failure(fmt::format("{} contains no object \"{}\"", opened->file.path().string(), path));
}

Value readRootObject(const std::filesystem::path& file, const std::string& path, ValueType type, RunContext& context) {
    const File opened(file);
    if (!opened.warning().empty()) {
        context.warn(file.string() + ": " + opened.warning());
    }
    const Entry& entry = entryNamed(opened, path, type);
    return valueIn(opened, classesOf(opened), entry);
}

}  // namespace velmorak
