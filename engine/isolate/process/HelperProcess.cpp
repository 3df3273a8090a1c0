#include "isolate/process/HelperProcess.h"

#include "isolate/process/HelperSession.h"

#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace velmorak::isolation {
namespace {

/// While a connection waits for a question, no other thread uses it, and none waits for its mutex.
bool receiveNext(Link& link) VELMORAK_NO_THREAD_SAFETY_ANALYSIS;

bool receiveNext(Link& link) {
    return link.channel.receive();
}

/// The process at work. It is never destroyed: threads of the kind may use it to the end.
class HelperProcess {
public:
    HelperProcess(const std::vector<LoadedKind>& kinds, Task work, FileDescriptor page)
        : kinds(kinds),
          task(std::move(work)),
          context(links, task, std::move(page)),
          session(*kinds.at(task.kind).kind, task, links, context) {}

    /// Answers the questions on a connection.
    void serve(Channel channel);

private:
    void answer(Link& link);
    Reply work(Op op, MessageReader question, const std::vector<std::uint64_t>& dropped);
    Reply askKind(Op op, MessageReader question) const;
    void drop(const std::vector<std::uint64_t>& numbers);

    const std::vector<LoadedKind>& kinds;
    const Task task;
    Links links;
    RemoteContext context;
    HelperSession session;
};

void HelperProcess::serve(Channel channel) {
    Link& link = links.add(std::move(channel));
    while (receiveNext(link)) {
        answer(link);
    }
}

void HelperProcess::answer(Link& link) {
    Reply reply;
    Op result = Op::Done;
    const auto fail = [&](const std::exception_ptr& error) {
        reply = [error](MessageWriter& message) { write(message, error); };
        result = Op::Error;
    };
    Op op = Op::Done;
    MessageReader question;
    {
        const MutexLock lock(link.mutex);
        op = link.channel.op();
        question = link.channel.content();
    }
    const auto dropped = question.list<std::vector<std::uint64_t>>();
    try {
        reply = work(op, question, dropped);
    } catch (...) {
        fail(std::current_exception());
    }
    drop(dropped);
    // What the kind has printed appears before what the program says of it.
    std::cout.flush();
    std::fflush(stdout);
    const MutexLock lock(link.mutex);
    MessageWriter message = link.channel.begin();
    try {
        reply(message);
    } catch (...) {
        fail(std::current_exception());
        message = link.channel.begin();
        reply(message);
    }
    link.isOpen = false;
    if (!link.channel.send(result, message)) {
        endProcess();
    }
}

/// Destroys what the program needs no more.
void HelperProcess::drop(const std::vector<std::uint64_t>& numbers) {
    for (const std::uint64_t number : numbers) {
        session.objects.take(number);
    }
}

Reply HelperProcess::work(Op op, MessageReader question, const std::vector<std::uint64_t>& dropped) {
    if (op == Op::Ports || op == Op::Refusal) {
        return askKind(op, question);
    }
    if (op == Op::Drop) {
        const auto number = question.number<std::uint64_t>();
        drop(dropped);
        session.objects.take(number);
        return [](MessageWriter&) {};
    }
    if (op == Op::Evaluate) {
        questionIsRead();
        const RemoteArguments arguments(session);
        RemoteResults results(session);
        dynamic_cast<const Function&>(session.kind).evaluate(arguments, results, context);
        return [](MessageWriter&) {};
    }
    if (op >= Op::MarkStateColumns || op == Op::PrepareStates) {
        return answerOnStates(session, op, question);
    }
    const bool isOnRows = op >= Op::MarkRowColumns || op == Op::PrepareRows || op == Op::PrepareTables;
    if (isOnRows) {
        return answerOnRows(session, op, question);
    }
    return answerOnSource(session, op, question);
}

Reply HelperProcess::askKind(Op op, MessageReader question) const {
    const Kind& kind = *kinds.at(question.number<std::uint64_t>()).kind;
    if (op == Op::Ports) {
        const Ports ports = kind.ports(readValueTexts(question));
        return [ports](MessageWriter& message) { write(message, ports); };
    }
    const std::string input = question.text();
    const std::string refusal = kind.refusal(input, question.text());
    return [refusal](MessageWriter& message) { message.text(refusal); };
}

}  // namespace

void runHelper(const std::vector<LoadedKind>& kinds, const Task& task, Channel control, FileDescriptor page) {
    auto& process = *new HelperProcess(kinds, task, std::move(page));
    while (control.receive()) {
        std::vector<FileDescriptor> given = control.takeDescriptors();
        if (control.op() == Op::NewChannel && given.size() == 2) {
            std::thread([&process, socket = std::move(given[0]), memory = std::move(given[1])]() mutable {
                process.serve(Channel(std::move(socket), std::move(memory)));
            }).detach();
        }
    }
    endProcess();
}

}  // namespace velmorak::isolation
