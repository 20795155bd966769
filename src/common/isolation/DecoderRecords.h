/// What a confined child tells the host that asked for it, a packet each. From the moment that it reads a file the child
/// is what the file made of it: nothing that it says is believed before it is checked here.
#pragma once

#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/devices/LastFailure.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Kavra::Common {

/// A warning or an error that was raised. Texts are in UTF-8, of one line and without control characters.
struct MessageRecord {
    bool isError = false;
    std::string text;
    std::optional<std::string> detail;
};

/// Asks for the format to load in; the child waits for a number.
struct QuestionRecord {
    Devices::EFormat fileFormat = Devices::kUnknown;
    std::int32_t usage = 0;
};

/// What `ILegacyObserver` is to hear.
struct DifferenceRecord {
    std::string text;
};

/// The child's last failure; its text stands beside.
struct FailureRecord {
    Devices::FailureReport report;
    std::string text;
};

/// A loaded block: `blockBytes` bytes of the shared memory, behind the allocators' header, which begins at a page. What
/// the description says of them fits into them.
struct PictureRecord {
    Devices::ImageDescription desc;
    std::uint64_t offset = 0;
    std::uint64_t blockBytes = 0;
};

/// What `IImageHandler::GetImageDesc` answers.
struct DescriptionRecord {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::int32_t depth = 0;
    Devices::EFormat format = Devices::kUnknown;
    Devices::ETextureType textureType = Devices::kTextureUnknown;
    std::int32_t frameCount = 0;
    Devices::EDataOrientation orientation = Devices::kTopLeft;
    double gamma = 0;
};

/// An inspection, written as `InspectionRecords.h` has it into the shared memory.
struct InspectionRecord {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;
};

/// The operation is over: what was said is all.
struct DoneRecord {};

using DecoderRecord = std::variant<MessageRecord, QuestionRecord, DifferenceRecord, FailureRecord, PictureRecord,
                                   DescriptionRecord, InspectionRecord, DoneRecord>;

/// The record that a packet holds; nothing where it holds none that is sound.
std::optional<DecoderRecord> ParseRecord(std::span<const unsigned char> packet);

/// The packet of a record. Texts are cut so that it is no longer than a packet may be.
std::vector<unsigned char> PacketOf(const DecoderRecord& record);

/// A text of one line: control characters, and what is no UTF-8, become U+FFFD.
std::string CleanText(std::string_view text);

}  // namespace Kavra::Common
