#include "isolate/Kinds.h"

#include "isolate/Codec.h"
#include "isolate/Helper.h"
#include "isolate/Rows.h"
#include "isolate/States.h"
#include "isolate/Tables.h"
#include "run/HelperKind.h"

#include <velmorak/Mutex.h>
#include <velmorak/Parts.h>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace velmorak::isolation {

/// A helper process that tells the ports of plug-ins and checks values. One that has ended is replaced at the next
/// question. Threads: any.
class Desk {
public:
    explicit Desk(std::shared_ptr<Host> host) : host(std::move(host)) {}

    std::shared_ptr<Helper> helper(std::uint64_t kind) {
        const MutexLock lock(mutex);
        if (!current) {
            current = std::make_shared<Helper>(host, kind, nullptr);
        }
        return current;
    }
    void replace(const std::shared_ptr<Helper>& ended) {
        const MutexLock lock(mutex);
        if (current == ended) {
            current.reset();
        }
    }

private:
    const std::shared_ptr<Host> host;
    Mutex mutex;
    std::shared_ptr<Helper> current VELMORAK_GUARDED_BY(mutex);
};

namespace {

/// What all shapes of kinds have in common.
class Remote {
public:
    Remote(std::shared_ptr<Host> host, std::shared_ptr<Desk> desk, std::size_t number)
        : host(std::move(host)),
          desk(std::move(desk)),
          number(number),
          said(this->host->declarations().kinds[number]) {}

    const Declaration& declared() const { return said; }
    std::string name() const;
    Ports ports(const ValueTexts& values) const;
    std::string refusal(const std::string& input, const std::string& value) const;
    /// A process for the plug-in of the context.
    std::shared_ptr<Helper> helperFor(RunContext& context) const;
    void endDeaf() const;

private:
    template <typename Read, typename Write>
    auto askAtDesk(Op op, const Write& writing, const Read& reading) const;

    const std::shared_ptr<Host> host;
    const std::shared_ptr<Desk> desk;
    const std::size_t number;
    const Declaration said;
    mutable Mutex mutex;
    mutable std::vector<std::weak_ptr<Helper>> helpers VELMORAK_GUARDED_BY(mutex);
};

template <typename Read, typename Write>
auto Remote::askAtDesk(Op op, const Write& writing, const Read& reading) const {
    const std::shared_ptr<Helper> helper = desk->helper(number);
    try {
        Question question(helper, op);
        question.message().number<std::uint64_t>(number);
        writing(question.message());
        MessageReader answer = question.ask();
        return reading(answer);
    } catch (...) {
        desk->replace(helper);
        throw;
    }
}

std::string Remote::name() const {
    if (said.name.empty() && !said.error.empty()) {
        throw Failure(said.error);
    }
    return said.name;
}

Ports Remote::ports(const ValueTexts& values) const {
    if (!said.error.empty()) {
        throw Failure(said.error);
    }
    if (values.empty()) {
        return said.ports;
    }
    return askAtDesk(
        Op::Ports, [&](MessageWriter& message) { write(message, values); },
        [](MessageReader& answer) { return readPorts(answer); });
}

std::string Remote::refusal(const std::string& input, const std::string& value) const {
    return askAtDesk(
        Op::Refusal,
        [&](MessageWriter& message) {
            message.text(input);
            message.text(value);
        },
        [](MessageReader& answer) { return answer.text(); });
}

std::shared_ptr<Helper> Remote::helperFor(RunContext& context) const {
    auto helper = std::make_shared<Helper>(host, number, &context);
    const MutexLock lock(mutex);
    std::erase_if(helpers, [](const std::weak_ptr<Helper>& each) { return each.expired(); });
    helpers.push_back(helper);
    return helper;
}

void Remote::endDeaf() const {
    std::vector<std::shared_ptr<Helper>> alive;
    {
        const MutexLock lock(mutex);
        for (const std::weak_ptr<Helper>& each : helpers) {
            alive.push_back(each.lock());
        }
    }
    for (const std::shared_ptr<Helper>& helper : alive) {
        if (helper) {
            helper->endIfDeaf();
        }
    }
}

/// @param Base shape of the kind. @param Others further bases by which runs tell kinds apart.
template <typename Base, typename... Others>
class Isolated : public Base, public HelperKind, public Others... {
public:
    Isolated(std::shared_ptr<Host> host, std::shared_ptr<Desk> desk, std::size_t number)
        : remote(std::move(host), std::move(desk), number) {}

