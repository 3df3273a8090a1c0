#include <QzVersion.h>

extern "C" __attribute__((visibility("default"))) const unsigned QzInterfaceVersion;
const unsigned QzInterfaceVersion = qzVersion + 1;
