#include "FillList.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

void assign(std::vector<double>& target, const double* source, std::size_t count) {
    if (source) {
        target.assign(source, source + count);
    }
}

void appendAll(std::vector<double>& target, const std::vector<double>& source) {
    target.insert(target.end(), source.begin(), source.end());
}

const double* dataOrNull(const std::vector<double>& values) {
    return values.empty() ? nullptr : values.data();
}

}  // namespace

FillList::FillList(const FillBatch& batch) {
    assign(x, batch.x, batch.count);
    assign(y, batch.y, batch.count);
    assign(weights, batch.weights, batch.count);
}

void FillList::append(const FillList& other) {
    appendAll(x, other.x);
    appendAll(y, other.y);
    appendAll(weights, other.weights);
}

FillBatch FillList::batch() const {
    return {.x = x.data(), .y = dataOrNull(y), .weights = dataOrNull(weights), .count = x.size()};
}

std::pair<double, double> FillList::range() const {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (std::size_t i = 0; i < x.size(); ++i) {
        const bool isLeftOut =
            !std::isfinite(x[i]) || (!y.empty() && std::isnan(y[i])) || (!weights.empty() && std::isnan(weights[i]));
        low = isLeftOut ? low : std::min(low, x[i]);
        high = isLeftOut ? high : std::max(high, x[i]);
    }
    return {low, high};
}

void FillList::save(StateWriter& writer) const {
    for (const std::vector<double>* column : {&x, &y, &weights}) {
        writer.list(*column);
    }
}

void FillList::load(StateReader& reader, bool hasY) {
    for (std::vector<double>* column : {&x, &y, &weights}) {
        *column = reader.list();
    }
    reader.require(y.size() == (hasY ? x.size() : 0) && (weights.empty() || weights.size() == x.size()),
                   "its columns have different lengths");
}

}  // namespace velmorak
