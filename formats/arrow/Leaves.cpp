#include "arrow/Leaves.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace velmorak::arrow {
namespace {

/// Walks through the fields as the nodes and buffers of a batch do.
class Walk {
public:
    explicit Walk(bool hasUnionValidity) : hasUnionValidity(hasUnionValidity) {}

    void visit(const Field& field, const std::string& name, const Leaf& above);
    std::vector<Leaf> leaves() { return std::move(found); }

private:
    void visitChildren(const Field& field, const std::string& name, const Leaf& path);
    static std::string nameOf(const Field& field, std::size_t child, const std::string& name, const Leaf& path);
    std::size_t bufferCount(const Field& field) const;

    bool hasUnionValidity;
    std::size_t node = 0;
    std::size_t buffer = 0;
    std::size_t views = 0;
    std::vector<Leaf> found;
};

std::size_t Walk::bufferCount(const Field& field) const {
    if (field.dictionary) {
        return 2;
    }
    switch (field.type.type) {
        case Type::Null:
        case Type::RunEndEncoded:
            return 0;
        case Type::Struct:
        case Type::FixedSizeList:
            return 1;
        case Type::Union:
            return (field.type.isDense ? 2U : 1U) + (hasUnionValidity ? 1U : 0U);
        case Type::Binary:
        case Type::Utf8:
        case Type::LargeBinary:
        case Type::LargeUtf8:
        case Type::ListView:
        case Type::LargeListView:
            return 3;
        default:
            return 2;
    }
}

bool isNested(Type type) {
    return isList(type) || type == Type::Struct || type == Type::Union || type == Type::RunEndEncoded ||
           type == Type::ListView || type == Type::LargeListView;
}

std::string complaintAbout(const Field& field) {
    const TypeInfo& type = field.type;
    switch (type.type) {
        case Type::None:
            return "its type is not known";
        case Type::Union:
            return "unions cannot be read";
        case Type::RunEndEncoded:
            return "run-end encoded values cannot be read";
        case Type::ListView:
        case Type::LargeListView:
            return "list views cannot be read";
        case Type::FixedSizeList:
            return type.listSize == 0 ? "its lists have no elements, or an impossible number" : "";
        case Type::Interval:
            return "intervals of months, days and nanoseconds cannot be read";
        case Type::Null:
        case Type::Bool:
            return "";
        default:
            break;
    }
    if (type.type > Type::LargeListView) {
        return "its type is not known";
    }
    const bool hasWidth = type.bytes > 0 || type.isText() || isNested(type.type);
    const bool isNumber = type.type == Type::Int || type.type == Type::FloatingPoint || type.type == Type::Time;
    const bool isIndexed =
        field.dictionary && (field.dictionary->index.bytes == 0 || field.dictionary->index.bytes > 8);
    return !hasWidth || (isNumber && type.bytes > 8) || isIndexed ? "its values have an impossible width" : "";
}

ColumnType columnType(const Field& field) {
    switch (field.type.type) {
        case Type::Int:
            return ColumnType::Integer;
        case Type::Bool:
            return ColumnType::Boolean;
        case Type::FixedSizeBinary:
            return ColumnType::Text;
        default:
            return field.type.isText() ? ColumnType::Text : ColumnType::Real;
    }
}

bool isTime(Type type) {
    return type == Type::Date || type == Type::Time || type == Type::Timestamp || type == Type::Duration;
}

void Walk::visit(const Field& field, const std::string& name, const Leaf& above) {
    Leaf leaf = above;
    leaf.levels.push_back({field.type, node, buffer, views});
    if (isList(field.type.type) && !field.dictionary) {
        leaf.lists.push_back({.id = node, .name = name});
    }
    ++node;
    buffer += bufferCount(field);
    views += field.type.isView() && !field.dictionary ? 1 : 0;
    if (leaf.complaint.empty()) {
        leaf.complaint = complaintAbout(field);
    }
    if (isNested(field.type.type) && !field.dictionary) {
        visitChildren(field, name, leaf);
        return;
    }
    leaf.name = name;
    leaf.unit = field.unit.empty() && isTime(field.type.type) ? "s" : field.unit;
    leaf.dictionary = field.dictionary;
    leaf.type = columnType(field);
    if (field.dictionary && !field.children.empty()) {
        leaf.complaint = "dictionaries of lists or structures cannot be read";
    }
    found.push_back(std::move(leaf));
}

void Walk::visitChildren(const Field& field, const std::string& name, const Leaf& path) {
    for (std::size_t i = 0; i < field.children.size(); ++i) {
        visit(field.children[i], nameOf(field, i, name, path), path);
    }
}

/// The element of a list, and the pairs of a map, have no names of their own; files have different names for keys and
/// values.
std::string Walk::nameOf(const Field& field, std::size_t child, const std::string& name, const Leaf& path) {
    if (isList(field.type.type)) {
        return name;
    }
    const std::size_t depth = path.levels.size();
    const bool arePairs = depth > 1 && path.levels[depth - 2].type.type == Type::Map;
    if (arePairs && child < 2) {
        return name + (child == 0 ? ".key" : ".value");
    }
    return name + "." + field.children[child].name;
}

void makeUnique(std::vector<Leaf>& leaves) {
    std::set<std::string> taken;
    std::map<std::string, int> numbers;
    for (Leaf& leaf : leaves) {
        const std::string name = leaf.name;
        while (!taken.insert(leaf.name).second) {
            leaf.name = name + "_" + std::to_string(++numbers[name] + 1);
        }
    }
}

}  // namespace

bool isList(Type type) {
    return type == Type::List || type == Type::LargeList || type == Type::FixedSizeList || type == Type::Map;
}

std::size_t Leaf::levelOf(std::size_t list) const {
    const auto level = std::ranges::find(levels, lists[list].id, &Level::node);
    return static_cast<std::size_t>(level - levels.begin());
}

std::vector<Leaf> leavesOf(const std::vector<Field>& fields, bool hasUnionValidity) {
    Walk walk(hasUnionValidity);
    for (const Field& field : fields) {
        walk.visit(field, field.name, {});
    }
    std::vector<Leaf> leaves = walk.leaves();
    makeUnique(leaves);
    return leaves;
}

std::vector<columnar::NestedColumn> columnsOf(const std::vector<Leaf>& leaves) {
    std::vector<columnar::LeafPlace> places;
    places.reserve(leaves.size());
    for (const Leaf& leaf : leaves) {
        places.push_back({.name = leaf.name, .complaint = leaf.complaint, .lists = leaf.lists});
    }
    return columnar::nestedColumns(places);
}

Leaf dictionaryLeaf(const Leaf& leaf) {
    Leaf values = leaf;
    values.levels = {Level{leaf.valueType()}};
    values.lists.clear();
    values.dictionary.reset();
    return values;
}

}  // namespace velmorak::arrow
