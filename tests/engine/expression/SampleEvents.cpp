#include "SampleEvents.h"

#include "SampleRows.h"

#include <algorithm>
#include <random>

namespace velmorak {

const Schema& events() {
    static const Schema all({{"n", ColumnType::Integer},
                             {"pt", ColumnType::Real, true},
                             {"eta", ColumnType::Real, true},
                             {"charge", ColumnType::Integer, true},
                             {"name", ColumnType::Text, true},
                             {"good", ColumnType::Boolean, true},
                             {"jet", ColumnType::Real, true}});
    return all;
}

Chunk someEvents() {
    const std::vector<std::uint64_t> particles{0, 3, 3, 5};
    Chunk chunk;
    chunk.rows = 3;
    chunk.columns = {column(Column::Integers{1, 2, 0}),
                     column(Column::Reals{20.0, 40.0, 30.0, 5.0, 7.0}, particles),
                     column(Column::Reals{0.5, -1.0, 2.0, 0.0, 3.0}, particles),
                     column(Column::Integers{1, -1, 1, -1, -1}, particles),
                     column(Column::Texts{"mu", "e", "mu", "e", "tau"}, particles),
                     column(Column::Booleans{1, 0, 1, 0, 1}, particles),
                     column(Column::Reals{50.0, 60.0, 70.0, 80.0, 90.0, 10.0}, {0, 2, 3, 6})};
    return chunk;
}

Chunk manyEvents(std::size_t rows) {
    std::mt19937_64 random(5);
    std::vector<std::uint64_t> particles{0};
    std::vector<std::uint64_t> jets{0};
    Chunk chunk;
    chunk.rows = rows;
    Column::Integers n;
    for (std::size_t row = 0; row < rows; ++row) {
        particles.push_back(particles.back() + (row % 97 == 0 ? 60 : random() % 6));
        jets.push_back(jets.back() + random() % 4);
        n.push_back(static_cast<std::int64_t>(random() % 5) - 2);
    }
    const auto numbers = [&](std::uint64_t count) {
        Column::Reals values;
        for (std::uint64_t i = 0; i < count; ++i) {
            values.push_back(static_cast<double>(random() % 1000) / 100.0 - 3.0);
        }
        return values;
    };
    Column::Integers charges;
    Column::Texts names;
    Column::Booleans good;
    for (std::uint64_t i = 0; i < particles.back(); ++i) {
        charges.push_back(random() % 2 == 0 ? 1 : -1);
        names.push_back(random() % 2 == 0 ? "mu" : "e");
        good.push_back(random() % 3 == 0 ? 1 : 0);
    }
    chunk.columns = {column(n),
                     column(numbers(particles.back()), particles),
                     column(numbers(particles.back()), particles),
                     column(charges, particles),
                     column(names, particles),
                     column(good, particles),
                     column(numbers(jets.back()), jets)};
    return chunk;
}

Chunk rowsFrom(const Chunk& all, std::size_t first) {
    Chunk part;
    part.rows = all.rows - first;
    std::vector<std::uint8_t> keep(all.rows, 1);
    std::fill_n(keep.begin(), first, 0);
    for (const ColumnPtr& each : all.columns) {
        part.columns.push_back(keepRows(*each, keep));
    }
    return part;
}

}  // namespace velmorak
