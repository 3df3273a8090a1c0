#include "elementary/Loops.h"

namespace velmorak::elementary {

std::vector<const Loops*> runnableLoops() {
    return {&commonLoops()};
}

}  // namespace velmorak::elementary
