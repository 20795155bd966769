/// Which way of loading or describing is tried when.
#pragma once

#include "common/HostExtras.h"
#include "common/LoadRequest.h"
#include "load/HostReaders.h"
#include "readers/FileTypeDetection.h"

#include <kavra/devices/EXRHandler.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>

namespace Kavra::Devices {

/// What `IImageHandler::LoadTexture` does. Throws what the allocator and the libraries throw.
IMemoryWrapper<void>* LoadTexture(ImageDescription& desc, const KString& path, const LoadRequest& request);

/// Whether the host's OpenEXR reader wants a file.
inline bool PrefersExrHandler(const KString& path, const DetectedFile& file) {
    return HostPrefersExr(path, file.start);
}

/// Who hears, in the contract's reading, what the other one does otherwise; null: nobody.
inline ILegacyObserver* ListenerOf(const LoadPreferences& preferences) {
    return preferences.legacy == kLegacyContract ? preferences.legacyObserver : nullptr;
}

/// Whoever listens hears that a file, `Other` to the contract's reading and to nobody a picture, is one in the other.
inline void TellOfCommonReading(const KString& path, const LoadPreferences& preferences, int fileType) {
    ILegacyObserver* const listener = ListenerOf(preferences);
    if (listener == nullptr || fileType != Other) return;
    const DetectedFile common = DetectFile(path, kLegacyCommon);
    if (common.isShown && HasImageReader(common.type))
        listener->ReadingsDiffer("of no kind that the host's rules know");
}

/// What `IImageHandler::GetImageDesc` does. Throws what the allocator and the libraries throw.
ImageDesc* DescribeImage(const KString& path);

}  // namespace Kavra::Devices
