#pragma once

#include "isolate/Area.h"
#include "isolate/Message.h"
#include "isolate/Op.h"

#include <initializer_list>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace velmorak::isolation {

/// @return the ends of a connection.
std::pair<FileDescriptor, FileDescriptor> newConnection();

/// One side of a conversation of two processes: each message is in memory that they share, and announced by a few bytes
/// on a socket. The sides take turns.
/// Threads: one at a time.
class Channel {
public:
    Channel(FileDescriptor socket, FileDescriptor memory);

    /// A message in place of the last one, which was read.
    MessageWriter begin() { return MessageWriter(area); }
    /// @param attached descriptors of files that the other side gets, at most four.
    /// @return false if the other side has gone.
    bool send(Op op, const MessageWriter& message, std::initializer_list<int> attached = {});
    /// @return whether there is a message, or the other side has gone, before so much time has passed.
    bool wait(int timeoutMs) const;
    /// Waits for the next message. @return false if the other side has gone.
    bool receive();

    Op op() const { return received; }
    MessageReader content() { return MessageReader({area.data(), receivedBytes}); }
    std::vector<FileDescriptor> takeDescriptors() { return std::move(descriptors); }
    int memory() const { return area.descriptor(); }

private:
    FileDescriptor socket;
    Area area;
    Op received = Op::Done;
    std::size_t receivedBytes = 0;
    std::vector<FileDescriptor> descriptors;
};

}  // namespace velmorak::isolation
