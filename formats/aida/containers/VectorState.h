#pragma once

namespace velmorak::io {

/// Empties the upper parts of the vector registers. ISA-L leaves numbers there, and every instruction that knows only
/// the lower parts is then slowed down, up to forty times, on the same thread.
void clearVectorState();

}  // namespace velmorak::io
