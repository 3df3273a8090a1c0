#pragma once

#include "isolate/Helper.h"

#include <velmorak/OrderedAccumulation.h>

#include <memory>

namespace velmorak::isolation {

/// @param question about preparing an accumulation, with its number. @return null if the kind gives none.
std::unique_ptr<Accumulation> prepareAccumulation(const std::shared_ptr<Helper>& helper, std::uint64_t number,
                                                  Question& question);

}  // namespace velmorak::isolation
