#include "Table/kinds.h"

#include "Table/cuts/Condition.h"
#include "shared/AppendInputs.h"
#include "shared/RowKeys.h"

#include <velmorak/NamedNumbers.h>
#include <velmorak/OrderedRows.h>
#include <velmorak/Parts.h>
#include <velmorak/RowMemory.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>

namespace velmorak {

namespace {

/// What a table of keys takes for each, beside the characters.
constexpr std::size_t bytesOfShortKey = 48;
constexpr std::size_t bytesOfLongKey = 96;

std::vector<InputSpec> uniqueInputs() {
    return {
        {.name = "table", .description = "Table with rows that occur more than once.", .type = ValueType::Table},
        {.name = "by",
         .description = "Expressions that must all be equal for two rows to count as the same, one a line or separated "
                        "by semicolons: run; event. Empty: all columns. A number at an input of its own is written "
                        "@name.",
         .type = ValueType::Text},
    };
}

NamedNumbers uniqueNumbers(const std::string& by) {
    return {keyTexts("by", by), uniqueInputs()};
}

std::vector<KeyOrder> allColumns(const Schema& schema) {
    std::vector<KeyOrder> orders;
    for (const ColumnInfo& column : schema.columns()) {
        if (column.isList) {
            throw Failure("by", "column \"" + column.name +
                                    "\" holds lists, which cannot be compared; enter the columns that tell rows apart");
        }
        orders.push_back({"`" + column.name + "`", false});
    }
    return orders;
}

/// The keys that have occurred.
class KnownKeys {
public:
    explicit KnownKeys(std::shared_ptr<MemoryBudget> budget) : memory(std::move(budget)) {}

    /// @return 1 for each row whose key has not occurred before, else 0.
    std::vector<std::uint8_t> firstOf(const RowKeys& keys);

private:
    bool add(const RowKeys& keys, std::size_t row);
    void take(std::size_t bytes);

    std::unordered_set<std::uint64_t> shortKeys;
    std::unordered_set<std::string> longKeys;
    MemoryShare memory;
};

std::vector<std::uint8_t> KnownKeys::firstOf(const RowKeys& keys) {
    std::vector<std::uint8_t> isFirst(keys.rows());
    for (std::size_t row = 0; row < keys.rows(); ++row) {
        isFirst[row] = add(keys, row) ? 1 : 0;
    }
    return isFirst;
}

bool KnownKeys::add(const RowKeys& keys, std::size_t row) {
    if (keys.isShort()) {
        const bool isNew = shortKeys.insert(keys.prefix(row)).second;
        take(isNew ? bytesOfShortKey : 0);
        return isNew;
    }
    std::string key = keys.whole(row);
    const std::size_t bytes = key.size();
    const bool isNew = longKeys.insert(std::move(key)).second;
    take(isNew ? bytes + bytesOfLongKey : 0);
    return isNew;
}

void KnownKeys::take(std::size_t bytes) {
    if (bytes > 0 && !memory.take(bytes)) {
        throw Failure("by", "there are more different keys than fit into the memory (" +
                                std::to_string(shortKeys.size() + longKeys.size()) +
                                " so far); set VELMORAK_MEMORY_LIMIT to more, or use fewer or shorter keys");
    }
}

class UniqueOperation : public RowOperation, public OrderedRows {
public:
    UniqueOperation(Schema columns, KeyMaker keys, std::shared_ptr<MemoryBudget> budget);

    const Schema& schema() const override { return columns; }
    bool countsRows() const override { return true; }
    std::shared_ptr<const void> look(const Chunk& chunk) override;
    Chunk apply(const Chunk& chunk) const override;
    void markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) override;

private:
    Schema columns;
    KeyMaker keys;
    KnownKeys known;
};

UniqueOperation::UniqueOperation(Schema columns, KeyMaker keys, std::shared_ptr<MemoryBudget> budget)
    : columns(std::move(columns)), keys(std::move(keys)), known(std::move(budget)) {}

std::shared_ptr<const void> UniqueOperation::look(const Chunk& chunk) {
    return std::make_shared<const std::vector<std::uint8_t>>(known.firstOf(keys.keysOf(chunk)));
}

Chunk UniqueOperation::apply(const Chunk& chunk) const {
    return onlyRows(chunk, *static_cast<const std::vector<std::uint8_t>*>(chunk.owner.get()));
}

void UniqueOperation::markColumns(const std::vector<bool>& wanted, std::vector<bool>& needed) {
    needed = wanted;
    keys.markColumns(needed);
}

/// Keeps the first row of each key.
class UniqueKind : public RowWise, public CountingKind {
public:
    std::string name() const override { return "Unique"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override;
};

}  // namespace

std::string UniqueKind::summary() const {
    return "Keeps the first of all rows that have the same key.";
}

std::string UniqueKind::notes() const {
    return "The rows that are kept stay in their order. Numbers are compared exactly, but for -0, which equals 0; all "
           "NaN "
           "are equal to each other, as are all empty texts. To keep another row of each key than the first, sort the "
           "table before: the row with the largest pt is the first after Sort by `pt descending`.\n\n"
           "The keys that have occurred are kept in memory. If they exceed `VELMORAK_MEMORY_LIMIT`, the plug-in "
           "fails.";
}

Ports UniqueKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = uniqueInputs();
    if (const auto by = values.find("by"); by != values.end()) {
        appendInputs(ports.inputs, uniqueNumbers(by->second).inputs(values));
    }
    ports.outputs = {
        {.name = "table", .description = "The first row of each key, with all columns.", .type = ValueType::Table}};
    return ports;
}

std::string UniqueKind::refusal(const std::string& input, const std::string& value) const {
    return input == "by" ? keyOrdersRefusal(value) : std::string();
}

std::unique_ptr<RowOperation> UniqueKind::prepare(const Arguments& arguments, const Schema& schema,
                                                  RunContext& context) const {
    const std::string& by = arguments.text("by");
    std::vector<KeyOrder> orders = keyOrdersIn(by);
    if (orders.empty()) {
        orders = allColumns(schema);
    }
    KeyMaker keys("by", orders, schema, uniqueNumbers(by).values(arguments, schema, context));
    return std::make_unique<UniqueOperation>(schema, std::move(keys), memoryOf(context));
}

std::unique_ptr<Kind> makeUnique() {
    return std::make_unique<UniqueKind>();
}

}  // namespace velmorak
