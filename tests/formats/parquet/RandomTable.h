#pragma once

#include <velmorak/Table.h>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

namespace velmorak {

/// Tables of every type of column, with values at the limits, that repeat or not.
class RandomTable {
public:
    explicit RandomTable(unsigned seed) : random(seed) {}

    static Schema schema() {
        return Schema({{"x", ColumnType::Real, false, "GeV"},
                       {"few", ColumnType::Real},
                       {"n", ColumnType::Integer},
                       {"code", ColumnType::Integer},
                       {"good", ColumnType::Boolean},
                       {"word", ColumnType::Text},
                       {"note", ColumnType::Text},
                       {"xs", ColumnType::Real, true},
                       {"ns", ColumnType::Integer, true, "mm"},
                       {"flags", ColumnType::Boolean, true},
                       {"names", ColumnType::Text, true}});
    }

    std::vector<ColumnPtr> rows(std::size_t count) {
        std::vector<ColumnPtr> columns;
        for (const ColumnInfo& info : schema().columns()) {
            columns.push_back(column(info, count));
        }
        return columns;
    }

private:
    double real(bool isFew) {
        switch (random() % (isFew ? 4 : 12)) {
            case 0:
                return -0.0;
            case 1:
                return std::nan("");
            case 2:
                return HUGE_VAL;
            case 3:
                return 0.0;
            default:
                return std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 200) - 100);
        }
    }
    std::int64_t integer(bool isFew) {
        return isFew ? static_cast<std::int64_t>(random() % 5) - 2
                     : static_cast<std::int64_t>(static_cast<std::uint64_t>(random()) << 32U | random());
    }
    std::string text(bool isFew) {
        return isFew ? std::string(random() % 3, 'w') : "\u00e4" + std::to_string(random());
    }

    Column::Reals values(Column::Reals values, const ColumnInfo& info) {
        for (double& value : values) {
            value = real(info.name == "few");
        }
        return values;
    }
    Column::Integers values(Column::Integers values, const ColumnInfo& info) {
        for (std::int64_t& value : values) {
            value = integer(info.name == "code");
        }
        return values;
    }
    Column::Booleans values(Column::Booleans values, const ColumnInfo& /*info*/) {
        for (std::uint8_t& value : values) {
            value = random() % 2;
        }
        return values;
    }
    Column::Texts values(Column::Texts values, const ColumnInfo& info) {
        for (std::string& value : values) {
            value = text(info.name == "word");
        }
        return values;
    }

    ColumnPtr column(const ColumnInfo& info, std::size_t rows) {
        auto column = std::make_shared<Column>();
        std::size_t count = rows;
        if (info.isList) {
            column->offsets.push_back(0);
            for (std::size_t row = 0; row < rows; ++row) {
                column->offsets.push_back(column->offsets.back() + random() % 4);
            }
            count = column->offsets.back();
        }
        switch (info.type) {
            case ColumnType::Real:
                column->values = values(Column::Reals(count), info);
                break;
            case ColumnType::Integer:
                column->values = values(Column::Integers(count), info);
                break;
            case ColumnType::Boolean:
                column->values = values(Column::Booleans(count), info);
                break;
            case ColumnType::Text:
                column->values = values(Column::Texts(count), info);
                break;
        }
        return column;
    }

    std::minstd_rand random;
};

}  // namespace velmorak
