#include "Version.h"

namespace velmorak {

std::string_view version() {
    return VELMORAK_VERSION;
}

}  // namespace velmorak
