#include "isolate/Helper.h"

#include "isolate/Tables.h"

#include <velmorak/Parts.h>
#include <velmorak/RowMemory.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <utility>

namespace velmorak::isolation {
namespace {

std::string currentFolder() {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    return error ? "" : folder.string();
}

int priorityOfThread() {
    errno = 0;
    const int priority = getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
    return errno == 0 ? priority : 0;
}

/// As readTask reads it.
void describe(MessageWriter& message, std::uint64_t kind, const RunContext* context, std::size_t memoryBytes) {
    message.number(kind);
    message.text(currentFolder());
    message.number(priorityOfThread());
    message.flag(context != nullptr);
    if (context) {
        message.text(context->pluginName());
        message.flag(context->isPreview());
        message.number(context->maxCells());
        message.flag(context->fixedDate().has_value());
        message.number(context->fixedDate().value_or(0.0));
        message.flag(dynamic_cast<const SharedRun*>(context) != nullptr);
        message.flag(isPlanned(*context));
        message.text(partialRemark(*context));
        // Rows go to files before the process is at its limit.
        message.number<std::uint64_t>(std::min(memoryOf(*context)->limit(), memoryBytes / 2));
    }
}

}  // namespace

Helper::Helper(std::shared_ptr<Host> owner, std::uint64_t kind, RunContext* context)
    : host(std::move(owner)), services(context), page(std::make_unique<Area>(newMemory())) {
    start(kind);
}

void Helper::start(std::uint64_t kind) {
    auto [own, others] = newConnection();
    FileDescriptor memory = newMemory();
    const int memoryNumber = memory.get();
    const MutexLock lock(mutex);
    control = std::make_unique<Channel>(std::move(own), std::move(memory));
    process = host->fork([&](MessageWriter& message) { describe(message, kind, services, host->config().memoryBytes); },
                         {others.get(), memoryNumber, page->descriptor()});
}

Helper::~Helper() {
    const MutexLock lock(mutex);
    idle.clear();
    control.reset();
    if (!isOver) {
        host->release(process);
    }
}

void Helper::drop(std::uint64_t number) {
    const MutexLock lock(mutex);
    dropped.push_back(number);
}

std::vector<std::uint64_t> Helper::takeDropped() {
    const MutexLock lock(mutex);
    return std::exchange(dropped, {});
}

std::unique_ptr<Channel> Helper::lease() {
    const MutexLock lock(mutex);
    if (isOver) {
        failUnlocked();
    }
    std::unique_ptr<Channel> channel;
    if (idle.empty()) {
        channel = newChannel();
    } else {
        channel = std::move(idle.back());
        idle.pop_back();
    }
    ++leased;
    return channel;
}

std::unique_ptr<Channel> Helper::newChannel() {
    auto [own, others] = newConnection();
    auto channel = std::make_unique<Channel>(std::move(own), newMemory());
    if (!control->send(Op::NewChannel, control->begin(), {others.get(), channel->memory()})) {
        failUnlocked();
    }
    return channel;
}

void Helper::giveBack(std::unique_ptr<Channel> channel) {
    const MutexLock lock(mutex);
    --leased;
    idle.push_back(std::move(channel));
}

void Helper::discard(std::unique_ptr<Channel> channel) {
    const MutexLock lock(mutex);
    --leased;
    channel.reset();
}

void Helper::noteStop() {
    // A preview counts how often it is asked: it is asked for each time.
    if (services && !services->isPreview()) {
        std::atomic_ref<char>(*page->data()).store(services->isStopping() ? 1 : 0);
    }
}

void Helper::fail() {
    const MutexLock lock(mutex);
    failUnlocked();
}

void Helper::failUnlocked() {
    if (!isOver) {
        isOver = true;
        const std::optional<int> status = host->endOf(process);
        if (reason.empty()) {
            reason = "its process " + (status ? endText(*status) : "has ended");
        }
    }
    throw Failure(reason);
}

void Helper::end(const std::string& why) {
    const MutexLock lock(mutex);
    if (!isOver && reason.empty()) {
        reason = why;
        kill(process, SIGKILL);
    }
}

void Helper::endIfDeaf() {
    bool isDeaf = false;
    {
        const MutexLock lock(mutex);
        isDeaf = leased > 0 && services != nullptr && !services->isPreview() && services->isStopping();
    }
    if (isDeaf) {
        end("it did not stop, and its process was ended");
    }
}

std::string Helper::memorySentence() const {
    constexpr std::size_t megabyte = std::size_t{1} << 20U;
    return "there was not enough memory: its process may use " + std::to_string(host->config().memoryBytes / megabyte) +
           " MB (VELMORAK_ISOLATE_MEMORY)";
}

std::uint64_t Helper::give(const std::shared_ptr<const StoredTable>& table) {
    const std::uint64_t number = newNumber();
    const MutexLock lock(mutex);
    tables.emplace(number, table);
    return number;
}

std::shared_ptr<const StoredTable> Helper::take(std::uint64_t number, Schema schema) {
    return std::make_shared<IsolatedTable>(shared_from_this(), number, std::move(schema));
}

std::shared_ptr<const StoredTable> Helper::given(std::uint64_t number) const {
    const MutexLock lock(mutex);
    return tables.at(number);
}

}  // namespace velmorak::isolation
