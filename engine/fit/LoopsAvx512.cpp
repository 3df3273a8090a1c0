#include "fit/LoopsBody.h"

namespace velmorak::fitting {

const Loops& avx512Loops() {
    return loops;
}

}  // namespace velmorak::fitting
