#include "run/record/Version.h"

#include <QzVersion.h>

extern "C" const unsigned QzInterfaceVersion;
const unsigned QzInterfaceVersion = qzVersion;

namespace velmorak {

std::string_view version() {
    return VELMORAK_VERSION;
}

}  // namespace velmorak
