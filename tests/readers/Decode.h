/// Running a bare reader over bytes.
#pragma once

#include "readers/ByteBuilder.h"
#include "readers/ImageReaderInterface.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

/// What a pixel byte holds that no reader wrote.
inline constexpr unsigned char kUnwritten = 0xCD;

/// All that a reader says of a file and delivers.
struct Decoded {
    bool opened = false;
    bool read = false;  ///< never asked when the file was not opened, nor when it claims no pixel or over 64 MiB
    int width = 0;
    int height = 0;
    int rowPitch = 0;
    int frameCount = 0;
    Devices::EFormat format = Devices::kUnknown;
    Devices::EDataOrientation orientation = Devices::kTopLeft;
    std::vector<unsigned char> block;    ///< `kUnwritten` where the reader wrote nothing
    std::vector<std::wstring> messages;  ///< of `Open` and `ReadImage`, in order
};

inline void ReadFrame(Devices::ImageReaderInterface& reader, int frame, Decoded& decoded) {
    decoded.width = reader.GetWidth();
    decoded.height = reader.GetHeight();
    decoded.rowPitch = reader.GetRowPitch();
    decoded.frameCount = reader.GetFrameCount();
    decoded.format = reader.GetFormat();
    decoded.orientation = reader.GetOrientation();
    const long long bytes = static_cast<long long>(decoded.height) * decoded.rowPitch;
    if (decoded.width < 1 || decoded.height < 1 || bytes > (64 << 20)) return;
    decoded.block.assign(static_cast<std::size_t>(bytes), kUnwritten);
    decoded.read = reader.ReadImage(decoded.block.data(), frame);
}

template <class Reader>
Decoded DecodeFile(const std::filesystem::path& path, int frame = 0) {
    const MessageRecorder recorder;
    Decoded decoded;
    Reader reader;
    decoded.opened = reader.Open(Wide(path));
    if (decoded.opened) ReadFrame(reader, frame, decoded);
    decoded.messages = recorder.Texts();
    return decoded;
}

/// The bytes as a file of this name.
template <class Reader>
Decoded Decode(const ByteBuilder& file, int frame = 0, std::string_view name = "file") {
    const TemporaryFolder folder;
    return DecodeFile<Reader>(folder.Write(name, file.Bytes()), frame);
}

/// The bytes of one pixel of four channels.
inline std::vector<unsigned char> PixelAt(const Decoded& decoded, int x, int y) {
    const auto start = decoded.block.begin() + static_cast<std::ptrdiff_t>(y) * decoded.rowPitch + x * 4;
    return {start, start + 4};
}

}  // namespace Kavra::Tests
