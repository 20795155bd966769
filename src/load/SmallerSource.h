/// Loads that may begin with a smaller picture than the one that is asked for, where the file offers one for less.
#pragma once

#include "common/ByteSource.h"
#include "load/TextureLoader.h"

namespace Kavra::Devices {

/// What of a load says what is read, to have it back where a smaller picture cannot be read.
struct TextureSource {
    std::unique_ptr<OIIO::ImageInput> input;  ///< null: the load has its own still
    ImageDescription desc;
    int width, height;  ///< of `fileDesc`
    OIIO::ImageSpec fileSpec, nativeSpec, targetSpec;
    int level;
};

/// Makes a load that shrinks its picture read the smallest one of the file that is not smaller than what is wanted:
///
/// | files | pictures |
/// |---|---|
/// | JPEG, grey or of three colours | a half, a quarter, an eighth, as `OpenScaledJpeg` decodes them |
/// | OpenEXR and TIFF with mip levels | the levels |
/// | DDS | the mip levels below the one that is asked for |
///
/// Returns what it read before, for `Restore`; nothing, and the load as it was, where there is none to gain. Throws
/// `std::bad_alloc`, and what the library throws.
std::optional<TextureSource> TakeSmallerSource(TextureLoad& load, Common::ByteSource& file);

/// Gives the load back what it read before.
void Restore(TextureLoad& load, TextureSource source);

}  // namespace Kavra::Devices
