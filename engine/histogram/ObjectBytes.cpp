#include <velmorak/ObjectBytes.h>

#include "table/Bytes.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram1D.h>
#include <velmorak/HistogramGrid.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

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

/// @return whether the object is of this class.
template <typename Object, typename Use>
bool use(const DataObject& object, const Use& with) {
    const auto* known = dynamic_cast<const Object*>(&object);
    if (known) {
        with(*known, letterOf<Object>);
    }
    return known != nullptr;
}

template <typename Object>
bool read(const std::string& bytes, DataObjectPtr& object) {
    const bool isThis = bytes.front() == letterOf<Object>;
    if (isThis) {
        object = std::make_shared<const Object>(Object::fromBytes(bytes.substr(1)));
    }
    return isThis;
}

template <typename... Classes>
struct Known {
    /// Calls with with the object as what it is, and the letter of its class.
    template <typename Use>
    static void use(const DataObject& object, const Use& with) {
        if (!(velmorak::use<Classes>(object, with) || ...)) {
            throw std::invalid_argument("an object of this class has no bytes");
        }
    }
    static bool isRead(const std::string& bytes, DataObjectPtr& object) {
        return !bytes.empty() && (read<Classes>(bytes, object) || ...);
    }
};

using AllKnown = Known<Histogram1D, Histogram2D, Histogram3D, Profile1D, Profile2D, Points, FunctionObject>;

}  // namespace

std::string bytesOf(const DataObject& object) {
    std::string bytes;
    bytesOf(object, [&](std::string_view piece) { bytes += piece; });
    return bytes;
}

void bytesOf(const DataObject& object, const ByteSink& sink) {
    AllKnown::use(object, [&](const auto& known, char letter) {
        sink({&letter, 1});
        ByteWriter writer(sink);
        known.write(writer);
        writer.seal();
    });
}

std::uint64_t countBytesOf(const DataObject& object) {
    std::uint64_t count = 0;
    AllKnown::use(object, [&](const auto& known, char) {
        ByteWriter writer = ByteWriter::counter();
        known.write(writer);
        count = 1 + writer.count();
    });
    return count;
}

DataObjectPtr objectFrom(const std::string& bytes) {
    DataObjectPtr object;
    if (!AllKnown::isRead(bytes, object)) {
        throw std::invalid_argument("these are not the bytes of an object");
    }
    return object;
}

}  // namespace velmorak
