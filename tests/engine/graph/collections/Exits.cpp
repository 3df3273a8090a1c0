#include <velmorak/Kind.h>

#include <unistd.h>

namespace {

/// Ends the program, with the status of success, as soon as the collection is loaded.
const struct Ending {
    Ending() { _exit(0); }
} ending;

}  // namespace

VELMORAK_COLLECTION(registry) {
    registry.group("Never");
}
