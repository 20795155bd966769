#include "support/ResamplePictures.h"

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace Kavra::Tests {

std::size_t Picture::ElementBytes() const {
    switch (element) {
        case ElementType::kUInt8:
            return 1;
        case ElementType::kUInt16:
        case ElementType::kHalf:
            return 2;
        default:
            return 4;
    }
}

std::size_t Picture::RowBytes() const {
    return static_cast<std::size_t>(width * channels) * ElementBytes();
}

float Picture::Value(std::size_t i) const {
    const unsigned char* const at = bytes.data() + i * ElementBytes();
    if (element == ElementType::kUInt8) return *at;
    if (element == ElementType::kFloat) {
        float value;
        std::memcpy(&value, at, sizeof(value));
        return value;
    }
    std::uint16_t bits;
    std::memcpy(&bits, at, sizeof(bits));
    if (element == ElementType::kUInt16) return bits;
    Imath::half value;
    value.setBits(bits);
    return value;
}

int Picture::Step(std::size_t i) const {
    if (element == ElementType::kUInt8) return bytes[i];
    std::uint16_t bits;
    std::memcpy(&bits, bytes.data() + 2 * i, sizeof(bits));
    if (element == ElementType::kUInt16) return bits;
    return (bits & 0x8000) != 0 ? -(bits & 0x7FFF) : bits;
}

void Picture::Set(std::size_t i, float value) {
    unsigned char* const at = bytes.data() + i * ElementBytes();
    const auto scaled = [&](float full) { return std::clamp(value, 0.0F, 1.0F) * full + 0.5F; };
    if (element == ElementType::kUInt8) {
        *at = static_cast<unsigned char>(scaled(255));
    } else if (element == ElementType::kFloat) {
        std::memcpy(at, &value, sizeof(value));
    } else {
        const std::uint16_t bits =
            element == ElementType::kUInt16 ? static_cast<std::uint16_t>(scaled(65535)) : Imath::half(value).bits();
        std::memcpy(at, &bits, sizeof(bits));
    }
}

float Picture::At(int x, int y, int channel) const {
    return Value(static_cast<std::size_t>((y * width + x) * channels + channel));
}

Picture EmptyPicture(ElementType element, int channels, int width, int height) {
    Picture picture{.element = element, .channels = channels, .width = width, .height = height, .bytes = {}};
    picture.bytes.resize(picture.RowBytes() * static_cast<std::size_t>(height));
    return picture;
}

Picture MakePicture(ElementType element, int channels, int width, int height, Pattern pattern) {
    Picture picture = EmptyPicture(element, channels, width, height);
    std::mt19937 random(static_cast<unsigned>(width * 31 + height));
    const auto noise = [&] { return static_cast<float>(random() >> 8) / static_cast<float>(1 << 24); };
    for (std::size_t i = 0; i < picture.Values(); ++i) {
        const auto pixel = static_cast<int>(i) / channels, x = pixel % width, y = pixel / width;
        const float u = (static_cast<float>(x) + 0.5F) / static_cast<float>(width);
        const float v = (static_cast<float>(y) + 0.5F) / static_cast<float>(height);
        float value = 0;
        switch (pattern) {
            case Pattern::kNoise:
                value = noise();
                break;
            case Pattern::kRamps:
                value = i % 2 == 0 ? u : v;
                break;
            case Pattern::kChecks:
                value = static_cast<float>((x + y + static_cast<int>(i) % channels) % 2);
                break;
            case Pattern::kImpulses:
                value = random() % 23 == 0 ? 1.0F : 0.0F;
                break;
            case Pattern::kPhotograph:  // smooth hills, an edge and a little grain
                value = 0.5F + 0.3F * std::sin(7 * u) * std::cos(5 * v) + (u > v ? 0.15F : -0.1F) + 0.05F * noise();
                break;
        }
        picture.Set(i, value);
    }
    return picture;
}

Picture Resampled(const Picture& from, int width, int height, const Devices::ResampleOptions& options) {
    Picture to = EmptyPicture(from.element, from.channels, width, height);
    const int alpha = from.channels % 2 == 0 ? from.channels - 1 : -1;
    EXPECT_TRUE(Devices::ResamplePicture({from.element, from.channels, alpha}, from.bytes.data(), from.RowBytes(),
                                         from.width, from.height, to.bytes.data(), to.RowBytes(), width, height,
                                         options));
    return to;
}

}  // namespace Kavra::Tests
