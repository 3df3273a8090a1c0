#pragma once

#include "root/tree/Tree.h"

#include <map>
#include <set>

namespace velmorak::root {

/// Makes columns of the branches of a tree and of the branches within them.
class BranchWalk {
public:
    BranchWalk(const Classes& classes, std::vector<TreeColumn>& columns) : classes(classes), columns(columns) {}

    void walk(const std::vector<ObjectPtr>& branches);

private:
    void visit(const Object& branch);
    void addLeaf(const Object& branch, const Object& leaf, bool isAlone, std::size_t& before);
    void addElement(const Object& branch, const Object& leaf);
    void setElementLayout(const Object& branch, const Object& leaf, TreeColumn& column) const;
    /// Where a collection is.
    enum class Collected { Alone, AsMember, ByItems };
    void setValues(TreeColumn& column, const std::string& typeName, Collected collected, int version) const;
    std::string freeName(const std::string& name);
    const Element* elementOf(const Object& branch) const;
    TreeColumn columnOf(const Object& branch) const;
    void setCount(const Object& leaf, TreeColumn& column);
    void add(TreeColumn column, const Object& leaf);

    const Classes& classes;
    std::vector<TreeColumn>& columns;
    std::map<const Object*, std::size_t> byLeaf;
    std::vector<std::string> parents;  ///< Names of the branches around the one that is visited.
    std::set<std::string> names;
};

}  // namespace velmorak::root
