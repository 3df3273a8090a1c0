#include "columnar/StandIn.h"

#include <cstdint>
#include <limits>
#include <memory>

namespace velmorak::columnar {
namespace {

/// An integer that fails a bound which some range of integers fails.
std::int64_t failing(const ColumnBound& bound) {
    using Relation = ColumnBound::Relation;
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    const bool isUpper = bound.relation == Relation::Less || bound.relation == Relation::LessEqual;
    const bool isLeast = bound.relation == Relation::Equal && bound.number < 0.0;
    return isUpper || isLeast ? most : least;
}

}  // namespace

ColumnPtr standIn(const ColumnInfo& info, std::size_t rows, const ColumnBound* bound) {
    Column column;
    const std::size_t values = info.isList ? 0 : rows;
    if (info.isList) {
        column.offsets.assign(rows + 1, 0);
    }
    switch (info.type) {
        case ColumnType::Real:
            column.values = Column::Reals(values, std::numeric_limits<double>::quiet_NaN());
            break;
        case ColumnType::Integer:
            column.values = Column::Integers(values, bound ? failing(*bound) : 0);
            break;
        case ColumnType::Boolean:
            column.values = Column::Booleans(values, 0);
            break;
        case ColumnType::Text:
            column.values = Column::Texts(values);
            break;
    }
    return std::make_shared<const Column>(std::move(column));
}

}  // namespace velmorak::columnar
