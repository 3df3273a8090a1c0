#include "root/write/TreeWriter.h"

#include "root/write/ByteOutput.h"

#include <algorithm>
#include <numeric>

namespace velmorak::root {
namespace {

constexpr std::int64_t minBasketBytes = 32000;
constexpr std::int64_t expectedEntries = 1000;  ///< For the places of entries of variable length.

std::int64_t sumOf(const std::vector<std::int64_t>& numbers) {
    return std::accumulate(numbers.begin(), numbers.end(), std::int64_t{0});
}

ObjectPtr arrayOf(std::vector<ObjectPtr> items) {
    return std::make_shared<Object>(
        Object{.className = "TObjArray", .members = {{std::string(itemsMember), std::move(items)}}});
}

}  // namespace

TreeWriter::TreeWriter(FileWriter& file, const TreeLayout& layout)
    : file(file), layout(layout), branches(layout.branches.size()) {}

void TreeWriter::append(std::string_view rows) {
    while (!rows.empty()) {
        const TreeRows next = takeRows(rows, layout);
        if (next.baskets.empty()) {
            pending.append(next);
        }
        if (!next.baskets.empty() || pending.isEnough(layout)) {
            appendPending();
        }
        appendBaskets(next);
    }
}

void TreeWriter::appendPending() {
    if (pending.rows > 0) {
        pending.pack(layout, file.packing());
        appendBaskets(pending);
    }
    pending = {};
}

void TreeWriter::appendBaskets(const TreeRows& rows) {
    if (rows.baskets.empty()) {
        return;
    }
    for (std::size_t i = 0; i < branches.size(); ++i) {
        appendBasket(i, rows.rows, rows.baskets[i]);
    }
    firstRows.push_back(firstRows.back() + rows.rows);
}

void TreeWriter::appendBasket(std::size_t position, std::uint32_t rows, const PackedBasket& basket) {
    constexpr std::uint16_t version = 3;
    const WrittenBranch& described = layout.branches[position];
    Branch& branch = branches[position];
    RecordHead head = layout.basketHead(described);
    head.contentBytes = basket.contentBytes;
    head.cycle = static_cast<std::uint16_t>(branch.bytes.size());
    const std::size_t bytes = head.bytes() + basket.contentBytes;
    const std::size_t ofEntry = described.isVariable() ? rows + std::size_t{1} : described.valueBytes();
    ByteOutput more;
    more.u16(version);
    more.u32(static_cast<std::uint32_t>(std::max<std::int64_t>(minBasketBytes, static_cast<std::int64_t>(bytes))));
    more.u32(static_cast<std::uint32_t>(ofEntry));
    more.u32(rows);
    more.u32(static_cast<std::uint32_t>(head.bytes() + basket.border));
    more.u8(0);
    branch.positions.push_back(static_cast<std::int64_t>(file.append(head, more.content(), basket.bytes)));
    branch.bytes.push_back(static_cast<std::int64_t>(head.bytes() + basket.bytes.size()));
    branch.contentBytes += static_cast<std::int64_t>(bytes);
    branch.largestBasket = std::max(branch.largestBasket, static_cast<std::int64_t>(bytes));
    branch.largest = std::max<std::int64_t>(branch.largest, basket.largest);
}

void TreeWriter::finish() {
    appendPending();
    std::vector<ObjectPtr> leaves(branches.size());
    for (std::size_t i = 0; i < branches.size(); ++i) {
        leaves[i] = leafOf(i);
        if (const std::optional<std::size_t> count = layout.branches[i].count) {
            leaves[i]->members.emplace_back("fLeafCount", leaves[*count]);
        }
    }
    std::vector<ObjectPtr> branchObjects;
    for (std::size_t i = 0; i < branches.size(); ++i) {
        branchObjects.push_back(branchOf(i, leaves));
    }
    file.write(tree(branchObjects, leaves));
}

ObjectPtr TreeWriter::leafOf(std::size_t position) const {
    const WrittenBranch& described = layout.branches[position];
    const bool isText = described.type == ColumnType::Text;
    std::string title = described.name;
    if (described.count) {
        title += "[" + layout.branches[*described.count].name + "]";
    }
    Object leaf{.className = std::string("TLeaf") + described.letter(),
                .members = {{"fName", described.name},
                            {"fTitle", title},
                            {"fLen", isText ? std::max<std::int64_t>(1, branches[position].largest) : std::int64_t{1}},
                            {"fLenType", static_cast<std::int64_t>(described.valueBytes())},
                            {"fIsRange", std::int64_t{described.hasLengths ? 1 : 0}}}};
    if (isText || described.hasLengths) {
        leaf.members.emplace_back("fMaximum", branches[position].largest);
    }
    return std::make_shared<Object>(std::move(leaf));
}

ObjectPtr TreeWriter::branchOf(std::size_t position, const std::vector<ObjectPtr>& leaves) const {
    const WrittenBranch& described = layout.branches[position];
    Branch branch = branches[position];
    const auto baskets = static_cast<std::int64_t>(branch.bytes.size());
    const std::int64_t zipBytes = sumOf(branch.bytes);
    branch.bytes.push_back(0);
    branch.positions.push_back(0);
    Object object{.className = "TBranch",
                  .members = {{"fName", described.name},
                              {"fTitle", leaves[position]->text("fTitle") + "/" + described.letter()},
                              {"fCompress", std::int64_t{settingOf(file.packing())}},
                              {"fBasketSize", std::max(minBasketBytes, branch.largestBasket)},
                              {"fEntryOffsetLen", described.isVariable() ? expectedEntries : std::int64_t{0}},
                              {"fWriteBasket", baskets},
                              {"fEntryNumber", firstRows.back()},
                              {"fMaxBaskets", baskets + 1},
                              {"fEntries", firstRows.back()},
                              {"fTotBytes", branch.contentBytes},
                              {"fZipBytes", zipBytes},
                              {"fLeaves", arrayOf({leaves[position]})},
                              {"fBasketBytes", std::move(branch.bytes)},
                              {"fBasketEntry", firstRows},
                              {"fBasketSeek", std::move(branch.positions)}}};
    return std::make_shared<Object>(std::move(object));
}

Object TreeWriter::tree(const std::vector<ObjectPtr>& branchObjects, const std::vector<ObjectPtr>& leaves) const {
    std::int64_t contentBytes = 0;
    std::int64_t zipBytes = 0;
    for (const Branch& branch : branches) {
        contentBytes += branch.contentBytes;
        zipBytes += sumOf(branch.bytes);
    }
    Object object{.className = "TTree",
                  .members = {{"fName", layout.name},
                              {"fTitle", layout.name},
                              {"fEntries", firstRows.back()},
                              {"fTotBytes", contentBytes},
                              {"fZipBytes", zipBytes},
                              {"fFlushedBytes", zipBytes},
                              {"fBranches", arrayOf(branchObjects)},
                              {"fLeaves", arrayOf(leaves)}}};
    describeClusters(object);
    return object;
}

/// The baskets of all branches end at the same rows. Ranges of baskets with the same number of rows are listed, except
/// for the last range, to which the last basket belongs if it has no more rows.
void TreeWriter::describeClusters(Object& object) const {
    std::vector<std::int64_t> ends;
    std::vector<std::int64_t> sizes;
    for (std::size_t i = 0; i + 1 < firstRows.size(); ++i) {
        const std::int64_t size = firstRows[i + 1] - firstRows[i];
        const bool isLast = i + 2 == firstRows.size();
        if (sizes.empty() || (size != sizes.back() && !(isLast && size < sizes.back()))) {
            ends.push_back(0);
            sizes.push_back(size);
        }
        ends.back() = firstRows[i + 1] - 1;
    }
    if (sizes.empty()) {
        return;
    }
    object.members.emplace_back("fAutoFlush", sizes.back());
    ends.pop_back();
    sizes.pop_back();
    object.members.emplace_back("fNClusterRange", static_cast<std::int64_t>(ends.size()));
    object.members.emplace_back("fClusterRangeEnd", std::move(ends));
    object.members.emplace_back("fClusterSize", std::move(sizes));
}

}  // namespace velmorak::root
