#include "columnar/Nesting.h"

#include <set>
#include <utility>

namespace velmorak::columnar {
namespace {

using Part = NestedColumn::Part;

bool isWithin(const LeafPlace& leaf, std::size_t list, std::uint64_t id) {
    return list < leaf.lists.size() && leaf.lists[list].id == id;
}

class Columns {
public:
    explicit Columns(const std::vector<LeafPlace>& leaves) : leaves(leaves) {}

    std::vector<NestedColumn> take();

private:
    void addLevels(std::size_t last);
    void addLevel(std::size_t last, std::size_t list);
    std::size_t plainestLeaf(std::size_t last, std::size_t list) const;
    std::string freeName(const std::string& name);

    const std::vector<LeafPlace>& leaves;
    std::vector<NestedColumn> columns;
    std::set<std::string> taken;
};

std::vector<NestedColumn> Columns::take() {
    for (const LeafPlace& leaf : leaves) {
        taken.insert(leaf.name);
    }
    for (std::size_t i = 0; i < leaves.size(); ++i) {
        columns.push_back({leaves[i].name, Part::Values, i, 0, leaves[i].complaint});
        addLevels(i);
    }
    return std::move(columns);
}

/// Adds the lists within lists of which the leaf is the last.
void Columns::addLevels(std::size_t last) {
    const std::vector<ListPlace>& lists = leaves[last].lists;
    for (std::size_t list = lists.size(); list-- > 1;) {
        if (last + 1 == leaves.size() || !isWithin(leaves[last + 1], list, lists[list].id)) {
            addLevel(last, list);
        }
    }
}

void Columns::addLevel(std::size_t last, std::size_t list) {
    const std::vector<ListPlace>& lists = leaves[last].lists;
    std::string name = lists[list].name;
    for (std::size_t inner = list + 1; inner < lists.size() && lists[inner].name == lists[list].name; ++inner) {
        name += ".count";
    }
    const std::size_t leaf = plainestLeaf(last, list);
    columns.push_back({freeName(name + ".count"), Part::Counts, leaf, list, leaves[leaf].complaint});
    columns.push_back({freeName(name + ".row"), Part::Rows, leaf, list, leaves[leaf].complaint});
}

/// @return of the leaves in a list, one that can be read, in as few further lists as possible.
std::size_t Columns::plainestLeaf(std::size_t last, std::size_t list) const {
    const std::uint64_t id = leaves[last].lists[list].id;
    const auto effort = [this](std::size_t leaf) {
        return std::pair(!leaves[leaf].complaint.empty(), leaves[leaf].lists.size());
    };
    std::size_t best = last;
    for (std::size_t leaf = last; isWithin(leaves[leaf], list, id); --leaf) {
        best = effort(leaf) <= effort(best) ? leaf : best;
        if (leaf == 0) {
            break;
        }
    }
    return best;
}

std::string Columns::freeName(const std::string& name) {
    std::string free = name;
    for (int number = 2; !taken.insert(free).second; ++number) {
        free = name + "_" + std::to_string(number);
    }
    return free;
}

}  // namespace

std::vector<NestedColumn> nestedColumns(const std::vector<LeafPlace>& leaves) {
    return Columns(leaves).take();
}

}  // namespace velmorak::columnar
