#include "libraryVersion.h"

#include <QzVersion.h>
#include <dlfcn.h>

std::string libraryError() {
    const void* const version = dlsym(RTLD_DEFAULT, qzVersionName);
    if (!version || *static_cast<const unsigned*>(version) == qzVersion) {
        return {};
    }
    return "velmorak: this program needs version " + std::to_string(qzVersion) +
           " of the analysis library's interface, and QzManager.so offers version " +
           std::to_string(*static_cast<const unsigned*>(version)) +
           "; install the two from one build, or see LD_LIBRARY_PATH.";
}
