#include "isolate/Answers.h"
#include "isolate/Helper.h"

#include <chrono>
#include <stdexcept>
#include <utility>

namespace velmorak::isolation {
namespace {

/// A user waits for what no run asks.
constexpr int patienceSeconds = 5;

}  // namespace

Question::Question(std::shared_ptr<Helper> whom, Op op, const Arguments* arguments, Results* results)
    : helper(std::move(whom)),
      op(op),
      inputs(arguments),
      outputs(results),
      channel(helper->lease()),
      writer(channel->begin()) {
    writer.list(helper->takeDropped());
    if (helper->isUserWaiting()) {
        secondsLeft = patienceSeconds;
    }
}

Question::~Question() {
    if (isWhole) {
        helper->giveBack(std::move(channel));
    } else {
        helper->discard(std::move(channel));
    }
}

MessageReader Question::ask() {
    helper->noteStop();
    isWhole = false;
    if (!channel->send(op, writer)) {
        helper->fail();
    }
    MessageReader answer = listen();
    isWhole = true;
    if (channel->op() == Op::Error) {
        rethrow(answer, helper->memorySentence());
    }
    return answer;
}

MessageReader Question::askBetween(Op between) {
    if (!channel->send(between, channel->begin())) {
        helper->fail();
    }
    MessageReader answer = listen();
    if (channel->op() == Op::Error) {
        rethrow(answer);
    }
    return answer;
}

/// Answers what the process asks, until it has answered.
MessageReader Question::listen() {
    for (;;) {
        wait();
        if (!channel->receive()) {
            helper->fail();
        }
        if (channel->op() == Op::Done || channel->op() == Op::Error) {
            return channel->content();
        }
        answer();
    }
}

void Question::wait() {
    using Clock = std::chrono::steady_clock;
    constexpr int betweenLooksMs = 50;
    const Clock::time_point begin = Clock::now();
    while (!channel->wait(betweenLooksMs)) {
        helper->noteStop();
        if (secondsLeft && Clock::now() - begin > std::chrono::seconds(*secondsLeft)) {
            helper->end("it gave no answer within " + std::to_string(*secondsLeft) +
                        " seconds, and its process was ended");
        }
    }
}

void Question::answer() {
    MessageWriter reply = channel->begin();
    Op result = Op::Done;
    try {
        isolation::answer(*this, channel->op(), channel->content(), reply);
    } catch (...) {
        reply = channel->begin();
        write(reply, std::current_exception());
        result = Op::Error;
    }
    if (!channel->send(result, reply)) {
        helper->fail();
    }
}

const Arguments& Question::arguments() const {
    if (!inputs) {
        throw std::logic_error("the kind asks for its inputs when it may no longer do so");
    }
    return *inputs;
}

Results& Question::results() const {
    if (!outputs) {
        throw std::logic_error("the kind sets an output when it may not do so");
    }
    return *outputs;
}

}  // namespace velmorak::isolation
