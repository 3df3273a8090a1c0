#pragma once

namespace velmorak {

/// From now on, the program ends without destroying what is static: a thread that was left behind may be in it.
void endWithoutDestructors();

}  // namespace velmorak
