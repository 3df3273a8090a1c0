#include "kinds.h"

#include "Binning.h"
#include "FillInto.h"
#include "FillKind.h"
#include "Filling.h"
#include "GroupedFills.h"
#include "LoadedLike.h"
#include "shared/AppendInputs.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/HistogramList.h>
#include <velmorak/OrderedAccumulation.h>
#include <velmorak/StateBytes.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t maxCells = 4'000'000;  ///< Of all histograms: 160 MB.

/// By the bytes of the keys, whose order is that of the keys.
using HistogramsByKey = std::map<std::string, Histogram1D>;

/// Keeps the fills of one chunk until its turn comes to fill the histograms of its file, which belong to the state of
/// the whole file: histograms for each chunk would have far more cells than the chunk has rows.
class GroupedState : public AccumulatorState {
public:
    GroupedState(const GroupedQuantity& quantity, const Axis& axis) : quantity(quantity), axis(axis) {}

    void fill(const Chunk& chunk) override { waiting.push_back(quantity.fillsOf(chunk)); }
    void merge(AccumulatorState& other) override;
    void save(StateWriter& writer) const override;
    void load(StateReader& reader) override;

    HistogramsByKey result();
    std::int64_t missing() const { return rowsWithoutKey; }

private:
    void fillWaiting();
    void requireRoom() const;
    void loadHistogram(StateReader& reader);

    const GroupedQuantity& quantity;
    const Axis& axis;
    std::vector<GroupedQuantity::Fills> waiting;
    HistogramsByKey histograms;
    std::int64_t rowsWithoutKey = 0;  ///< Of the rows that were filled.
};

void GroupedState::merge(AccumulatorState& other) {
    fillWaiting();
    auto& next = static_cast<GroupedState&>(other);
    if (!next.histograms.empty()) {
        next.fillWaiting();
    }
    for (auto& [key, histogram] : next.histograms) {
        const auto found = histograms.find(key);
        if (found != histograms.end()) {
            found->second.merge(histogram);
            continue;
        }
        requireRoom();
        histograms.emplace(key, std::move(histogram));
    }
    rowsWithoutKey += next.rowsWithoutKey;
    std::swap(waiting, next.waiting);
    fillWaiting();
}

void GroupedState::fillWaiting() {
    for (const GroupedQuantity::Fills& fills : waiting) {
        for (const GroupedQuantity::Group& group : fills.groups) {
            auto found = histograms.find(group.key);
            if (found == histograms.end()) {
                requireRoom();
                found = histograms.emplace(group.key, Histogram1D(axis)).first;
            }
            fillInto(found->second, group.fills.batch());
        }
        rowsWithoutKey += fills.rowsWithoutKey;
    }
    waiting.clear();
}

/// For one more histogram.
void GroupedState::requireRoom() const {
    if (histograms.size() == GroupedQuantity::maxGroups) {
        refuseGroups(GroupedQuantity::maxGroups);
    }
    if ((histograms.size() + 1) * (axis.bins() + 2) > maxCells) {
        throw Failure("bins", std::to_string(histograms.size() + 1) + " histograms of " + std::to_string(axis.bins()) +
                                  " bins have more than " + std::to_string(maxCells) +
                                  " cells together; use fewer bins, or bin the key with keyedges");
    }
}

HistogramsByKey GroupedState::result() {
    fillWaiting();
    return std::move(histograms);
}

void GroupedState::save(StateWriter& writer) const {
    writer.version(1);
    writer.number(rowsWithoutKey);
    writer.number<std::uint64_t>(histograms.size());
    for (const auto& [key, histogram] : histograms) {
        writer.text(key);
        writer.object(histogram);
    }
    writer.number<std::uint64_t>(waiting.size());
    for (const GroupedQuantity::Fills& fills : waiting) {
        fills.save(writer);
    }
}

void GroupedState::load(StateReader& reader) {
    reader.version(1);
    rowsWithoutKey = reader.count();
    for (std::size_t count = reader.length(2 * sizeof(std::uint64_t)); count > 0; --count) {
        loadHistogram(reader);
    }
    for (std::size_t count = reader.length(2 * sizeof(std::uint64_t)); count > 0; --count) {
        waiting.emplace_back().load(reader);
    }
    try {
        for (const GroupedQuantity::Fills& fills : waiting) {
            for (const GroupedQuantity::Group& group : fills.groups) {
                (void)quantity.describe(group.key, {});
            }
        }
        for (const auto& [key, histogram] : histograms) {
            (void)quantity.describe(key, {});
        }
    } catch (const std::invalid_argument& reason) {
        reader.fail(reason.what());
    }
}

void GroupedState::loadHistogram(StateReader& reader) {
    requireRoom();
    std::string key = reader.text();
    const bool isNew = histograms.emplace(std::move(key), loadedLike(Histogram1D(axis), reader)).second;
    reader.require(isNew, "a key has two histograms");
}

class GroupedFilling : public OrderedAccumulation {
public:
    GroupedFilling(const Arguments& arguments, const Schema& schema, RunContext& context);

    std::unique_ptr<AccumulatorState> newState() const override {
        return std::make_unique<GroupedState>(quantity, axis);
    }
    void markColumns(std::vector<bool>& needed) const override { quantity.markColumns(needed); }
    void finish(AccumulatorState& state, Results& results) override;

private:
    HistogramList::Group groupOf(const std::string& key, Histogram1D histogram) const;
    void warnIfEmpty(const HistogramList& list) const;

