#pragma once

#include "KindHarness.h"

#include <string>

namespace velmorak::test {

/// A run that is to end after it was asked some times whether it is.
class StoppingBench : public KindHarness {
public:
    StoppingBench(const std::string& kind, int most) : KindHarness(kind), left(most) {}
    bool isStopping() const override { return left-- <= 0; }

private:
    mutable int left;
};

}  // namespace velmorak::test
