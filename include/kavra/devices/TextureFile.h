/// \file
/// Textures as files hold them: every level, face, slice and array element, as it is stored.
#pragma once

#include <kavra/devices/EFormat.h>
#include <kavra/devices/ETextureType.h>
#include <kavra/devices/Export.h>

#include <cstdint>
#include <memory>
#include <string>

namespace Kavra::Devices {

/// What the alpha of a texture is. The numbers are those of the DX10 header of DDS files.
enum ETextureAlpha : std::int32_t {
    kTextureAlphaUnknown = 0,
    kTextureAlphaStraight = 1,
    kTextureAlphaPremultiplied = 2,
    kTextureAlphaOpaque = 3,  ///< there is none
    kTextureAlphaCustom = 4,  ///< a fourth channel that is no transparency
};

/// The kinds of texture files.
enum ETextureFileKind : std::int32_t {
    kTextureFileUnknown = 0,  ///< none of them; of a file to write: by its extension
    kTextureFileDDS = 1,      ///< DirectDraw Surface
    kTextureFileKTX2 = 2,     ///< Khronos Texture 2.0 (https://registry.khronos.org/KTX/specs/2.0/ktxspec.v2.html)
};

/// What a texture consists of. Its bytes lie packed in the order of DDS files: element by element, of an element face by
/// face (+x -x +y -y +z -z), of a face level by level, of a level slice by slice, of a slice row by row.
struct TextureShape {
    std::uint32_t size = sizeof(TextureShape);  ///< of the structure as its user knows it, in bytes
    EFormat format = kUnknown;                  ///< of the pixels or blocks
    /// Whether the colours are encoded with the curve of sRGB, by the file's word. `format` says the same where it can
    /// (`kBC7Srgb`); for the others, as `kR8G8B8A8`, only this does.
    bool isSrgb = false;
    ETextureAlpha alpha = kTextureAlphaUnknown;  ///< by the file's word
    ETextureType type = kTexture2D;              ///< `kTexture2D`, `kTextureCube` or `kTextureVolume`
    int width = 0;                               ///< pixels of level 0, of one face
    int height = 0;                              ///< rows
    int depth = 1;                               ///< slices of level 0 of a volume
    int levels = 1;                              ///< the largest first
    int elements = 1;                            ///< of an array: flat pictures or whole cubes
};

/// Whether a texture of this shape can be: a format with pixels or blocks, sides of 1 to 1,048,576 and depths of 1 to
/// 65,536, square cubes, slices of volumes only, levels from 1 to the full chain, 1 to 65,536 elements but of volumes, of
/// which there are no arrays. All other functions take shapes that are not as of no bytes. Threads: any; so all of them.
KAVRA_DEVICES_API bool IsSaneTexture(const TextureShape& shape);

/// Levels of the full chain, down to 1 x 1 x 1. Sides below 1 count as 1.
KAVRA_DEVICES_API int FullTextureLevels(int width, int height, int depth = 1);

/// The size of a level of 0 and up: each half the one before, rounded down, never below 1.
KAVRA_DEVICES_API void GetTextureLevelSize(const TextureShape& shape, int level, int& width, int& height, int& depth);

/// Bytes of one level of one face of one element, all slices. 0 where there is no such level.
KAVRA_DEVICES_API std::uint64_t TextureLevelBytes(const TextureShape& shape, int level);

/// Bytes of the whole texture.
KAVRA_DEVICES_API std::uint64_t TextureBytes(const TextureShape& shape);

/// Where a level begins in the whole texture; `TextureBytes` where there is none such. `face` is 0 but for cubes.
KAVRA_DEVICES_API std::uint64_t TextureLevelOffset(const TextureShape& shape, int element, int face, int level);

/// Reads every level, face and element of a DDS or KTX2 file.
///
///     TextureFileReader reader;
///     if (!reader.Open(path)) return Fail(reader.Reason());
///     const TextureShape shape = reader.Shape();
///     std::vector<unsigned char> texture(TextureBytes(shape));
///     if (!reader.ReadAll(texture.data())) return Fail(reader.Reason());
///
/// Pixels and blocks come bit for bit as the file has them, rows packed, the first one first. Where a file's layout is
/// no `EFormat`, pixels are widened to one that loses nothing, as `DDSReader` does; `IsAsStored` tells. Numbers without
/// a type are read as the first of their family, signed and 32-bit integers are not read.
///
/// - **DDS**: legacy masks and codes, also where flags miss, and the DX10 header with arrays. DXT2 and DXT4 are
///   premultiplied `kBC2` and `kBC3`, RXGB is `kBC3` whose alpha is custom. Of ATI2 the halves of blocks change places,
///   since its writers store green first.
/// - **KTX2**: levels as they are or packed by Zstandard. A file of no levels has one. Layers that are the faces of an
///   incomplete cube make that cube. Grey and alpha that are stored as red become `kL8`, `kL16` and `kA8`.
///
/// A file is opened only where it is long enough for all that it describes, so a caller may take memory for a shape; of
/// KTX2 levels that are packed, as much as their bytes could hold at most. What cannot be read is told by `Reason`.
///
/// One object reads one file at a time, on one thread at a time; different objects are independent. No exception leaves.
class KAVRA_DEVICES_API TextureFileReader {
public:
    /// Makes a reader without a file.
    TextureFileReader();
    ~TextureFileReader();
    TextureFileReader(const TextureFileReader&) = delete;
    TextureFileReader& operator=(const TextureFileReader&) = delete;

