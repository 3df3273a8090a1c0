#include <velmorak/DataObjects.h>

namespace velmorak {

namespace {

/// Tries the alternatives in order; the last one, DataObject, always fits.
template <std::size_t alternative = 0>
ConcreteObject firstFitting(const DataObject& object) {
    using Pointer = std::variant_alternative_t<alternative, ConcreteObject>;
    if constexpr (alternative + 1 == std::variant_size_v<ConcreteObject>) {
        return &object;
    } else {
        if (const auto* found = dynamic_cast<Pointer>(&object)) {
            return found;
        }
        return firstFitting<alternative + 1>(object);
    }
}

}  // namespace

ConcreteObject concrete(const DataObject& object) {
    return firstFitting(object);
}

}  // namespace velmorak
