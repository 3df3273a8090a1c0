#include "isolate/process/HostProcess.h"

#include "isolate/Codec.h"
#include "isolate/process/Links.h"
#include "run/record/KindBuild.h"

#include <fcntl.h>
#include <malloc.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

namespace velmorak::isolation {
namespace {

constexpr int socketNumber = 3;
constexpr int pipeNumber = 4;
constexpr int memoryNumber = 5;

extern "C" void ignoreSignal(int) {}

/// The program that has started the host decides what an interrupt from the terminal ends. Programs that a kind starts
/// have the usual handlers again.
void leaveSignalsToProgram() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGUSR1, SIGUSR2}) {
        struct sigaction action {};
        action.sa_handler = &ignoreSignal;
        action.sa_flags = SA_RESTART;
        sigaction(number, &action, nullptr);
    }
}

/// The system kills this process when the program closes the pipe, whatever this process does then.
void endWithProgram() {
    fcntl(pipeNumber, F_SETOWN, getpid());
    fcntl(pipeNumber, F_SETSIG, SIGKILL);
    fcntl(pipeNumber, F_SETFL, fcntl(pipeNumber, F_GETFL) | O_ASYNC);
}

/// As velmorak-run does: freed memory is kept for the next chunks.
void keepFreedMemory() {
    constexpr int maxBlock = 32 << 20;
    constexpr int keptBytes = 64 << 20;
    mallopt(M_MMAP_THRESHOLD, maxBlock);
    mallopt(M_TRIM_THRESHOLD, keptBytes);
}

/// @return bytes of data that the process has now.
[[maybe_unused]] std::uint64_t bytesOfData() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t pages = 0;
    constexpr int fields = 6;
    for (int i = 0; i < fields; ++i) {
        file >> pages;
    }
    return file ? pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) : 0;
}

/// Beyond what the process has, and the stacks of its threads. A sanitizer's own memory would not fit.
void limitMemory([[maybe_unused]] std::uint64_t bytes) {
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    constexpr std::uint64_t bytesOfStack = std::uint64_t{8} << 20U;
    const std::uint64_t all = bytesOfData() + bytes + bytesOfStack * (std::thread::hardware_concurrency() + 2);
    const rlimit limit{all, all};
    setrlimit(RLIMIT_DATA, &limit);
#endif
}

/// Where the machine has too little memory, the system ends this process rather than the program.
void beFirstToGo() {
    constexpr int likely = 500;
    std::ofstream("/proc/self/oom_score_adj") << likely;
}

class HostProcess {
public:
    explicit HostProcess(const std::function<LoadedCollection(const Load&)>& load)
        : loader(load),
          channel(std::make_unique<Channel>(FileDescriptor::of(socketNumber), FileDescriptor::of(memoryNumber))) {}

    void run();

private:
    void answer();
    void load(MessageReader question);
    void fork(MessageReader question);
    [[noreturn]] void become(const Task& task, pid_t host);
    void endOf(MessageReader question);
    void release(MessageReader question);
    void collectReleased();
    void reply(Op op, const std::function<void(MessageWriter&)>& writing);

    const std::function<LoadedCollection(const Load&)>& loader;
    std::unique_ptr<Channel> channel;
    std::vector<FileDescriptor> given;  ///< With the last question.
    LoadedCollection loaded;
    std::uint64_t memoryBytes = 0;
    std::vector<pid_t> released;
};

void HostProcess::run() {
    constexpr int betweenLooksMs = 100;
    for (;;) {
        while (!channel->wait(released.empty() ? -1 : betweenLooksMs)) {
            collectReleased();
        }
        if (!channel->receive()) {
            return;
        }
        given = channel->takeDescriptors();
        try {
            answer();
        } catch (...) {
            reply(Op::Error, [error = std::current_exception()](MessageWriter& message) { write(message, error); });
        }
        collectReleased();
    }
}

void HostProcess::answer() {
    switch (channel->op()) {
        case Op::Load:
            return load(channel->content());
        case Op::Fork:
            return fork(channel->content());
        case Op::EndOf:
            return endOf(channel->content());
        case Op::Release:
            return release(channel->content());
        default:
            throw std::runtime_error("a message between the program and a helper process is damaged");
    }
}

void HostProcess::load(MessageReader question) {
    if (question.text() != buildOfLibrary()) {
        throw std::runtime_error(
            "the analysis library was replaced while the program was running; restart the program");
    }
    Load order;
    order.object = question.text();
    order.factory = question.text();
    for (std::string& folder : readTexts(question)) {
        order.collections.emplace_back(std::move(folder));
    }
    memoryBytes = question.number<std::uint64_t>();
    loaded = loader(order);
    std::cout.flush();  // Or each helper prints again what was printed meanwhile.
    std::fflush(nullptr);
    Declarations declarations;
    declarations.hasFormats = loaded.hasFormats;
    for (const LoadedKind& each : loaded.kinds) {
        declarations.kinds.push_back(declarationOf(each.kind.get(), each.group));
    }
    reply(Op::Done, [&](MessageWriter& message) { write(message, declarations); });
}

void HostProcess::fork(MessageReader question) {
    const Task task = readTask(question);
    if (given.size() != 3) {
        throw std::runtime_error("a message between the program and a helper process is damaged");
    }
    const pid_t host = getpid();
    const pid_t helper = ::fork();
    if (helper == 0) {
        become(task, host);
    }
    if (helper < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    given.clear();
    reply(Op::Done, [&](MessageWriter& message) { message.number(helper); });
}

/// In the new process.
void HostProcess::become(const Task& task, pid_t host) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != host) {
        endProcess();
    }
    channel.reset();
    close(pipeNumber);
    limitMemory(memoryBytes);
    beFirstToGo();
    setpriority(PRIO_PROCESS, 0, task.priority);
    if (!task.folder.empty() && chdir(task.folder.c_str()) != 0) {
        endProcess();
    }
    Channel control(std::move(given[0]), std::move(given[1]));
    runHelper(loaded.kinds, task, std::move(control), std::move(given[2]));
}

/// The process has closed its sockets: it is ending, or somebody has closed them for it.
void HostProcess::endOf(MessageReader question) {
    const auto helper = question.number<pid_t>();
    int status = 0;
    pid_t ended = waitpid(helper, &status, WNOHANG);
    if (ended == 0) {
        kill(helper, SIGKILL);
        ended = waitpid(helper, &status, 0);
    }
    reply(Op::Done, [&](MessageWriter& message) {
        message.flag(ended == helper);
        message.number(status);
    });
}

void HostProcess::release(MessageReader question) {
    released.push_back(question.number<pid_t>());
    reply(Op::Done, [](MessageWriter&) {});
}

void HostProcess::collectReleased() {
    std::erase_if(released, [](pid_t helper) { return waitpid(helper, nullptr, WNOHANG) != 0; });
}

void HostProcess::reply(Op op, const std::function<void(MessageWriter&)>& writing) {
    MessageWriter message = channel->begin();
    writing(message);
    channel->send(op, message);
}

}  // namespace

int runHost(const std::function<LoadedCollection(const Load&)>& load) {
    leaveSignalsToProgram();
    keepFreedMemory();
    endWithProgram();
    HostProcess(load).run();
    return 0;
}

}  // namespace velmorak::isolation
