#include "FileColours.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "Workers.h"

#include <algorithm>
#include <limits>
#include <mutex>

namespace Kavra::App {
namespace {

using namespace Devices;

/// What a file that holds light alone holds in the place of such elements.
ElementType LightElement(const FileColours& file, ElementType element) {
    if (element == ElementType::kUInt8 && file.holdsHalves) return ElementType::kHalf;
    return element == ElementType::kHalf && file.holdsHalves ? element : ElementType::kFloat;
}

constexpr std::size_t kMinPart = std::size_t{1} << 16;  // pixels that a thread is worth

unsigned MaxInteger(ElementType element) {
    switch (element) {
        case ElementType::kUInt8:
            return std::numeric_limits<std::uint8_t>::max();
        case ElementType::kUInt16:
            return std::numeric_limits<std::uint16_t>::max();
        default:
            return 0;
    }
}

/// The rows of all faces or slices of a picture.
class Rows {
public:
    explicit Rows(const LoadedImage& image)
        : mFacts(Facts(image.desc.format)),
          mData(static_cast<const unsigned char*>(image.block->mData)),
          mPitch(static_cast<std::size_t>(image.desc.rowPitch)),
          mWidth(static_cast<std::size_t>(image.desc.width)),
          mCount(LayerCount(image.desc) * static_cast<std::size_t>(image.desc.height)) {}

    /// Calls `work(row, pixels, state)` for each, on all cores; each thread starts with `start`, and `end` gets its
    /// state.
    template <class State, class Work, class End>
    void ForEach(const State& start, const Work& work, const End& end) const {
        std::mutex mutex;
        InParts(mCount, kMinPart / mWidth + 1, [&](std::size_t first, std::size_t last) {
            State state = start;
            std::vector<Pixel> pixels(mWidth);
            for (std::size_t y = first; y < last; ++y) {
                ReadPixels(mFacts, mData + y * mPitch, pixels);
                work(y, std::span(pixels), state);
            }
            const std::lock_guard lock(mutex);
            end(state);
        });
    }

private:
    FormatFacts mFacts;
    const unsigned char* mData;
    std::size_t mPitch;
    std::size_t mWidth;
    std::size_t mCount;
};

/// What one thread counts for the exposure.
struct Looks {
    Exposure exposure;
    float brightest = 0;
};

void LookAtAll(const Rows& rows, double brightness, ColourSteps& steps) {
    const Looks none{Exposure(0, brightness)};
    Looks all = none;
    rows.ForEach(
        none,
        [&](std::size_t, std::span<Pixel> pixels, Looks& looks) {
            steps.Look(pixels, looks.exposure, looks.brightest);
        },
        [&](const Looks& looks) {
            all.exposure.Add(looks.exposure);
            all.brightest = std::max(all.brightest, looks.brightest);
        });
    steps.SetExposure(all.exposure, all.brightest);
}

}  // namespace

FileColours ColoursOf(std::string_view extension) {
    if (extension == ".exr")
        return {.isLight = true, .holdsHalves = true, .holdsFloats = true, .alpha = kAlphaPremultiplied};
    if (HasWord(" .hdr .rgbe .pfm ", extension)) return {.isLight = true, .holdsFloats = true, .holdsAlpha = false};
    if (extension == ".dds") return {.holdsHalves = true, .holdsFloats = true};
    if (HasWord(" .tif .tiff .tx .env .sm .vsm .fits .rla ", extension)) return {.holdsFloats = true};
    return {.holdsAlpha = !HasWord(" .jpg .jpeg .jpe .jif .jfif .jfi .pbm .pgm .ppm .pnm ", extension)};
}

EFormat FormatIn(const FileColours& file, std::string_view extension, EFormat format) {
    const FormatFacts facts = Facts(format);
    if (facts.bytesPerPixel == 0 || format == kA8) return format;
    ElementType element = facts.element;
    if (file.isLight) {
        element = LightElement(file, element);
    } else if (!file.holdsFloats && IsFloating(format)) {
        element = ElementType::kUInt8;
    } else if (element == ElementType::kHalf && !file.holdsHalves) {
        element = ElementType::kFloat;
    }
    const bool isPacked = extension == ".dds" || (facts.channels != 3 && (facts.channels != 4 || facts.hasAlpha));
    if (element == facts.element && isPacked) return format;
    const EFormat packed = FormatOf(element, facts.channels);
    return packed != kUnknown ? packed : kR8G8B8A8;  // of two channels of 8 bits
}

bool IsFloating(EFormat format) {
    const ElementType element = Facts(format).element;
    return element == ElementType::kHalf || element == ElementType::kFloat;
}

Transfer TransferOf(const Source& source, EFormat format) {
    switch (source.transfer) {
        case kTransferLinear:
        case kTransferSrgb:
            return {.kind = source.transfer};
        case kTransferGamma:
            if (source.gamma > 0 && source.gamma <= 10) return {.kind = kTransferGamma, .gamma = source.gamma};
            break;
        case kTransferUnknown:
            break;
    }
    return {.kind = IsFloating(format) ? kTransferLinear : kTransferSrgb};
}

EAlphaKind AlphaOf(const Source& source, EFormat format) {
    return Facts(format).hasAlpha && format != kA8 ? source.alpha : kAlphaNone;
}

LoadedImage Changed(const LoadedImage& image, const ColourChange& change, EFormat format, ColourFindings& findings) {
    ImageDescription desc = image.desc;
    desc.format = format;
    LoadedImage result = NewPictureLike(desc, desc.width, desc.height);
    auto* const out = static_cast<unsigned char*>(result.block->mData);
    const auto pitch = static_cast<std::size_t>(result.desc.rowPitch);
    const Rows rows(image);
    ColourSteps steps(change, MaxInteger(Facts(image.desc.format).element));
    if (steps.LooksFirst()) LookAtAll(rows, change.brightness, steps);
    rows.ForEach(
        ColourFindings(),
        [&](std::size_t y, std::span<Pixel> pixels, ColourFindings& found) {
            steps.Run(pixels, found);
            WritePixels(format, pixels, out + y * pitch, pitch);
        },
        [&](const ColourFindings& found) { findings.Add(found); });
    return result;
}

}  // namespace Kavra::App
