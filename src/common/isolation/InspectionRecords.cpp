#include "common/isolation/InspectionRecords.h"

#include "common/isolation/Fields.h"

#include <kavra/objects/OS.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace Kavra::Common {

using namespace Devices;

namespace {

constexpr std::uint32_t kMaxParts = 4096, kMaxTexts = 1024;
constexpr std::size_t kMaxTextBytes = std::size_t{64} << 10, kMaxProfileBytes = std::size_t{16} << 20;

/// The numbers of a part, one after the other; `field` reads or writes one.
template <class Part, class Field>
void ForEachNumber(Part& part, Field&& field) {
    field(part.faces);
    field(part.elements);
    field(part.bitsPerSample);
    field(part.gamma);
    field(part.tileWidth);
    field(part.tileHeight);
    field(part.tileDepth);
    field(part.dataX);
    field(part.dataY);
    field(part.displayX);
    field(part.displayY);
    field(part.displayWidth);
    field(part.displayHeight);
    field(part.xResolution);
    field(part.yResolution);
    field(part.seconds);
}

void WritePart(FieldWriter& out, const FilePart& part) {
    ForEachNumber(part, [&](const auto& number) { out.Add(number); });
    out.Add(static_cast<std::int32_t>(part.textureType));
    out.Add(static_cast<std::int32_t>(part.orientation));
    out.Add(static_cast<std::int32_t>(part.alpha));
    out.Add(static_cast<std::int32_t>(part.transfer));
    for (const char* const text : {part.name, part.colourSpace, part.compression})
        out.AddText(text);
    out.Add(static_cast<std::uint32_t>(part.levelCount));
    for (std::size_t i = 0; i < part.levelCount; ++i)
        out.Add(part.levels[i]);
    out.Add(static_cast<std::uint32_t>(part.channelCount));
    for (std::size_t i = 0; i < part.channelCount; ++i) {
        out.AddText(part.channels[i].name);
        out.AddText(part.channels[i].type);
    }
    out.Add(static_cast<std::uint32_t>(part.textCount));
    for (std::size_t i = 0; i < part.textCount; ++i) {
        out.AddText(part.texts[i].name);
        out.AddText(part.texts[i].value);
    }
    out.AddText({static_cast<const char*>(part.iccProfile), part.iccBytes});
}

/// Whatever bytes these are, as UTF-8 without a NUL.
std::string ValidText(const std::string& text) {
    constexpr wchar_t kReplacement = 0xFFFD, kSurrogates = 0xD800, kSurrogatesEnd = 0xDFFF;
    std::wstring wide = OS::FromUtf8(text.c_str());
    for (wchar_t& c : wide) {
        if (c >= kSurrogates && c <= kSurrogatesEnd) c = kReplacement;
    }
    return OS::ToUtf8(wide.c_str());
}

/// Holds what the parts point to.
class ReceivedInspection final : public IFileInspection {
public:
    void Delete() override { delete this; }
    const char* FileType() const override { return mFileType; }
    std::size_t PartCount() const override { return mParts.size(); }
    const FilePart& Part(std::size_t index) const override { return mParts[index].part; }

    bool Read(FieldReader& in) {
        mFileType = Keep(in.TakeText());
        const auto parts = in.Take<std::uint32_t>();
        if (parts < 1 || parts > kMaxParts) return false;
        for (std::uint32_t i = 0; i < parts; ++i) {
            if (!ReadPart(in, mParts.emplace_back())) return false;
        }
        return in.IsAtEnd();
    }

private:
    struct Stored {
        FilePart part{};
        std::vector<FileLevel> levels;
        std::vector<FileChannel> channels;
        std::vector<FileText> texts;
        std::string profile;
    };

    const char* Keep(const std::string& text) { return mStrings.emplace_back(ValidText(text)).c_str(); }

    static bool ReadEnums(FieldReader& in, FilePart& part) {
        const auto type = in.Take<std::int32_t>(), orientation = in.Take<std::int32_t>();
        const auto alpha = in.Take<std::int32_t>(), transfer = in.Take<std::int32_t>();
        const auto isWithin = [](std::int32_t value, std::int32_t last) { return value >= 0 && value <= last; };
        if (!isWithin(type, kTextureVolume) || !isWithin(orientation, kRightBottom)) return false;
        if (!isWithin(alpha, kAlphaPremultiplied) || !isWithin(transfer, kTransferGamma)) return false;
        part.textureType = static_cast<ETextureType>(type);
        part.orientation = static_cast<EDataOrientation>(orientation);
        part.alpha = static_cast<EAlphaKind>(alpha);
        part.transfer = static_cast<ETransferKind>(transfer);
        return true;
    }

    bool ReadPart(FieldReader& in, Stored& stored) {
        FilePart& part = stored.part;
        part.size = sizeof(FilePart);
        ForEachNumber(part, [&](auto& number) { number = in.Take<std::remove_reference_t<decltype(number)>>(); });
        if (!ReadEnums(in, part)) return false;
        part.name = Keep(in.TakeText());
        part.colourSpace = Keep(in.TakeText());
        part.compression = Keep(in.TakeText());
        return ReadLists(in, stored);
    }

    /// Counts are believed as far as the bytes go.
    bool ReadLists(FieldReader& in, Stored& stored) {
        const auto levels = in.Take<std::uint32_t>();
        for (std::uint32_t i = 0; i < levels && in.IsWhole(); ++i)
            stored.levels.push_back(in.Take<FileLevel>());
        const auto channels = in.Take<std::uint32_t>();
        for (std::uint32_t i = 0; i < channels && in.IsWhole(); ++i) {
            const char* const name = Keep(in.TakeText());
            stored.channels.push_back({name, Keep(in.TakeText())});
        }
        const auto texts = in.Take<std::uint32_t>();
        for (std::uint32_t i = 0; i < texts && in.IsWhole(); ++i) {
            const std::string name = in.TakeText(), value = in.TakeText();
            if (i >= kMaxTexts || value.size() > kMaxTextBytes) return false;
            const char* const kept = Keep(name);
            stored.texts.push_back({kept, Keep(value)});
        }
        stored.profile = in.TakeText();
        if (!in.IsWhole() || stored.levels.empty() || stored.profile.size() > kMaxProfileBytes) return false;
        Point(stored);
        return true;
    }

    static void Point(Stored& stored) {
        FilePart& part = stored.part;
        part.levels = stored.levels.data();
        part.levelCount = stored.levels.size();
        part.channels = stored.channels.data();
        part.channelCount = stored.channels.size();
        part.texts = stored.texts.data();
        part.textCount = stored.texts.size();
        part.iccProfile = stored.profile.empty() ? nullptr : stored.profile.data();
        part.iccBytes = stored.profile.size();
    }

    std::deque<std::string> mStrings;
    std::deque<Stored> mParts;
    const char* mFileType = "";
};

}  // namespace

std::vector<unsigned char> BytesOfInspection(const IFileInspection& inspection) {
    FieldWriter out;
    out.AddText(inspection.FileType());
    out.Add(static_cast<std::uint32_t>(inspection.PartCount()));
    for (std::size_t i = 0; i < inspection.PartCount(); ++i)
        WritePart(out, inspection.Part(i));
    return out.Bytes();
}

IFileInspection* ParseInspection(std::span<const unsigned char> bytes) {
    std::unique_ptr<ReceivedInspection> inspection(new ReceivedInspection);
    if (!inspection) throw std::bad_alloc();
    FieldReader in(bytes);
    return inspection->Read(in) ? inspection.release() : nullptr;
}

}  // namespace Kavra::Common
