/// \file
/// Loading and describing pictures that stand in memory.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>

#include <cstddef>

namespace Kavra::Devices {

class IImageFormatHandler;

/// The bytes of an image file in memory. They stay their owner's, must not change while an operation runs, and are not
/// referred to after it.
struct MemoryFile {
    const void* bytes = nullptr;  ///< `size` bytes; null where there are none
    std::size_t size = 0;         ///< in bytes
    /// The name that the file would have, of which the extension counts (all from the last "."): detection begins with
    /// it, as it does for files. Null: none.
    const wchar_t* name = nullptr;
    /// Files that stand beside it, which formats of several files look for: the header of a band raster, its palette.
    /// Their names are the picture's with another extension; neighbours of theirs do not count. Null where there are none.
    const MemoryFile* neighbours = nullptr;
    std::size_t neighbourCount = 0;  ///< of `neighbours`
    /// Where the system opens a file of the same bytes, in UTF-8, for the few readers that take paths alone. Null: they
    /// get a copy.
    const char* systemPath = nullptr;
};

/// Loads pictures from memory. An image handler that can do so is one of these, too:
///
///     if (auto* loader = dynamic_cast<Kavra::Devices::IMemoryLoader*>(handler)) {
///         const Kavra::Devices::MemoryFile file{bytes.data(), bytes.size(), L"download.png"};
///         if (IMemoryWrapper<void>* block = loader->LoadMemory(desc, file, 0, 0, 1, kR8G8B8A8, false, 0, kTopLeft, nullptr))
///             block->Delete();
///     }
///
/// Every answer is that of `IImageHandler` for a file of these bytes and this name that stands alone in its folder, but
/// for its `neighbours`: the block, the description, and the messages in number and order. `LastFailure` tells of a
/// failure, too, if less exactly where the image library says less of bytes than of files. A name that stands inside the
/// bytes leads nowhere.
///
/// The bytes are decoded where they are. Without a `systemPath` they are copied once, into a file of the system that has
/// no name and goes with the operation, for the few readers of the image library that take paths alone (Cineon, DICOM,
/// FITS, OpenVDB, camera raw, Softimage, Zfile) and for hosts whose own readers do; where the system does not let paths
/// of /proc/self/fd be opened, such files are not read. Movies are known by the end of a path: they are read where
/// `systemPath` is there and has their extension.
///
/// A handler of an older module is none: the cast gives null. Preferences of loads hold here, too. Threads: as for
/// `IImageHandler`.
class KAVRA_DEVICES_API IMemoryLoader {
public:
    virtual ~IMemoryLoader() = default;

    /// Loads as `IImageHandler::LoadTexture` does, whose parameters and answer these are. The caller deletes the block.
    virtual IMemoryWrapper<void>* LoadMemory(ImageDescription& desc, const MemoryFile& file, int width, int height,
                                             int depth, EFormat format, bool highQualityResize, int level,
                                             EDataOrientation orientation, IImageFormatHandler* formatHandler) = 0;

    /// Describes as `IImageHandler::GetImageDesc` does. The caller deletes the description.
    virtual ImageDesc* GetMemoryDesc(const MemoryFile& file) = 0;

    /// Describes in full as `IImageInspector::Inspect` does. The caller deletes the answer.
    virtual IFileInspection* InspectMemory(const MemoryFile& file) = 0;
};

}  // namespace Kavra::Devices
