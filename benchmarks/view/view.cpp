#include <unistd.h>

#include <cstdio>
#include <cstdlib>

/// velmorak_bench_view: becomes the script that drives the browser, in the Python of the system, which has Selenium.
int main() {
    setenv("PYTHONPATH", VELMORAK_BENCH_CHECKS, 1);
    setenv("PYTHONDONTWRITEBYTECODE", "1", 1);
    execl("/usr/bin/python3", "python3", VELMORAK_BENCH_VIEW, VELMORAK_VIEW, VELMORAK_RUN, static_cast<char*>(nullptr));
    std::perror("/usr/bin/python3");
    return 2;
}
