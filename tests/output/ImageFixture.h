/// Making image objects through the handler, and looking at their pixels.
#pragma once

#include "common/HostObject.h"
#include "output/RecordingPictures.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/oiio/OIIOImage.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <vector>

namespace Kavra::Tests {

struct ReferenceReleaser {
    void operator()(Devices::IImage* image) const { image->ReleaseRef(); }
};
/// An image that is held by one reference.
using Image = std::unique_ptr<Devices::IImage, ReferenceReleaser>;

inline Image Hold(Devices::IImage* image) {
    if (image != nullptr) image->AddRef();
    return Image(image);
}

/// What `LoadRect` gave: the description and a copy of the block.
struct Rectangle {
    Devices::ImageDescription desc;
    std::vector<unsigned char> bytes;

    template <class T>
    std::vector<T> As() const {
        std::vector<T> elements(bytes.size() / sizeof(T));
        std::memcpy(elements.data(), bytes.data(), elements.size() * sizeof(T));
        return elements;
    }
};

struct Images : testing::Test {
    using EFormat = Devices::EFormat;
    using Size = vec2<int>;

    Image Blank(int width, int height, EFormat format) { return Hold(Host().CreateImage(width, height, format)); }

    /// An image with these elements, by way of a target.
    template <class T>
    Image Filled(int width, int height, EFormat format, const std::vector<T>& elements) {
        RecordingTarget target(width, height, format);
        target.Set(elements);
        return Hold(Host().CreateImage(&target));
    }
    /// One byte a pixel, counting up from `first`.
    Image Counting(int width, int height, unsigned char first = 1) {
        std::vector<unsigned char> bytes(static_cast<std::size_t>(width * height));
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(first + i);
        return Filled(width, height, Devices::kL8, bytes);
    }

    static std::optional<Rectangle> Load(const Image& image, Size origin, Size size, Size outSize, EFormat format,
                                         Devices::EDataOrientation orientation = Devices::kTopLeft) {
        Rectangle rectangle;
        const Common::HostObject<Devices::IMemoryWrapper<void>> block(
            image->LoadRect(rectangle.desc, origin, size, outSize, format, orientation));
        if (!block) return std::nullopt;
        const auto* first = static_cast<const unsigned char*>(block->mData);
        rectangle.bytes.assign(first, first + rectangle.desc.dataSize);
        return rectangle;
    }
    /// All pixels of an image in its own format; empty when it has none.
    static std::vector<unsigned char> Pixels(const Image& image) {
        const Size size{image->Width(), image->Height()};
        const auto rectangle = Load(image, {0, 0}, size, size, image->Format());
        return rectangle ? rectangle->bytes : std::vector<unsigned char>();
    }

    Devices::IImageHandler& Host() { return handler; }

    Devices::OIIOImageHandler handler;
    MessageRecorder messages;
};

}  // namespace Kavra::Tests
