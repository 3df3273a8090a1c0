#pragma once

namespace velmorak {

/// A second base of a RowOperation that has something to say when all rows have passed, such as how many it could not
/// use.
class EndedOperation {
public:
    virtual ~EndedOperation() = default;
    /// Called once, after the last apply, when the rows were read without an error.
    virtual void end() = 0;
};

}  // namespace velmorak
