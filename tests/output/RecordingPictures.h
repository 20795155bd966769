/// Targets, textures and a handler that write down how they are used.
#pragma once

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/ASimpleTexture.h>
#include <kavra/devices/ATarget.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

namespace Kavra::Tests {

/// Everything that happened, in order.
using Calls = std::vector<std::string>;

/// What a target and a texture have in common. Unless changed, they can be mapped, are packed and hold zeros.
struct RecordedPicture {
    RecordedPicture(int width, int height, Devices::EFormat format)
        : width(width),
          height(height),
          format(format),
          pitch(width * Utilities::AFormatConvertor::BytesPerPixel(format)),
          bytes(width > 0 && height > 0 ? static_cast<std::size_t>(pitch) * static_cast<std::size_t>(height) : 1) {}

    template <class T>
    void Set(const std::vector<T>& elements) {
        bytes.resize(elements.size() * sizeof(T));
        std::memcpy(bytes.data(), elements.data(), bytes.size());
    }

    int width, height;
    Devices::EFormat format;
    int pitch;
    std::vector<unsigned char> bytes;
    bool hasMemory = true, canBeMapped = true;
    std::string throwsIn;  ///< the call that throws
    Calls calls;

    void Note(const std::string& call) {
        calls.push_back(call);
        if (call == throwsIn) throw std::runtime_error(call);
    }
};

class RecordingMemory final : public Devices::IMappedMemory {
public:
    explicit RecordingMemory(RecordedPicture& picture) : mPicture(picture) {}

    void* Map(int mode, int& pitch) override {
        mPicture.Note("Map " + std::to_string(mode));
        if (!mPicture.canBeMapped) return nullptr;
        pitch = mPicture.pitch;
        return mPicture.bytes.data();
    }
    void Unmap() override { mPicture.Note("Unmap"); }
    void Release() override { mPicture.Note("Release"); }

private:
    RecordedPicture& mPicture;
};

class RecordingTarget final : public RecordedPicture, public Devices::ATarget {
public:
    using RecordedPicture::RecordedPicture;

    int Width() const override { return width; }
    int Height() const override { return height; }
    Devices::EFormat Format() const override { return format; }
    Devices::IMappedMemory* MemoryWrapper(int index) override {
        Note("MemoryWrapper " + std::to_string(index));
        return hasMemory ? &mMemory : nullptr;
    }

private:
    RecordingMemory mMemory{*this};
};

class RecordingTexture final : public RecordedPicture, public Devices::ASimpleTexture {
public:
    using RecordedPicture::RecordedPicture;

    int Width() const override { return width; }
    int Height() const override { return height; }
    Devices::EFormat Format() const override { return format; }
    Devices::IMappedMemory* MemoryWrapper(int index) override {
        Note("MemoryWrapper " + std::to_string(index));
        return hasMemory ? &mMemory : nullptr;
    }
    bool Save(const Devices::KString&) override {
        Note("Save");
        return saves;
    }
    void AddRef() override {
        ++references;
        Note("AddRef");
    }
    void ReleaseRef() override {
        --references;
        Note("ReleaseRef");
    }

    int references = 0;
    bool saves = true;

private:
    RecordingMemory mMemory{*this};
};

/// The module's handler, but for slot 5: it keeps what it is to write.
class RecordingHandler final : public Devices::OIIOImageHandler {
public:
    using OIIOImageHandler::SaveTexture;

    /// Notes go to the list of the picture, so that the order of all calls shows.
    explicit RecordingHandler(Calls& calls) : mCalls(calls) {}

    bool SaveTexture(const Devices::KString& path, const Devices::ImageDescription& desc, const void* data) override {
        mCalls.push_back("SaveTexture");
        saved.path = path.ToChars();
        saved.desc = desc;
        saved.data = data;
        if (data != nullptr && desc.width > 0 && desc.height > 0) {
            // As far as a saver may read: no gap after the last row, and nothing beyond a short pitch.
            const auto* first = static_cast<const unsigned char*>(data);
            const std::int64_t rowBytes =
                std::int64_t{Utilities::AFormatConvertor::BytesPerPixel(desc.format)} * desc.width;
            const std::int64_t pitch = std::max(desc.rowPitch, 0);
            saved.bytes.assign(first, first + pitch * (desc.height - 1) + std::min(pitch, rowBytes));
        }
        if (throws) throw std::runtime_error("SaveTexture");
        return saves;
    }

    struct {
        std::wstring path;
        Devices::ImageDescription desc;
        const void* data = nullptr;
        std::vector<unsigned char> bytes;
    } saved;
    bool saves = true, throws = false;

private:
    Calls& mCalls;
};

}  // namespace Kavra::Tests
