#pragma once

#include <velmorak/Ports.h>

#include <iterator>
#include <vector>

namespace velmorak {

inline void appendInputs(std::vector<InputSpec>& inputs, std::vector<InputSpec> more) {
    inputs.insert(inputs.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

}  // namespace velmorak
