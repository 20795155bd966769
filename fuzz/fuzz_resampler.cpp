// The resampler beside the image library: any sizes, types, channels, filters and pitches, and pixels of every kind. With
// the default options the values are the library's; with others, and row by row, they are what they are by themselves.
//
// An input is sixteen bytes that say what, and then the pixels, as often over as it takes.

#include <kavra/devices/Resampler.h>

#include <Imath/half.h>
#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Bytes = std::vector<unsigned char>;

void Require(bool holds) {
    if (!holds) std::abort();
}

struct Picture {
    ElementType element;
    int channels, width, height;
    std::size_t pitch;
    Bytes bytes;

    std::size_t ElementBytes() const {
        return element == ElementType::kUInt8 ? 1 : element == ElementType::kFloat ? 4 : 2;
    }
    std::size_t RowBytes() const { return static_cast<std::size_t>(width * channels) * ElementBytes(); }
    double Value(int y, std::size_t i) const {
        const unsigned char* const at = bytes.data() + static_cast<std::size_t>(y) * pitch + i * ElementBytes();
        if (element == ElementType::kUInt8) return *at;
        if (element == ElementType::kFloat) {
            float value;
            std::memcpy(&value, at, sizeof(value));
            return static_cast<double>(value);
        }
        std::uint16_t bits;
        std::memcpy(&bits, at, sizeof(bits));
        if (element == ElementType::kUInt16) return bits;
        Imath::half value;
        value.setBits(bits);
        return static_cast<double>(static_cast<float>(value));
    }
};

Picture NewPicture(ElementType element, int channels, int width, int height, std::size_t gap) {
    Picture picture{element, channels, width, height, 0, {}};
    picture.pitch = picture.RowBytes() + gap * picture.ElementBytes();
    picture.bytes.assign(picture.pitch * static_cast<std::size_t>(height - 1) + picture.RowBytes(), 0);
    return picture;
}

/// Numbers that stay numbers: what is none spreads by other rules.
void Fill(Picture& picture, std::span<const unsigned char> input) {
    if (input.empty()) return;
    for (std::size_t i = 0; i < picture.bytes.size(); ++i)
        picture.bytes[i] = input[i % input.size()];
    if (picture.element == ElementType::kUInt8 || picture.element == ElementType::kUInt16) return;
    for (std::size_t i = picture.ElementBytes() - 1; i < picture.bytes.size(); i += picture.ElementBytes())
        picture.bytes[i] = static_cast<unsigned char>(picture.bytes[i] & 0xBF);  // below 2
}

OIIO::ImageBuf ImageOver(const Picture& picture) {
    static constexpr std::array kTypes = {OIIO::TypeUnknown, OIIO::TypeUInt8, OIIO::TypeUInt16, OIIO::TypeHalf,
                                          OIIO::TypeFloat};
    const OIIO::ImageSpec layout(picture.width, picture.height, picture.channels,
                                 kTypes[static_cast<std::size_t>(picture.element)]);
    return {layout, const_cast<unsigned char*>(picture.bytes.data()), OIIO::AutoStride,
            static_cast<OIIO::stride_t>(picture.pitch)};
}

void Compare(const Picture& ours, const Picture& theirs) {
    double largest = 1e-30;
    for (int y = 0; y < ours.height; ++y) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(ours.width * ours.channels); ++i)
            largest = std::max(largest, std::fabs(theirs.Value(y, i)));
    }
    for (int y = 0; y < ours.height; ++y) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(ours.width * ours.channels); ++i) {
            const double difference = std::fabs(ours.Value(y, i) - theirs.Value(y, i));
            switch (ours.element) {
                case ElementType::kUInt8:
                    Require(difference == 0);
                    break;
                case ElementType::kUInt16:
                    Require(difference <= 1);
                    break;
                case ElementType::kHalf:
                    Require(difference <= std::max(std::fabs(theirs.Value(y, i)) / 1024, largest * 1e-5 + 6e-8));
                    break;
                default:
                    Require(difference <= largest * 1e-5);
            }
        }
    }
}

class Source final : public IRowSource {
public:
    explicit Source(const Picture& picture) : mPicture(picture) {}
    bool ReadRows(void* rows, int count) override {
        for (int i = 0; i < count; ++i, ++mRow)
            std::memcpy(static_cast<unsigned char*>(rows) + static_cast<std::size_t>(i) * mPicture.RowBytes(),
                        mPicture.bytes.data() + static_cast<std::size_t>(mRow) * mPicture.pitch, mPicture.RowBytes());
        return true;
    }

private:
    const Picture& mPicture;
    int mRow = 0;
};

class Sink final : public IRowSink {
public:
    explicit Sink(const Picture& expected) : mExpected(expected) {}
    bool WriteRows(const void* rows, int count) override {
        for (int i = 0; i < count; ++i, ++mRow)
            Require(std::memcmp(
                        static_cast<const unsigned char*>(rows) + static_cast<std::size_t>(i) * mExpected.RowBytes(),
                        mExpected.bytes.data() + static_cast<std::size_t>(mRow) * mExpected.pitch,
                        mExpected.RowBytes()) == 0);
        return true;
    }
    int Count() const { return mRow; }

private:
    const Picture& mExpected;
    int mRow = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 16;
    if (size < kHead) return 0;
    const auto side = [&](std::size_t at) { return 1 + (data[at] | (data[at + 1] & 1) << 8) % 300; };
    const auto element = static_cast<ElementType>(1 + data[8] % 4);
    const int channels = 1 + data[9] % 4;
    Picture from = NewPicture(element, channels, side(0), side(2), data[10] % 5);
    Picture to = NewPicture(element, channels, side(4), side(6), data[11] % 5);
    // So that the library answers in time.
    if (static_cast<double>(from.width) * from.height * 40 + static_cast<double>(to.width) * to.height * 40 > 4e6)
        return 0;
    Fill(from, std::span(data, size).subspan(kHead));
    ResampleOptions options{.filter = static_cast<EResampleFilter>(data[12] % 7)};
    options.alphaWeighted = (data[13] & 1) != 0;
    options.bounded = (data[13] & 2) != 0;
    options.linearLight = (data[13] & 4) != 0;
    const ResamplePixels pixels{element, channels, data[14] % 8 < channels ? data[14] % 8 : -1};
    Require(ResamplePicture(pixels, from.bytes.data(), from.pitch, from.width, from.height, to.bytes.data(), to.pitch,
                            to.width, to.height, options));

    Source source(from);
    Sink sink(to);
    Require(ResampleRows(pixels, source, from.width, from.height, sink, to.width, to.height, options));
    Require(sink.Count() == to.height);

    if ((data[13] & 7) != 0) return 0;
    Picture theirs = NewPicture(element, channels, to.width, to.height, 0);
    OIIO::ImageBuf dst = ImageOver(theirs);
    const OIIO::ImageBuf src = ImageOver(from);
    constexpr std::array kNames = {"", "", "box", "triangle", "mitchell", "catmull-rom", "lanczos3"};
    const auto filter = static_cast<std::size_t>(options.filter);
    Require(filter < 2 ? OIIO::ImageBufAlgo::resample(dst, src, filter == 1, {}, 1)
                       : OIIO::ImageBufAlgo::resize(dst, src, {{"filtername", kNames[filter]}}, {}, 1));
    Compare(to, theirs);
    return 0;
}
