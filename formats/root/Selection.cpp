#include "root/Selection.h"

namespace velmorak::root {
namespace {

using Kind = ValueType::Kind;

ColumnType columnTypeOf(const ValueType& type) {
    if (type.kind == Kind::Text) {
        return ColumnType::Text;
    }
    if (type.number == NumberType::Bool) {
        return ColumnType::Boolean;
    }
    return isReal(type.number) ? ColumnType::Real : ColumnType::Integer;
}

/// Where a value is.
struct Place {
    std::string name;
    std::vector<std::size_t> path;
    bool isInList = false;

    Place within(std::size_t argument, const std::string& suffix = "") const;
};

Place Place::within(std::size_t argument, const std::string& suffix) const {
    Place inner{.name = name + suffix, .path = path, .isInList = isInList};
    inner.path.push_back(argument);
    return inner;
}

class Selections {
public:
    void add(const ValueType& type, Place place);
    std::vector<SelectedColumn> take() { return std::move(columns); }

private:
    void addLeaf(const ValueType& type, const Place& place);
    void addObject(const ValueType& type, const Place& place);
    void addCollection(const ValueType& type, const Place& place);
    void addLevel(const ValueType& type, const Place& place);

    std::vector<SelectedColumn> columns;
};

void Selections::add(const ValueType& type, Place place) {
    place.isInList = place.isInList || type.length != 1 || type.count;
    switch (type.kind) {
        case Kind::Number:
        case Kind::Text:
        case Kind::Pointer:
        case Kind::Unknown:
            return addLeaf(type, place);
        case Kind::List:
        case Kind::Map:
            return addCollection(type, place);
        case Kind::Object:
            return addObject(type, place);
        case Kind::ObjectBase:
            break;
    }
}

void Selections::addLeaf(const ValueType& type, const Place& place) {
    columns.push_back({.name = place.name,
                       .selection = {.part = Selection::Part::Values, .path = place.path},
                       .type = columnTypeOf(type),
                       .isList = place.isInList,
                       .problem = type.problem});
}

void Selections::addObject(const ValueType& type, const Place& place) {
    for (std::size_t i = 0; i < type.arguments.size(); ++i) {
        const std::string& member = type.arguments[i].name;
        add(type.arguments[i], place.within(i, member.empty() ? "" : "." + member));
    }
}

void Selections::addCollection(const ValueType& type, const Place& place) {
    const bool isMap = type.kind == Kind::Map;
    for (std::size_t i = 0; i < type.arguments.size(); ++i) {
        Place items = place.within(i, !isMap ? "" : i == 0 ? ".key" : ".value");
        items.isInList = true;
        add(type.arguments[i], items);
    }
    if (place.isInList) {
        addLevel(type, place);
    }
}

/// Of lists of the same name in each other, the innermost has the shortest names.
void Selections::addLevel(const ValueType& type, const Place& place) {
    std::string name = place.name;
    for (const ValueType* inner = &type; inner->kind == Kind::List && inner->arguments.front().kind == Kind::List;
         inner = &inner->arguments.front()) {
        name += ".count";
    }
    using enum Selection::Part;
    for (const auto& [part, suffix] : {std::pair(Counts, ".count"), std::pair(Rows, ".row")}) {
        columns.push_back({.name = name + suffix,
                           .selection = {.part = part, .path = place.path},
                           .type = ColumnType::Integer,
                           .isList = true});
    }
}

}  // namespace

std::vector<SelectedColumn> columnsOf(const ValueType& type, const std::string& name, bool isInList) {
    Selections selections;
    selections.add(type, {.name = name, .path = {}, .isInList = isInList});
    return selections.take();
}

}  // namespace velmorak::root
