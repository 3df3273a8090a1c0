#pragma once

#include <stdexcept>
#include <string>

namespace velmorak {

/// Why a plug-in could not do its work: a sentence for the user, with file, row or entry where there is one. The run
/// puts plug-in and kind before it.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    /// The sentence is about one input of the plug-in.
    Failure(std::string inputName, const std::string& sentence);

    const std::string& input() const { return inputName; }

private:
    std::string inputName;
};

/// Thrown out of a loop that saw RunContext::isStopping(). Not a failure: the run was asked to end.
class Stopped : public std::exception {
public:
    const char* what() const noexcept override { return "stopped"; }
};

}  // namespace velmorak
