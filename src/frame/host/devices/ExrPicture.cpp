#include "frame/host/devices/ExrPicture.h"

#include "common/Progress.h"
#include "frame/host/devices/ExrLuminanceChroma.h"
#include "frame/host/devices/ExrStream.h"

#include <kavra/objects/ObjModel.h>

#include <ImfChannelList.h>
#include <ImfContextInit.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfMultiPartInputFile.h>
#include <ImfPartType.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Kavra::Devices {

namespace {

/// A picture this large must be backed by a file of a size that could hold it: no compression of the format gains
/// more than a few thousandfold.
constexpr std::uint64_t kTrustedBytes = std::uint64_t{1} << 30;
constexpr std::uint64_t kMaxGain = 10000;

enum class ColourLayout { kRgb, kGrey, kLuminanceChroma };

/// Which channels make the picture.
struct ChannelPlan {
    ColourLayout layout = ColourLayout::kRgb;
    std::string prefix;  ///< of the layer, with its dot
    std::string grey;    ///< the channel of a grey picture
    bool alpha = false;
};

bool HasColours(const Imf::ChannelList& channels, const std::string& prefix) {
    for (const char* name : {"R", "G", "B"})
        if (channels.findChannel(prefix + name) != nullptr) return true;
    return false;
}

bool Has(const Imf::ChannelList& channels, const char* name) {
    return channels.findChannel(name) != nullptr;
}

/// The first layer that has colours, with its dot; empty when there is none.
std::string ColourLayer(const Imf::ChannelList& channels) {
    std::set<std::string> layers;
    channels.layers(layers);
    for (const std::string& layer : layers)
        if (HasColours(channels, layer + ".")) return layer + ".";
    return {};
}

/// The first channel that is not the alpha; empty when there is none.
std::string FirstChannel(const Imf::ChannelList& channels) {
    for (auto channel = channels.begin(); channel != channels.end(); ++channel)
        if (std::string_view(channel.name()) != "A") return channel.name();
    return {};
}

ChannelPlan PlanFor(const Imf::ChannelList& channels) {
    if (channels.begin() == channels.end()) throw std::runtime_error("a picture without channels");
    ChannelPlan plan;
    if (!HasColours(channels, "")) {
        if (Has(channels, "Y")) {
            const bool chroma = Has(channels, "RY") && Has(channels, "BY");
            plan.layout = chroma ? ColourLayout::kLuminanceChroma : ColourLayout::kGrey;
            plan.grey = "Y";
        } else if (plan.prefix = ColourLayer(channels); plan.prefix.empty()) {
            plan.grey = FirstChannel(channels);
            if (!plan.grey.empty()) plan.layout = ColourLayout::kGrey;
        }
    }
    plan.alpha = channels.findChannel(plan.prefix + "A") != nullptr;
    return plan;
}

std::uint64_t BytesPerFilePixel(const Imf::ChannelList& channels) {
    std::uint64_t bytes = 0;
    for (auto channel = channels.begin(); channel != channels.end(); ++channel)
        bytes += channel.channel().type == Imf::HALF ? 2 : 4;
    return bytes;
}

/// a x b, or the largest number when that is more.
std::uint64_t SaturatingProduct(std::uint64_t a, std::uint64_t b) {
    std::uint64_t product = 0;
    return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max() : product;
}

/// An empty picture of the data window's size, once that size is credible.
ExrPicture NewPicture(const Imf::Header& header, bool alpha, std::uint64_t fileBytes) {
    const Imath::Box2i& window = header.dataWindow();
    const std::int64_t width = std::int64_t{window.max.x} - window.min.x + 1;
    const std::int64_t height = std::int64_t{window.max.y} - window.min.y + 1;
    constexpr std::int64_t kLargest = std::numeric_limits<int>::max();
    if (width < 1 || height < 1 || width > kLargest || height > kLargest)
        throw std::runtime_error("an impossible size");

    const std::uint64_t pixels = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    const std::uint64_t declared = SaturatingProduct(pixels, BytesPerFilePixel(header.channels()));
    if (declared >= kTrustedBytes && declared / kMaxGain > fileBytes)
        throw std::runtime_error("more than the file can hold");
    const std::uint64_t bytes = SaturatingProduct(pixels, (alpha ? 4 : 3) * sizeof(float));
    if (bytes > Objects::ObjModel::BlockCeiling()) throw std::bad_alloc();

    ExrPicture picture;
    picture.width = static_cast<int>(width);
    picture.height = static_cast<int>(height);
    picture.alpha = alpha;
    picture.pixels = Common::NewBlock(bytes);
    return picture;
}

Imf::FrameBuffer FrameBufferOf(const ExrPicture& picture, const ChannelPlan& plan, const Imath::Box2i& window) {
    const std::size_t pixel = (picture.alpha ? 4 : 3) * sizeof(float);
    Imf::FrameBuffer buffer;
    const auto add = [&](const std::string& name, std::size_t element) {
        buffer.insert(name, Imf::Slice::Make(Imf::FLOAT, picture.pixels.get() + element * sizeof(float), window, pixel,
                                             pixel * static_cast<std::size_t>(picture.width)));
    };
    if (plan.layout == ColourLayout::kGrey) {
        add(plan.grey, 0);
    } else {
        // The library fills what the file lacks with zeros.
        add(plan.prefix + "R", 0);
        add(plan.prefix + "G", 1);
        add(plan.prefix + "B", 2);
    }
    if (picture.alpha) add(plan.prefix + "A", 3);
    return buffer;
}

void SpreadGrey(ExrPicture& picture) {
    const std::size_t channels = picture.alpha ? 4 : 3;
    const std::size_t count = static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
    float* pixel = reinterpret_cast<float*>(picture.pixels.get());
    for (std::size_t i = 0; i < count; ++i, pixel += channels)
        pixel[1] = pixel[2] = pixel[0];
}

void IgnoreMessage(exr_const_context_t, exr_result_t, const char*) {}

}  // namespace

