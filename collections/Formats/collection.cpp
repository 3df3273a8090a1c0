#include <velmorak/FileFormat.h>

VELMORAK_COLLECTION(registry) {
    registry.group("Formats");
}
