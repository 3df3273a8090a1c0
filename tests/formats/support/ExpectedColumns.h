#pragma once

#include <velmorak/Table.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>

namespace velmorak {

/// @param expected null for a missing value; integers may be texts of their digits, and so may NaN.
inline void compareValue(const Column& column, std::size_t i, const nlohmann::json& expected) {
    if (column.type() == ColumnType::Text) {
        EXPECT_EQ(column.texts()[i], expected.is_null() ? "" : expected.get<std::string>());
    } else if (column.type() == ColumnType::Integer) {
        EXPECT_EQ(std::to_string(column.integers()[i]),
                  expected.is_string() ? expected.get<std::string>() : expected.dump());
    } else if (column.type() == ColumnType::Boolean) {
        EXPECT_EQ(column.booleans()[i] != 0, expected.get<bool>());
    } else if (expected.is_null() || expected == "NaN") {
        EXPECT_TRUE(std::isnan(column.reals()[i]));
    } else if (expected.is_string()) {
        EXPECT_EQ(column.reals()[i], std::stod(expected.get<std::string>()));
    } else {
        EXPECT_EQ(column.reals()[i],
                  expected.is_boolean() ? (expected.get<bool>() ? 1.0 : 0.0) : expected.get<double>());
    }
}

/// @param rows values, or lists of them, as columns.mjs makes them.
inline void compareColumn(const Column& column, const nlohmann::json& rows) {
    ASSERT_EQ(column.isList() ? column.offsets.size() - 1 : column.valueCount(), rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (!column.isList()) {
            compareValue(column, row, rows[row]);
            continue;
        }
        ASSERT_EQ(column.offsets[row + 1] - column.offsets[row], rows[row].size()) << "row " << row;
        for (std::size_t i = 0; i < rows[row].size(); ++i) {
            compareValue(column, column.offsets[row] + i, rows[row][i]);
        }
    }
}

}  // namespace velmorak
