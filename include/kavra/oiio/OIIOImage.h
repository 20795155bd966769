/// \file
/// The editable picture that the handler makes.
#pragma once

#include <kavra/devices/IImage.h>
#include <kavra/objects/NetObjectCountImpl.h>
#include <kavra/objects/UString.h>
#include <kavra/oiio/Export.h>

#include <atomic>
#include <cstddef>
#include <memory>

namespace Kavra::Devices {

class ASimpleTexture;
class ATarget;

/// A picture in memory of its own: packed rows, top row first, in blocks of the host's default allocator. It is made
/// blank, from a render target or from a texture; each of these is read during construction only.
///
/// A host gets such pictures from `IImageHandler::CreateImage` and uses them through `IImage`, which says what each
/// operation does; here stands what this class adds. It knows a picture of this class by its interface name:
///
///     if (image->GetInterface(Intern(L"OIIOImage")) != nullptr) ...
///
/// A picture of a format that the image library cannot hold - block-compressed ones, `kR32G32B32F`, `kR8G8B8A8Alt`,
/// `kUnknown` - or of a size below 1 has no buffer: it tells its size and format, and answers everything else with
/// false or null.
///
/// Operations raise their messages through `Sys` and let no exception out. Constructors throw `std::bad_alloc`.
/// Threads: one at a time; different pictures are independent.
class KAVRA_OIIO_API OIIOImage final : public IImage, public Objects::NetObjectCountImpl<OIIOImage> {
public:
    /// Makes a blank picture: every byte zero, so transparent black where there is alpha. The 8-bit colour formats are
    /// all kept red first, as `kR8G8B8A8`. Without a buffer: the warning "Unsupported target type".
    OIIOImage(int width, int height, EFormat format);

    /// Copies the target's pixels; blue-first ones become red first, and the fourth byte of X formats is taken as it
    /// is, as alpha. Without a buffer: the warning "Unsupported target type", or "target can't be mapped" when its
    /// memory is out of reach or its rows do not fit its pitch. A null target gives an empty picture, without a
    /// message.
    explicit OIIOImage(ATarget* target);

    /// Does the same with a texture ("Unsupported texture type", "texture can't be mapped"), of which it keeps a
    /// reference until it is destroyed.
    explicit OIIOImage(ASimpleTexture* texture);

    OIIOImage(const OIIOImage&) = delete;
    OIIOImage& operator=(const OIIOImage&) = delete;
    /// Frees the pixels and releases the texture.
    ~OIIOImage() override;

    /// The interned "OIIOImage": the name of the class and of its interface.
    static UString* InterfaceID();

    /// This object for `InterfaceID()`, else what the base knows, which is null.
    void* GetInterface(UString* id) override;
    /// `InterfaceID()`.
    UString* ClassName() const override;

    /// How many pictures are alive in the process.
    int CurObjectCount() const override;

    int Width() const override;
    int Height() const override;
    EFormat Format() const override;

    /// Null: no file name is kept.
    const wchar_t* ImageFileName() const override;
    /// Null: there is no direct access to the rows. `desc` stays as it is.
    void* RowData(ImageDescription& desc) override;

    /// Copies a rectangle from `source`, another `OIIOImage` of the same format or this one, to the DIFFERENCE of the
    /// two corners: from (0, 0) to (8, 8) the pixels land at (8, 8), from (2, 2) to (8, 8) at (6, 6). What lands left
    /// of or above the picture is left out. A picture pasted into itself comes out as if from a copy.
    ///
    /// Both rectangles, at (`srcX`, `srcY`) and at (`dstX`, `dstY`), must lie inside their pictures, or there is the
    /// error "Invalid parameter". True when the arguments were right, even if nothing landed; the picture counts as
    /// modified from then on.
    bool Paste(const IImage* source, int srcX, int srcY, int width, int height, int dstX, int dstY) override;

    /// Writes the picture. One made from a texture lets the texture save itself as long as nothing was pasted. Else
    /// OpenImageIO writes it; a path that ends in ".dds" and whatever OpenImageIO fails to write goes to the host's
    /// handler, `Sys::ImageHandler()`, by its `SaveTexture(path, desc, data)`; without one it fails. A missing folder
    /// is created, with the messages of the handler's `SaveTexture`.
    bool Save(const KString& path) override;

    /// Returns the rectangle of `size` pixels at `origin`, scaled to `outSize` and brought to `orientation`, in a new
    /// packed block.
    ///
    /// Pixels outside the picture are zero. Channels that the picture lacks are 0, alpha opaque; channels that `format`
    /// lacks are left out, unless `OIIOImageHandler::CanConvertTo` has the pair, which then decides (colour to grey
    /// takes the luma). Changes of size go as in a load without `highQualityResize`; enlarging filters.
    ///
    /// Of `desc` width, height, depth, format, pitch, size and orientation are set. Null for sizes below 1 or beyond
    /// memory, and with the warning "Raster format not supported" for a format without pixels.
    IMemoryWrapper<void>* LoadRect(ImageDescription& desc, vec2<int> origin, vec2<int> size, vec2<int> outSize,
                                   EFormat format, EDataOrientation orientation) override;

    static int mNetObjectCount;  ///< how many are alive; read it with `NetObjectCount()`

private:
    /// Frees a block of the host's default allocator.
    struct FreeBlock {
        void operator()(unsigned char* block) const noexcept;
    };

    /// A counted reference that is exchanged atomically.
    class TextureReference {
    public:
        TextureReference() = default;
        ~TextureReference();
        TextureReference(const TextureReference&) = delete;
        TextureReference& operator=(const TextureReference&) = delete;

        /// Refers to `texture`, which may be null, and releases the one before.
        void Set(ASimpleTexture* texture);
        ASimpleTexture* Get() const;

    private:
        std::atomic<ASimpleTexture*> mTexture{nullptr};
    };

    /// Takes over the size and the format, blue-first and X formats as `kR8G8B8A8`.
    void Describe(int width, int height, EFormat format);

    // A null block is a picture without buffer; else it holds mHeight rows of mWidth pixels of mFormat.
    std::unique_ptr<unsigned char, FreeBlock> mPixels;
    EFormat mFormat = kUnknown;
    int mWidth = 0;
    int mHeight = 0;
    bool mModified = false;
    TextureReference mTexture;
};

}  // namespace Kavra::Devices
