#pragma once

#include "Ports.h"

#include <memory>
#include <string>

/// How a collection hands over its kinds when it is loaded.
namespace velmorak {

/// Where a collection puts its kinds when it is loaded.
class Registry {
public:
    virtual ~Registry() = default;
    /// Name of the group that the kinds added from now on belong to.
    virtual void group(const std::string& name) = 0;
    virtual void add(std::unique_ptr<Kind> kind) = 0;
};

/// Layout of these headers. A collection made for another one is not loaded.
inline constexpr int sdkVersion = 5;

}  // namespace velmorak

/// Put once into each collection, before a body that registers its kinds:
///     VELMORAK_COLLECTION(registry) { registry.group("Data"); registry.add(std::make_unique<AidaTable>()); }
#define VELMORAK_COLLECTION(registry)                                                                       \
    extern "C" __attribute__((visibility("default"))) const int velmorakSdkVersion;                         \
    const int velmorakSdkVersion = velmorak::sdkVersion;                                                    \
    extern "C" __attribute__((visibility("default"))) void QzAnalysisFactory(velmorak::Registry& registry); \
    void QzAnalysisFactory(velmorak::Registry& registry)
