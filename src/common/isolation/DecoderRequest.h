/// What a host asks of the decoder. Both are of one version and one machine, and the host is believed.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/ImageLimits.h>
#include <kavra/devices/LoadPreferences.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Kavra::Common {

enum class DecoderOperation : std::uint32_t { kLoad = 1, kDescribe = 2, kInspect = 3 };

/// The numbers of a request.
struct DecoderWish {
    DecoderOperation operation = DecoderOperation::kLoad;
    std::int32_t width = 0;
    std::int32_t height = 0;
    Devices::EFormat format = Devices::kUnknown;
    std::int32_t level = 0;
    Devices::EDataOrientation orientation = Devices::kTopLeft;
    bool highQuality = false;
    bool choosesFormat = false;  ///< whether the host is to be asked for the format
    bool hearsOfReadings = false;
    Devices::LoadPreferences preferences = {};  ///< its pointers mean nothing here
    Devices::ImageLimits limits = {};
    std::uint64_t blockCeiling = 0;
    std::uint64_t maxBytes = 0;        ///< of memory beside what the decoder itself takes
    std::uint32_t timeoutSeconds = 0;  ///< from the beginning of the child
};

/// The whole. Its descriptors are, in this order: where the child writes and reads packets, where the decoder writes how
/// the child ended, the memory that the pixels go into, and the files, of which the first is the picture.
struct DecoderRequest {
    DecoderWish wish;
    std::string channels;  ///< `LoadPreferences::channels`
    bool choosesChannels = false;
    std::vector<std::string> names;  ///< of the files, their bytes in UTF-8
};

enum DecoderDescriptor : std::size_t { kSessionDescriptor, kEndDescriptor, kPixelsDescriptor, kFirstFileDescriptor };

/// The bytes of a packet; nothing fits where they are more than a packet holds.
std::vector<unsigned char> ToBytes(const DecoderRequest& request);
/// False where the bytes are no request.
bool FromBytes(std::span<const unsigned char> bytes, DecoderRequest& request);

/// What the decoder says when it is ready.
struct DecoderGreeting {
    std::int32_t landlock = 0;  ///< the version of the kernel's interface; 0: there is none
    bool filtersCalls = false;  ///< whether system calls can be filtered
};

/// How a child ended, by the decoder, which is believed.
struct DecoderEnd {
    std::int32_t status = 0;  ///< as of `waitpid`
    bool timedOut = false;
};

/// What a child exits with that could not confine itself, and so has read nothing.
inline constexpr int kUnconfinedExit = 97;
/// What one exits with that had not even the memory to say so.
inline constexpr int kMemoryExit = 98;

/// Before each block stands what the host's allocators put there.
inline constexpr std::size_t kBlockHeaderBytes = 64;

}  // namespace Kavra::Common
