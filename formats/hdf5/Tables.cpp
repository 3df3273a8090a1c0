#include "hdf5/Tables.h"

#include "hdf5/Names.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <set>
#include <utility>

namespace velmorak::hdf5 {
namespace {

constexpr int maxGroupDepth = 32;
constexpr std::size_t maxObjects = 20000;
constexpr std::uint64_t maxColumns = 100000;

/// The unit of a dataset, or of each of its columns.
std::string unitOf(const Dataset& dataset, std::size_t position, std::size_t count) {
    for (const char* name : {"units", "unit"}) {
        const std::vector<std::string> units = textsIn(dataset.handle.id(), name);
        if (units.size() == 1) {
            return units.front();
        }
        if (units.size() == count) {
            return units[position];
        }
    }
    return {};
}

/// Names of the columns of a dataset with two dimensions, if it has any.
std::vector<std::string> columnNamesOf(const Dataset& dataset) {
    for (const char* name : {"columns", "column_names", "names", "fields"}) {
        std::vector<std::string> names = textsIn(dataset.handle.id(), name);
        if (names.size() == dataset.width()) {
            return names;
        }
    }
    return {};
}

/// Columns of the last dataset of a table.
class DatasetColumns {
public:
    explicit DatasetColumns(Table& table) : table(table), dataset(table.datasets.back()) {}

    /// @param stem  name of the dataset, if there are others, else empty.
    /// @param parts names of the positions of a dataset with two dimensions; empty for a list in each row.
    void add(const std::string& stem, const std::vector<std::string>& parts);
    /// The items of a leaf that is an array, as columns of their own.
    void addItems(std::size_t leaf, const std::vector<std::string>& names);
    void addWhole(std::size_t leaf, const std::string& name);

private:
    TableColumn columnOf(std::size_t position, std::string name) const;

    Table& table;
    const Dataset& dataset;
};

TableColumn DatasetColumns::columnOf(std::size_t position, std::string name) const {
    const Leaf& leaf = dataset.leaves[position];
    return {.about = {.info = {.name = std::move(name),
                               .type = leaf.type(),
                               .isList = leaf.isList,
                               .unit = unitOf(dataset, position, dataset.leaves.size())},
                      .problem = dataset.problem.empty() ? leaf.problem : dataset.problem},
            .source = {.dataset = table.datasets.size() - 1,
                       .leaf = position,
                       .offset = leaf.offset,
                       .step = leaf.bytes,
                       .count = leaf.count,
                       .isList = leaf.isList}};
}

void DatasetColumns::addWhole(std::size_t leaf, const std::string& name) {
    table.columns.push_back(columnOf(leaf, name));
}

void DatasetColumns::addItems(std::size_t leaf, const std::vector<std::string>& names) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        TableColumn column = columnOf(leaf, names[i]);
        column.about.info.isList = false;
        column.source.isList = false;
        column.source.offset += i * column.source.step;
        table.columns.push_back(std::move(column));
    }
}

void DatasetColumns::add(const std::string& stem, const std::vector<std::string>& parts) {
    const bool isWide = dataset.shape.size() == 2;
    for (std::size_t i = 0; i < dataset.leaves.size(); ++i) {
        const std::string& member = dataset.leaves[i].name;
        const char* const between = stem.empty() || member.empty() ? "" : ".";
        std::string name = stem + between;
        name += member;
        if (!isWide) {
            addWhole(i, name.empty() ? "value" : name);
            continue;
        }
        TableColumn column = columnOf(i, name);
        if (column.about.problem.empty() && (dataset.leaves.size() > 1 || column.source.isList)) {
            column.about.problem = "compounds and arrays in two dimensions are not read";
        }
        if (!column.about.problem.empty() || parts.empty()) {
            column.source.count = static_cast<std::size_t>(dataset.width());
            column.source.step = dataset.elementBytes;
            column.source.isList = true;
            column.about.info.isList = true;
            column.about.info.name = name.empty() ? "value" : name;
            table.columns.push_back(std::move(column));
            continue;
        }
        for (std::size_t j = 0; j < parts.size(); ++j) {
            TableColumn part = column;
            part.about.info.name = stem.empty() ? parts[j] : stem + "." + parts[j];
            part.about.info.unit = unitOf(dataset, j, parts.size());
            part.source.first = j;
            part.source.offset += j * dataset.elementBytes;
            table.columns.push_back(std::move(part));
        }
    }
}

