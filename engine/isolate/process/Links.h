#pragma once

#include "isolate/Channel.h"

#include <velmorak/Mutex.h>

#include <functional>
#include <memory>
#include <vector>

namespace velmorak::isolation {

using Writing = std::function<void(MessageWriter&)>;
using Reading = std::function<void(MessageReader&)>;

/// A connection of a helper process with the program, with a thread that answers on it.
struct Link {
    explicit Link(Channel connection) : channel(std::move(connection)) {}

    Mutex mutex;  ///< Held while a message is written and answered.
    Channel channel VELMORAK_GUARDED_BY(mutex);
    /// A question is being answered and has been read, so that the program listens to any thread.
    bool isOpen VELMORAK_GUARDED_BY(mutex) = false;
};

/// All connections of a helper process: how its kind asks the program for something.
/// Threads: any.
class Links {
public:
    /// A connection that the calling thread answers on from now on; it is never removed.
    Link& add(Channel channel);
    /// Asks on the connection of the calling thread, or on any where the program listens; waits for one.
    /// @throws what the program throws. Ends the process if the program has gone.
    void ask(Op op, const Writing& writing, const Reading& reading = {});
    /// Asks for a fact. The program may ask in between to have it found.
    std::string askForFact(const std::string& name, const std::function<std::string()>& find);

private:
    Mutex mutex;
    std::vector<std::unique_ptr<Link>> all VELMORAK_GUARDED_BY(mutex);
};

/// The question that the calling thread answers has been read: other threads may ask on its connection meanwhile.
void questionIsRead();

/// Ends the process at once: nobody is left to answer to.
[[noreturn]] void endProcess();

}  // namespace velmorak::isolation
