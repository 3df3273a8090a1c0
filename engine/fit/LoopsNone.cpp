#include "fit/Loops.h"

namespace velmorak::fitting {

std::vector<const Loops*> runnableLoops() {
    return {&commonLoops()};
}

}  // namespace velmorak::fitting
