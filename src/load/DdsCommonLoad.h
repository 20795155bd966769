/// DDS files in the common reading: what the image library does not show as the format's description has it.
#pragma once

#include "common/ByteSource.h"
#include "common/LoadRequest.h"
#include "common/PixelBlock.h"
#include "common/Result.h"
#include "load/InspectedFile.h"
#include "readers/dds/DdsCommonPicture.h"

#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

#include <optional>

namespace Kavra::Devices {

/// A DDS file whose level (0 and up) is read by ourselves in the common reading. Nothing when the image library shows it
/// right, and for what is no DDS of a known kind. `open` is the file where it is open already. Throws `std::bad_alloc`.
std::optional<DdsCommonPicture> OpenCommonDds(const KString& path, Common::ByteSource* open, int level);

/// What the contract's reading of a DDS file does otherwise than the common one (`ILegacyObserver`); null: nothing. As far
/// as the header, the length of the file and the request tell.
const char* DdsDifference(const KString& path, Common::ByteSource* open, const LoadRequest& request);

/// Reads what is wanted of a picture, at the size and in the orientation that are wanted, in the picture's own format.
/// Rows that the file ends before are zero, as faces are that it leaves out. Fills `desc`. Fails, with a message, where
/// there is no such level, face or slice, and without one where the picture is too large or cannot be brought to the size.
/// Throws `std::bad_alloc`.
[[nodiscard]] Common::Result<Common::PixelBlock> LoadCommonDds(ImageDescription& desc, DdsCommonPicture& picture,
                                                               const LoadRequest& request);

/// What a load gives.
void DescribeCommonDds(ImageDesc& desc, const DdsCommonPicture& picture);
void DescribeCommonDds(PartFacts& facts, const DdsCommonPicture& picture);

}  // namespace Kavra::Devices
