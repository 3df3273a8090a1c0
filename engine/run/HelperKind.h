#pragma once

#include <string>

namespace velmorak {

/// A second base of a kind whose code runs in another process.
class HelperKind {
public:
    virtual ~HelperKind() = default;
    /// As buildOf, of the code in that process.
    virtual const std::string& build() const = 0;
    /// Ends the processes that still work for runs that are being stopped: their plug-ins fail.
    virtual void endDeaf() const = 0;
};

}  // namespace velmorak
