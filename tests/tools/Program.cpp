#include "Program.h"

#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace {

struct Pipe {
    Pipe() {
        if (pipe(ends.data()) != 0) {
            throw std::runtime_error("no pipe can be made");
        }
    }
    ~Pipe() {
        close(ends[0]);
        closeInput();
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeInput() {
        if (ends[1] >= 0) {
            close(ends[1]);
            ends[1] = -1;
        }
    }
    /// @return false at the end of what comes.
    bool readInto(std::string& text) const {
        std::array<char, 4096> block;
        const ssize_t count = read(ends[0], block.data(), block.size());
        if (count > 0) {
            text.append(block.data(), static_cast<std::size_t>(count));
        }
        return count > 0;
    }

    std::array<int, 2> ends{-1, -1};
};

pid_t start(const std::vector<std::string>& command, const Pipe& output, const Pipe& errors) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output.ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors.ends[1], STDERR_FILENO);
    for (const int end : {output.ends[0], output.ends[1], errors.ends[0], errors.ends[1]}) {
        posix_spawn_file_actions_addclose(&actions, end);
    }
    pid_t id = 0;
    const int error = posix_spawnp(&id, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error(command[0] + " cannot be started");
    }
    return id;
}

}  // namespace

Ended runProgram(const std::vector<std::string>& command,
                 const std::function<void(pid_t, const std::string&)>& onError) {
    Pipe output;
    Pipe errors;
    const pid_t id = start(command, output, errors);
    output.closeInput();
    errors.closeInput();
    Ended ended;
    std::array<pollfd, 2> polled{{{output.ends[0], POLLIN, 0}, {errors.ends[0], POLLIN, 0}}};
    while (polled[0].fd >= 0 || polled[1].fd >= 0) {
        poll(polled.data(), polled.size(), -1);
        if (polled[0].revents != 0 && !output.readInto(ended.output)) {
            polled[0].fd = -1;
        }
        if (polled[1].revents != 0 && !errors.readInto(ended.errors)) {
            polled[1].fd = -1;
        } else if (polled[1].revents != 0 && onError) {
            onError(id, ended.errors);
        }
    }
    int status = 0;
    rusage usage{};
    wait4(id, &status, 0, &usage);
    ended.peakKilobytes = usage.ru_maxrss;
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}
