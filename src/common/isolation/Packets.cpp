#include "common/isolation/Packets.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace Kavra::Common {

namespace {

/// Room for the descriptors of a packet, aligned as their header.
struct alignas(cmsghdr) Control {
    std::array<char, CMSG_SPACE(kMaxPacketDescriptors * sizeof(int))> bytes{};
};

void TakeDescriptors(msghdr& message, std::vector<Descriptor>& descriptors) {
    for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr; part = CMSG_NXTHDR(&message, part)) {
        if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) continue;
        const std::size_t count = (part->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(part) + i * sizeof(int), sizeof(int));
            descriptors.emplace_back(number);
        }
    }
}

}  // namespace

std::optional<std::pair<Descriptor, Descriptor>> NewPacketPair() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) return std::nullopt;
    return std::pair(Descriptor(ends[0]), Descriptor(ends[1]));
}

bool SendPacket(int socket, std::span<const unsigned char> bytes, std::span<const int> descriptors) {
    iovec part{.iov_base = const_cast<unsigned char*>(bytes.data()), .iov_len = bytes.size()};
    Control control;
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!descriptors.empty()) {
        message.msg_control = control.bytes.data();
        message.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
        cmsghdr* const header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(descriptors.size_bytes());
        std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size_bytes());
    }
    ssize_t sent = -1;
    do {
        sent = sendmsg(socket, &message, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent == static_cast<ssize_t>(bytes.size());
}

std::optional<Packet> ReceivePacket(int socket) {
    Packet packet;
    packet.bytes.resize(kMaxPacketBytes);
    iovec part{.iov_base = packet.bytes.data(), .iov_len = packet.bytes.size()};
    Control control;
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes.data();
    message.msg_controllen = control.bytes.size();
    ssize_t count = -1;
    do {
        count = recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
    } while (count < 0 && errno == EINTR);
    if (count < 0) return std::nullopt;
    TakeDescriptors(message, packet.descriptors);
    if ((message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0) return std::nullopt;
    packet.bytes.resize(static_cast<std::size_t>(count));
    return packet;
}

}  // namespace Kavra::Common
