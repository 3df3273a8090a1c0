#include <velmorak/ObjectBytes.h>

#include "table/ByteWriter.h"

#include <velmorak/DataObjects.h>

#include <stdexcept>
#include <type_traits>

// Layout: one letter for the class, then the serialised object, which begins with a mark and ends with a checksum.
namespace velmorak {

namespace {

template <typename Object>
constexpr char letterOf = '\0';
template <>
constexpr char letterOf<Histogram1D> = 'h';
template <>
constexpr char letterOf<Histogram2D> = 'i';
template <>
constexpr char letterOf<Histogram3D> = 'j';
template <>
constexpr char letterOf<Profile1D> = 'p';
template <>
constexpr char letterOf<Profile2D> = 'q';
template <>
constexpr char letterOf<Points> = 'x';
template <>
constexpr char letterOf<FunctionObject> = 'f';
template <>
constexpr char letterOf<HistogramList> = 'l';

template <typename Object>
bool read(const std::string& bytes, DataObjectPtr& object) {
    const bool isThis = bytes.front() == letterOf<Object>;
    if (isThis) {
        object = std::make_shared<const Object>(Object::fromBytes(bytes.substr(1)));
    }
    return isThis;
}

/// Every class of ConcreteObject but DataObject itself.
template <typename... Objects>
bool readAny(const std::string& bytes, DataObjectPtr& object, std::variant<const Objects*...> /*classes*/) {
    const auto readIfListed = [&]<typename Object>(const Object*) {
        if constexpr (std::is_same_v<Object, DataObject>) {
            return false;
        } else {
            return read<Object>(bytes, object);
        }
    };
    return !bytes.empty() && (readIfListed(static_cast<const Objects*>(nullptr)) || ...);
}

/// Calls use with the object as its concrete class and the letter of that class.
template <typename Use>
void visitSerialisable(const DataObject& object, const Use& use) {
    visit(object, overloaded{
                      [](const DataObject&) {
        throw std::invalid_argument("objects of this class have no bytes"); },
                      [&]<typename Object>(const Object& known)
                          requires(letterOf<Object> != '\0')
                      { use(known, letterOf<Object>);
}
,
}  // namespace
);
}  // namespace velmorak

}  // namespace

std::string bytesOf(const DataObject& object) {
    std::string bytes;
    bytesOf(object, [&](std::string_view piece) { bytes += piece; });
    return bytes;
}

void bytesOf(const DataObject& object, const ByteSink& sink) {
    visitSerialisable(object, [&](const auto& known, char letter) {
        sink({&letter, 1});
        ByteWriter writer(sink);
        known.write(writer);
        writer.seal();
    });
}

std::uint64_t countBytesOf(const DataObject& object) {
    std::uint64_t count = 0;
    visitSerialisable(object, [&](const auto& known, char) {
        ByteWriter writer = ByteWriter::counter();
        known.write(writer);
        count = 1 + writer.count();
    });
    return count;
}

DataObjectPtr objectFrom(const std::string& bytes) {
    DataObjectPtr object;
    if (!readAny(bytes, object, ConcreteObject())) {
        throw std::invalid_argument("these are not the bytes of a data object");
    }
    return object;
}

}  // namespace velmorak
