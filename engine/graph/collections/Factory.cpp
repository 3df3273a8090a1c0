#include "graph/collections/Factory.h"

#include "graph/collections/SharedObject.h"

#include <stdexcept>

namespace velmorak {

void registerInto(Registry& registry, const std::filesystem::path& object, const std::string& factory) {
    void* const library = loadSharedObject(object);
    const std::string madeWith = static_cast<const char*>(symbolIn(library, "velmorakSdkHeaders"));
    if (madeWith != VELMORAK_SDK_VERSION) {
        throw std::runtime_error("it was built with version " + madeWith +
                                 " of the SDK, and this library with " VELMORAK_SDK_VERSION "; rebuild it");
    }
    using Function = void (*)(Registry&);
    reinterpret_cast<Function>(symbolIn(library, factory.c_str()))(registry);
}

}  // namespace velmorak
