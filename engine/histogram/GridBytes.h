#pragma once

#include "table/ByteReader.h"
#include "table/ByteWriter.h"

#include <velmorak/Grid.h>

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

}  // namespace velmorak
