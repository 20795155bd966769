// Light analysis of any description: sizes, pitches (also negative, or shorter than a row), formats and texture types,
// over any pixels, NaN and infinite ones included. The block holds exactly what the rows cover, so a read outside of
// them is found.
//
// Input: format, texture type, offset (a byte each), lights wanted (2 bytes), width, height, pitch (4 bytes each, least
// significant first), then bytes that are repeated over the block.

#include <kavra/oiio/OIIOImageHandler.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Vectors = std::vector<Kavra::vec3<float>>;

constexpr std::size_t kHeaderBytes = 17;
constexpr std::int64_t kMaxPixels = 1 << 18, kMaxBytes = 1 << 20;

struct Input {
    ImageDescription desc;
    std::size_t offset = 0;
    std::uint16_t lights = 0;
    std::span<const unsigned char> pattern;
};

template <class T>
T Take(std::span<const unsigned char>& data) {
    T value;
    std::memcpy(&value, data.data(), sizeof value);
    data = data.subspan(sizeof value);
    return value;
}

Input Parse(std::span<const unsigned char> data) {
    Input input;
    input.desc.format = static_cast<EFormat>(Take<std::uint8_t>(data));
    input.desc.textureType = static_cast<ETextureType>(Take<std::uint8_t>(data));
    input.offset = Take<std::uint8_t>(data);
    input.lights = Take<std::uint16_t>(data);
    input.desc.width = Take<std::int32_t>(data);
    input.desc.height = Take<std::int32_t>(data);
    input.desc.rowPitch = Take<std::int32_t>(data);
    input.pattern = data;
    return input;
}

std::int64_t PixelBytes(EFormat format) {
    return format == kR32G32B32A32F ? 16 : format == kR16G16B16A16F ? 8 : 4;
}

/// The rows of a description, in a block of their own.
struct Rows {
    std::vector<unsigned char> block;
    const unsigned char* first = nullptr;
};

/// False where the rows would be more than a fuzzer's patience or memory.
bool MakeRows(const Input& input, Rows& rows) {
    const std::int64_t width = std::max(input.desc.width, 0), height = std::max(input.desc.height, 0);
    const std::int64_t pitch = input.desc.rowPitch;
    const std::int64_t between = height > 1 ? std::abs(pitch) * (height - 1) : 0;
    if (width * height > kMaxPixels || between > kMaxBytes) return false;
    const bool isEmpty = width == 0 || height == 0;
    const std::int64_t bytes = isEmpty ? 0 : between + width * PixelBytes(input.desc.format);
    rows.block.resize(input.offset + static_cast<std::size_t>(bytes));
    for (std::size_t i = 0; i < rows.block.size() && !input.pattern.empty(); ++i)
        rows.block[i] = input.pattern[i % input.pattern.size()];
    rows.block.shrink_to_fit();
    rows.first = rows.block.data() + input.offset + (pitch < 0 && !isEmpty ? between : 0);
    return true;
}

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckIntensity(OIIOImageHandler& handler, const Input& input, const Rows& rows) {
    for (const bool upperHemisphere : {false, true}) {
        Kavra::vec3<float> averages[2];
        const auto first = handler.GetIBLIntensity(input.desc, rows.first, upperHemisphere, &averages[0]);
        const auto second = handler.GetIBLIntensity(input.desc, rows.first, upperHemisphere, &averages[1]);
        Check(std::memcmp(&first, &second, sizeof first) == 0);
        Check(std::memcmp(&averages[0], &averages[1], sizeof averages[0]) == 0);
    }
}

void CheckLights(OIIOImageHandler& handler, const Input& input, const Rows& rows) {
    constexpr float kUntouched = 77;
    const std::size_t most = input.lights;
    Vectors directions(most + 1, {kUntouched, 0, 0}), colours(most + 1, {kUntouched, 0, 0});
    const unsigned found =
        handler.FindIBLLightDirections(input.desc, rows.first, directions.data(), colours.data(), input.lights);
    Check(found <= most);
    for (std::size_t i = 0; i < found; ++i) {
        const auto& [x, y, z] = directions[i];
        const float length = std::sqrt(x * x + y * y + z * z);
        Check(length == 0 || std::abs(length - 1) < 1e-3F);
    }
    for (std::size_t i = found; i <= most; ++i)
        Check(directions[i].x == kUntouched && colours[i].x == kUntouched);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < kHeaderBytes) return 0;
    const Input input = Parse({data, size});
    Rows rows;
    if (!MakeRows(input, rows)) return 0;
    OIIOImageHandler handler;
    CheckIntensity(handler, input, rows);
    CheckLights(handler, input, rows);
    return 0;
}
