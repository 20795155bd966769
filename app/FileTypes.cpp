#include "FileTypes.h"

#include "FileNames.h"
#include "FormatNames.h"
#include "WrittenPixels.h"

#include <kavra/devices/AFormatConvertor.h>

#include <algorithm>
#include <array>
#include <format>
#include <limits>
#include <span>

namespace Kavra::App {
namespace {

using namespace Devices;

struct ChannelRule {
    std::string_view extensions;
    std::array<bool, 5> channels;  // by channel count
    std::string_view text;
};

constexpr std::array kChannels = {
    ChannelRule{" .hdr .rgbe ", {false, false, false, true, false}, "three channels"},
    ChannelRule{" .pbm .pgm .ppm .pnm .pfm ", {false, true, false, true, false}, "one or three channels"},
    ChannelRule{" .bmp ", {false, true, false, true, true}, "one, three or four channels"},
    ChannelRule{" .gif .webp .iff .z ", {false, false, false, true, true}, "three or four channels"},
    ChannelRule{" .dpx .jxl .jp2 .j2c .j2k .jph ", {false, true, false, true, true}, "one, three or four channels"},
};

/// In pixels.
struct SizeRule {
    std::string_view extensions;
    long long minWidth;
    long long minHeight;
    long long max;  // of both
};

constexpr long long kMaxSide = std::numeric_limits<int>::max() / 4;

/// As tried with the image library, by writing and reading the sizes on both sides of each bound.
constexpr std::array kSizes = {
    SizeRule{" .tif .tiff .exr ", 1, 1, kMaxSide},
    SizeRule{" .png ", 1, 1, 1'000'000},
    SizeRule{" .bmp .tga .tpic .sgi .rgb .rgba .bw .int .inta .pbm .pgm .ppm .pnm .pfm ", 1, 1, 65'535},
    SizeRule{" .jpg .jpeg .jpe .jif .jfif .jfi ", 1, 1, 65'500},
    SizeRule{" .gif ", 1, 1, 32'768},
    SizeRule{" .rla ", 2, 1, 32'768},
    SizeRule{" .webp ", 1, 1, 16'383},
    SizeRule{" .iff .z ", 1, 1, 8192},
    SizeRule{" .ico ", 1, 1, 255},
    SizeRule{" .jp2 .j2c .j2k ", 32, 32, kMaxSide},
};

template <class Rule>
const Rule* Find(std::span<const Rule> rules, std::string_view extension) {
    const auto found =
        std::ranges::find_if(rules, [&](const Rule& rule) { return HasWord(rule.extensions, extension); });
    return found == rules.end() ? nullptr : &*found;
}

std::string ChannelObstacle(std::string_view extension, const FileContent& content) {
    const EFormat format = content.format;
    const auto* rule = Find<ChannelRule>(kChannels, extension);
    const int channels = content.dropsAlpha ? ColourChannels(format) : Facts(format).channels;
    if (rule == nullptr || rule->channels[static_cast<std::size_t>(channels)]) return {};
    return std::format("{} files hold {}, and {} has {}", extension, rule->text, Enumerator(format), channels);
}

std::string SideObstacle(std::string_view extension, const FileContent& content) {
    const auto* rule = Find<SizeRule>(kSizes, extension);
    if (rule == nullptr) return {};
    const auto says = [&](const std::string& text) {
        return std::format("{} x {} pixels, and {} files hold {}", content.width, content.height, extension, text);
    };
    if (content.width > rule->max || content.height > rule->max) return says(std::format("{} a side", rule->max));
    if (content.width >= rule->minWidth && content.height >= rule->minHeight) return {};
    return says(std::format("{} or more {}", rule->minWidth, rule->minHeight > 1 ? "a side" : "across"));
}

/// The size of a bitmap file is a number of 32 bits.
std::string BitmapObstacle(std::string_view extension, const FileContent& content) {
    constexpr long long kMaxPixels = (1LL << 30) - 1024;
    if (extension != ".bmp" || content.width * content.height <= kMaxPixels) return {};
    return std::format("{} x {} pixels, and .bmp files hold 4 GB", content.width, content.height);
}

/// Samples of 16 bits are written in a way that is not read, and a single row of several channels is read as a picture
/// of one channel that stands on its side.
std::string FitsObstacle(std::string_view extension, const FileContent& content) {
    const int channels = Facts(content.format).channels;
    if (extension != ".fits" || channels == 0) return {};
    const int bits = 8 * Utilities::AFormatConvertor::BytesPerPixel(content.format) / channels;
    if (bits == 16)
        return std::format(".fits files hold 8 or 32 bits a channel, and {} has 16", Enumerator(content.format));
    if (channels == 1 || content.height > 1) return {};
    return std::format("a single row, and .fits files of {} channels hold two or more", channels);
}

}  // namespace

std::string TypeObstacle(std::string_view extension, const FileContent& content) {
    if (extension == ".zfile") return ".zfile files cannot be read back";
    std::string obstacle = ChannelObstacle(extension, content);
    if (obstacle.empty()) obstacle = SideObstacle(extension, content);
    if (obstacle.empty()) obstacle = BitmapObstacle(extension, content);
    return obstacle.empty() ? FitsObstacle(extension, content) : obstacle;
}

bool HoldsChannels(std::string_view extension, int channels) {
    const auto* rule = Find<ChannelRule>(kChannels, extension);
    return rule == nullptr || rule->channels[static_cast<std::size_t>(channels)];
}

std::string ShortnessObstacle(std::string_view extension, std::uint64_t bytes) {
    constexpr std::uint64_t kMinBytes = 128;  // the image library's reader wants to see as many
    if (extension != ".jxl" || bytes >= kMinBytes) return {};
    return std::format("it would be {} bytes long, and .jxl files below {} cannot be read back", bytes, kMinBytes);
}

}  // namespace Kavra::App
