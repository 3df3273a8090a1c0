#include "aida/containers/VectorState.h"

namespace velmorak::io {

void clearVectorState() {}

}  // namespace velmorak::io
