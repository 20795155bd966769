/// Any bytes as a file of any kind: described in full or not at all, and all that is told is there to be read. And as a
/// colour profile: judged within its bytes.
#include "FuzzFile.h"
#include "load/FileInspection.h"
#include "load/InspectedFile.h"

#include <kavra/devices/IccProfile.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>

namespace {

using namespace Kavra::Devices;

struct Deleter {
    void operator()(IFileInspection* file) const { file->Delete(); }
};

std::size_t Length(const char* text) {
    if (text == nullptr) std::abort();
    return std::strlen(text);
}

void Read(const FilePart& part) {
    if (part.levelCount < 1 || part.size != sizeof(FilePart)) std::abort();
    if (part.textCount > InspectedFile::kMaxTexts || part.iccBytes > InspectedFile::kMaxProfileBytes) std::abort();
    if ((part.iccProfile == nullptr) != (part.iccBytes == 0)) std::abort();
    std::size_t read = Length(part.name) + Length(part.colourSpace) + Length(part.compression);
    for (std::size_t i = 0; i < part.levelCount; ++i)
        read += static_cast<std::size_t>(part.levels[i].width);
    for (std::size_t i = 0; i < part.channelCount; ++i)
        read += Length(part.channels[i].name) + Length(part.channels[i].type);
    for (std::size_t i = 0; i < part.textCount; ++i) {
        const std::size_t bytes = Length(part.texts[i].value);
        if (bytes > InspectedFile::kMaxTextBytes) std::abort();
        read += Length(part.texts[i].name) + bytes;
    }
    const auto* const profile = static_cast<const unsigned char*>(part.iccProfile);
    for (std::size_t i = 0; i < part.iccBytes; ++i)
        read += profile[i];
    volatile std::size_t sum = read;
    static_cast<void>(sum);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr int kMaxChannels = 4;
    for (int channels = 0; channels <= kMaxChannels + 1; ++channels) {
        const bool isSound = IsSoundIccProfile(data, size, channels);
        if (isSound && (channels < 1 || channels > kMaxChannels || size < 128)) std::abort();
    }
    static OIIOImageHandler handler;  // which quietens the image library
    Kavra::Objects::ObjModel::SetBlockCeiling(std::size_t{64} << 20);
    const Kavra::Fuzz::FuzzFile input(std::span(data, size), ".bin");
    const std::unique_ptr<IFileInspection, Deleter> file(handler.Inspect(input.Name()));
    if (file == nullptr) return 0;
    if (file->PartCount() < 1 || file->PartCount() > InspectedFile::kMaxParts) std::abort();
    if (Length(file->FileType()) == 0) std::abort();
    for (std::size_t i = 0; i < file->PartCount(); ++i)
        Read(file->Part(i));
    return 0;
}
