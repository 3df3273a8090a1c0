#include "root/objects/Object.h"

#include <algorithm>

namespace velmorak::root {

const Member* Object::find(std::string_view name) const {
    // Names often begin alike, and often have the same length, but seldom end alike as well.
    const auto isNamed = [&](const auto& each) {
        const std::string_view other = each.first;
        return other.size() == name.size() && !name.empty() && other.back() == name.back() && other == name;
    };
    const auto found = std::find_if(members.begin(), members.end(), isNamed);
    return found == members.end() ? nullptr : &found->second;
}

double Object::real(std::string_view name, double otherwise) const {
    const Member* member = find(name);
    if (member && std::holds_alternative<double>(*member)) {
        return std::get<double>(*member);
    }
    if (member && std::holds_alternative<std::int64_t>(*member)) {
        return static_cast<double>(std::get<std::int64_t>(*member));
    }
    return otherwise;
}

std::int64_t Object::integer(std::string_view name, std::int64_t otherwise) const {
    const Member* member = find(name);
    return member && std::holds_alternative<std::int64_t>(*member) ? std::get<std::int64_t>(*member) : otherwise;
}

std::string Object::text(std::string_view name) const {
    const Member* member = find(name);
    return member && std::holds_alternative<std::string>(*member) ? std::get<std::string>(*member) : std::string();
}

ObjectPtr Object::object(std::string_view name) const {
    const Member* member = find(name);
    return member && std::holds_alternative<ObjectPtr>(*member) ? std::get<ObjectPtr>(*member) : nullptr;
}

std::vector<ObjectPtr> Object::objects(std::string_view name) const {
    const Member* member = find(name);
    if (member && std::holds_alternative<std::vector<ObjectPtr>>(*member)) {
        return std::get<std::vector<ObjectPtr>>(*member);
    }
    const ObjectPtr list = object(name);
    return list && list.get() != this ? list->objects(itemsMember) : std::vector<ObjectPtr>();
}

std::vector<double> Object::reals(std::string_view name) const {
    const Member* member = find(name);
    if (member && std::holds_alternative<std::vector<double>>(*member)) {
        return std::get<std::vector<double>>(*member);
    }
    if (member && std::holds_alternative<std::vector<std::int64_t>>(*member)) {
        const auto& whole = std::get<std::vector<std::int64_t>>(*member);
        return {whole.begin(), whole.end()};
    }
    const ObjectPtr array = object(name);
    return array && array.get() != this ? array->reals(arrayMember) : std::vector<double>();
}

const std::vector<std::int64_t>& Object::integers(std::string_view name) const {
    static const std::vector<std::int64_t> none;
    const Member* member = find(name);
    return member && std::holds_alternative<std::vector<std::int64_t>>(*member)
               ? std::get<std::vector<std::int64_t>>(*member)
               : none;
}

}  // namespace velmorak::root
