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
    unsigned repetition = 0;
    unsigned elementDefinition = 0;
    unsigned depth = 0;
};

class Walk {
public:
    explicit Walk(const std::vector<SchemaElement>& schema) : schema(schema) {}

    std::vector<Leaf> leaves();

private:
    enum class Naming { Own, Inherited };

    void visit(const PathState& above, Naming naming);
    void visitChildren(const SchemaElement& element, const PathState& place);
    void visitList(const PathState& place);
    void visitMap(const PathState& place);
    void addLeaf(const SchemaElement& element, const PathState& place);
    const SchemaElement& take();
    const SchemaElement& peek(std::size_t ahead = 0) const;
    PathState enter(const SchemaElement& element, const PathState& above, Naming naming) const;

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
        visit({}, Naming::Own);
    }
    if (next != schema.size()) {
        throw Failure("its schema has more columns than it says");
    }
    return std::move(found);
}

PathState Walk::enter(const SchemaElement& element, const PathState& above, Naming naming) const {
    PathState place = above;
    place.fullName += (above.fullName.empty() ? "" : ".") + element.name;
    if (naming == Naming::Own) {
        place.name += (above.name.empty() ? "" : ".") + element.name;
    }
    if (element.repetition != Repetition::Required) {
        ++place.definition;
    }
    if (element.repetition == Repetition::Repeated) {
        ++place.repetition;
        place.elementDefinition = place.definition;
    }
    if (++place.depth > maxDepth) {
        throw Failure("its schema is nested too deeply");
    }
    return place;
}

void Walk::visit(const PathState& above, Naming naming) {
    const SchemaElement& element = take();
    const PathState place = enter(element, above, naming);
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
        visit(place, Naming::Own);
    }
}

/// The repeated node and the element in it have no names of their own. In old files, the repeated node is the element.
void Walk::visitList(const PathState& place) {
    const SchemaElement& repeated = peek();
    const bool isOld = repeated.type || repeated.children != 1 || repeated.name == "array" ||
                       repeated.name.ends_with("_tuple") || peek(1).repetition == Repetition::Repeated ||
                       repeated.meaning == Meaning::List;
    if (isOld) {
        visit(place, Naming::Inherited);
        return;
    }
    take();
    visit(enter(repeated, place, Naming::Inherited), Naming::Inherited);
}

void Walk::visitMap(const PathState& place) {
    const SchemaElement& repeated = take();
    const PathState inside = enter(repeated, place, Naming::Inherited);
    if (repeated.type) {
        addLeaf(repeated, inside);
        return;
    }
    visitChildren(repeated, inside);
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
    leaf.maxRepetition = place.repetition;
    leaf.elementDefinition = place.elementDefinition;
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

}  // namespace velmorak::parquet
