#pragma once

#include "isolate/Codec.h"
#include "isolate/process/Links.h"
#include "isolate/process/Objects.h"
#include "isolate/process/RemoteContext.h"

#include <velmorak/Kind.h>

#include <functional>
#include <map>
#include <memory>
#include <string>

/// How a helper process answers the questions of the program.
namespace velmorak::isolation {

/// Writes an answer. By then the kind has done its work.
using Reply = std::function<void(MessageWriter&)>;

/// What one helper process needs to answer: its kind, its plug-in's task, the link to the program, and the objects made
/// so far.
struct HelperSession : TableLinks {
    HelperSession(const Kind& kind, const Task& task, Links& links, RemoteContext& context)
        : kind(kind), task(task), links(links), context(context) {}

    std::uint64_t give(const std::shared_ptr<const StoredTable>& table) override;
    std::shared_ptr<const StoredTable> take(std::uint64_t number, Schema schema) override;

    const Kind& kind;
    const Task& task;
    Links& links;
    RemoteContext& context;
    Objects objects;
};

/// The inputs of the plug-in, each asked for when the kind asks. Threads: one at a time.
class RemoteArguments : public Arguments {
public:
    explicit RemoteArguments(HelperSession& session) : session(session) {}

    double number(const std::string& input) const override;
    NumberWithError numberWithError(const std::string& input) const override;
    std::int64_t integer(const std::string& input) const override;
    const std::string& text(const std::string& input) const override { return textOf(Op::ArgumentText, input); }
    const Value& value(const std::string& input) const override;
    bool isWired(const std::string& input) const override { return flagOf(Op::ArgumentIsWired, input); }
    bool has(const std::string& input) const override { return flagOf(Op::ArgumentHas, input); }
    std::string whyMissing(const std::string& input) const override { return textOf(Op::ArgumentWhyMissing, input); }
    const std::string& sourceName(const std::string& input) const override { return textOf(Op::ArgumentSource, input); }
    const std::string& sourceOutput(const std::string& input) const override {
        return textOf(Op::ArgumentSourceOutput, input);
    }

private:
    void ask(Op op, const std::string& input, const Reading& reading) const;
    const std::string& textOf(Op op, const std::string& input) const;
    bool flagOf(Op op, const std::string& input) const;

    HelperSession& session;
    mutable std::map<std::pair<Op, std::string>, std::string> texts;  ///< To which references were given.
    mutable std::map<std::string, Value> values;
};

/// The outputs of the plug-in, which the program gets at once.
class RemoteResults : public Results {
public:
    explicit RemoteResults(HelperSession& session) : session(session) {}
    void set(const std::string& output, Value value) override { send(Op::SetResult, output, value); }
    void leave(const std::string& output, Value value) override { send(Op::LeaveResult, output, value); }

private:
    void send(Op op, const std::string& output, const Value& value);

    HelperSession& session;
};

Reply answerOnSource(HelperSession& session, Op op, MessageReader question);
Reply answerOnRows(HelperSession& session, Op op, MessageReader question);
Reply answerOnStates(HelperSession& session, Op op, MessageReader question);

}  // namespace velmorak::isolation
