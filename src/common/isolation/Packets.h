/// Packets between a host and the decoder: bytes, and descriptors that go with them.
#pragma once

#include "common/isolation/Descriptor.h"

#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace Kavra::Common {

/// The most that one packet holds.
inline constexpr std::size_t kMaxPacketBytes = std::size_t{64} << 10;
inline constexpr std::size_t kMaxPacketDescriptors = 16;

/// Two connected ends that keep packets apart; nothing where the system makes none.
std::optional<std::pair<Descriptor, Descriptor>> NewPacketPair();

/// Sends a packet whole; false where that fails, as when nobody is at the other end.
bool SendPacket(int socket, std::span<const unsigned char> bytes, std::span<const int> descriptors = {});

struct Packet {
    std::vector<unsigned char> bytes;  ///< empty at the end
    std::vector<Descriptor> descriptors;
};

/// The next packet, waited for. Nothing where it fails or was longer than a packet may be.
std::optional<Packet> ReceivePacket(int socket);

}  // namespace Kavra::Common
