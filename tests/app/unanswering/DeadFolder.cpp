/// Preloaded into a program: looking up or opening a file in the folder that VELMORAK_TEST_DEAD_FOLDER names never
/// returns, as on a network mount whose server is gone.

#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace {

void waitIfDead(const char* path) {
    const char* const folder = std::getenv("VELMORAK_TEST_DEAD_FOLDER");
    if (!folder || !path || !std::string_view(path).starts_with(folder)) {
        return;
    }
    while (true) {
        pause();
    }
}

template <typename Call>
Call* next(const char* name) {
    return reinterpret_cast<Call*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

// Under names of their own, because the C library declares these calls with other parameters and attributes.
extern "C" {

int deadOpen(const char* path, int flags, unsigned mode) __asm__("open");
int deadOpen64(const char* path, int flags, unsigned mode) __asm__("open64");
int deadStat(const char* path, void* status) __asm__("stat");
int deadStat64(const char* path, void* status) __asm__("stat64");
int deadLstat(const char* path, void* status) __asm__("lstat");
int deadLstat64(const char* path, void* status) __asm__("lstat64");

int deadOpen(const char* path, int flags, unsigned mode) {
    waitIfDead(path);
    return next<decltype(deadOpen)>("open")(path, flags, mode);
}

int deadOpen64(const char* path, int flags, unsigned mode) {
    waitIfDead(path);
    return next<decltype(deadOpen64)>("open64")(path, flags, mode);
}

int deadStat(const char* path, void* status) {
    waitIfDead(path);
    return next<decltype(deadStat)>("stat")(path, status);
}

int deadStat64(const char* path, void* status) {
    waitIfDead(path);
    return next<decltype(deadStat64)>("stat64")(path, status);
}

int deadLstat(const char* path, void* status) {
    waitIfDead(path);
    return next<decltype(deadLstat)>("lstat")(path, status);
}

int deadLstat64(const char* path, void* status) {
    waitIfDead(path);
    return next<decltype(deadLstat64)>("lstat64")(path, status);
}
}
