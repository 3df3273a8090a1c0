#include "isolate/process/Links.h"

#include "isolate/Codec.h"

#include <unistd.h>

#include <chrono>
#include <exception>
#include <thread>
#include <utility>

namespace velmorak::isolation {
namespace {

/// The connection that the calling thread answers on; null for a thread of the kind's own.
thread_local Link* ownLink = nullptr;

void sendOn(Link& link, Op op, const Writing& writing) VELMORAK_REQUIRES(link.mutex);
void receiveOn(Link& link) VELMORAK_REQUIRES(link.mutex);
/// @return the answer that has arrived. @throws the error that it is.
MessageReader answerOn(Link& link) VELMORAK_REQUIRES(link.mutex);

void sendOn(Link& link, Op op, const Writing& writing) {
    MessageWriter message = link.channel.begin();
    writing(message);
    if (!link.channel.send(op, message)) {
        endProcess();
    }
}

void receiveOn(Link& link) {
    if (!link.channel.receive()) {
        endProcess();
    }
}

MessageReader answerOn(Link& link) {
    MessageReader answer = link.channel.content();
    if (link.channel.op() == Op::Error) {
        rethrow(answer);
    }
    return answer;
}

/// @return false if the program does not listen there to this thread.
bool askOn(Link& link, Op op, const Writing& writing, const Reading& reading) {
    const MutexLock lock(link.mutex);
    if (!link.isOpen && &link != ownLink) {
        return false;
    }
    sendOn(link, op, writing);
    receiveOn(link);
    MessageReader answer = answerOn(link);
    if (reading) {
        reading(answer);
    }
    return true;
}

}  // namespace

void questionIsRead() {
    const MutexLock lock(ownLink->mutex);
    ownLink->isOpen = true;
}

void endProcess() {
    _exit(0);
}

Link& Links::add(Channel channel) {
    const MutexLock lock(mutex);
    all.push_back(std::make_unique<Link>(std::move(channel)));
    ownLink = all.back().get();
    return *ownLink;
}

void Links::ask(Op op, const Writing& writing, const Reading& reading) {
    if (ownLink && askOn(*ownLink, op, writing, reading)) {
        return;
    }
    constexpr std::chrono::milliseconds untilNextLook(1);
    for (;; std::this_thread::sleep_for(untilNextLook)) {
        std::vector<Link*> links;
        {
            const MutexLock lock(mutex);
            for (const std::unique_ptr<Link>& link : all) {
                links.push_back(link.get());
            }
        }
        for (Link* const link : links) {
            if (askOn(*link, op, writing, reading)) {
                return;
            }
        }
    }
}

std::string Links::askForFact(const std::string& name, const std::function<std::string()>& find) {
    if (!ownLink) {
        return find();
    }
    Link& link = *ownLink;
    Op op = Op::Fact;
    Writing writing = [&](MessageWriter& message) { message.text(name); };
    for (;;) {
        {
            const MutexLock lock(link.mutex);
            sendOn(link, op, writing);
            receiveOn(link);
            if (link.channel.op() != Op::FindFact) {
                return answerOn(link).text();
            }
        }
        // Finding it may ask the program for files.
        try {
            writing = [text = find()](MessageWriter& message) { message.text(text); };
            op = Op::Done;
        } catch (...) {
            writing = [error = std::current_exception()](MessageWriter& message) { write(message, error); };
            op = Op::Error;
        }
    }
}

}  // namespace velmorak::isolation
