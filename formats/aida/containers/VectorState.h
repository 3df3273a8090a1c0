#pragma once

namespace velmorak::io {

/// Clears the upper halves of the vector registers (vzeroupper). ISA-L leaves them dirty, which slows down SSE code on
/// the same thread up to forty times.
void clearVectorState();

}  // namespace velmorak::io
