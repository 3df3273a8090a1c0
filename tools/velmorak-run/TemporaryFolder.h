#pragma once

#include <filesystem>

/// A new folder among the system's temporary ones. It is removed, with all that is in it, when the object goes.
class TemporaryFolder {
public:
    /// @throws UsageError when it cannot be created.
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return folder; }

private:
    std::filesystem::path folder;
};
