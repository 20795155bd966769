#include "common/Boundary.h"
#include "common/KnownFields.h"
#include "common/PathReasons.h"
#include "frame/host/devices/TextureLevels.h"
#include "frame/host/devices/TextureShapes.h"

#include <kavra/objects/OS.h>

#include <cstring>
#include <format>
#include <new>
#include <string_view>
#include <system_error>
#include <utility>

namespace Kavra::Devices {

namespace {

constexpr const char* kNoMemory = "out of memory";  // so short that no memory is taken for a copy

/// The kind of what the parsers of both formats say in words alone.
EFailureKind KindOf(std::string_view reason, EFailureKind otherwise) {
    const auto speaksOf = [&](std::string_view words) { return reason.find(words) != std::string_view::npos; };
    if (speaksOf("ends within") || speaksOf("ends before") || speaksOf("too short")) return kFailureEndsEarly;
    if (speaksOf("not supported")) return kFailureUnsupported;
    if (speaksOf("neither a DDS nor")) return kFailureNotAnImage;
    return speaksOf("the limits") ? kFailureTooLarge : otherwise;
}

TextureShape ShapeOf(const Dds::StoredTexture& texture) {
    TextureShape shape;
    shape.format = texture.layout.format;
    shape.isSrgb = texture.isSrgb;
    shape.alpha = static_cast<ETextureAlpha>(texture.alpha);
    shape.type = texture.shape.type;
    shape.width = texture.shape.size.width;
    shape.height = texture.shape.size.height;
    shape.depth = texture.shape.size.depth;
    shape.levels = texture.shape.levels;
    shape.elements = texture.elements;
    return shape;
}

}  // namespace

struct TextureFileReader::State {
    std::unique_ptr<TextureLevels> levels;
    KnownTexture texture;
    std::string reason;

    void Close() {
        levels.reset();
        texture = {};
    }
    bool Refuse(std::string why, EFailureKind kind = kFailureDamaged) {
        Common::Say(KindOf(why, kind), std::string_view(why));
        reason = std::move(why);
        return false;
    }
    bool Open(const KString& path);
    bool ReadLevel(int element, int face, int level, unsigned char* out);
    bool ReadAll(unsigned char* out);

    /// What `body` answers; no exception leaves.
    template <class Body>
    bool Try(const Body& body) noexcept {
        reason.clear();
        return Common::AsOperation(false, [&] {
            try {
                return body();
            } catch (const Common::Cancelled&) {
                reason.assign("stopped");
                throw;
            } catch (...) {
                reason.assign(kNoMemory);
                throw;
            }
        });
    }
};

bool TextureFileReader::State::Open(const KString& path) {
    std::FILE* opened = nullptr;
    if (const int error = OS::wfopen(&opened, path, L"rb"); error != 0) {
        Common::SayOfPathToRead(path.ToChars());
        return Refuse("it cannot be opened: " + std::generic_category().message(error), kFailureCannotRead);
    }
    auto found = OpenTextureLevels(Common::FileHandle(opened));
    if (!found) return Refuse(std::move(found).error());
    const std::optional<KnownTexture> known = KnownTextureOf(ShapeOf((*found)->Texture()));
    if (!known) return Refuse("its shape is not supported");
    levels = *std::move(found);
    texture = *known;
    return true;
}

bool TextureFileReader::State::ReadLevel(int element, int face, int level, unsigned char* out) {
    if (!levels) return Refuse("no file is open", kFailureArguments);
    if (out == nullptr || !texture.Has(element, face, level))
        return Refuse(std::format("there is no level {} of face {} of element {}", level, face, element),
                      kFailureOutOfRange);
    if (!levels->Texture().shape.HasFace(face)) {
        std::memset(out, 0, texture.LevelBytes(level));
        return true;
    }
    if (levels->Read(element, face, level, out)) return true;
    return Refuse(std::format("level {} cannot be read", level));
}

/// Level by level, so that of those which are packed only one is kept.
bool TextureFileReader::State::ReadAll(unsigned char* out) {
    if (!levels || out == nullptr) return Refuse("no file is open", kFailureArguments);
    Common::ProgressMeter meter(kProgressReading, texture.Bytes());
    for (int level = 0; level < texture.shape.levels; ++level) {
        for (int element = 0; element < texture.shape.elements; ++element) {
            for (int face = 0; face < texture.stored.FaceCount(); ++face) {
                const std::uint64_t bytes = texture.LevelBytes(level);
                meter.Expect(bytes);
                if (!ReadLevel(element, face, level, out + texture.Offset(element, face, level))) return false;
                meter.Advance(bytes);
            }
        }
        levels->Forget(level);
    }
    return true;
}

TextureFileReader::TextureFileReader() : mState(new (std::nothrow) State) {}
TextureFileReader::~TextureFileReader() = default;

bool TextureFileReader::Open(const KString& path) {
    if (!mState) return false;
    mState->Close();
    return mState->Try([&] { return mState->Open(path); });
}

ETextureFileKind TextureFileReader::Kind() const {
    return mState && mState->levels ? mState->levels->Kind() : kTextureFileUnknown;
}

void TextureFileReader::GetShape(TextureShape& shape) const {
    Common::CopyKnownFields(mState ? mState->texture.shape : TextureShape(), shape);
}

bool TextureFileReader::HasFace(int face) const {
    return mState && mState->levels && face >= 0 && face < kCubeFaces && mState->levels->Texture().shape.HasFace(face);
}

bool TextureFileReader::IsAsStored() const {
    return mState && mState->levels && mState->levels->Texture().layout.widen == nullptr &&
           !mState->levels->IsExchanged();
}

bool TextureFileReader::IsBottomUp() const {
    return mState && mState->levels && mState->levels->IsBottomUp();
}

bool TextureFileReader::ReadLevel(int element, int face, int level, void* out) {
    return mState &&
           mState->Try([&] { return mState->ReadLevel(element, face, level, static_cast<unsigned char*>(out)); });
}

bool TextureFileReader::ReadAll(void* out) {
    return mState && mState->Try([&] { return mState->ReadAll(static_cast<unsigned char*>(out)); });
}

const char* TextureFileReader::Reason() const {
    return mState ? mState->reason.c_str() : kNoMemory;
}

}  // namespace Kavra::Devices
