#pragma once

#include <velmorak/Run.h>

#include <atomic>
#include <cstddef>
#include <memory>

namespace velmorak {

/// Counts the files that are open at once. Belongs to a shared_ptr.
/// Threads: any.
class OpenFiles : public std::enable_shared_from_this<OpenFiles> {
public:
    static constexpr std::size_t limit = 64;
    /// A file counts as open until the last copy of its permit is gone.
    using Permit = std::shared_ptr<void>;

    std::size_t count() const { return open; }
    /// Counts a file that must be opened, even beyond the limit.
    Permit take() {
        ++open;
        return permit();
    }
    /// Counts a file that may also be opened later. @return null if so many are open already.
    Permit tryTake(std::size_t most) {
        for (std::size_t now = open; now < most;) {
            if (open.compare_exchange_weak(now, now + 1)) {
                return permit();
            }
        }
        return nullptr;
    }

private:
    Permit permit() {
        return {this, [self = shared_from_this()](void*) { --self->open; }};
    }

    std::atomic<std::size_t> open = 0;
};

/// A second base of a RunContext: all plug-ins of its run share one limit.
class FileLimit {
public:
    virtual ~FileLimit() = default;
    virtual std::shared_ptr<OpenFiles> openFiles() const = 0;
};

/// @return the count of the run's open files; a new one outside of a run.
inline std::shared_ptr<OpenFiles> openFilesOfRun(const RunContext& context) {
    const auto* const run = dynamic_cast<const FileLimit*>(&context);
    return run ? run->openFiles() : std::make_shared<OpenFiles>();
}

}  // namespace velmorak
