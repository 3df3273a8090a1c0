#include "parquet/Leaves.h"

#include <velmorak/Failure.h>

#include <map>
#include <set>

namespace velmorak::parquet {
namespace {

constexpr unsigned maxDepth = 40;

/// Where the walk is.
struct PathState {
    std::string name;
    std::string fullName;
    unsigned definition = 0;
    std::vector<columnar::ListPlace> lists;
    std::vector<unsigned> elementDefinitions;
    unsigned depth = 0;
};

class Walk {
public:
    explicit Walk(const std::vector<SchemaElement>& schema) : schema(schema) {}

    std::vector<Leaf> leaves();

private:
    /// @param name of the element in the names of columns; empty if it has none.
    void visit(const PathState& above, std::string_view name);
    void visitChildren(const SchemaElement& element, const PathState& place);
    void visitList(const PathState& place);
    void visitMap(const PathState& place);
    void addLeaf(const SchemaElement& element, const PathState& place);
    const SchemaElement& take();
    const SchemaElement& peek(std::size_t ahead = 0) const;
    PathState enter(const SchemaElement& element, const PathState& above, std::string_view name) const;

    const std::vector<SchemaElement>& schema;
    std::size_t next = 0;
    std::vector<Leaf> found;
};

const SchemaElement& Walk::peek(std::size_t ahead) const {
    if (ahead >= schema.size() - next) {
        throw Failure("its schema ends early");
    }
    return schema[next + ahead];
}

const SchemaElement& Walk::take() {
    const SchemaElement& element = peek();
    ++next;
    return element;
}

std::vector<Leaf> Walk::leaves() {
    const SchemaElement& root = take();
    for (std::int32_t i = 0; i < root.children; ++i) {
        visit({}, peek().name);
    }
    if (next != schema.size()) {
        throw Failure("its schema has more columns than it says");
    }
    return std::move(found);
}

PathState Walk::enter(const SchemaElement& element, const PathState& above, std::string_view name) const {
    PathState place = above;
    place.fullName += (above.fullName.empty() ? "" : ".") + element.name;
    if (!name.empty()) {
        place.name += (above.name.empty() ? "" : ".") + std::string(name);
    }
    if (element.repetition != Repetition::Required) {
        ++place.definition;
    }
    if (element.repetition == Repetition::Repeated) {
        place.lists.push_back({.id = next, .name = place.name});
        place.elementDefinitions.push_back(place.definition);
    }
    if (++place.depth > maxDepth) {
        throw Failure("its schema is nested too deeply");
    }
    return place;
}

void Walk::visit(const PathState& above, std::string_view name) {
    const SchemaElement& element = take();
    const PathState place = enter(element, above, name);
    if (element.type) {
        addLeaf(element, place);
        return;
    }
    if (element.children <= 0) {
        return;  // A group without columns.
    }
    const bool hasOneRepeated = element.children == 1 && peek().repetition == Repetition::Repeated;
    if (element.meaning == Meaning::List && hasOneRepeated) {
        visitList(place);
    } else if (element.meaning == Meaning::Map && hasOneRepeated && element.repetition != Repetition::Repeated) {
        visitMap(place);
    } else {
        visitChildren(element, place);
    }
}

void Walk::visitChildren(const SchemaElement& element, const PathState& place) {
    for (std::int32_t i = 0; i < element.children; ++i) {
        visit(place, peek().name);
    }
}

/// The repeated node and the element in it have no names of their own. In old files, the repeated node is the element.
void Walk::visitList(const PathState& place) {
    const SchemaElement& repeated = peek();
    const bool isOld = repeated.type || repeated.children != 1 || repeated.name == "array" ||
                       repeated.name.ends_with("_tuple") || peek(1).repetition == Repetition::Repeated ||
                       repeated.meaning == Meaning::List;
    if (isOld) {
        visit(place, {});
        return;
    }
    take();
    visit(enter(repeated, place, {}), {});
}

/// Files have different names for keys and values.
void Walk::visitMap(const PathState& place) {
    const SchemaElement& repeated = take();
    const PathState inside = enter(repeated, place, {});
    if (repeated.type) {
        addLeaf(repeated, inside);
        return;
    }
    for (std::int32_t i = 0; i < repeated.children; ++i) {
        visit(inside, i == 0 ? "key" : i == 1 ? "value" : peek().name);
    }
}

ColumnType typeOf(const SchemaElement& element) {
    switch (*element.type) {
        case Physical::Boolean:
            return element.meaning == Meaning::Null ? ColumnType::Real : ColumnType::Boolean;
        case Physical::Int32:
        case Physical::Int64:
            return element.meaning == Meaning::None || element.meaning == Meaning::Integer ? ColumnType::Integer
                                                                                           : ColumnType::Real;
        case Physical::Int96:
        case Physical::Float:
        case Physical::Double:
            return ColumnType::Real;
        case Physical::ByteArray:
        case Physical::FixedBytes:
            break;
    }
    const bool isNumber =
        element.meaning == Meaning::Decimal || element.meaning == Meaning::Float16 || element.meaning == Meaning::Null;
    return isNumber ? ColumnType::Real : ColumnType::Text;
}

std::string complaintAbout(const SchemaElement& element) {
    constexpr std::int32_t maxFixedBytes = 1 << 24;
    if (element.type == Physical::FixedBytes) {
        if (element.typeLength <= 0 || element.typeLength > maxFixedBytes) {
            return "its values have an impossible length";
        }
        const std::int32_t wanted = element.meaning == Meaning::Float16 ? 2
                                    : element.meaning == Meaning::Uuid  ? 16
                                                                        : element.typeLength;
        if (element.typeLength != wanted) {
            return "its values do not have the length of their type";
        }
    }
    return element.meaning == Meaning::Interval ? "intervals of months, days and milliseconds cannot be read" : "";
}

void Walk::addLeaf(const SchemaElement& element, const PathState& place) {
    Leaf leaf;
    leaf.name = place.name;
    leaf.fullName = place.fullName;
    leaf.element = element;
    leaf.maxDefinition = place.definition;
    leaf.maxRepetition = static_cast<unsigned>(place.lists.size());
    leaf.lists = place.lists;
    leaf.elementDefinitions = place.elementDefinitions;
    leaf.type = typeOf(element);
    leaf.complaint = complaintAbout(element);
    found.push_back(std::move(leaf));
}

/// Names are unique: those that more than one leaf would have are given in full.
void makeUnique(std::vector<Leaf>& leaves) {
    std::set<std::string> once;
    std::set<std::string> twice;
    for (const Leaf& leaf : leaves) {
        (once.insert(leaf.name).second ? once : twice).insert(leaf.name);
    }
    std::set<std::string> taken;
    std::map<std::string, int> numbers;
    for (Leaf& leaf : leaves) {
        leaf.name = twice.contains(leaf.name) ? leaf.fullName : leaf.name;
        while (!taken.insert(leaf.name).second) {
            leaf.name = leaf.fullName + "_" + std::to_string(++numbers[leaf.fullName] + 1);
        }
    }
}

}  // namespace

std::vector<Leaf> leavesOf(const std::vector<SchemaElement>& schema) {
    std::vector<Leaf> leaves = Walk(schema).leaves();
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

}  // namespace velmorak::parquet
