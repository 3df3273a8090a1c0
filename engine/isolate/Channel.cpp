#include "isolate/Channel.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace velmorak::isolation {
namespace {

constexpr std::size_t mostDescriptors = 4;

struct Announcement {
    std::uint64_t bytes = 0;
    std::uint64_t areaBytes = 0;
    Op op = Op::Done;
};

/// What the system asks for around descriptors that are sent.
struct Packet {
    explicit Packet(Announcement& announcement) : part{&announcement, sizeof announcement} {
        head.msg_iov = &part;
        head.msg_iovlen = 1;
    }

    iovec part;
    msghdr head{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> control{};
};

void attach(Packet& packet, std::initializer_list<int> descriptors) {
    if (descriptors.size() == 0) {
        return;
    }
    packet.head.msg_control = packet.control.data();
    packet.head.msg_controllen = CMSG_SPACE(descriptors.size() * sizeof(int));
    cmsghdr* const field = CMSG_FIRSTHDR(&packet.head);
    field->cmsg_level = SOL_SOCKET;
    field->cmsg_type = SCM_RIGHTS;
    field->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
    std::memcpy(CMSG_DATA(field), descriptors.begin(), descriptors.size() * sizeof(int));
}

std::vector<FileDescriptor> detached(Packet& packet) {
    std::vector<FileDescriptor> found;
    for (cmsghdr* field = CMSG_FIRSTHDR(&packet.head); field; field = CMSG_NXTHDR(&packet.head, field)) {
        if (field->cmsg_level != SOL_SOCKET || field->cmsg_type != SCM_RIGHTS) {
            continue;
        }
        const std::size_t count = (field->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(field) + i * sizeof(int), sizeof number);
            found.push_back(FileDescriptor::of(number));
        }
    }
    return found;
}

}  // namespace

std::pair<FileDescriptor, FileDescriptor> newConnection() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return {FileDescriptor::of(ends[0]), FileDescriptor::of(ends[1])};
}

Channel::Channel(FileDescriptor socket, FileDescriptor memory) : socket(std::move(socket)), area(std::move(memory)) {}

bool Channel::send(Op op, const MessageWriter& message, std::initializer_list<int> attached) {
    Announcement announcement{message.size(), area.size(), op};
    Packet packet(announcement);
    attach(packet, attached);
    ssize_t sent = -1;
    do {
        sent = sendmsg(socket.get(), &packet.head, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(sizeof announcement);
}

bool Channel::wait(int timeoutMs) const {
    pollfd watched{socket.get(), POLLIN, 0};
    return poll(&watched, 1, timeoutMs) > 0;
}

bool Channel::receive() {
    Announcement announcement;
    Packet packet(announcement);
    packet.head.msg_control = packet.control.data();
    packet.head.msg_controllen = packet.control.size();
    ssize_t got = -1;
    do {
        got = recvmsg(socket.get(), &packet.head, MSG_CMSG_CLOEXEC);
    } while (got < 0 && errno == EINTR);
    if (got != static_cast<ssize_t>(sizeof announcement)) {
        return false;
    }
    descriptors = detached(packet);
    area.follow(announcement.areaBytes);
    receivedBytes = std::min<std::size_t>(announcement.bytes, area.size());
    received = announcement.op;
    return true;
}

}  // namespace velmorak::isolation
