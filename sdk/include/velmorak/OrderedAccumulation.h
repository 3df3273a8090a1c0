#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// An accumulation whose states are merged from first to last although mergeOrder() of its kind is Tree: for kinds
/// whose merge order depends on schema and values.
class OrderedAccumulation : public Accumulation {};

}  // namespace velmorak
