#include "ObjectSum.h"

#include <velmorak/Failure.h>
#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>
#include <velmorak/Text.h>

#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

void requireSums(const std::string& file, bool hasExactSums) {
    if (!hasExactSums) {
        throw Failure("file", "the profile in " + velmorak::quoted(file) +
                                  " cannot be added to others: the file has no sums of weights");
    }
}

}  // namespace

void ObjectSum::add(const std::string& file, DataObjectPtr object) {
    if (!whole) {
        whole = std::move(object);
        first = file;
        return;
    }
    const bool isAdded = addAs<Histogram1D>(file, *object) || addAs<Histogram2D>(file, *object) ||
                         addAs<Histogram3D>(file, *object) || addAs<Profile1D>(file, *object) ||
                         addAs<Profile2D>(file, *object);
    if (!isAdded) {
        throw Failure("file", velmorak::quoted(file) + " and " + velmorak::quoted(first) +
                                  " have objects of different dimensions");
    }
}

template <typename Object>
bool ObjectSum::addAs(const std::string& file, const DataObject& more) {
    const auto* mine = dynamic_cast<const Object*>(whole.get());
    const auto* other = dynamic_cast<const Object*>(&more);
    if (!mine || !other) {
        return false;
    }
    if constexpr (requires { mine->hasExactSums(); }) {
        requireSums(first, mine->hasExactSums());
        requireSums(file, other->hasExactSums());
    }
    if (!sum) {
        sum = std::make_shared<Object>(*mine);
        whole = sum;
    }
    try {
        static_cast<Object&>(*sum).merge(*other);
    } catch (const std::invalid_argument&) {
        throw Failure("file", "the object in " + velmorak::quoted(file) + " has other bins than the one in " +
                                  velmorak::quoted(first));
    }
    return true;
}

void requireNoProperties(const FileList& list) {
    if (!list.properties.empty()) {
        throw Failure("file",
                      "the properties of files are for tables: there are no rows that could have them; use a "
                      "list without properties, such as @list.txt");
    }
}

}  // namespace velmorak
