/// A DDS file as the image library takes it.
///
/// Its view differs from the format's, and on purpose stays apart from it: pixels that the library decodes are looked
/// for where it would look for them. What it does not take is left to the host's own reader.
///
/// | | the format (`common/dds`) | the library |
/// |---|---|---|
/// | DX10 extension | by its code, where the flags say that a code is meant | by its code, whatever the flags say |
/// | volume | by the caps, the depth or the extension | by the caps alone |
/// | cube | by the caps or the extension; all faces where none is named | by the caps alone, with the faces named |
/// | cube and volume at once | a volume | neither |
/// | cube that is not square | none | refused by the library itself, so not judged here |
/// | mip levels | meant by the flags or by the caps | meant by the flags alone |
/// | sides | up to 2^20, depth 2^16 | up to 2^15 |
/// | pixels | all that a host format holds | see `LibraryUnitOf` |
#pragma once

#include "common/dds/DdsHeader.h"
#include "common/dds/DdsShape.h"

#include <cstdint>
#include <optional>
#include <span>

namespace Kavra::Devices::Dds {

/// Edges beyond this the library does not open.
inline constexpr std::uint32_t kMaxLibrarySide = 32768;

/// The header at the start of `file`, whose extension the library reads by the code alone.
inline std::optional<Header> ParseLibraryHeader(std::span<const unsigned char> file) {
    return ParseHeader(file, ExtensionRule::kAnyCode);
}

/// The shape that the library sees. Nothing for what it does not open, for a cube without faces and for a volume that
/// is a cube too. Levels beyond the full chain are not counted.
std::optional<Shape> LibraryShapeOf(const Header& header);

/// How the pixels lie in the file: masks of 8, 16, 24 or 32 bits, and the codes that the library decodes. Nothing for
/// all others.
std::optional<StoredUnit> LibraryUnitOf(const Header& header);

/// The header of a file that holds one face or slice of `levelSize` alone, as a flat texture with one level.
Header FlatHeader(Header header, const Extent& levelSize);

}  // namespace Kavra::Devices::Dds
