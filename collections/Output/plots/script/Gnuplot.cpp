#include "Output/plots/script/Gnuplot.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>

namespace velmorak {

namespace {

constexpr int stopPollMs = 50;
constexpr std::size_t maxComplaint = 2000;

/// A pipe for gnuplot's messages; the destructor closes both ends.
struct Pipe {
    Pipe();
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    void closeWriter();

    std::array<int, 2> ends{-1, -1};
};

Pipe::Pipe() {
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw Failure("cannot create a pipe to gnuplot: " + std::generic_category().message(errno));
    }
}

Pipe::~Pipe() {
    close(ends[0]);
    closeWriter();
}

void Pipe::closeWriter() {
    if (ends[1] >= 0) {
        close(ends[1]);
    }
    ends[1] = -1;
}

/// A running gnuplot; the destructor terminates it and waits for it.
class Child {
public:
    Child(const std::filesystem::path& folder, const std::string& script, const Pipe& errors);
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    /// @return whether gnuplot succeeded.
    bool wait();

private:
    pid_t id = -1;
    bool isRunning = true;
};

Child::Child(const std::filesystem::path& folder, const std::string& script, const Pipe& errors) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addchdir_np(&actions, folder.c_str());
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, errors.ends[1], STDERR_FILENO);
    std::string program = "gnuplot";
    std::string noStartFile = "-d";
    std::string argument = script;
    std::array<char*, 4> arguments = {program.data(), noStartFile.data(), argument.data(), nullptr};
    const int error = posix_spawnp(&id, "gnuplot", &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error == ENOENT) {
        throw Failure("gnuplot is not installed; install the Debian package gnuplot-nox");
    }
    if (error != 0) {
        throw Failure("cannot start gnuplot: " + std::generic_category().message(error));
    }
}

Child::~Child() {
    if (isRunning) {
        kill(id, SIGKILL);
        wait();
    }
}

bool Child::wait() {
    int status = 0;
    while (waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    isRunning = false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Reads until the other end is closed, that is until the child has ended.
std::string readAll(int descriptor, const RunContext& context) {
    std::string text;
    std::array<char, 4096> buffer{};
    while (true) {
        if (context.isStopping()) {
            throw Stopped();
        }
        pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
        if (poll(&waiting, 1, stopPollMs) <= 0) {
            continue;
        }
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return text;
        }
        if (text.size() < maxComplaint) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
    }
}

std::string asOneLine(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < 0x20) {
            c = ' ';
        }
    }
    text.resize(std::min(text.size(), maxComplaint));
    return std::string(trimmed(text));
}

}  // namespace

void runGnuplot(const std::filesystem::path& folder, const std::string& script, const RunContext& context) {
    Pipe errors;
    Child child(folder, script, errors);
    errors.closeWriter();
    const std::string output = readAll(errors.ends[0], context);
    const bool isDrawn = child.wait();
    // An interrupt from the keyboard reaches gnuplot, too.
    if (context.isStopping()) {
        throw Stopped();
    }
    if (!isDrawn) {
        throw Failure("gnuplot cannot draw the picture: " + asOneLine(output));
    }
}

}  // namespace velmorak
