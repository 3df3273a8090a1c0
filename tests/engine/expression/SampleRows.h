#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Failure.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// Rows to evaluate expressions with.
namespace velmorak {

template <typename Values>
ColumnPtr column(Values values, std::vector<std::uint64_t> offsets = {}) {
    return std::make_shared<Column>(Column{std::move(values), std::move(offsets)});
}

/// Three rows with a column of every type.
inline const Schema& schema() {
    static const Schema all({{"x"},
                             {"y"},
                             {"n", ColumnType::Integer},
                             {"flag", ColumnType::Boolean},
                             {"tag", ColumnType::Text},
                             {"m(mu mu)"},
                             {"trk.px", ColumnType::Real, true},
                             {"trk.hits", ColumnType::Integer, true},
                             {"trk.tag", ColumnType::Text, true},
                             {"trk.good", ColumnType::Boolean, true},
                             {"jet.pt", ColumnType::Real, true}});
    return all;
}

inline Chunk rows() {
    Chunk chunk;
    chunk.rows = 3;
    chunk.columns = {column(Column::Reals{1.5, -2.0, 0.0}),
                     column(Column::Reals{2.0, 0.25, -0.0}),
                     column(Column::Integers{7, -7, 0}),
                     column(Column::Booleans{1, 0, 1}),
                     column(Column::Texts{"muon", "e", ""}),
                     column(Column::Reals{91.2, 3.1, 9.5}),
                     column(Column::Reals{1.0, 2.0, 4.0}, {0, 2, 2, 3}),
                     column(Column::Integers{3, 0, 5}, {0, 2, 2, 3}),
                     column(Column::Texts{"mu", "e", "mu"}, {0, 2, 2, 3}),
                     column(Column::Booleans{1, 0, 1}, {0, 2, 2, 3}),
                     column(Column::Reals{10.0, 20.0, 30.0}, {0, 2, 3, 3})};
    return chunk;
}

inline ColumnPtr valuesOf(std::string_view text) {
    return Expression(text, schema()).evaluate(rows());
}

inline double real(std::string_view text) {
    const ColumnPtr values = valuesOf(text);
    EXPECT_EQ(values->type(), ColumnType::Real) << text;
    return asReals(values)->reals().at(0);
}

inline std::int64_t integer(std::string_view text) {
    const ColumnPtr values = valuesOf(text);
    EXPECT_EQ(values->type(), ColumnType::Integer) << text;
    return values->integers().at(0);
}

inline bool truth(std::string_view text) {
    return valuesOf(text)->booleans().at(0) != 0;
}

inline std::string refusalOf(std::string_view text) {
    try {
        valuesOf(text);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no refusal";
}

inline std::string repeated(const std::string& text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

}  // namespace velmorak
