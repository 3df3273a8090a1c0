#include "isolate/Host.h"

#include "isolate/Codec.h"
#include "run/record/KindBuild.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace velmorak::isolation {
namespace {

[[noreturn]] void failBySystem(int reason) {
    throw std::system_error(reason, std::generic_category());
}

/// A copy beyond the numbers that the process of a host uses.
FileDescriptor outOfTheWay(const FileDescriptor& descriptor) {
    constexpr int beyond = 10;
    FileDescriptor copy = FileDescriptor::of(fcntl(descriptor.get(), F_DUPFD_CLOEXEC, beyond));
    if (!copy.isOpen()) {
        failBySystem(errno);
    }
    return copy;
}

/// Everything about a new process but its program.
class Spawning {
public:
    Spawning() {
        posix_spawn_file_actions_init(&actions);
        posix_spawnattr_init(&attributes);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&attributes, &none);
        sigset_t all;
        sigfillset(&all);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Spawning() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    Spawning(const Spawning&) = delete;
    Spawning& operator=(const Spawning&) = delete;

    void give(const FileDescriptor& descriptor, int number) {
        posix_spawn_file_actions_adddup2(&actions, descriptor.get(), number);
    }
    pid_t begin(const std::string& program, const std::string& argument) const {
        std::string name = program;
        std::string library = argument;
        const std::array<char*, 3> arguments{name.data(), library.data(), nullptr};
        pid_t process = -1;
        if (const int reason =
                posix_spawn(&process, program.c_str(), &actions, &attributes, arguments.data(), environ)) {
            failBySystem(reason);
        }
        return process;
    }

private:
    posix_spawn_file_actions_t actions{};
    posix_spawnattr_t attributes{};
};

}  // namespace

std::string endText(int status) {
    if (WIFEXITED(status)) {
        return "ended with status " + std::to_string(WEXITSTATUS(status));
    }
    switch (WTERMSIG(status)) {
        case SIGSEGV:
            return "crashed (segmentation fault)";
        case SIGBUS:
            return "crashed (bus error)";
        case SIGILL:
            return "crashed (illegal instruction)";
        case SIGFPE:
            return "crashed (arithmetic error)";
        case SIGABRT:
            return "crashed (abort)";
        case SIGKILL:
            return "was killed, perhaps because the machine has too little memory";
        default:
            return "was ended by signal " + std::to_string(WTERMSIG(status));
    }
}

Host::Host(Load load) : order(std::move(load)) {
    const MutexLock lock(mutex);
    try {
        start();
    } catch (...) {
        stop();
        throw;
    }
}

Host::~Host() {
    const MutexLock lock(mutex);
    stop();
}

void Host::stop() {
    channel.reset();
    if (process > 0) {
        endOfHost();
    }
}

void Host::launch() {
    auto [own, others] = newConnection();
    std::array<int, 2> pipeEnds{};
    if (pipe2(pipeEnds.data(), O_CLOEXEC) != 0) {
        failBySystem(errno);
    }
    const FileDescriptor watched = FileDescriptor::of(pipeEnds[0]);
    lifeline = FileDescriptor::of(pipeEnds[1]);
    FileDescriptor memory = newMemory();
    const FileDescriptor socket = outOfTheWay(others);
    const FileDescriptor pipeEnd = outOfTheWay(watched);
    const FileDescriptor shared = outOfTheWay(memory);
    channel = std::make_unique<Channel>(std::move(own), std::move(memory));
    Spawning spawning;
    int number = STDERR_FILENO;
    for (const FileDescriptor* const given : {&socket, &pipeEnd, &shared}) {
        spawning.give(*given, ++number);
    }
    process = spawning.begin(order.config.program.string(), order.config.library.string());
}

void Host::start() {
    launch();
    const bool isAnswered = ask(Op::Load, [this](MessageWriter& message) {
        message.text(buildOfLibrary());
        message.text(order.object.string());
        message.text(order.factory);
        std::vector<std::string> folders;
        for (const std::filesystem::path& folder : order.collections) {
            folders.push_back(folder.string());
        }
        write(message, folders);
        message.number<std::uint64_t>(order.config.memoryBytes);
    });
    if (!isAnswered) {
        throw std::runtime_error("the process that loads it " + endOfHost());
    }
    MessageReader answer = channel->content();
    if (channel->op() == Op::Error) {
        rethrow(answer);
    }
    declared = readDeclarations(answer);
}

bool Host::ask(Op op, const std::function<void(MessageWriter&)>& writer, std::initializer_list<int> descriptors) {
    MessageWriter message = channel->begin();
    writer(message);
    return channel->send(op, message, descriptors) && channel->receive();
}

/// Collects the process, which has closed its socket. @return how it ended.
std::string Host::endOfHost() {
    int status = 0;
    kill(process, SIGKILL);  // No effect on one that is ending.
    const bool isKnown = waitpid(process, &status, 0) == process;
    process = -1;
    return isKnown ? endText(status) : "has ended";
}

pid_t Host::fork(const std::function<void(MessageWriter&)>& writer, std::initializer_list<int> descriptors) {
    const MutexLock lock(mutex);
    if (!ask(Op::Fork, writer, descriptors)) {
        endOfHost();
        const Declarations before = declared;
        start();
        if (declared.kinds.size() != before.kinds.size()) {
            throw std::runtime_error("its collection has changed while it was in use");
        }
        if (!ask(Op::Fork, writer, descriptors)) {
            throw std::runtime_error("the process that starts helpers for it " + endOfHost());
        }
    }
    MessageReader answer = channel->content();
    if (channel->op() == Op::Error) {
        rethrow(answer);
    }
    return answer.number<pid_t>();
}

std::optional<int> Host::endOf(pid_t helper) {
    const MutexLock lock(mutex);
    if (!channel || !ask(Op::EndOf, [&](MessageWriter& message) { message.number(helper); })) {
        return std::nullopt;
    }
    MessageReader answer = channel->content();
    const bool isKnown = answer.flag();
    const int status = answer.number<int>();
    return isKnown ? std::optional(status) : std::nullopt;
}

void Host::release(pid_t helper) {
    const MutexLock lock(mutex);
    if (channel) {
        ask(Op::Release, [&](MessageWriter& message) { message.number(helper); });
    }
}

}  // namespace velmorak::isolation
