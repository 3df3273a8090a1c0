#pragma once

#include "graph/preview/BackgroundTask.h"

#include <memory>
#include <string>

namespace velmorak {

/// @return the name as an absolute path; empty for none.
std::string absolutePath(const std::string& file);

/// Checks whether a file that the user has named is an AIDA file, and reports it when it is not. After two seconds the
/// check continues in the background: a file system may not answer, and a file may be of any size.
class AidaFileCheck {
public:
    AidaFileCheck() = default;
    ~AidaFileCheck() { close(); }
    AidaFileCheck(const AidaFileCheck&) = delete;
    AidaFileCheck& operator=(const AidaFileCheck&) = delete;

    /// @param name as the user wrote it.
    /// @return false when the file cannot be read; true when it can, or when that is not known yet.
    bool check(const std::string& path, const std::string& name);
    /// Stops the check and waits for it for at most two seconds.
    void close();

private:
    std::shared_ptr<BackgroundTask> work;
};

}  // namespace velmorak
