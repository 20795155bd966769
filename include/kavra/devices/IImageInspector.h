/// \file
/// Everything that an image file says of itself.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>
#include <kavra/objects/HeapOperators.h>
#include <kavra/objects/KString.h>

#include <cstddef>
#include <cstdint>

namespace Kavra::Devices {

/// What the colours of a picture are to its alpha.
enum EAlphaKind : int {
    kAlphaNone = 0,           ///< there is no alpha
    kAlphaStraight = 1,       ///< colours are as they are, beside their alpha ("unassociated")
    kAlphaPremultiplied = 2,  ///< colours are multiplied by their alpha ("associated")
};

/// What the values of the colours of a picture are to light.
enum ETransferKind : int {
    kTransferUnknown = 0,  ///< neither the file nor its type says so
    kTransferLinear = 1,   ///< proportional to light
    kTransferSrgb = 2,     ///< encoded by the curve of sRGB, IEC 61966-2-1
    kTransferGamma = 3,    ///< encoded by a power, see `FilePart::gamma`
};

/// A channel as the file stores it.
struct FileChannel {
    const char* name;  ///< in UTF-8; "R", "diffuse.G", "Z" ...
    const char* type;  ///< "uint8", "uint16", "uint32", "int8", "int16", "int32", "half", "float" or "double"
};

/// The size of one mip level.
struct FileLevel {
    std::int32_t width;   ///< in pixels
    std::int32_t height;  ///< in pixels; of a cube map those of one face
    std::int32_t depth;   ///< in slices; 1 of all but volumes
};

/// A piece of metadata, in UTF-8. It is file content: of any text, and no more to be believed than pixels.
struct FileText {
    const char* name;   ///< as the library or the format calls it
    const char* value;  ///< numbers in decimals
};

/// One part of a file: a frame, page or subimage. All that it points to belongs to the `IFileInspection`.
struct FilePart {
    std::uint32_t size;            ///< of the structure as the handler knows it, in bytes: later ones are longer
    const char* name;              ///< in UTF-8; empty where the file has none
    ETextureType textureType;      ///< flat, cube map or volume
    EDataOrientation orientation;  ///< row and column order in the file
    const FileLevel* levels;  ///< the stored mip levels, largest first; `levels[0]` is the picture, of a cube one face
    std::size_t levelCount;   ///< 1 or more
    std::uint32_t faces;      ///< of a cube map: bit n says that face n is there, +x -x +y -y +z -z; else 0
    std::int32_t elements;    ///< of an array of textures; 1 of all others
    const FileChannel* channels;  ///< in file order
    std::size_t channelCount;     ///< 0 where they are not told apart, as in block-compressed textures of no reader
    std::int32_t bitsPerSample;   ///< of the stored values; 0 where that is not known
    EAlphaKind alpha;             ///< of the pixels that a load delivers
    ETransferKind transfer;       ///< of the pixels that a load delivers
    double gamma;                 ///< the decoding exponent of `kTransferGamma`; 1 of linear ones, 2.2 of all others
    const char* colourSpace;      ///< as the file or the library calls it; empty where nothing does
    const void* iccProfile;       ///< `iccBytes` bytes as the file has them, unchecked; null where there is none
    std::size_t iccBytes;         ///< of the profile
    const char* compression;      ///< as the library calls it; empty where nothing says
    std::int32_t tileWidth;       ///< in pixels; 0 where the file has rows
    std::int32_t tileHeight;      ///< likewise
    std::int32_t tileDepth;       ///< in slices; 0 where the file has rows
    std::int32_t dataX;           ///< the first stored column, in the coordinates of the display window
    std::int32_t dataY;           ///< the first stored row
    std::int32_t displayX;        ///< the first column of the window that the picture is meant to fill
    std::int32_t displayY;        ///< its first row
    std::int32_t displayWidth;    ///< its columns
    std::int32_t displayHeight;   ///< its rows
    double xResolution;           ///< across, in dots per inch; 0 where the file does not say
    double yResolution;           ///< down, likewise
    double seconds;               ///< how long an animation shows it; 0 where the file does not say
    const FileText* texts;        ///< all other metadata
    std::size_t textCount;        ///< of the texts
};

/// The answer of an inspection. Whoever receives one owns it and destroys it with `Delete`, before the module is unloaded.
class KAVRA_DEVICES_API IFileInspection : public Objects::HeapOperators {
public:
    virtual ~IFileInspection() = default;
    /// Destroys the inspection and all that its parts point to.
    virtual void Delete() = 0;

    /// The kind of file as the reader that took it calls itself: "png", "openexr", "dds", "PCX" ...
    virtual const char* FileType() const = 0;
    /// How many parts are described: 1 or more, and 4,096 at most. Part n is frame n of a load, except of a DDS, whose
    /// frames are the levels of its only part.
    virtual std::size_t PartCount() const = 0;
    /// A part; `index` is below `PartCount`.
    virtual const FilePart& Part(std::size_t index) const = 0;
};

/// Describes files in full. An image handler that can do so is one of these, too:
///
///     if (auto* inspector = dynamic_cast<Kavra::Devices::IImageInspector*>(handler)) {
///         if (IFileInspection* file = inspector->Inspect(path)) {
///             std::printf("%s, %zu parts\n", file->FileType(), file->PartCount());
///             file->Delete();
///         }
///     }
///
/// A handler of an older module is none: the cast gives null. Threads: as for `IImageHandler`.
class KAVRA_DEVICES_API IImageInspector {
public:
    virtual ~IImageInspector() = default;

    /// Describes a file without decoding its pixels. Null, without a message, where nothing can describe it. Headers are
    /// believed as `IImageHandler::GetImageDesc` believes them; what is told of metadata is bounded: at most 1,024 texts
    /// a part, each cut at 64 KiB, and a profile of 16 MiB.
    virtual IFileInspection* Inspect(const KString& path) = 0;

    /// Returns the extensions of the files that are read by this module and the image library that is installed, each
    /// with its dot and in lower case, in alphabetical order, separated by spaces: ".bmp .dds .exr ...". The text lives as
    /// long as the handler.
    virtual const char* ReadableExtensions() = 0;
    /// The same of the files that are written.
    virtual const char* WritableExtensions() = 0;
};

}  // namespace Kavra::Devices