    /// @throws Failure if the kind could not say its name.
    std::string name() const override { return remote.name(); }
    std::string summary() const override { return said().summary; }
    std::string notes() const override { return said().notes; }
    int version() const override { return said().version; }
    bool isRunReporter() const override { return said().isRunReporter; }
    Ports ports(const ValueTexts& values) const override { return remote.ports(values); }
    std::string refusal(const std::string& input, const std::string& value) const override {
        return remote.refusal(input, value);
    }
    const std::string& build() const override { return said().build; }
    void endDeaf() const override { remote.endDeaf(); }

protected:
    const Declaration& said() const { return remote.declared(); }
    std::shared_ptr<Helper> helperFor(RunContext& context) const { return remote.helperFor(context); }

private:
    const Remote remote;
};

class IsolatedSource : public Isolated<Source> {
public:
    using Isolated::Isolated;
    bool tellsColumns() const override { return said().tellsColumns; }
    std::unique_ptr<TableReader> open(const Arguments& arguments, RunContext& context) const override {
        const std::shared_ptr<Helper> helper = helperFor(context);
        const std::uint64_t reader = helper->newNumber();
        Question question(helper, Op::Open, &arguments);
        question.message().number(reader);
        return openReader(helper, reader, question);
    }
    std::vector<std::filesystem::path> files(const Arguments& arguments, RunContext& context) const override {
        Question question(helperFor(context), Op::Files, &arguments);
        MessageReader answer = question.ask();
        std::vector<std::filesystem::path> paths;
        for (std::string& path : readTexts(answer)) {
            paths.emplace_back(std::move(path));
        }
        return paths;
    }
};

template <typename... Others>
class IsolatedRowWise : public Isolated<RowWise, Others...> {
public:
    using Isolated<RowWise, Others...>::Isolated;
    std::unique_ptr<RowOperation> prepare(const Arguments& arguments, const Schema& schema,
                                          RunContext& context) const override {
        const std::shared_ptr<Helper> helper = this->helperFor(context);
        Question question(helper, Op::PrepareRows, &arguments);
        write(question.message(), schema);
        std::vector<std::unique_ptr<RowOperation>> operations = prepareOperations(helper, question);
        return operations.empty() ? nullptr : std::move(operations.front());
    }
};

class IsolatedConcatenation : public Isolated<Concatenation> {
public:
    using Isolated::Isolated;
    std::vector<std::unique_ptr<RowOperation>> prepare(const Arguments& arguments, const std::vector<Schema>& schemas,
                                                       RunContext& context) const override {
        const std::shared_ptr<Helper> helper = helperFor(context);
        Question question(helper, Op::PrepareTables, &arguments);
        question.message().number<std::uint64_t>(schemas.size());
        for (const Schema& schema : schemas) {
            write(question.message(), schema);
        }
        return prepareOperations(helper, question);
    }
};

class IsolatedAccumulator : public Isolated<Accumulator> {
public:
    using Isolated::Isolated;
    MergeOrder mergeOrder() const override { return said().isOrdered ? MergeOrder::FirstToLast : MergeOrder::Tree; }
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override {
        const std::shared_ptr<Helper> helper = helperFor(context);
        const std::uint64_t accumulation = helper->newNumber();
        Question question(helper, Op::PrepareStates, &arguments);
        question.message().number(accumulation);
        question.message().flag(schema != nullptr);
        if (schema) {
            write(question.message(), *schema);
        }
        return prepareAccumulation(helper, accumulation, question);
    }
};

class IsolatedFunction : public Isolated<Function> {
public:
    using Isolated::Isolated;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override {
        Question(helperFor(context), Op::Evaluate, &arguments, &results).ask();
    }
};

}  // namespace

std::shared_ptr<Desk> newDesk(std::shared_ptr<Host> host) {
    return std::make_shared<Desk>(std::move(host));
}

std::unique_ptr<Kind> isolatedKind(std::shared_ptr<Host> host, std::shared_ptr<Desk> desk, std::size_t number) {
    switch (host->declarations().kinds[number].shape) {
        case Shape::Null:
            return nullptr;
        case Shape::Other:
            return std::make_unique<Isolated<Kind>>(std::move(host), std::move(desk), number);
        case Shape::Source:
            return std::make_unique<IsolatedSource>(std::move(host), std::move(desk), number);
        case Shape::RowWise:
            return std::make_unique<IsolatedRowWise<>>(std::move(host), std::move(desk), number);
        case Shape::CountingRowWise:
            return std::make_unique<IsolatedRowWise<CountingKind>>(std::move(host), std::move(desk), number);
        case Shape::Concatenation:
            return std::make_unique<IsolatedConcatenation>(std::move(host), std::move(desk), number);
        case Shape::Accumulator:
            return std::make_unique<IsolatedAccumulator>(std::move(host), std::move(desk), number);
        case Shape::Function:
            return std::make_unique<IsolatedFunction>(std::move(host), std::move(desk), number);
    }
    return nullptr;
}

}  // namespace velmorak::isolation
