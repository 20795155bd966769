// DDS files in the common reading: every level, whole, made smaller, turned, and face by face or slice by slice. Each load
// runs twice: a byte that nobody wrote would differ.

#include "FuzzFile.h"
#include "LegacyLoadFuzz.h"
#include "load/DdsCommonLoad.h"

#include <cstdlib>
#include <cstring>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

constexpr std::int64_t kMaxPixels = 1 << 16;  // of a level; larger ones show nothing new

struct LoadedDds {
    ImageDescription desc;
    Common::PixelBlock block;
};

LoadedDds Load(std::span<const unsigned char> bytes, const LoadRequest& request) {
    LoadedDds loaded;
    auto picture = DdsCommonPicture::Open(Common::ByteSource(bytes));
    if (picture) loaded.block = LoadCommonDds(loaded.desc, *picture, request).value_or(nullptr);
    return loaded;
}

void LoadTwice(std::span<const unsigned char> bytes, const LoadRequest& request) {
    const LoadedDds first = Load(bytes, request), second = Load(bytes, request);
    if (static_cast<bool>(first.block) != static_cast<bool>(second.block)) std::abort();
    if (!first.block) return;
    const std::size_t size = first.desc.dataSize * static_cast<std::size_t>(FaceCount(first.desc.textureType));
    if (first.desc.dataSize != second.desc.dataSize) std::abort();
    if (std::memcmp(first.block.get(), second.block.get(), size) != 0) std::abort();
}

void LoadLevel(std::span<const unsigned char> bytes, const DdsCommonPicture& picture, int level) {
    const Dds::Extent size = picture.LevelSize(level);
    if (std::int64_t{size.width} * size.height * picture.SliceCount(level) > kMaxPixels) return;
    LoadTwice(bytes, {.level = level});
    LoadTwice(bytes, {.width = (size.width + 1) / 2, .height = (size.height + 1) / 2, .level = level});
    LoadTwice(bytes, {.level = level, .orientation = kLeftTop});
    LoadRequest part{.level = level};
    (picture.Shape().type == kTextureCube ? part.preferences.face : part.preferences.slice) = 1;
    LoadTwice(bytes, part);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::SilentSink::Install();
    const std::span bytes(data, size);
    const auto picture = DdsCommonPicture::Open(Common::ByteSource(bytes));
    if (!picture) return 0;
    ImageDesc desc;
    PartFacts facts;
    DescribeCommonDds(desc, *picture);
    DescribeCommonDds(facts, *picture);
    Common::ByteSource file(bytes);
    const KString noPath(L"");
    for (int level = 0; level < picture->Shape().levels; ++level) {
        (void)DdsDifference(noPath, &file, {.width = 1, .level = level});
        LoadLevel(bytes, *picture, level);
    }
    return 0;
}
