#pragma once

#include <velmorak/Ports.h>

#include <memory>
#include <string>

/// The entry point of a collection: a shared library that provides plug-in kinds.
namespace velmorak {

class FileFormat;
class FileFormats;

/// Receives the kinds and file formats of a collection while it is loaded.
class Registry {
public:
    virtual ~Registry() = default;
    /// Sets the group of the kinds that are added from now on.
    virtual void group(const std::string& name) = 0;
    virtual void add(std::unique_ptr<Kind> kind) = 0;
    /// Adds a file format (FileFormat.h).
    virtual void addFormat(std::unique_ptr<FileFormat> format) = 0;
    /// The formats of all collections, complete once all are loaded. They live as long as the kinds.
    virtual const FileFormats& formats() const = 0;
};

/// For authors: increases whenever existing kinds need source changes. The loader compares VELMORAK_SDK_VERSION.
inline constexpr int sdkVersion = 6;

}  // namespace velmorak

/// Defines the entry point; use it once per collection, before a body that registers the kinds:
///     VELMORAK_COLLECTION(registry) { registry.group("Data"); registry.add(std::make_unique<AidaTable>()); }
#define VELMORAK_COLLECTION(registry)                                                                       \
    extern "C" __attribute__((visibility("default"))) const char velmorakSdkHeaders[];                      \
    const char velmorakSdkHeaders[] = VELMORAK_SDK_VERSION;                                                 \
    extern "C" __attribute__((visibility("default"))) void QzAnalysisFactory(velmorak::Registry& registry); \
    void QzAnalysisFactory(velmorak::Registry& registry)
