#include "run/messages/LastExit.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace velmorak {
namespace {

void endNow(int status, void* /*none*/) {
    std::cout.flush();
    std::cerr.flush();
    std::fflush(stdout);
    _exit(status);
}

}  // namespace

void endWithoutDestructors() {
    on_exit(&endNow, nullptr);
}

}  // namespace velmorak