    /// Opens a file, told apart by what it begins with, and reads everything but the levels. False where it is neither
    /// kind, of what is not read, or too short; the reader is then without a file.
    bool Open(const KString& path);

    /// The kind of the file; unknown without one.
    ETextureFileKind Kind() const;
    /// Fills `shape`, as far as its `size` goes: what the file holds, with the format that levels are delivered in.
    /// Without a file: an empty shape.
    void GetShape(TextureShape& shape) const;
    /// The same as a value.
    TextureShape Shape() const {
        TextureShape shape;
        GetShape(shape);
        return shape;
    }
    /// Whether a face of a cube is in the file: 0 to 5 for +x -x +y -y +z -z. Of others only face 0 is.
    bool HasFace(int face) const;
    /// Whether levels are the file's own bytes: neither widened nor with halves of blocks exchanged.
    bool IsAsStored() const;
    /// Whether the first row is the lowest, by the word of a KTX2 file.
    bool IsBottomUp() const;

    /// Reads one level of one face of one element into `out`, which takes `TextureLevelBytes`; faces that are not in the
    /// file are zero. Levels of a face may be read in any order. False where there is no such level or its bytes cannot
    /// be read; `out` may then be written in part.
    bool ReadLevel(int element, int face, int level, void* out);
    /// Reads the whole texture into `out`, which takes `TextureBytes`, in the order of `TextureShape`.
    bool ReadAll(void* out);

    /// Why the last operation failed, in words that follow a colon; empty after success. Valid until the next one.
    const char* Reason() const;

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// How a texture is written.
struct TextureWriteOptions {
    std::uint32_t size = sizeof(TextureWriteOptions);  ///< of the structure as its user knows it, in bytes
    ETextureFileKind kind = kTextureFileUnknown;       ///< unknown: by the extension, ".dds" or ".ktx2"
    /// Of KTX2: 1 (fast) to 22 (small) packs levels by Zstandard, 0 does not. The same input gives the same bytes,
    /// whatever the number of threads.
    int zstdLevel = 0;
};

/// Whether a file of a kind can say everything that a shape does. Where not, and `reason` is not null, it becomes why, in
/// words that follow a colon.
///
/// - **DDS** has no number for sRGB of formats other than `kBC1` to `kBC3`, `kBC7`, `kR8G8B8A8`, `kB8G8R8A8` and
///   `kB8G8R8X8`.
/// - **KTX2** has no word for a custom alpha, which is written as a straight one, nor for an unknown one. X formats come
///   back as those with alpha, which is opaque.
KAVRA_DEVICES_API bool CanWriteTexture(const TextureShape& shape, ETextureFileKind kind, std::string* reason = nullptr);

/// Writes a texture: `data` holds `bytes` bytes, which must be `TextureBytes(shape)`, in the order of `TextureShape`.
///
/// DDS files get a legacy header where that says it all, so `DDSWriter`'s bytes, and the DX10 header for arrays, sRGB and
/// what is known of alpha. `kBC5` gets it too, since the legacy code means green first. In it, grey is `kR8` and `kR16`,
/// and `kR8G8B8X8` is `kR8G8B8A8` whose alpha is opaque.
///
/// The file is written under a hidden name in the same folder and renamed when it is whole: under `path` there is either
/// the whole new file or what was there before. False where `CanWriteTexture` is, `bytes` is another number, an option is
/// out of its range, what has the name is no regular file, the folder does not exist or the disk is full; `reason`, where
/// it is not null, becomes why. Threads: any. No exception leaves.
KAVRA_DEVICES_API bool WriteTextureFile(const KString& path, const TextureShape& shape, const void* data,
                                        std::uint64_t bytes, const TextureWriteOptions& options = {},
                                        std::string* reason = nullptr);

}  // namespace Kavra::Devices
