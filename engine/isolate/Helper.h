#pragma once

#include "isolate/Channel.h"
#include "isolate/Codec.h"
#include "isolate/Given.h"
#include "isolate/Host.h"

#include <velmorak/Mutex.h>
#include <velmorak/StoredTable.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::isolation {

/// A helper process, which runs the code of one plug-in's kind; ends with this object. What it makes, such as an
/// operation, stays there and is known here by a number.
/// Threads: any.
class Helper : public std::enable_shared_from_this<Helper>, public TableLinks {
public:
    /// @param kind number of the kind in its collection.
    /// @param context of the plug-in, outlives every question; null where the kind gets none.
    /// @throws std::exception if the process cannot be started.
    Helper(std::shared_ptr<Host> owner, std::uint64_t kind, RunContext* context);
    ~Helper() override;
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    RunContext* context() const { return services; }
    bool isUserWaiting() const { return services == nullptr || services->isPreview(); }
    GivenFiles& files() { return resultFiles; }
    GivenReaders& readers() { return tableReaders; }
    std::uint64_t newNumber() { return ++lastNumber; }
    /// The helper destroys the object before it answers the next question.
    void drop(std::uint64_t number);
    std::vector<std::uint64_t> takeDropped();

    /// A connection that nothing else uses. @throws Failure if the process has ended.
    std::unique_ptr<Channel> lease();
    void giveBack(std::unique_ptr<Channel> channel);
    void discard(std::unique_ptr<Channel> channel);
    /// Tells the process whether its run is being stopped.
    void noteStop();
    /// @throws Failure that says how the process has ended, which closed a socket.
    [[noreturn]] void fail();
    /// Ends the process. @param why what its questions fail with.
    void end(const std::string& why);
    /// Ends the process if it works although its run is being stopped.
    void endIfDeaf();
    /// What a lack of memory in the process means.
    std::string memorySentence() const;

    std::uint64_t give(const std::shared_ptr<const StoredTable>& table) override;
    std::shared_ptr<const StoredTable> take(std::uint64_t number, Schema schema) override;
    std::shared_ptr<const StoredTable> given(std::uint64_t number) const;

private:
    void start(std::uint64_t kind);
    std::unique_ptr<Channel> newChannel() VELMORAK_REQUIRES(mutex);
    [[noreturn]] void failUnlocked() VELMORAK_REQUIRES(mutex);

    const std::shared_ptr<Host> host;
    RunContext* const services;
    GivenFiles resultFiles;
    GivenReaders tableReaders;
    std::atomic<std::uint64_t> lastNumber = 0;
    std::unique_ptr<Area> page;  ///< Begins with a byte: whether the run is being stopped.
    pid_t process = -1;
    mutable Mutex mutex;
    std::unique_ptr<Channel> control VELMORAK_GUARDED_BY(mutex);
    std::vector<std::unique_ptr<Channel>> idle VELMORAK_GUARDED_BY(mutex);
    int leased VELMORAK_GUARDED_BY(mutex) = 0;
    std::vector<std::uint64_t> dropped VELMORAK_GUARDED_BY(mutex);
    std::map<std::uint64_t, std::shared_ptr<const StoredTable>> tables VELMORAK_GUARDED_BY(mutex);
    bool isOver VELMORAK_GUARDED_BY(mutex) = false;
    std::string reason VELMORAK_GUARDED_BY(mutex);  ///< Why it is over, or will be.
};

/// One question to a helper process and its answer. While the process works on it, the question answers what the
/// process asks of the context, the arguments and the results.
class Question {
public:
    /// @param arguments and results null where the kind gets none.
    Question(std::shared_ptr<Helper> whom, Op op, const Arguments* arguments = nullptr, Results* results = nullptr);
    ~Question();
    Question(const Question&) = delete;
    Question& operator=(const Question&) = delete;

    /// To be completed before ask.
    MessageWriter& message() { return writer; }
    /// A process that no run waits for is ended if it does not answer within five seconds.
    /// @return the answer, as long as the question lives.
    /// @throws what the kind has thrown; Failure if the process ends.
    MessageReader ask();

    /// For Answers: asks in between, and waits for that answer.
    MessageReader askBetween(Op between);
    Helper& of() { return *helper; }
    const Arguments& arguments() const;
    Results& results() const;

private:
    MessageReader listen();
    void wait();
    void answer();

    std::shared_ptr<Helper> helper;
    Op op;
    const Arguments* inputs;
    Results* outputs;
    std::unique_ptr<Channel> channel;
    MessageWriter writer;
    std::optional<int> secondsLeft;
    bool isWhole = true;  ///< The conversation on the channel is at its end.
};

}  // namespace velmorak::isolation
