#include "aida/Vocabulary.h"
#include "aida/read/AidaColumns.h"
#include "aida/read/AidaObjectHandler.h"
#include "aida/read/ObjectList.h"

#include <velmorak/Aida.h>
#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

using io::AidaObjectHandler;
using io::XmlReader;

/// @param damage set if the file is damaged; objects that are complete before the damage are in the list.
std::vector<AidaObject> readAll(const std::filesystem::path& file, const AidaObjectHandler::Choice& isWanted,
                                RunContext& context, std::string& damage) {
    AidaObjectHandler handler(file, isWanted, context);
    XmlReader reader(file, handler, context);
    handler.attach(reader);
    damage = io::readToEnd(reader, handler.objects());
    handler.finish();
    if (reader.repairedBytes() > 0) {
        context.warn(file.string() + ": bytes that are not valid UTF-8 are read as ISO-8859-1");
    }
    return std::move(handler.objects());
}

bool fits(const AidaObject& object, ValueType type) {
    const io::AidaObjectType* const known = io::aidaObjectType(object.element);
    return known != nullptr && known->value == type;
}

/// @return whether the path, which may be a bare name, refers to the object.
bool means(const std::string& path, const AidaObject& object) {
    return path.empty() || object.path == io::normalPath(path) ||
           (path.front() != '/' && object.path.ends_with("/" + path));
}

}  // namespace

std::vector<AidaObject> readAidaObjects(const std::filesystem::path& file, RunContext& context) {
    std::string damage;
    auto objects = readAll(
        file, [](const std::string&, const std::string&) { return true; }, context, damage);
    if (!damage.empty()) {
        context.warn(damage);
    }
    return objects;
}

DataObjectPtr readAidaObject(const std::filesystem::path& file, const std::string& path, ValueType type,
                             RunContext& context) {
    std::string damage;
    // Where several are meant, only one whose whole path this is can be chosen: the others are not made.
    bool isThereOne = false;
    const auto isWanted = [&](const std::string& candidate, const std::string& element) {
        const AidaObject object{candidate, element, nullptr, 0};
        if (!fits(object, type) || !means(path, object)) {
            return false;
        }
        return !std::exchange(isThereOne, true) || candidate == io::normalPath(path);
    };
    const std::vector<AidaObject> objects = readAll(file, isWanted, context, damage);
    std::vector<AidaObject> fitting;
    std::copy_if(objects.begin(), objects.end(), std::back_inserter(fitting),
                 [&](const AidaObject& object) { return fits(object, type); });
    std::vector<AidaObject> meant;
    std::copy_if(fitting.begin(), fitting.end(), std::back_inserter(meant),
                 [&](const AidaObject& object) { return means(path, object); });
    const auto exact = std::find_if(meant.begin(), meant.end(),
                                    [&](const AidaObject& object) { return object.path == io::normalPath(path); });
    const std::string after = damage.empty() ? "" : " before it is damaged (" + damage + ")";
    const std::string list = io::listOf(fitting.empty() ? objects : fitting);
    if (meant.empty()) {
        throw Failure(fmt::format("{} contains no {}{}{}; it contains {}", file.string(), nameOf(type),
                                  path.empty() ? "" : " " + path, after, list));
    }
    if (meant.size() > 1 && (path.empty() || exact == meant.end())) {
        throw Failure(fmt::format("{} contains several matching objects; enter the full path of one; it contains {}",
                                  file.string(), list));
    }
    const AidaObject& chosen = exact == meant.end() ? meant.front() : *exact;
    if (!chosen.object) {
        throw Failure(fmt::format("{}: {} cannot be read; see the warnings", file.string(), chosen.path));
    }
    if (!damage.empty()) {
        context.warn(damage);
    }
    return chosen.object;
}

}  // namespace velmorak
