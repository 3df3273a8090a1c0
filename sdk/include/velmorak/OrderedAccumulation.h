#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// An accumulation whose states are merged from first to last within each file, although mergeOrder() of its kind is
/// Tree: for kinds whose merge order depends on schema and values. Each file has a new state, into which those of its
/// chunks are merged; the states of files are merged pairwise.
class OrderedAccumulation : public Accumulation {};

}  // namespace velmorak
