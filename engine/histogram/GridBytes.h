#pragma once

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <velmorak/Grid.h>

#include <cstring>
#include <stdexcept>
#include <vector>

namespace velmorak {

/// Writes the edges as ByteWriter::list does, even if the axis has not stored them.
inline void writeEdges(ByteWriter& writer, const Axis& axis) {
    writer.number<std::uint64_t>(axis.bins() + 1);
    for (std::size_t position = 0; position <= axis.bins(); ++position) {
        writer.number(axis.edge(position));
    }
}

template <std::size_t dimensions>
void writeGrid(ByteWriter& writer, const Grid<dimensions>& grid) {
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        writer.list(grid.axis(direction).title);
        writeEdges(writer, grid.axis(direction));
        writer.number<std::uint64_t>(grid.axis(direction).labels.size());
        for (const std::string& label : grid.axis(direction).labels) {
            writer.list(label);
        }
    }
}

inline Axis readAxis(ByteReader& reader) {
    auto title = reader.list<std::string>();
    Axis axis(reader.list<std::vector<double>>());
    axis.title = std::move(title);
    for (auto labels = reader.number<std::uint64_t>(); labels > 0; --labels) {
        axis.labels.push_back(reader.list<std::string>());
    }
    if (!axis.labels.empty() && axis.labels.size() != axis.bins()) {
        throw std::invalid_argument("the bytes of an axis do not have a label for each bin");
    }
    return axis;
}

template <std::size_t dimensions>
Grid<dimensions> readGrid(ByteReader& reader) {
    // Braced initialisers are evaluated in order.
    if constexpr (dimensions == 1) {
        return Grid<1>({readAxis(reader)});
    } else if constexpr (dimensions == 2) {
        return Grid<2>({readAxis(reader), readAxis(reader)});
    } else {
        return Grid<3>({readAxis(reader), readAxis(reader), readAxis(reader)});
    }
}

/// Reads name, title, annotation and options into the object.
/// @return the grid that follows them.
template <std::size_t dimensions>
Grid<dimensions> readHeadAndGrid(ByteReader& reader, DataObject& object) {
    reader.head().give(object);
    return readGrid<dimensions>(reader);
}

/// Whether the first bytes of a cell, all but its padding, are zero.
template <typename Cell>
bool isEmptyCell(const Cell& cell, std::size_t bytesOfEach) {
    static constexpr Cell empty{};
    return std::memcmp(&cell, &empty, bytesOfEach) == 0;
}

/// Writes the cells in turns of a number of empty ones and a number of others with their bytes, without their padding.
/// Each cell is looked at once: large cells lie far apart in memory.
template <typename Cells>
void writeCells(ByteWriter& writer, const Cells& cells, std::size_t bytesOfEach) {
    constexpr std::size_t maxRun = 1024;
    std::vector<const typename Cells::value_type*> run;
    for (std::size_t cell = 0; cell < cells.size();) {
        const std::size_t first = cell;
        while (cell < cells.size() && isEmptyCell(cells[cell], bytesOfEach)) {
            ++cell;
        }
        writer.number<std::uint64_t>(cell - first);
        for (run.clear(); cell < cells.size() && run.size() < maxRun; ++cell) {
            const auto& next = cells[cell];
            if (isEmptyCell(next, bytesOfEach)) {
                break;
            }
            run.push_back(&next);
        }
        writer.number<std::uint64_t>(run.size());
        for (const auto* const filled : run) {
            writer.raw(filled, bytesOfEach);
        }
    }
}

/// Reads what writeCells has written.
/// @throws std::invalid_argument if the bytes do not have as many cells.
template <typename Cells>
Cells readCells(ByteReader& reader, std::size_t count, std::size_t bytesOfEach) {
    Cells cells(count);
    for (std::size_t cell = 0; cell < count;) {
        const auto empty = reader.number<std::uint64_t>();
        const auto filled = reader.number<std::uint64_t>();
        if (empty > count - cell || filled > count - cell - empty || empty + filled == 0) {
            throw std::invalid_argument(
                "the bytes of a histogram or profile do not have the sums of each of its cells");
        }
        cell += empty;
        for (const std::size_t end = cell + filled; cell < end; ++cell) {
            reader.raw(&cells[cell], bytesOfEach);
        }
    }
    return cells;
}

}  // namespace velmorak
