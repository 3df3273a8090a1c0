#pragma once

#include <velmorak/Failure.h>

#include <exception>
#include <optional>
#include <string>

namespace velmorak {

/// Why a plug-in ended without a result.
struct NodeError {
    std::string sentence;     ///< Names the input if the plug-in did.
    bool wasStopped = false;  ///< The plug-in saw that the run is stopping.
    Failure::Cause cause = Failure::Cause::Other;
};

/// Unwinds the threads of a run that was left behind.
class RunAbandoned {};

/// Translates an exception from a kind into a message for the user.
NodeError errorOf(const std::exception_ptr& exception);

/// Calls code of a kind. @return the error for anything that it throws.
template <typename Work>
std::optional<NodeError> errorIn(Work&& work) {
    try {
        work();
        return std::nullopt;
    } catch (const RunAbandoned&) {
        throw;
    } catch (...) {
        return errorOf(std::current_exception());
    }
}

}  // namespace velmorak
