#include "load/DdsInspection.h"

#include "common/PixelFormats.h"
#include "common/dds/DdsShape.h"
#include "load/ColourMeaning.h"
#include "load/DdsCommonLoad.h"
#include "load/FormatChannels.h"
#include "load/HostReaders.h"
#include "load/LibraryInspection.h"
#include "load/OpenInput.h"

#include <kavra/devices/DDSReader.h>

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace Kavra::Devices {

namespace {

struct StoredDds {
    Dds::Header header;
    Dds::Shape shape;
};

std::optional<StoredDds> ReadStored(Common::ByteSource& source) {
    std::array<unsigned char, Dds::kMaxHeaderBytes> start{};
    if (!source.Seek(0)) return std::nullopt;
    const std::size_t count = source.ReadSome(start);
    const auto header = Dds::ParseHeader(std::span(start).first(count));
    const auto shape = header ? Dds::ShapeOf(*header) : std::nullopt;
    if (!shape) return std::nullopt;
    return StoredDds{*header, *shape};
}

const Dds::DxgiRow* RowOf(const Dds::Header& header) {
    if (header.isExtended) return Dds::FindDxgi(header.dxgiFormat);
    return header.HasFourCC() ? Dds::FindDxgi(Dds::DxgiOfLegacy(header.fourCC)) : nullptr;
}

/// No more than the file is long enough for.
std::int32_t ElementsOf(const StoredDds& dds, std::uint64_t fileBytes) {
    const Dds::DxgiRow* const row = RowOf(dds.header);
    if (!dds.header.isExtended || dds.header.arraySize < 2 || row == nullptr) return 1;
    const auto faces = static_cast<std::uint64_t>(std::popcount(dds.shape.faces));
    const std::uint64_t bytes = std::max<std::uint64_t>(Dds::StoredChainBytes(row->unit, dds.shape) * faces, 1);
    const std::uint64_t held = fileBytes > dds.header.Bytes() ? (fileBytes - dds.header.Bytes()) / bytes : 0;
    const std::uint64_t maximum = std::clamp<std::uint64_t>(held, 1, std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(std::min<std::uint64_t>(dds.header.arraySize, maximum));
}

/// Of the widest channel; 0 of blocks and of what is not known.
std::int32_t BitsOf(const Dds::Header& header) {
    if (!header.isExtended && !header.HasFourCC()) {
        return std::max({std::popcount(header.redMask), std::popcount(header.greenMask), std::popcount(header.blueMask),
                         std::popcount(header.alphaMask)});
    }
    const Dds::DxgiRow* const row = RowOf(header);
    if (row == nullptr || row->unit.IsBlock()) return 0;
    return 8 * Common::BytesOf(Common::FactsOf(row->format).element);
}

void SetShape(PartFacts& facts, const StoredDds& dds) {
    FilePart& part = facts.part;
    const Dds::Extent& size = dds.shape.size;
    facts.levels.clear();
    for (int level = 0; level < dds.shape.levels; ++level) {
        const Dds::Extent extent = Dds::LevelSize(size, level);
        facts.levels.push_back({extent.width, extent.height, extent.depth});
    }
    part.textureType = dds.shape.type;
    part.orientation = kTopLeft;
    part.faces = dds.shape.type == kTextureCube ? dds.shape.faces : 0;
    part.dataX = part.dataY = part.displayX = part.displayY = 0;
    part.displayWidth = size.width;
    part.displayHeight = size.height;
    part.tileWidth = part.tileHeight = part.tileDepth = 0;  // what the library calls tiles are faces
}

/// Pixels that only the host's reader delivers.
bool SetHostPixels(PartFacts& facts, const KString& path) {
    DDSReader reader;
    if (!OpenHostDds(reader, path)) return false;
    const Common::PixelFormat& format = Common::FactsOf(reader.Format());
    SetChannels(facts, format);
    if (format.bytesPerBlock > 0) facts.compression = format.name.substr(1);  // without its "k"
    return true;
}

/// Pixels that the common reading delivers.
bool AddCommonPart(InspectedFile& file, const KString& path, Common::ByteSource& source) {
    const auto picture = OpenCommonDds(path, &source, 0);
    if (!picture) return false;
    const StoredDds dds{picture->Header(), picture->Shape()};
    PartFacts facts;
    DescribeCommonDds(facts, *picture);
    SetShape(facts, dds);
    facts.part.elements = ElementsOf(dds, source.Size());
    if (const auto stored = Dds::FindLayout(dds.header); stored && stored->IsCompressed()) {
        facts.compression = Common::FactsOf(stored->format).name.substr(1);
        facts.part.bitsPerSample = 0;
    } else if (const std::int32_t bits = BitsOf(dds.header); bits > 0) {
        facts.part.bitsPerSample = bits;
    }
    file.Add(facts);
    return true;
}

}  // namespace

bool AddDdsPart(InspectedFile& file, const KString& path, Common::ByteSource& source, ELegacyReading reading) {
    if (reading == kLegacyCommon && AddCommonPart(file, path, source)) return true;
    const std::optional<StoredDds> dds = ReadStored(source);
    if (!dds) return false;
    PartFacts facts;
    if (const auto input = OpenInput(path, source)) {
        facts = FactsOfSpec("dds", input->spec());
        facts.profile = {};
        const bool isGrey16 = facts.channels.size() == 1 && BitsOf(dds->header) == 16;
        if (isGrey16) facts.channels.front().type = "uint16";  // of which the library has the upper half
    } else if (!SetHostPixels(facts, path)) {
        return false;
    }
    SetShape(facts, *dds);
    facts.part.elements = ElementsOf(*dds, source.Size());
    facts.part.bitsPerSample = BitsOf(dds->header);
    const bool isPremultiplied = dds->header.Alpha() == Dds::kAlphaModePremultiplied && facts.part.alpha != kAlphaNone;
    if (isPremultiplied) facts.part.alpha = kAlphaPremultiplied;
    file.Add(facts);
    return true;
}

}  // namespace Kavra::Devices
