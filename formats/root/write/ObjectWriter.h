#pragma once

#include "root/objects/Object.h"
#include "root/write/ByteOutput.h"
#include "root/write/WrittenClasses.h"

#include <map>
#include <set>
#include <string>

namespace velmorak::root {

/// Writes an object and those that it refers to as the content of one record. A member that an object does not have
/// gets the value that a new object of the class has.
class ObjectWriter {
public:
    /// @param classes   outlives this.
    /// @param headBytes length of the record's header: references count from its beginning.
    ObjectWriter(const WrittenClasses& classes, std::size_t headBytes) : classes(classes), headBytes(headBytes) {}

    /// @throws Failure if the object is larger than the format allows.
    void write(const Object& object) { writeAs(object.className, object); }
    std::string take() { return output.take(); }
    /// Names of the classes of everything that was written.
    const std::set<std::string>& used() const { return names; }

private:
    void writeAs(const std::string& className, const Object& object);
    void writeBase(const std::string& className, const Object& object);
    void writeMember(const WrittenMember& member, const Object& object);
    void writeNumber(int number, double value, std::int64_t integer);
    void writeNumbers(const WrittenMember& member, const Object& object);
    void writeArray(const std::string& name, const Object& object);
    void writeFixedArray(const WrittenMember& member, const Object& object);
    void writeList(const Object& object);
    void writeObjectArray(const Object& object);
    void writePointer(const ObjectPtr& object);
    void writeClass(const std::string& className);
    void use(const std::string& className);

    std::size_t reference(std::size_t place) const;

    const WrittenClasses& classes;
    std::size_t headBytes;
    ByteOutput output;
    std::map<const Object*, std::size_t> objects;        ///< References to objects that were written.
    std::map<std::string, std::size_t> classReferences;  ///< To names of classes.
    std::set<std::string> names;
};

}  // namespace velmorak::root