std::vector<std::string> partsOf(const Dataset& dataset, bool isAlone) {
    if (dataset.shape.size() != 2) {
        return {};
    }
    std::vector<std::string> names = columnNamesOf(dataset);
    if (names.empty() && isAlone && dataset.width() <= maxColumns) {
        for (std::uint64_t i = 0; i < dataset.width(); ++i) {
            names.push_back("c" + std::to_string(i + 1));
        }
    }
    return names;
}

std::string joined(const std::string& path, const std::string& name) {
    return path.empty() ? name : path + "/" + name;
}

class Search {
public:
    void group(hid_t group, const std::string& path, int depth);

    std::vector<Table> tables;

private:
    void count();
    void addGroup(hid_t group, const std::string& path, const std::vector<std::string>& names);
    void addDataset(hid_t group, const std::string& name, const std::string& path);
    void addPandasTable(hid_t group, const std::string& path);
    void addPandasFrame(hid_t group, const std::string& path);
    static void addBlock(Table& table, hid_t group, const std::string& block);

    std::set<haddr_t> seen;
    std::size_t objects = 0;
};

void Search::count() {
    if (++objects > maxObjects) {
        throw Failure("it contains more than " + std::to_string(maxObjects) + " objects");
    }
}

/// Runs something that may fail for one object only.
template <typename Work>
std::string problemIn(const Work& work) {
    try {
        work();
        return {};
    } catch (const Failure& failure) {
        return failure.what();
    }
}

void Search::addDataset(hid_t group, const std::string& name, const std::string& path) {
    Table table{.path = joined(path, name), .type = "dataset"};
    const std::string problem = problemIn([&] {
        table.datasets.push_back(openDataset(group, name, table.path));
        const Dataset& dataset = table.datasets.back();
        table.rows = dataset.rows();
        table.isScalar = dataset.shape.empty();
        DatasetColumns(table).add("", partsOf(dataset, true));
    });
    table.problem = !problem.empty() ? problem : table.datasets.back().problem;
    tables.push_back(std::move(table));
}

/// Rows of the datasets in a group, if they are several and have the same number of them.
void Search::addGroup(hid_t group, const std::string& path, const std::vector<std::string>& names) {
    Table table{.path = path.empty() ? "/" : path, .type = "group"};
    std::set<std::uint64_t> lengths;
    for (const std::string& name : names) {
        Dataset dataset = openDataset(group, name, joined(path, name));
        if (dataset.shape.empty()) {
            continue;
        }
        lengths.insert(dataset.rows());
        table.datasets.push_back(std::move(dataset));
        DatasetColumns(table).add(name, partsOf(table.datasets.back(), false));
    }
    if (table.datasets.size() < 2 || lengths.size() != 1) {
        return;
    }
    table.rows = *lengths.begin();
    tables.push_back(std::move(table));
}

/// A table of PyTables: an index, blocks of columns of the same type, and columns of their own.
void Search::addPandasTable(hid_t group, const std::string& path) {
    Table table{.path = path, .type = "pandas table"};
    table.problem = problemIn([&] {
        table.datasets.push_back(openDataset(group, "table", joined(path, "table")));
        const Dataset& dataset = table.datasets.back();
        table.rows = dataset.rows();
        table.problem = dataset.problem;
        for (std::size_t i = 0; i < dataset.leaves.size(); ++i) {
            const Leaf& leaf = dataset.leaves[i];
            const std::vector<std::string> names = pickledTexts(textIn(dataset.handle.id(), leaf.name + "_kind"));
            if (leaf.isList && names.size() == leaf.count) {
                DatasetColumns(table).addItems(i, names);
            } else {
                DatasetColumns(table).addWhole(i, leaf.name);
            }
        }
    });
    tables.push_back(std::move(table));
}

