#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>

/// Runs the kinds of one collection for the program that has started it, with the analysis library that this program
/// uses. Argument: the library's shared object.
int main(int argc, char** argv) {
    void* const library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_GLOBAL) : nullptr;
    void* const work = library ? dlsym(library, "velmorakKindHost") : nullptr;
    if (!work) {
        const char* const reason = argc == 2 ? dlerror() : "programs of Velmorak start this one themselves";
        static_cast<void>(std::fprintf(stderr, "velmorak-kind-host: %s\n", reason ? reason : "no reason given"));
        return 2;
    }
    // The objects of the library and of the collection are not destroyed: threads may use them.
    _exit(reinterpret_cast<int (*)()>(work)());
}
