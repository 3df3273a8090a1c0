#include <velmorak/Kind.h>

extern "C" __attribute__((visibility("default"))) const int velmorakSdkVersion;
const int velmorakSdkVersion = velmorak::sdkVersion;
