#pragma once

#include <exception>
#include <optional>
#include <string>

namespace velmorak {

/// What ended the work of a plug-in.
struct NodeError {
    std::string sentence;     ///< Names the input where the plug-in did.
    bool wasStopped = false;  ///< The plug-in ended because the run was asked to.
};

/// Thrown through all of a run's own code when nobody waits for the run any more.
class LeftBehind {};

/// Says what an exception out of a kind means to the user.
NodeError errorOf(const std::exception_ptr& exception);

/// Calls a piece of a kind. Whatever it throws ends here, as a problem.
template <typename Work>
std::optional<NodeError> errorIn(Work&& work) {
    try {
        work();
        return std::nullopt;
    } catch (const LeftBehind&) {
        throw;
    } catch (...) {
        return errorOf(std::current_exception());
    }
}

}  // namespace velmorak
