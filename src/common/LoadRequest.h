/// What a caller wants of a picture.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/LoadPreferences.h>

namespace Kavra::Devices {

class IImageFormatHandler;

/// The wishes of `IImageHandler::LoadTexture`, handed on as one through everything that loads. As it stands: the whole
/// first frame as it is stored, but upright. `depth` is not among them, as no way of loading looks at it.
struct LoadRequest {
    int width = 0;              ///< pixels of the result at most, before it is rotated; below 1: the file's own
    int height = 0;             ///< likewise, by itself: the sides may shrink by different factors
    EFormat format = kUnknown;  ///< `kUnknown`: `formatHandler` chooses, or the file's own
    bool highQuality = false;   ///< whether to filter where sampling would do
    int level = 0;              ///< the mip level of a DDS, else the frame, from 0; negative ones count as 0
    EDataOrientation orientation = kTopLeft;
    IImageFormatHandler* formatHandler = nullptr;  ///< may be null
    LoadPreferences preferences = {};              ///< of the thread that asked
};

/// A side of the result: what is wanted of it, and never more than there is.
constexpr int WantedSide(int wanted, int available) {
    return wanted < 1 || wanted > available ? available : wanted;
}

}  // namespace Kavra::Devices
