#include "fit/LoopsBody.h"

namespace velmorak::fitting {

const Loops& commonLoops() {
    return loops;
}

const Loops& bestLoops() {
    static const Loops& best = *runnableLoops().front();
    return best;
}

}  // namespace velmorak::fitting
