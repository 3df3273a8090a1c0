#include "velmorak/ObjectBytes.h"

#include "velmorak/FunctionObject.h"
#include "velmorak/Histogram1D.h"
#include "velmorak/HistogramGrid.h"
#include "velmorak/Points.h"
#include "velmorak/Profile.h"

#include <stdexcept>

// Layout: one letter for the class, then the bytes of the object itself, which carry a mark and a checksum.
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

template <typename Object>
bool write(const DataObject& object, std::string& bytes) {
    const auto* known = dynamic_cast<const Object*>(&object);
    if (known != nullptr)
        bytes = letterOf<Object> + known->toBytes();
    return known != nullptr;
}

template <typename Object>
bool read(const std::string& bytes, DataObjectPtr& object) {
    const bool isThis = bytes.front() == letterOf<Object>;
    if (isThis)
        object = std::make_shared<const Object>(Object::fromBytes(bytes.substr(1)));
    return isThis;
}

template <typename... Classes>
struct Known {
    static bool written(const DataObject& object, std::string& bytes) { return (write<Classes>(object, bytes) || ...); }
    static bool isRead(const std::string& bytes, DataObjectPtr& object) {
        return !bytes.empty() && (read<Classes>(bytes, object) || ...);
    }
};

using AllKnown = Known<Histogram1D, Histogram2D, Histogram3D, Profile1D, Profile2D, Points, FunctionObject>;

}  // namespace

std::string bytesOf(const DataObject& object) {
    std::string bytes;
    if (!AllKnown::written(object, bytes))
        throw std::invalid_argument("an object of this class has no bytes");
    return bytes;
}

DataObjectPtr objectFrom(const std::string& bytes) {
    DataObjectPtr object;
    if (!AllKnown::isRead(bytes, object))
        throw std::invalid_argument("these are not the bytes of an object");
    return object;
}

}  // namespace velmorak
