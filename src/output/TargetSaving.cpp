#include "output/TargetSaving.h"

#include "common/Boundary.h"
#include "common/PackedLayout.h"
#include "common/PixelFormats.h"
#include "common/Reasons.h"
#include "output/FloatsAsBytes.h"
#include "output/MappedPixels.h"

#include <kavra/devices/ATarget.h>
#include <kavra/devices/Sys.h>

#include <cstdint>

namespace Kavra::Devices {

namespace {

/// Channels of a target that is shown with 8 bits a channel, else 0.
std::size_t FloatChannels(EFormat format) {
    const Common::PixelFormat& facts = Common::FactsOf(format);
    const bool isShown = facts.inLibrary && facts.element == Common::ElementType::kFloat;
    return isShown ? static_cast<std::size_t>(facts.channels) : 0;
}

bool IsByteColour(EFormat format) {
    const Common::PixelFormat& facts = Common::FactsOf(format);
    return facts.inLibrary && facts.IsByteColour();
}

struct TargetPixels {
    int width, height;
    EFormat format;
    const unsigned char* pixels;
    int pitch;

    bool IsEmpty() const { return width < 1 || height < 1; }
    bool HasWholeRows() const { return pitch >= Common::PackedRowBytes(format, width); }
};

bool Save(IImageHandler& handler, const KString& path, const TargetPixels& picture) {
    const ImageDescription desc = Common::DescribeRows(picture.width, picture.height, picture.format, picture.pitch);
    return handler.SaveTexture(path, desc, picture.pixels);
}

/// Rows of an empty picture are not looked at, nor those of one that needs no mapping, however they lie: what becomes
/// of them is the saver's decision.
bool SaveAsBytes(IImageHandler& handler, const KString& path, const TargetPixels& picture, bool stretch) {
    const std::size_t channels = FloatChannels(picture.format);
    if (channels == 0) return Save(handler, path, picture);
    if (!Common::Require(picture.IsEmpty() || picture.HasWholeRows(), kFailureArguments,
                         "the target's rows are shorter than its width"))
        return false;

    Common::PixelBlock bytes;
    if (!picture.IsEmpty()) {
        bytes = FloatsAsBytes({.first = picture.pixels,
                               .pitch = static_cast<std::size_t>(picture.pitch),
                               .width = static_cast<std::size_t>(picture.width),
                               .height = static_cast<std::size_t>(picture.height),
                               .channels = channels},
                              stretch);
    }
    const EFormat format = channels == 1 ? kR8 : kR8G8B8A8;
    const auto pitch = static_cast<std::int64_t>(ShownBytes(channels)) * picture.width;
    return Save(handler, path, {picture.width, picture.height, format, bytes.get(), static_cast<int>(pitch)});
}

}  // namespace

bool SaveTarget(IImageHandler& handler, const KString& path, ATarget* target, bool stretch) {
    return Common::AtBoundary(false, [&] {
        if (!Common::Require(target != nullptr, kFailureArguments, "there is no target to save")) return false;
        MappedPixels pixels(target->MemoryWrapper(0));
        if (!Common::Require(pixels.Map(), kFailureOther, "the target's memory cannot be mapped")) return false;

        const EFormat format = target->Format();
        if (FloatChannels(format) == 0 && !IsByteColour(format)) {
            Common::Say(kFailureFormat, "targets of this format of pixels are not saved");
            pixels.Abandon();  // left mapped on purpose: hosts have come to give such a target's memory back themselves
            Sys::Warning(L"Raster format not supported", nullptr);
            Sys::Warning(L"Picture save failed.", nullptr);
            return false;
        }
        const bool saved = Common::AtBoundary(false, [&] {
            return SaveAsBytes(handler, path,
                               {target->Width(), target->Height(), format, pixels.Data(), pixels.Pitch()}, stretch);
        });
        pixels.GiveBack();
        if (!saved) Sys::Warning(L"Picture save failed.", nullptr);
        return saved;
    });
}

}  // namespace Kavra::Devices
