#include "root/tree/Selection.h"

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

/// A value within the values of a column.
struct NestedValue {
    std::string name;
    std::vector<std::size_t> path;
    bool isInList = false;

    NestedValue within(std::size_t argument, const std::string& suffix = "") const;
};

NestedValue NestedValue::within(std::size_t argument, const std::string& suffix) const {
    NestedValue inner{.name = name + suffix, .path = path, .isInList = isInList};
    inner.path.push_back(argument);
    return inner;
}

class Selections {
public:
    void add(const ValueType& type, NestedValue value);
    std::vector<SelectedColumn> take() { return std::move(columns); }

private:
    void addLeaf(const ValueType& type, const NestedValue& value);
    void addObject(const ValueType& type, const NestedValue& value);
    void addCollection(const ValueType& type, const NestedValue& value);
    void addLevel(const ValueType& type, const NestedValue& value);

    std::vector<SelectedColumn> columns;
};

void Selections::add(const ValueType& type, NestedValue value) {
    value.isInList = value.isInList || type.length != 1 || type.count;
    switch (type.kind) {
        case Kind::Number:
        case Kind::Text:
        case Kind::Pointer:
        case Kind::Unknown:
            return addLeaf(type, value);
        case Kind::List:
        case Kind::Map:
            return addCollection(type, value);
        case Kind::Object:
            return addObject(type, value);
        case Kind::ObjectBase:
            break;
    }
}

void Selections::addLeaf(const ValueType& type, const NestedValue& value) {
    SelectedColumn& column = columns.emplace_back();
    column.name = value.name;
    column.selection.content = Selection::Content::Values;
    column.selection.path = value.path;
    column.type = columnTypeOf(type);
    column.isList = value.isInList;
    column.problem = type.problem;
}

void Selections::addObject(const ValueType& type, const NestedValue& value) {
    for (std::size_t i = 0; i < type.arguments.size(); ++i) {
        const std::string& member = type.arguments[i].name;
        add(type.arguments[i], value.within(i, member.empty() ? "" : "." + member));
    }
}

void Selections::addCollection(const ValueType& type, const NestedValue& value) {
    const bool isMap = type.kind == Kind::Map;
    for (std::size_t i = 0; i < type.arguments.size(); ++i) {
        NestedValue items = value.within(i, !isMap ? "" : i == 0 ? ".key" : ".value");
        items.isInList = true;
        add(type.arguments[i], items);
    }
    if (value.isInList) {
        addLevel(type, value);
    }
}

/// Of lists of the same name in each other, the innermost has the shortest names.
void Selections::addLevel(const ValueType& type, const NestedValue& value) {
    std::string name = value.name;
    for (const ValueType* inner = &type; inner->kind == Kind::List && inner->arguments.front().kind == Kind::List;
         inner = &inner->arguments.front()) {
        name += ".count";
    }
    using enum Selection::Content;
    for (const auto& [content, suffix] : {std::pair(Counts, ".count"), std::pair(Rows, ".row")}) {
        columns.push_back({.name = name + suffix,
                           .selection = {.content = content, .path = value.path},
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
