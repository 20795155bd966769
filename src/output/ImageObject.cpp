// Making image objects, and what they tell of themselves.

#include "common/Boundary.h"
#include "common/PixelBlock.h"
#include "common/PixelFormats.h"
#include "load/geometry/PackedRows.h"
#include "output/MappedPixels.h"
#include "output/PixelSpec.h"

#include <kavra/devices/ASimpleTexture.h>
#include <kavra/devices/ATarget.h>
#include <kavra/devices/Sys.h>
#include <kavra/oiio/OIIOImage.h>

#include <cstddef>

namespace Kavra::Devices {

namespace {

using Common::PixelBlock;

/// What is said of a picture that cannot be made.
struct Wording {
    const wchar_t* unsupported;
    const wchar_t* notMapped;
};
constexpr Wording kTargetWording = {L"Unsupported target type", L"target can't be mapped"};
constexpr Wording kTextureWording = {L"Unsupported texture type", L"texture can't be mapped"};

struct Shape {
    int width, height;
    EFormat format;

    bool HasPixels() const { return width > 0 && height > 0 && Devices::HasPixels(format); }
    std::size_t RowBytes() const {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(Common::FactsOf(format).BytesPerPixel());
    }
    std::size_t Rows() const { return static_cast<std::size_t>(height); }
};

void SayOfShape(const Shape& shape) {
    if (shape.width < 1 || shape.height < 1)
        return Common::Say(kFailureArguments, "a picture of {} x {} pixels is none", shape.width, shape.height);
    Common::Say(kFailureFormat, "pictures are not made in the format {}", Common::FactsOf(shape.format).name);
}

/// The pixels of a target or texture, packed and red first; null after a message.
template <class Picture>
PixelBlock CopyOf(Picture& picture, const Shape& shape, const Wording& wording) {
    if (!shape.HasPixels()) {
        SayOfShape(shape);
        Sys::Warning(wording.unsupported, nullptr);
        return nullptr;
    }
    MappedPixels mapped(picture.MemoryWrapper(0));
    const bool holdsRows =
        mapped.Map() && mapped.Pitch() >= 0 && static_cast<std::size_t>(mapped.Pitch()) >= shape.RowBytes();
    if (!holdsRows) {
        Common::Say(kFailureOther, "its memory cannot be mapped, or its rows are shorter than its width");
        mapped.GiveBack();
        Sys::Warning(wording.notMapped, nullptr);
        return nullptr;
    }
    return PackRows({.first = mapped.Data(),
                     .pitch = static_cast<std::size_t>(mapped.Pitch()),
                     .bytes = shape.RowBytes(),
                     .count = shape.Rows()},
                    {.swapsRedAndBlue = Common::FactsOf(shape.format).blueFirst});
}

}  // namespace

int OIIOImage::mNetObjectCount = 0;

OIIOImage::OIIOImage(int width, int height, EFormat format) {
    Describe(width, height, format);
    const Shape shape{mWidth, mHeight, mFormat};
    if (shape.HasPixels()) {
        mPixels.reset(NewRows(shape.Rows(), shape.RowBytes()).release());
        return;
    }
    SayOfShape(shape);
    Sys::Warning(kTargetWording.unsupported, nullptr);
}

OIIOImage::OIIOImage(ATarget* target) {
    if (!Common::Require(target != nullptr, kFailureArguments, "there is no target")) return;
    const Shape shape{target->Width(), target->Height(), target->Format()};
    Describe(shape.width, shape.height, shape.format);
    mPixels.reset(CopyOf(*target, shape, kTargetWording).release());
}

OIIOImage::OIIOImage(ASimpleTexture* texture) {
    if (!Common::Require(texture != nullptr, kFailureArguments, "there is no texture")) return;
    mTexture.Set(texture);
    const Shape shape{texture->Width(), texture->Height(), texture->Format()};
    Describe(shape.width, shape.height, shape.format);
    mPixels.reset(CopyOf(*texture, shape, kTextureWording).release());
}

OIIOImage::~OIIOImage() = default;

void OIIOImage::Describe(int width, int height, EFormat format) {
    mWidth = width;
    mHeight = height;
    const Common::PixelFormat& facts = Common::FactsOf(format);
    mFormat = facts.inLibrary && facts.IsByteColour() ? kR8G8B8A8 : format;
}

UString* OIIOImage::InterfaceID() {
    static UString* const id = Objects::Intern(L"OIIOImage");
    return id;
}

void* OIIOImage::GetInterface(UString* id) {
    return Common::AtBoundary<void*>(nullptr, [&]() -> void* {
        if (id == InterfaceID()) return this;
        return IImage::GetInterface(id);
    });
}

UString* OIIOImage::ClassName() const {
    return Common::AtBoundary<UString*>(nullptr, [] { return InterfaceID(); });
}

int OIIOImage::CurObjectCount() const {
    return NetObjectCount();
}

int OIIOImage::Width() const {
    return mWidth;
}

int OIIOImage::Height() const {
    return mHeight;
}

EFormat OIIOImage::Format() const {
    return mFormat;
}

const wchar_t* OIIOImage::ImageFileName() const {
    return nullptr;
}

void* OIIOImage::RowData(ImageDescription&) {
    return nullptr;
}

void OIIOImage::FreeBlock::operator()(unsigned char* block) const noexcept {
    Objects::KavraDelete(block);
}

OIIOImage::TextureReference::~TextureReference() {
    Common::AtBoundary(false, [&] { return Set(nullptr), true; });
}

void OIIOImage::TextureReference::Set(ASimpleTexture* texture) {
    if (texture != nullptr) texture->AddRef();
    ASimpleTexture* const before = mTexture.exchange(texture);
    if (before != nullptr) before->ReleaseRef();
}

ASimpleTexture* OIIOImage::TextureReference::Get() const {
    return mTexture.load();
}

}  // namespace Kavra::Devices
