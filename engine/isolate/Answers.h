#pragma once

#include "isolate/Helper.h"

namespace velmorak::isolation {

/// Answers what a helper process asks while it works on a question: the services of the run's context, the values of
/// arguments, and the rows of tables that are here.
/// @param content read before anything is written to the reply, which is in the same memory.
/// @throws what the context or the arguments throw.
void answer(Question& question, Op op, MessageReader content, MessageWriter& reply);

}  // namespace velmorak::isolation
