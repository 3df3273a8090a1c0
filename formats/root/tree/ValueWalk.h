#pragma once

#include "root/tree/Selection.h"

namespace velmorak::root {

/// @return whether a collection is written member by member instead of object by object.
bool readCollectionHeader(Buffer& bytes);

/// Passes over the values in the bytes of an entry, and keeps those that a column selects.
/// Errors: Failure where the bytes cannot be values of the type.
class ValueWalk {
public:
    /// @param selection, @param column must outlive this.
    ValueWalk(const Selection& selection, Column& column) : selection(selection), column(column) {}

    void beginEntry() { row = 0; }
    /// @param isMemberWise as the header says that has been read.
    void value(Buffer& bytes, const ValueType& type, bool isMemberWise);
    /// A number that is selected.
    void number(Buffer& bytes, const ValueType& type);

private:
    std::size_t within(std::size_t step, std::size_t argument) const;
    void each(Buffer& bytes, const ValueType& type, std::size_t step);
    void one(Buffer& bytes, const ValueType& type, std::size_t step);
    void content(Buffer& bytes, const ValueType& type, std::size_t step, bool isMemberWise);
    void counted(Buffer& bytes, const ValueType& type, std::size_t step, std::int64_t count);
    void text(Buffer& bytes, std::size_t step);
    void object(Buffer& bytes, const ValueType& type, std::size_t step);
    void members(Buffer& bytes, const ValueType& type, std::size_t step);
    void collection(Buffer& bytes, const ValueType& type, std::size_t step);
    void memberWise(Buffer& bytes, const ValueType& type, std::size_t step);
    void manyOf(Buffer& bytes, const ValueType& type, std::size_t step, std::size_t count, bool hasHeader);
    void items(Buffer& bytes, const ValueType& type, std::size_t count, std::size_t step);
    void keepCount(std::size_t count, std::size_t step);

    const Selection& selection;
    Column& column;
    std::int64_t row = 0;  ///< Lists of the entry so far, at the end of the path.
};

}  // namespace velmorak::root
