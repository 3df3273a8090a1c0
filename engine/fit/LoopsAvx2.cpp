#include "fit/LoopsBody.h"

namespace velmorak::fitting {

const Loops& avx2Loops() {
    return loops;
}

}  // namespace velmorak::fitting
