#include "root/tree/ValueTypes.h"

namespace velmorak::root {
namespace {

using Kind = ValueType::Kind;

/// Descriptions of classes may refer to themselves, or repeat one another without end.
constexpr int maxTypeDepth = 12;
constexpr std::size_t maxMembers = 4096;

/// Replaces the classes in a type by their members.
class MemberExpansion {
public:
    explicit MemberExpansion(const Classes& classes) : classes(classes) {}

    void expand(ValueType& type, int depth);

private:
    void expandClass(ValueType& type, int depth);
    static void findCounts(const ClassInfo& info, ValueType& type);
    ValueType memberOf(const Element& element, int depth);
    static ValueType typeOf(const Element& element);

    const Classes& classes;
    std::size_t members = 0;
};

void setProblem(ValueType& type, Kind kind, const std::string& problem) {
    type.kind = kind;
    type.problem = problem;
    type.arguments.clear();
}

void expandNamed(ValueType& type) {
    type.arguments = {ValueType{.kind = Kind::ObjectBase}, ValueType{.kind = Kind::Text, .name = "fName"},
                      ValueType{.kind = Kind::Text, .name = "fTitle"}};
}

std::string withoutPointer(std::string name) {
    name.erase(name.find_last_not_of(" *") + 1);
    return name;
}

/// Classes with code of their own to write them; the members that a file describes are not what it holds.
bool isWrittenByItself(const std::string& name) {
    return name.starts_with("TClonesArray") || name.starts_with("TObjArray") || name.starts_with("TList") ||
           name.starts_with("TRef") || name.starts_with("TMap") || name.starts_with("TArray") ||
           name.starts_with("TDatime") || name.starts_with("TCollection") || name.starts_with("THashList");
}

bool isCollection(const Element& element) {
    return element.kind == Element::Collection || element.className.starts_with("TStreamerSTL");
}

/// Whether a member that cannot be read says how long it is.
bool hasHeader(const Element& element) {
    return isCollection(element) || element.kind <= Element::Base || element.kind == Element::Custom ||
           element.kind == Element::CustomLoop ||
           (element.kind >= Element::EmbeddedObject && element.kind != Element::Text);
}

void MemberExpansion::expand(ValueType& type, int depth) {
    if (type.kind == Kind::Object) {
        expandClass(type, depth);
        return;
    }
    for (ValueType& argument : type.arguments) {
        expand(argument, depth + 1);
    }
}

void MemberExpansion::expandClass(ValueType& type, int depth) {
    if (type.className == "TObject") {
        type.kind = Kind::ObjectBase;
        return;
    }
    if (type.className == "TNamed") {
        expandNamed(type);
        return;
    }
    const ClassInfo* info = classes.find(type.className, type.version);
    if (!info || isWrittenByItself(type.className)) {
        setProblem(type, Kind::Unknown, "values of the type " + type.className + " cannot be read");
        return;
    }
    if (depth > maxTypeDepth || members > maxMembers) {
        setProblem(type, Kind::Unknown, "the class " + type.className + " is nested too deep");
        return;
    }
    type.version = classes.isAlone(type.className) ? 0 : info->version;
    type.checksum = classes.isAlone(type.className) ? 0 : info->checksum;
    for (const Element& element : info->elements) {
        ++members;
        type.arguments.push_back(memberOf(element, depth + 1));
        if (type.arguments.back().kind == Kind::Unknown && !hasHeader(element)) {
            setProblem(type, Kind::Unknown, "the member " + element.name + " of " + type.className + " has no length");
            return;
        }
    }
    findCounts(*info, type);
}

/// The lengths of arrays are in members before them.
void MemberExpansion::findCounts(const ClassInfo& info, ValueType& type) {
    for (std::size_t i = 0; i < info.elements.size(); ++i) {
        const bool isCounted = type.arguments[i].kind == Kind::Number && info.elements[i].kind > Element::CountedArray;
        for (std::size_t j = 0; j < i && isCounted; ++j) {
            const ValueType& number = type.arguments[j];
            const bool isInteger = number.kind == Kind::Number && !isReal(number.number) && number.length == 1;
            if (isInteger && info.elements[j].name == info.elements[i].countName) {
                type.arguments[i].count = j;
                type.arguments[j].isCount = true;
            }
        }
        if (isCounted && !type.arguments[i].count) {
            setProblem(type, Kind::Unknown, "an array of the class " + type.className + " has no length");
            return;
        }
    }
}

ValueType MemberExpansion::memberOf(const Element& element, int depth) {
    ValueType type = typeOf(element);
    const bool isBase = element.className == "TStreamerBase";
    type.name = isBase ? std::string() : element.name;
    const bool isMemberOfMember = type.kind == Kind::Object || !type.arguments.empty();
    if (isMemberOfMember) {
        expand(type, depth);
    }
    return type;
}

ValueType MemberExpansion::typeOf(const Element& element) {
    const int arithmetic = element.kind % Element::FixedArray;
    if (element.kind > 0 && element.kind < 60 && numberTypeOf(arithmetic)) {
        const bool isFixed = element.kind > Element::FixedArray && element.kind < Element::CountedArray;
        return {.kind = Kind::Number,
                .number = *numberTypeOf(arithmetic),
                .range = element.range,
                .length = isFixed ? element.arrayLength : 1};
    }
    switch (element.kind) {
        case Element::Base:
        case Element::ObjectBase:
        case Element::NamedBase:
            return {.kind = Kind::Object,
                    .className = element.className == "TStreamerBase" ? element.name : element.typeName};
        case Element::Text:
        case Element::StandardText:
            return {.kind = Kind::Text};
        case Element::EmbeddedObject:
        case Element::EmbeddedAny:
        case Element::EmbeddedPointer:
        case Element::EmbeddedAnyPointer:
            return {.kind = Kind::Object, .className = withoutPointer(element.typeName)};
        case Element::EmbeddedObjects:
        case Element::EmbeddedAnys:
            return {.kind = Kind::Object, .className = element.typeName, .length = element.arrayLength};
        case Element::Pointer:
        case Element::AnyPointer:
            return {.kind = Kind::Pointer, .problem = "pointers to objects are not followed"};
        default:
            break;
    }
    std::optional<ValueType> type = isCollection(element) ? valueTypeNamed(element.typeName) : std::nullopt;
    if (!type || type->kind == Kind::Object || element.arrayLength > 0) {
        return {.kind = Kind::Unknown, .problem = "values of the type " + element.typeName + " cannot be read"};
    }
    type->hasHeader = true;
    return *type;
}

}  // namespace

void addMembers(ValueType& type, const Classes& classes) {
    MemberExpansion(classes).expand(type, 0);
}

}  // namespace velmorak::root
