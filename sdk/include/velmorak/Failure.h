#pragma once

#include <stdexcept>
#include <string>

namespace velmorak {

/// The reason why a plug-in cannot do its work: a sentence for the user that says what is wrong, where (file, row,
/// entry) and what to do. The run prefixes it with the names of the plug-in and its kind.
class Failure : public std::runtime_error {
public:
    /// What some callers must tell apart.
    enum class Cause { Other, UnknownColumn };

    using std::runtime_error::runtime_error;
    /// For a sentence about one input of the plug-in.
    Failure(std::string input, const std::string& sentence, Cause cause = Cause::Other);

    const std::string& input() const { return inputName; }
    Cause cause() const { return ownCause; }

private:
    std::string inputName;
    Cause ownCause = Cause::Other;
};

/// Thrown by a loop that found RunContext::isStopping() true. Not a failure: the user stopped the run.
class Stopped : public std::exception {
public:
    const char* what() const noexcept override { return "stopped"; }
};

}  // namespace velmorak
