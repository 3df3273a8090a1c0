#include "elementary/Loops.h"

namespace velmorak::elementary {

const Loops& bestLoops() {
    static const Loops& best = *runnableLoops().front();
    return best;
}

}  // namespace velmorak::elementary
