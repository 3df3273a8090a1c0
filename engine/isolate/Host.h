#pragma once

#include "isolate/Channel.h"
#include "isolate/Declaration.h"
#include "isolate/IsolationConfig.h"

#include <velmorak/Mutex.h>

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::isolation {

/// What a host loads.
struct Load {
    std::filesystem::path object;  ///< Of the collection.
    std::string factory;
    std::vector<std::filesystem::path> collections;  ///< Folders of all collections, for their file formats.
    IsolationConfig config;
};

/// How a process has ended, in a few words: "crashed (segmentation fault)".
std::string endText(int status);

/// The process that has loaded one collection and forks helpers, which run its kinds. It never runs a kind itself,
/// except to ask what the kind declares. It ends with this program, however that ends, and its helpers with it. A host
/// that has ended is started again when it is needed. Threads: any.
class Host {
public:
    /// Starts the process. @throws std::system_error if the program cannot be started; std::runtime_error with the
    /// reason if the collection cannot be loaded.
    explicit Host(Load load);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    const Declarations& declarations() const { return declared; }
    const IsolationConfig& config() const { return order.config; }

    /// Forks a helper.
    /// @param writer writes what the helper needs to know. @param descriptors it gets.
    /// @return its process. @throws std::exception if that fails.
    pid_t fork(const std::function<void(MessageWriter&)>& writer, std::initializer_list<int> descriptors);
    /// Waits for the end of a helper whose sockets are closed. @return its status; nothing if it is unknown.
    std::optional<int> endOf(pid_t helper);
    /// The helper ends by itself, and nobody asks for its status.
    void release(pid_t helper);

private:
    void start() VELMORAK_REQUIRES(mutex);
    void stop() VELMORAK_REQUIRES(mutex);
    void launch() VELMORAK_REQUIRES(mutex);
    bool ask(Op op, const std::function<void(MessageWriter&)>& writer, std::initializer_list<int> descriptors = {})
        VELMORAK_REQUIRES(mutex);
    std::string endOfHost() VELMORAK_REQUIRES(mutex);

    const Load order;
    Declarations declared;
    Mutex mutex;
    std::unique_ptr<Channel> channel VELMORAK_GUARDED_BY(mutex);
    FileDescriptor lifeline VELMORAK_GUARDED_BY(mutex);
    pid_t process VELMORAK_GUARDED_BY(mutex) = -1;
};

}  // namespace velmorak::isolation
