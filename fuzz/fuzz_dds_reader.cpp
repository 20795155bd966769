/// The input is a DDS file: it is described, every level of it is loaded, and each level loaded is written and
/// read back.

#include "FuzzFile.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/DDSWriter.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>

namespace {

using namespace Kavra;
using namespace Kavra::Devices;

struct Releaser {
    void operator()(IMemoryWrapper<void>* wrapper) const { wrapper->Delete(); }
};
using Block = std::unique_ptr<IMemoryWrapper<void>, Releaser>;

void Require(bool condition) {
    if (!condition) std::abort();
}

/// What was read must be writable, and the same when it is read again.
void RequireRoundTrip(const ImageDescription& desc, const void* data) {
    const std::size_t bytes = desc.dataSize * static_cast<std::size_t>(FaceCount(desc.textureType));
    const std::filesystem::path path = Fuzz::FuzzFolder::OfThisProcess().Path() / "written.dds";
    const KString name(OS::FromUtf8(path.c_str()).c_str());
    DDSWriter writer;
    Require(writer.Construct(desc.textureType, desc.format, desc.width, desc.height, desc.depth, 1,
                             static_cast<int>(bytes), 0));
    Require(writer.Write(name, data));

    DDSReader reader;
    Require(reader.Load(name));
    ImageDescription again;
    const Block block(reader.Load(again, desc.width, desc.height, desc.depth));
    Require(block && again.format == desc.format && again.textureType == desc.textureType &&
            again.rowPitch == desc.rowPitch && again.dataSize == desc.dataSize);
    Require(std::memcmp(block->mData, data, bytes) == 0);
}

void LoadLevels(DDSReader& reader, std::size_t fileBytes) {
    const auto side = [](int size, int level) { return std::max(size >> level, 1); };
    for (int level = 0; level < reader.Mipmaps(); ++level) {
        ImageDescription desc;
        const Block block(
            reader.Load(desc, side(reader.Width(), level), side(reader.Height(), level), side(reader.Depth(), level)));
        if (!block) {
            Require(reader.SkipMipLevel(level));
            continue;
        }
        // A stored byte makes at most eight delivered ones.
        Require(desc.dataSize <= 8 * fileBytes);
        RequireRoundTrip(desc, block->mData);
    }
    Require(!reader.SkipMipLevel(reader.Mipmaps()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Fuzz::FuzzFile file({data, size}, ".dds");
    DDSReader reader;
    if (!reader.Load(file.Name())) return 0;
    Require(reader.Width() >= 1 && reader.Height() >= 1 && reader.Depth() >= 1);
    Require(reader.Mipmaps() >= 1 && reader.Mipmaps() <= 21);
    Require(reader.Format() != kUnknown && reader.Format() != kReserved50 && reader.Format() != kReserved51);
    LoadLevels(reader, size);
    return 0;
}
