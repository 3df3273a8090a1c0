#include <velmorak/Kind.h>

#include <stdexcept>

VELMORAK_COLLECTION(registry) {
    registry.group("Never");
    throw std::runtime_error("its licence has run out.");
}
