#include <velmorak/Kind.h>

extern "C" __attribute__((visibility("default"))) const int velmorakSdkVersion;
const int velmorakSdkVersion = velmorak::sdkVersion + 1;
extern "C" __attribute__((visibility("default"))) void QzAnalysisFactory(velmorak::Registry& registry);
void QzAnalysisFactory(velmorak::Registry& registry) {
    registry.group("Never");
}
