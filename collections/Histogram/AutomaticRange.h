#pragma once

#include "DecimalGrid.h"
#include "FillInto.h"
#include "FillList.h"
#include "LoadedLike.h"
#include "ScatterAdd.h"

#include <cmath>
#include <limits>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace velmorak {

/// Fills an object of one axis whose range spans the finite numbers. Up to maxCells fills are kept as they are;
/// more go into the cells of a decimal grid around them, which are joined to wider ones when the range grows. Cells and
/// bins nest exactly, so that each bin holds exactly the fills between its edges.
/// Threads: as the object. The result depends only on the batches and on the tree in which they are merged.
template <typename Object>
class AutomaticRange {
public:
    explicit AutomaticRange(std::size_t bins) : wantedBins(bins), maxCells(cellsInEachBin * bins) {}

    void fill(const FillBatch& batch) {
        AutomaticRange part(wantedBins);
        part.kept = FillList(batch);
        std::tie(part.low, part.high) = part.kept.range();
        if (part.kept.size() > maxCells) {
            part.toCells(DecimalGrid(part.lowest(), part.highest(), maxCells));
        }
        merge(part);
    }

    void merge(AutomaticRange& other) {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
        if (!object && !other.object && kept.size() + other.kept.size() <= maxCells) {
            kept.append(other.kept);
            return;
        }
        const DecimalGrid joint(lowest(), highest(), maxCells);
        toCells(joint);
        other.toCells(joint);
        object->merge(*other.object);
    }

    Object result() {
        const DecimalGrid whole = withSpread(DecimalGrid(lowest(), highest(), maxCells));
        const RoundBins bins(whole, wantedBins);
        if (!object) {
            auto filled = onAxis<Object>(bins.axis(whole));
            fillInto(filled, kept.batch());
            return filled;
        }
        toCells(whole);
        std::vector<std::size_t> target(whole.count() + 2, 0);
        for (std::size_t i = 0; i < whole.count(); ++i) {
            target[i + 1] = bins.binOf(whole.first() + static_cast<std::int64_t>(i)) + 1;
        }
        target.back() = wantedBins + 1;
        return replaced(bins.axis(whole), scatterAdd(object->cells(), target, wantedBins + 2));
    }

    void save(StateWriter& writer) const {
        writer.number(low);
        writer.number(high);
        kept.save(writer);
        writer.number<bool>(object.has_value());
        if (object) {
            writer.object(*object);
        }
    }
    void load(StateReader& reader) {
        low = reader.number<double>();
        high = reader.number<double>();
        kept.load(reader, Object::Sums::pairs > 1);
        reader.require(std::abs(lowest()) <= DecimalGrid::maxNumber && std::abs(highest()) <= DecimalGrid::maxNumber,
                       "its range is impossible");
        if (reader.number<bool>()) {
            grid = DecimalGrid(lowest(), highest(), maxCells);
            object = loadedLike(onAxis<Object>(grid->axis()), reader);
        }
    }

private:
    static constexpr std::size_t cellsInEachBin = 100;

    double lowest() const { return low > high ? 0.0 : low; }
    double highest() const { return low > high ? 0.0 : high; }

    /// The grid, or a coarser one around a single number.
    DecimalGrid withSpread(const DecimalGrid& found) const {
        const double margin = std::max(0.5, std::abs(lowest()) / 2);
        return lowest() < highest() ? found
                                    : DecimalGrid(std::max(lowest() - margin, -DecimalGrid::maxNumber),
                                                  std::min(highest() + margin, DecimalGrid::maxNumber), maxCells);
    }

    /// Moves the kept fills, or the cells so far, into the cells of a grid that is no finer.
    void toCells(const DecimalGrid& target) {
        if (!object) {
            object = onAxis<Object>(target.axis());
            fillInto(*object, kept.batch());
            kept = {};
        } else {
            std::vector<std::size_t> cells(grid->count() + 2, 0);
            for (std::size_t i = 0; i < grid->count(); ++i) {
                const std::int64_t number = grid->cellIn(target, grid->first() + static_cast<std::int64_t>(i));
                cells[i + 1] = static_cast<std::size_t>(number - target.first()) + 1;
            }
            cells.back() = target.count() + 1;
            object = replaced(target.axis(), scatterAdd(object->cells(), cells, target.count() + 2));
        }
        grid = target;
    }

    template <typename Sums>
    Object replaced(Axis axis, CellVector<Sums> cells) const {
        if constexpr (std::is_same_v<Object, Profile1D>) {
            return onAxis<Object>(std::move(axis), std::move(cells), CellVector<ProfileReading>{},
                                  object->nanEntries());
        } else {
            return onAxis<Object>(std::move(axis), std::move(cells), object->nanEntries());
        }
    }

    std::size_t wantedBins;
    std::size_t maxCells;
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();
    FillList kept;
    std::optional<DecimalGrid> grid;
    std::optional<Object> object;
};

}  // namespace velmorak
