#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// An accumulation whose states are taken in from first to last, whatever its kind says of others: where it depends on
/// schema and values.
class OrderedAccumulation : public Accumulation {};

}  // namespace velmorak
