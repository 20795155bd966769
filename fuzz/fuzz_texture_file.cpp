/// The input is a texture file of either kind: it is described, all of it is read at once and level by level, and what
/// was read is written to both kinds and read back.

#include "FuzzFile.h"

#include <kavra/devices/TextureFile.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

constexpr std::uint64_t kMaxBytes = 1 << 19;  // of a texture; larger ones show nothing new

void Require(bool condition) {
    if (!condition) std::abort();
}

/// Nothing where the levels cannot be read, which must then have a reason.
Bytes ReadWhole(TextureFileReader& reader) {
    Bytes texture(TextureBytes(reader.Shape()));
    if (reader.ReadAll(texture.data())) return texture;
    Require(*reader.Reason() != '\0');
    return {};
}

void RequireLevels(TextureFileReader& reader, const Bytes& texture) {
    const TextureShape shape = reader.Shape();
    std::uint64_t offset = 0;
    for (int element = 0; element < shape.elements; ++element) {
        for (int face = 0; face < FaceCount(shape.type); ++face) {
            for (int level = 0; level < shape.levels; ++level) {
                Bytes bytes(TextureLevelBytes(shape, level));
                Require(reader.ReadLevel(element, face, level, bytes.data()));
                Require(TextureLevelOffset(shape, element, face, level) == offset);
                Require(std::equal(bytes.begin(), bytes.end(), texture.begin() + static_cast<std::ptrdiff_t>(offset)));
                offset += bytes.size();
            }
        }
    }
    Require(offset == texture.size());
}

/// What was read must be writable wherever the kind has a word for it, and the same when it is read again.
void RequireRoundTrip(const TextureShape& shape, const Bytes& texture, ETextureFileKind kind, int zstdLevel) {
    const std::filesystem::path path = Fuzz::FuzzFolder::OfThisProcess().Path() / "written";
    const KString name(OS::FromUtf8(path.c_str()).c_str());
    TextureWriteOptions options;
    options.kind = kind;
    options.zstdLevel = zstdLevel;
    if (!CanWriteTexture(shape, kind)) return;
    Require(WriteTextureFile(name, shape, texture.data(), texture.size(), options));

    TextureFileReader reader;
    Require(reader.Open(name) && reader.Kind() == kind && reader.IsAsStored());
    const TextureShape again = reader.Shape();
    Require(again.type == shape.type && again.width == shape.width && again.height == shape.height &&
            again.depth == shape.depth && again.levels == shape.levels && again.elements == shape.elements &&
            again.isSrgb == shape.isSrgb);
    Require(ReadWhole(reader) == texture);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Fuzz::FuzzFile file({data, size}, ".dds");
    TextureFileReader reader;
    if (!reader.Open(file.Name())) {
        Require(*reader.Reason() != '\0');
        return 0;
    }
    const TextureShape shape = reader.Shape();
    Require(IsSaneTexture(shape) && reader.Kind() != kTextureFileUnknown);
    if (TextureBytes(shape) > kMaxBytes) return 0;
    const Bytes texture = ReadWhole(reader);
    if (texture.empty()) return 0;
    RequireLevels(reader, texture);
    RequireRoundTrip(shape, texture, kTextureFileDDS, 0);
    RequireRoundTrip(shape, texture, kTextureFileKTX2, 0);
    RequireRoundTrip(shape, texture, kTextureFileKTX2, 1);
    return 0;
}
