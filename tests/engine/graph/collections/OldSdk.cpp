#include <velmorak/Kind.h>

extern "C" __attribute__((visibility("default"))) const char velmorakSdkHeaders[];
const char velmorakSdkHeaders[] = "0123456789abcdef";
extern "C" __attribute__((visibility("default"))) void QzAnalysisFactory(velmorak::Registry& registry);
void QzAnalysisFactory(velmorak::Registry& registry) {
    registry.group("Never");
}