/// A block of columns of the same type: their names, and their values in two dimensions.
void Search::addBlock(Table& table, hid_t group, const std::string& block) {
    const Handle items(H5Dopen2(group, (block + "_items").c_str(), H5P_DEFAULT), H5Dclose);
    require(static_cast<bool>(items), "the names of its columns cannot be read");
    const std::vector<std::string> names = textsIn(items.id(), "");
    Dataset values = openDataset(group, block + "_values", joined(table.path, block + "_values"));
    const bool isFitting = values.shape.size() == 2 && values.width() == names.size() && values.rows() == table.rows;
    if (!isFitting) {
        for (const std::string& name : names) {
            table.columns.push_back({.about = {.info = {.name = name},
                                               .problem = "pandas has stored it as Python objects; write the file with "
                                                          "format=\"table\""}});
        }
        return;
    }
    table.datasets.push_back(std::move(values));
    DatasetColumns(table).add("", names);
}

void Search::addPandasFrame(hid_t group, const std::string& path) {
    Table table{.path = path, .type = "pandas frame"};
    table.problem = problemIn([&] {
        table.datasets.push_back(openDataset(group, "axis1", joined(path, "axis1")));
        table.rows = table.datasets.back().rows();
        DatasetColumns(table).add("index", {});
        const std::vector<std::string> names = namesIn(group);
        for (const std::string& name : names) {
            constexpr std::string_view ending = "_items";
            if (name.starts_with("block") && name.ends_with(ending)) {
                addBlock(table, group, name.substr(0, name.size() - ending.size()));
            }
        }
        const Handle axis(H5Dopen2(group, "axis0", H5P_DEFAULT), H5Dclose);
        const std::vector<std::string> order = axis ? textsIn(axis.id(), "") : std::vector<std::string>();
        const auto place = [&](const TableColumn& column) {
            return std::ranges::find(order, column.about.info.name) - order.begin();
        };
        std::ranges::stable_sort(table.columns.begin() + 1, table.columns.end(), {}, place);
    });
    tables.push_back(std::move(table));
}

void Search::group(hid_t group, const std::string& path, int depth) {
    H5O_info_t info{};
    if (depth > maxGroupDepth || H5Oget_info2(group, &info, H5O_INFO_BASIC) < 0 || !seen.insert(info.addr).second) {
        return;
    }
    const std::string pandas = textIn(group, "pandas_type");
    if (pandas == "frame_table") {
        return addPandasTable(group, path);
    }
    if (pandas == "frame") {
        return addPandasFrame(group, path);
    }
    std::vector<std::string> datasets;
    std::vector<std::string> groups;
    for (const std::string& name : namesIn(group)) {
        count();
        H5O_info_t object{};
        if (H5Oget_info_by_name2(group, name.c_str(), &object, H5O_INFO_BASIC, H5P_DEFAULT) < 0) {
            continue;
        }
        if (object.type == H5O_TYPE_DATASET) {
            datasets.push_back(name);
        } else if (object.type == H5O_TYPE_GROUP) {
            groups.push_back(name);
        }
    }
    const std::size_t before = tables.size();
    problemIn([&] { addGroup(group, path, datasets); });
    const bool isTable = tables.size() > before;
    for (const std::string& name : datasets) {
        addDataset(group, name, path);
        tables.back().isInGroup = isTable;
    }
    for (const std::string& name : groups) {
        const Handle inner(H5Gopen2(group, name.c_str(), H5P_DEFAULT), H5Gclose);
        if (inner) {
            this->group(inner.id(), joined(path, name), depth + 1);
        }
    }
}

}  // namespace

std::vector<Table> tablesIn(hid_t file) {
    const Handle root(H5Gopen2(file, "/", H5P_DEFAULT), H5Gclose);
    require(static_cast<bool>(root), "its objects cannot be listed");
    Search search;
    search.group(root.id(), "", 0);
    return std::move(search.tables);
}

}  // namespace velmorak::hdf5
