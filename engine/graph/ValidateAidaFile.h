#pragma once

#include "graph/BackgroundTask.h"

#include <memory>
#include <string>

namespace velmorak {

/// @return the name as an absolute path; empty for none.
std::string absolutePath(const std::string& file);

/// Looks whether a file that the user has named is an AIDA file, and says so where it is not. What takes longer than a
/// moment goes on in the background: a file system may not answer, and a file may be of any size.
class AidaCheck {
public:
    AidaCheck() = default;
    ~AidaCheck() { close(); }
    AidaCheck(const AidaCheck&) = delete;
    AidaCheck& operator=(const AidaCheck&) = delete;

    /// @param name as the user wrote it.
    /// @return false when the file cannot be read; true when it can, or when that is not known yet.
    bool look(const std::string& path, const std::string& name);
    /// Ends what goes on, unless the file system does not answer.
    void close();

private:
    std::shared_ptr<BackgroundTask> work;
};

}  // namespace velmorak
