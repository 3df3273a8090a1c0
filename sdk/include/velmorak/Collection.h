#pragma once

#include <velmorak/Ports.h>

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

/// For authors: counts up with what they must change. What is compared is VELMORAK_SDK_VERSION.
inline constexpr int sdkVersion = 5;

}  // namespace velmorak

/// Put once into each collection, before a body that registers its kinds:
///     VELMORAK_COLLECTION(registry) { registry.group("Data"); registry.add(std::make_unique<AidaTable>()); }
#define VELMORAK_COLLECTION(registry)                                                                       \
    extern "C" __attribute__((visibility("default"))) const char velmorakSdkHeaders[];                      \
    const char velmorakSdkHeaders[] = VELMORAK_SDK_VERSION;                                                 \
    extern "C" __attribute__((visibility("default"))) void QzAnalysisFactory(velmorak::Registry& registry); \
    void QzAnalysisFactory(velmorak::Registry& registry)