void ReadExrRows(Imf::InputPart& part, const Imath::Box2i& window) {
    constexpr int kBlockRows = 256;            // the highest blocks that there are
    constexpr std::int64_t kPixels = 1 << 20;  // of a band, at least
    Common::ProgressMeter meter(kProgressReading, static_cast<unsigned>(window.max.y - window.min.y + 1));
    if (!meter.IsWatched()) return part.readPixels(window.min.y, window.max.y);
    const std::int64_t width = std::int64_t{window.max.x} - window.min.x + 1;
    const std::int64_t band = (kPixels / width + kBlockRows) / kBlockRows * kBlockRows;
    for (std::int64_t y = window.min.y; y <= window.max.y; y += band) {
        const std::int64_t last = std::min<std::int64_t>(y + band - 1, window.max.y);
        part.readPixels(static_cast<int>(y), static_cast<int>(last));
        meter.Advance(static_cast<std::uint64_t>(last - y + 1));
    }
}

ExrPicture ReadExrPicture(ExrStream& stream) {
    // Failures arrive as exceptions; without a handler of ours the library would also print them.
    Imf::ContextInitializer context;
    context.silentHeaderParse(true).setErrorHandler(&IgnoreMessage).setInputStream(&stream);
    Imf::MultiPartInputFile file("", context);
    const Imf::Header& header = file.header(0);
    if (header.hasType() && Imf::isDeepData(header.type())) throw std::runtime_error("deep data");

    const ChannelPlan plan = PlanFor(header.channels());
    ExrPicture picture = NewPicture(header, plan.alpha, static_cast<std::uint64_t>(stream.size()));
    Imf::InputPart part(file, 0);
    if (plan.layout == ColourLayout::kLuminanceChroma) {
        ReadLuminanceChroma(part, picture);
        return picture;
    }
    const Imath::Box2i window = header.dataWindow();
    part.setFrameBuffer(FrameBufferOf(picture, plan, window));
    ReadExrRows(part, window);
    if (plan.layout == ColourLayout::kGrey) SpreadGrey(picture);
    return picture;
}

}  // namespace Kavra::Devices
