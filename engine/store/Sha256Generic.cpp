#include "store/Sha256Blocks.h"

namespace velmorak {

const bool hasDigestInstructions = false;

void absorbBlocksByInstructions(DigestState& state, const std::uint8_t* blocks, std::size_t count) {
    absorbBlocks(state, blocks, count);
}

}  // namespace velmorak
