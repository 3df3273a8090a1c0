#pragma once

#include "FillExpression.h"

#include <velmorak/StateBytes.h>

#include <utility>
#include <vector>

namespace velmorak {

/// Fills of an object of one axis that are kept one by one.
class FillList {
public:
    FillList() = default;
    explicit FillList(const FillBatch& batch);

    void append(const FillList& other);

    std::size_t size() const { return x.size(); }
    FillBatch batch() const;
    /// @return the least and the greatest x that go into a bin; infinity and -infinity if none does.
    std::pair<double, double> range() const;

    void save(StateWriter& writer) const;
    /// @param hasY a fill has a second quantity.
    void load(StateReader& reader, bool hasY);

private:
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> weights;
};

}  // namespace velmorak
