#include <velmorak/Kind.h>

extern "C" __attribute__((visibility("default"))) const char velmorakSdkHeaders[];
const char velmorakSdkHeaders[] = VELMORAK_SDK_VERSION;
