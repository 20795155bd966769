#include "common/Boundary.h"
#include "common/PackedLayout.h"
#include "output/LibrarySaving.h"
#include "output/PathPreparation.h"

#include <kavra/devices/ASimpleTexture.h>
#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>

#include <cstdint>

namespace Kavra::Devices {

bool OIIOImage::Save(const KString& path) {
    return Common::AsOperation(false, [&] {
        ASimpleTexture* const texture = mTexture.Get();
        if (texture != nullptr && !mModified) return texture->Save(path);
        const std::int64_t rowBytes = Common::PackedRowBytes(mFormat, mWidth);
        if (!Common::Require(mPixels && Common::FitsPitch(rowBytes), kFailureArguments, "the picture has no pixels"))
            return false;
        const ImageDescription desc =
            Common::DescribeRows(mWidth, mHeight, mFormat, static_cast<std::int32_t>(rowBytes));
        if (!IsDDSPath(path)) {
            if (!PrepareFolder(path)) return false;
            if (Common::AtBoundary(false, [&] { return SaveByLibrary(path, desc, mPixels.get()); })) return true;
        }
        IImageHandler* const handler = Sys::ImageHandler();
        return Common::Require(handler != nullptr, kFailureOther, "the host has no image handler") &&
               handler->SaveTexture(path, desc, mPixels.get());
    });
}

}  // namespace Kavra::Devices
