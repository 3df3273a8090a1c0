#pragma once

#include <stdexcept>
#include <string>

namespace velmorak {

/// The reason why a plug-in cannot do its work: a sentence for the user that says what is wrong, where (file, row,
/// entry) and what to do. The run prefixes it with the names of the plug-in and its kind.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    /// For a sentence about one input of the plug-in.
    Failure(std::string inputName, const std::string& sentence);

    const std::string& input() const { return inputName; }

private:
    std::string inputName;
};

/// Thrown by a loop that found RunContext::isStopping() true. Not a failure: the user stopped the run.
class Stopped : public std::exception {
public:
    const char* what() const noexcept override { return "stopped"; }
};

}  // namespace velmorak
