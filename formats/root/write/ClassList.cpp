#include "root/write/ClassList.h"

#include "root/objects/Classes.h"

#include <algorithm>
#include <map>

namespace velmorak::root {
namespace {

using Storage = WrittenMember::Storage;

constexpr int counterNumber = 6;
constexpr int pointerBytes = 8;

std::int64_t sizeOfClass(const std::string& name) {
    static constexpr std::pair<std::string_view, int> sizes[] = {
        {"TAxis", 216}, {"TObjArray", 64}, {"ROOT::TIOFeatures", 1}};
    const auto* const found =
        std::find_if(std::begin(sizes), std::end(sizes), [&](const auto& each) { return each.first == name; });
    return found == std::end(sizes) ? 24 : found->second;
}

std::string elementClass(const WrittenMember& member) {
    switch (member.storage) {
        case Storage::Number:
        case Storage::FixedArray:
            return "TStreamerBasicType";
        case Storage::Numbers:
            return "TStreamerBasicPointer";
        case Storage::Text:
            return "TStreamerString";
        case Storage::Array:
            return "TStreamerObjectAny";
        case Storage::Object:
            return member.type.starts_with("ROOT::") ? "TStreamerObjectAny" : "TStreamerObject";
        case Storage::OwnedObject:
        case Storage::Pointer:
            break;
    }
    return "TStreamerObjectPointer";
}

int kindOf(const WrittenMember& member, bool isCounter) {
    switch (member.storage) {
        case Storage::Number:
            return isCounter ? counterNumber : member.number;
        case Storage::FixedArray:
            return Element::FixedArray + member.number;
        case Storage::Numbers:
            return Element::CountedArray + member.number;
        case Storage::Text:
            return Element::Text;
        case Storage::Array:
            return Element::EmbeddedAny;
        case Storage::Object:
            return member.type.starts_with("ROOT::") ? Element::EmbeddedAny : Element::EmbeddedObject;
        case Storage::OwnedObject:
            return Element::EmbeddedPointer;
        case Storage::Pointer:
            break;
    }
    return Element::Pointer;
}

std::int64_t sizeOf(const WrittenMember& member) {
    switch (member.storage) {
        case Storage::Number:
        case Storage::Numbers:
            return static_cast<std::int64_t>(bytesOfNumber(member.number));
        case Storage::FixedArray:
            return static_cast<std::int64_t>(bytesOfNumber(member.number) * member.length);
        case Storage::OwnedObject:
        case Storage::Pointer:
            return pointerBytes;
        case Storage::Text:
        case Storage::Array:
        case Storage::Object:
            break;
    }
    return sizeOfClass(member.type);
}

std::string commentOf(const WrittenMember& member) {
    if (!member.count.empty()) {
        return "[" + member.count + "]";
    }
    return member.storage == Storage::OwnedObject ? "->" : "";
}

class Describer {
public:
    explicit Describer(const WrittenClasses& classes) : classes(classes) {}

    ObjectPtr describe(const WrittenClass& described) const;

private:
    ObjectPtr baseElement(const std::string& name) const;
    ObjectPtr memberElement(const WrittenClass& owner, const WrittenMember& member) const;
    const WrittenClass& ownerOf(const WrittenClass& described, const std::string& member) const;

    const WrittenClasses& classes;
};

ObjectPtr Describer::describe(const WrittenClass& described) const {
    std::vector<ObjectPtr> elements;
    for (const std::string& base : described.bases) {
        elements.push_back(baseElement(base));
    }
    for (const WrittenMember& member : described.members) {
        elements.push_back(memberElement(described, member));
    }
    Object list{.className = "TObjArray", .members = {{std::string(itemsMember), std::move(elements)}}};
    return std::make_shared<Object>(
        Object{.className = "TStreamerInfo",
               .members = {{"fName", described.name},
                           {"fCheckSum", static_cast<std::int64_t>(classes.checksum(described))},
                           {"fClassVersion", static_cast<std::int64_t>(described.version)},
                           {"fElements", std::make_shared<Object>(std::move(list))}}});
}

ObjectPtr Describer::baseElement(const std::string& name) const {
    const WrittenClass& base = classes.at(name);
    const std::int64_t kind = name == "TObject"  ? Element::ObjectBase
                              : name == "TNamed" ? Element::NamedBase
                                                 : Element::Base;
    const std::vector<std::int64_t> checksum{0, static_cast<std::int64_t>(classes.checksum(base))};
    return std::make_shared<Object>(Object{.className = "TStreamerBase",
                                           .members = {{"fName", name},
                                                       {"fType", kind},
                                                       {"fMaxIndex", checksum},
                                                       {"fTypeName", std::string("BASE")},
                                                       {"fBaseVersion", static_cast<std::int64_t>(base.version)}}});
}

ObjectPtr Describer::memberElement(const WrittenClass& owner, const WrittenMember& member) const {
    const bool isCounter = std::any_of(owner.members.begin(), owner.members.end(),
                                       [&](const WrittenMember& each) { return each.count == member.name; });
    Object element{.className = elementClass(member),
                   .members = {{"fName", member.name},
                               {"fTitle", commentOf(member)},
                               {"fType", static_cast<std::int64_t>(kindOf(member, isCounter))},
                               {"fSize", sizeOf(member)},
                               {"fTypeName", member.type}}};
    if (member.length > 0) {
        const auto length = static_cast<std::int64_t>(member.length);
        element.members.insert(element.members.end(), {{"fArrayLength", length},
                                                       {"fArrayDim", std::int64_t{1}},
                                                       {"fMaxIndex", std::vector<std::int64_t>{length}}});
    }
    if (!member.count.empty()) {
        const WrittenClass& counting = ownerOf(owner, member.count);
        element.members.insert(element.members.end(), {{"fCountVersion", static_cast<std::int64_t>(counting.version)},
                                                       {"fCountName", member.count},
                                                       {"fCountClass", counting.name}});
    }
    return std::make_shared<Object>(std::move(element));
}

/// The class, or the base of it, that has the member.
const WrittenClass& Describer::ownerOf(const WrittenClass& described, const std::string& member) const {
    for (const WrittenMember& each : described.members) {
        if (each.name == member) {
            return described;
        }
    }
    return ownerOf(classes.at(described.bases.front()), member);
}

}  // namespace

Object classList(const WrittenClasses& classes, const std::set<std::string>& names) {
    const Describer describer(classes);
    std::vector<ObjectPtr> all;
    all.reserve(names.size());
    for (const std::string& name : names) {
        all.push_back(describer.describe(classes.at(name)));
    }
    return {.className = "TList", .members = {{std::string(itemsMember), std::move(all)}}};
}

}  // namespace velmorak::root