    GroupedQuantity quantity;
    Axis axis;
    RunContext& context;
    std::string title;
    std::string keyTitle;
};

GroupedFilling::GroupedFilling(const Arguments& arguments, const Schema& schema, RunContext& context)
    : quantity(arguments, schema),
      axis(axisFrom(arguments)),
      context(context),
      title(titleOr(arguments, "title", context.pluginName())),
      keyTitle(titleOr(arguments, "keytitle", arguments.text("key"))) {
    axis.title = titleOr(arguments, "axis", quantity.label());
}

void GroupedFilling::finish(AccumulatorState& state, Results& results) {
    auto& grouped = static_cast<GroupedState&>(state);
    std::vector<HistogramList::Group> groups;
    for (auto& [key, histogram] : grouped.result()) {
        groups.push_back(groupOf(key, std::move(histogram)));
    }
    auto list = std::make_shared<HistogramList>(keyTitle, std::move(groups));
    list->name = context.pluginName();
    list->title = title;
    warnIfEmpty(*list);
    results.set("groups", list->groups().size());
    results.set("missing", grouped.missing());
    if (grouped.missing() > 0) {
        context.tell(std::to_string(grouped.missing()) + (grouped.missing() == 1 ? " row has" : " rows have") +
                     " no key (NaN or an empty text) and " + (grouped.missing() == 1 ? "is" : "are") +
                     " in no histogram\n");
    }
    results.set("histograms", DataObjectPtr(std::move(list)));
}

HistogramList::Group GroupedFilling::groupOf(const std::string& key, Histogram1D histogram) const {
    HistogramList::Group group = quantity.describe(key, keyTitle);
    histogram.name = nameWithKey(context.pluginName(), group.key);
    histogram.title = title + ", " + group.label;
    group.histogram = std::make_shared<const Histogram1D>(std::move(histogram));
    return group;
}

void GroupedFilling::warnIfEmpty(const HistogramList& list) const {
    if (list.groups().empty()) {
        context.warn("there is no histogram, because no row has a key");
    } else if (std::none_of(list.groups().begin(), list.groups().end(),
                            [](const HistogramList::Group& group) { return group.histogram->inRange().entries > 0; })) {
        context.warn("no histogram has entries in its range");
    }
}

Ports groupedPorts() {
    Ports ports{{tableInput(),
                 {.name = "key",
                  .description = "What tells the histograms apart: a column or an expression of columns that gives a "
                                 "number, a truth value or a text, for example run.",
                  .type = ValueType::Text},
                 {.name = "keyedges",
                  .description = "Ascending edges of bins of the key, separated by blanks or commas, in its unit. "
                                 "Empty: each value of the key has its own histogram.",
                  .type = ValueType::Text},
                 expressionInput(),
                 weightInput()},
                {{.name = "histograms",
                  .description = "A histogram for each value of the key that occurs, in ascending order.",
                  .type = ValueType::Histograms},
                 {.name = "groups", .description = "Number of histograms.", .type = ValueType::Number},
                 {.name = "missing",
                  .description = "Number of rows whose key is missing: NaN or an empty text.",
                  .type = ValueType::Number}}};
    appendInputs(ports.inputs, axisInputs("the expression"));
    appendInputs(ports.inputs, {titleInput(),
                                {.name = "keytitle",
                                 .description = "What the key is called in titles and legends. Empty: the key.",
                                 .type = ValueType::Text},
                                axisTitleInput("axis", "the expression")});
    return ports;
}

std::unique_ptr<Accumulation> groupedFilling(const Arguments& arguments, const Schema& schema, RunContext& context) {
    return std::make_unique<GroupedFilling>(arguments, schema, context);
}

}  // namespace

std::unique_ptr<Kind> makeGroupedHistogram() {
    return std::make_unique<FillKind>(FillKind::Description{
        .name = "GroupedHistogram",
        .summary = "Fills one histogram for each value of a key, such as the number of the run, as a list.",
        .notes =
            R"(All histograms have the same axis; bins, moments, underflow, overflow and NaN are those of `Histogram1D`. Rows with
equal keys fill the same histogram: numbers are compared as numbers, texts byte by byte. If `keyedges` are given, rows whose
key lies in the same bin do; values below the first edge, and from the last one on, have histograms as well. Rows whose key is
missing, NaN or an empty text, are in no histogram; they are counted, and a message says how many.

The list is sorted by the key: numbers ascend, texts byte by byte. A `Plot` draws it as a grid of frames, or overlaid; a
`Report` draws it, too. `AidaWriter`, `RootWriter` and `YodaWriter` write each histogram, under the name of the plug-in with the
key: `Energy_3` for `run` = 3, `Energy_10_to_20` for a bin. `Print` gives a line for each histogram, `CsvWriter` all bins with the key
in the first column.

There are at most 1000 histograms, which have at most 4000000 cells together. For more keys, use the edges, a `Histogram2D`
with the key on one axis, or `GroupBy`. The rows of a file fill the histograms from the first to the last: the result has the
same bits on any number of threads.)",
        .ports = groupedPorts(),
        .prepare = groupedFilling});
}

}  // namespace velmorak
