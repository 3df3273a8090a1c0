#pragma once

#include "root/container/Record.h"
#include "root/objects/Classes.h"
#include "root/objects/Object.h"

#include <deque>
#include <unordered_map>

namespace velmorak::root {

/// Reads the objects of one record using the file's descriptions of their classes.
class ObjectReader {
public:
    /// @param bytes   of the record.
    /// @param headBytes length of its header.
    /// @param classes   must outlive this.
    ObjectReader(Bytes bytes, std::size_t headBytes, const Classes& classes);

    /// The record's object, which owns all objects in it: they may refer to each other in circles, and none outlives
    /// the whole. Members that cannot be read are skipped if the file gives their length.
    /// @throws Failure if the record is damaged.
    ObjectPtr read(const std::string& className);

    /// Reads the members of a class at a position in another buffer, without a header.
    static void readMembers(ObjectReader& reader, const ClassInfo& info, Object& object);

    Buffer& buffer() { return bytes; }

private:
    ObjectPtr newObject(const std::string& className);
    ObjectPtr readClass(const std::string& className);
    void readInto(const std::string& className, Object& object);
    bool readSpecial(const std::string& className, Object& object);
    void readDescribed(const std::string& className, Object& object);
    void readMember(const Element& element, Object& object);
    Member readArithmetic(const Element& element, const Object& object);
    Member readNumbers(NumberType type, const NumberRange& range, std::size_t count);
    bool readOther(const Element& element, Object& object);
    Member readCollection(const Element& element);

    void readNamedInto(Object& object);
    void readList(Object& object);
    void readObjectArray(Object& object);
    void readNumberArray(const std::string& className, Object& object);
    void readBasket(Object& object);

    ObjectPtr readPointer();
    ObjectPtr readTagged(std::size_t begin, std::size_t tagAt, bool hasCount, std::uint32_t tag);

    Buffer bytes;
    std::size_t headBytes;
    const Classes& classes;
    using Owner = std::deque<Object>;
    std::shared_ptr<Owner> owner = std::make_shared<Owner>();  ///< Of all objects of the record.
    std::unordered_map<std::size_t, std::string> classTags;
    std::unordered_map<std::size_t, ObjectPtr> objectTags;
    int depth = 0;
};

}  // namespace velmorak::root
