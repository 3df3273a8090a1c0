#pragma once

namespace velmorak {

/// Makes the program exit without destroying static objects, because a thread that was left behind may use them.
void endWithoutDestructors();

}  // namespace velmorak
