#include "Process.h"

#include "Timing.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <iostream>

namespace velmorak::bench {

namespace {

double milliseconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

[[noreturn]] void become(const std::vector<std::string>& command, int output) {
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    dup2(output, STDOUT_FILENO);
    dup2(open("/dev/null", O_WRONLY), STDERR_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

}  // namespace

ProcessRun run(const std::vector<std::string>& command) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        std::abort();
    }
    const double begin = now(Clock::Wall);
    const pid_t child = fork();
    if (child == 0) {
        become(command, ends[1]);
    }
    close(ends[1]);
    ProcessRun result;
    std::array<char, 4096> piece{};
    for (ssize_t count = 1; count > 0;) {
        count = read(ends[0], piece.data(), piece.size());
        result.output.append(piece.data(), static_cast<std::size_t>(count > 0 ? count : 0));
    }
    close(ends[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::cerr << command[0] << " failed" << std::endl;
        std::exit(2);
    }
    result.wallMs = now(Clock::Wall) - begin;
    result.processorMs = milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
    result.peakMegabytes = static_cast<double>(usage.ru_maxrss) * 1024 / 1e6;
    return result;
}

}  // namespace velmorak::bench
