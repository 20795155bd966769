/// Any bytes as what a confined decoder says: a sound record or none, and an inspection that is there to be read.
#include "common/isolation/DecoderRecords.h"
#include "common/isolation/InspectionRecords.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <variant>

namespace {

using namespace Kavra::Common;
using namespace Kavra::Devices;

/// What is parsed is written the same, and parsed again.
void Check(const DecoderRecord& record) {
    const auto again = ParseRecord(PacketOf(record));
    if (!again || again->index() != record.index()) std::abort();
    const auto* const picture = std::get_if<PictureRecord>(&record);
    if (picture == nullptr) return;
    const ImageDescription& desc = picture->desc;
    if (desc.width < 1 || desc.height < 1 || desc.depth < 1 || desc.dataSize > picture->blockBytes) std::abort();
}

void Read(const IFileInspection& file) {
    if (file.PartCount() < 1) std::abort();
    std::size_t read = std::strlen(file.FileType());
    for (std::size_t i = 0; i < file.PartCount(); ++i) {
        const FilePart& part = file.Part(i);
        if (part.levelCount < 1) std::abort();
        read += std::strlen(part.name) + std::strlen(part.colourSpace) + std::strlen(part.compression);
        for (std::size_t t = 0; t < part.textCount; ++t)
            read += std::strlen(part.texts[t].name) + std::strlen(part.texts[t].value);
        for (std::size_t c = 0; c < part.channelCount; ++c)
            read += std::strlen(part.channels[c].name) + std::strlen(part.channels[c].type);
    }
    volatile std::size_t sum = read;
    static_cast<void>(sum);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (const auto record = ParseRecord(std::span(data, size))) Check(*record);
    const std::unique_ptr<IFileInspection> file(ParseInspection(std::span(data, size)));
    if (file) Read(*file);
    return 0;
}
