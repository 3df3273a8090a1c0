#include "root/tree/BranchWalk.h"

#include "root/tree/ValueTypes.h"

#include <algorithm>
#include <utility>

namespace velmorak::root {
namespace {

/// Types of the values in each class of leaf.
std::optional<NumberType> leafType(const Object& leaf) {
    using enum NumberType;
    const bool isUnsigned = leaf.integer("fIsUnsigned") != 0;
    static const std::map<std::string, std::pair<NumberType, NumberType>> types{
        {"TLeafB", {Int8, UInt8}},         {"TLeafS", {Int16, UInt16}}, {"TLeafI", {Int32, UInt32}},
        {"TLeafL", {Int64, UInt64}},       {"TLeafG", {Int64, UInt64}}, {"TLeafF", {Float, Float}},
        {"TLeafD", {Double, Double}},      {"TLeafO", {Bool, Bool}},    {"TLeafF16", {Float16, Float16}},
        {"TLeafD32", {Double32, Double32}}};
    const auto found = types.find(leaf.className);
    if (found == types.end()) {
        return std::nullopt;
    }
    return isUnsigned ? found->second.second : found->second.first;
}

std::uint64_t atOr(const std::vector<std::int64_t>& numbers, std::size_t position, std::uint64_t otherwise) {
    return position < numbers.size() && numbers[position] >= 0 ? static_cast<std::uint64_t>(numbers[position])
                                                               : otherwise;
}

/// The baskets of a branch: first those in the file, then those within the tree's record.
std::vector<BasketPlace> basketsOf(const Object& branch, std::uint64_t entries) {
    const std::vector<std::int64_t>& firsts = branch.integers("fBasketEntry");
    const std::vector<std::int64_t>& positions = branch.integers("fBasketSeek");
    const std::vector<std::int64_t>& sizes = branch.integers("fBasketBytes");
    const std::vector<ObjectPtr> embedded = branch.objects("fBaskets");
    std::vector<BasketPlace> places;
    const auto written = static_cast<std::size_t>(std::max<std::int64_t>(branch.integer("fWriteBasket"), 0));
    for (std::size_t i = 0; i < std::max(std::min(written + 1, positions.size()), embedded.size()); ++i) {
        BasketPlace place;
        place.firstEntry = atOr(firsts, i, entries);
        place.position = atOr(positions, i, 0);
        place.bytes = atOr(sizes, i, 0);
        if (place.position == 0 && i < embedded.size() && embedded[i]) {
            place.embedded = std::make_shared<const Object>(*embedded[i]);  // Outlives the tree's record.
        }
        if (place.position != 0 || place.embedded) {
            places.push_back(std::move(place));
        }
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
        const std::uint64_t end = i + 1 < places.size() ? places[i + 1].firstEntry : entries;
        places[i].entries = end > places[i].firstEntry ? end - places[i].firstEntry : 0;
    }
    return places;
}

std::string withoutLength(const std::string& name) {
    return name.substr(0, name.find('['));
}

constexpr std::int64_t clonesMember = 31;
constexpr std::int64_t collectionMember = 41;
constexpr std::int64_t clonesTop = 3;
constexpr std::int64_t collectionTop = 4;

}  // namespace

void BranchWalk::walk(const std::vector<ObjectPtr>& branches) {
    for (const ObjectPtr& branch : branches) {
        if (branch) {
            visit(*branch);
        }
    }
}

/// Branches of different parents may have the same name; the parents' names distinguish them.
std::string BranchWalk::freeName(const std::string& name) {
    std::string free = name;
    for (auto parent = parents.rbegin(); parent != parents.rend() && names.contains(free); ++parent) {
        free.insert(0, *parent + ".");
    }
    const std::string base = free;
    for (int number = 2; names.contains(free); ++number) {
        free = base + "_" + std::to_string(number);
    }
    names.insert(free);
    return free;
}

void BranchWalk::visit(const Object& branch) {
    const std::vector<ObjectPtr> leaves = branch.objects("fLeaves");
    const std::vector<ObjectPtr> branches = branch.objects("fBranches");
    const std::int64_t type = branch.integer("fType");
    const bool isCounter = type == clonesTop || type == collectionTop;
    if (branches.empty() || isCounter) {
        std::size_t before = 0;
        for (const ObjectPtr& leaf : leaves) {
            if (leaf && leaf->className == "TLeafElement") {
                addElement(branch, *leaf);
            } else if (leaf) {
                addLeaf(branch, *leaf, leaves.size() == 1, before);
            }
        }
    }
    parents.push_back(branch.text("fName"));
    walk(branches);
    parents.pop_back();
}

TreeColumn BranchWalk::columnOf(const Object& branch) const {
    TreeColumn column;
    column.name = branch.text("fName");
    column.title = branch.text("fTitle");
    column.entries = static_cast<std::uint64_t>(std::max(branch.real("fEntries"), 0.0));
    column.bytes = static_cast<std::uint64_t>(std::max(branch.real("fTotBytes"), 0.0));
    column.baskets = basketsOf(branch, column.entries);
    if (!branch.text("fFileName").empty()) {
        column.complaint = "its values are in another file, " + branch.text("fFileName");
    }
    if (!branch.isWhole) {
        column.complaint = "its description cannot be read";
    }
    return column;
}

void BranchWalk::setCount(const Object& leaf, TreeColumn& column) {
    const ObjectPtr count = leaf.object("fLeafCount");
    if (!count) {
        return;
    }
    const auto found = byLeaf.find(count.get());
    if (found == byLeaf.end()) {
        column.complaint = "the column " + count->text("fName") + " of its counts is missing";
    } else if (const ColumnInfo& info = columns[found->second].info; info.isList || info.type != ColumnType::Integer) {
        column.complaint = "the column " + info.name + " of its counts has no counts";
    } else {
        column.count = found->second;
    }
}

void BranchWalk::add(TreeColumn column, const Object& leaf) {
    const Layout::Kind kind = column.layout.kind;
    const bool isNumbers = kind == Layout::Kind::Numbers || kind == Layout::Kind::FlaggedNumbers;
    const bool isInList = column.count || kind == Layout::Kind::Values || (isNumbers && column.layout.length > 1);
    std::vector<SelectedColumn> parts = columnsOf(column.layout.type, column.name, isInList);
    if (parts.empty()) {
        return;
    }
    const std::size_t first = columns.size();
    byLeaf[&leaf] = first;
    column.bytes /= parts.size();
    columns.insert(columns.end(), parts.size() - 1, column);
    columns.push_back(std::move(column));
    for (std::size_t i = 0; i < parts.size(); ++i) {
        SelectedColumn& part = parts[i];
        TreeColumn& added = columns[first + i];
        added.name = freeName(part.name);
        added.info = {.name = added.name, .type = part.type, .isList = part.isList};
        added.selection = std::move(part.selection);
        added.complaint = added.complaint.empty() ? part.problem : added.complaint;
    }
}

void BranchWalk::addLeaf(const Object& branch, const Object& leaf, bool isAlone, std::size_t& before) {
    TreeColumn column = columnOf(branch);
    if (!isAlone) {
        column.name += "." + leaf.text("fName");
    }
    column.typeName = leaf.className;
    column.layout.length = static_cast<std::size_t>(std::max<std::int64_t>(leaf.integer("fLen", 1), 1));
    column.layout.before = before;
    const std::optional<NumberType> type = leafType(leaf);
    if (leaf.className == "TLeafC") {
        column.layout.kind = Layout::Kind::Value;
        column.layout.type.kind = ValueType::Kind::Text;
        column.layout.length = 1;
    } else if (type) {
        column.layout.type.number = *type;
        column.layout.type.range = NumberRange::fromTitle(leaf.text("fTitle"));
        before += column.layout.length * sizeOf(*type, column.layout.type.range);
    } else {
        column.complaint = "leaves of the class " + leaf.className + " cannot be read";
    }
    setCount(leaf, column);
    if (!isAlone && (column.count || leaf.className == "TLeafC")) {
        column.complaint = "its branch has other leaves of variable length";
    }
    add(std::move(column), leaf);
}

const Element* BranchWalk::elementOf(const Object& branch) const {
    const std::int64_t position = branch.integer("fID", -1);
    const std::string className = branch.text("fClassName");
    const auto checksum = static_cast<std::uint32_t>(branch.integer("fCheckSum"));
    const ClassInfo* info = checksum != 0 ? classes.findByChecksum(className, checksum) : nullptr;
    info = info ? info : classes.find(className, static_cast<int>(branch.integer("fClassVersion")));
    if (!info || position < 0 || static_cast<std::size_t>(position) >= info->elements.size()) {
        return nullptr;
    }
    return &info->elements[static_cast<std::size_t>(position)];
}

void BranchWalk::addElement(const Object& branch, const Object& leaf) {
    TreeColumn column = columnOf(branch);
    column.name = withoutLength(column.name);
    setCount(leaf, column);
    setElementLayout(branch, leaf, column);
    add(std::move(column), leaf);
}

void BranchWalk::setElementLayout(const Object& branch, const Object& leaf, TreeColumn& column) const {
    const std::int64_t type = branch.integer("fType");
    const auto kind = static_cast<int>(branch.integer("fStreamerType", -1));
    const Element* element = elementOf(branch);
    column.typeName = element ? element->typeName : branch.text("fClassName");
    column.layout.length = static_cast<std::size_t>(std::max<std::int64_t>(leaf.integer("fLen", 1), 1));
    if (type == clonesTop || type == collectionTop) {
        column.layout.type.number = NumberType::Int32;
        column.layout.length = 1;
        return;
    }
    const std::optional<NumberType> number = kind > 0 && kind < 60 ? numberTypeOf(kind % 20) : std::nullopt;
    const bool isCounted = type == clonesMember || type == collectionMember;
    if (number) {
        column.layout.type.number = *number;
        column.layout.type.range = element ? element->range : NumberRange();
        column.layout.kind = kind > Element::CountedArray ? Layout::Kind::FlaggedNumbers : Layout::Kind::Numbers;
        if (kind > Element::CountedArray && isCounted) {
            column.complaint = "arrays of variable length within a collection cannot be read";
        }
    } else if (kind == Element::Text || kind == Element::StandardText) {
        column.layout.kind = isCounted ? Layout::Kind::Values : Layout::Kind::Value;
        column.layout.type.kind = ValueType::Kind::Text;
    } else {
        const bool isAlone = kind == -1;
        setValues(column, isAlone ? branch.text("fClassName") : column.typeName,
                  isAlone ? Collected::Alone : (isCounted ? Collected::ByItems : Collected::AsMember),
                  static_cast<int>(branch.integer("fClassVersion")));
    }
}

/// A collection in a branch of its own has a header in each entry, except for a text; a member has one header for all
/// its values, which are contiguous if it is a member of the items of another collection. Objects have one each, but
/// not one that is a branch.
void BranchWalk::setValues(TreeColumn& column, const std::string& typeName, Collected collected, int version) const {
    std::optional<ValueType> type = valueTypeNamed(typeName);
    if (!type) {
        column.complaint = "values of the type " + typeName + " cannot be read";
        return;
    }
    type->version = collected == Collected::Alone ? version : 0;
    addMembers(*type, classes);
    const bool isCollection = type->kind == ValueType::Kind::List || type->kind == ValueType::Kind::Map;
    const bool isText = type->kind == ValueType::Kind::Text;
    type->isBare = collected == Collected::Alone;
    column.layout.type = std::move(*type);
    column.layout.kind = collected == Collected::ByItems ? Layout::Kind::Values : Layout::Kind::Value;
    column.layout.hasHeader = isCollection || (isText && collected != Collected::Alone);
}

}  // namespace velmorak::root
