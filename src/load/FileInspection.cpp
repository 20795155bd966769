// Describing a file in full: DDS files by their header, legacy ones by their readers, all others by OpenImageIO, and what
// it refuses by the host's OpenEXR reader.

#include "load/FileInspection.h"

#include "common/ByteOrder.h"
#include "common/HostExtras.h"
#include "common/Reasons.h"
#include "load/DdsInspection.h"
#include "load/FormatChannels.h"
#include "load/HostReaders.h"
#include "load/LibraryInspection.h"
#include "load/OpenInput.h"
#include "readers/FileTypeDetection.h"

#include <kavra/devices/EXRHandler.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <optional>
#include <utility>

namespace Kavra::Devices {

namespace {

using Owned = std::unique_ptr<InspectedFile>;

Owned NewFile(std::string_view fileType) {
    Owned file(new InspectedFile(fileType));
    if (!file) throw std::bad_alloc();
    return file;
}

Owned InspectByLibrary(OIIO::ImageInput& input) {
    Owned file = NewFile(input.format_name());
    AddLibraryParts(*file, input);
    return file;
}

Owned InspectDds(const KString& path, Common::ByteSource& source, ELegacyReading reading) {
    Owned file = NewFile("dds");
    return AddDdsPart(*file, path, source, reading) ? std::move(file) : nullptr;
}

void SetSize(PartFacts& facts, int width, int height) {
    FilePart& part = facts.part;
    facts.levels = {{width, height, 1}};
    part.textureType = kTexture2D;
    part.displayWidth = width;
    part.displayHeight = height;
}

// --- Legacy files ----------------------------------------------------------------------------------------------------

std::string_view LegacyName(ImageFileType type) {
    constexpr std::array<std::pair<ImageFileType, std::string_view>, 6> kNames = {
        {{CALS, "CALS"}, {FLIC, "FLIC"}, {PCX, "PCX"}, {PICT, "PICT"}, {RLC, "RLC"}, {Spot, "Spot"}}};
    const auto found = std::ranges::find(kNames, type, &std::pair<ImageFileType, std::string_view>::first);
    return found == kNames.end() ? "" : found->second;
}

/// How long each frame of an animation is shown: in the older kind seventieths of a second, else thousandths.
double FlicSeconds(Common::ByteSource source) {
    constexpr std::uint16_t kOlder = 0xAF11;
    const auto start = source.BytesAt<20>(0);
    if (!start) return 0;
    if (Common::LittleAt<std::uint16_t, 4>(*start) == kOlder) return Common::LittleAt<std::uint16_t, 16>(*start) / 70.0;
    return Common::LittleAt<std::uint32_t, 16>(*start) / 1000.0;
}

/// Loads say nothing of an alpha, whatever such a file holds.
Owned InspectLegacy(DetectedFile& file, ELegacyReading reading) {
    const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(file.type, reading));
    if (!reader) throw std::bad_alloc();
    const double seconds = file.type == FLIC ? FlicSeconds(file.files->source.Again()) : 0;
    if (const auto opened = reader->Open(*std::exchange(file.files, std::nullopt)); !opened) {
        Common::Say(opened.error());
        return nullptr;
    }
    Owned inspected = NewFile(LegacyName(file.type));
    PartFacts facts;
    SetChannels(facts, Common::FactsOf(reader->GetFormat()));
    if (facts.channels.size() == 4) facts.channels.pop_back();
    facts.part.orientation = reader->GetOrientation();
    facts.part.alpha = kAlphaNone;
    facts.part.seconds = seconds;
    const auto frames = static_cast<std::size_t>(std::max(reader->GetFrameCount(), 1));
    for (std::size_t frame = 0; frame < std::min(frames, InspectedFile::kMaxParts); ++frame) {
        if (!reader->SelectFrame(static_cast<int>(frame))) break;
        SetSize(facts, reader->GetWidth(), reader->GetHeight());
        inspected->Add(facts);
    }
    return inspected;
}

bool IsLegacy(const DetectedFile& file) {
    return !LegacyName(file.type).empty() && file.files;
}

// --- What the library refuses ----------------------------------------------------------------------------------------

/// The reader knows the picture's size only with its pixels.
Owned InspectExr(const KString& path, const DetectedFile& file) {
    EXRHandler exr(true);
    if (!HostPrefersExr(path, file.start) || !ReadHostExr(exr, path)) return nullptr;
    Owned inspected = NewFile("openexr");
    PartFacts facts;
    SetChannels(facts, Common::FactsOf(exr.supportsAlpha() ? kR32G32B32A32F : kR32G32B32F));
    SetSize(facts, exr.width(), exr.height());
    facts.part.alpha = exr.supportsAlpha() ? kAlphaPremultiplied : kAlphaNone;
    facts.part.bitsPerSample = 0;
    inspected->Add(facts);
    return inspected;
}

}  // namespace

IFileInspection* InspectFile(const KString& path) {
    const ELegacyReading reading = Common::HostLoadPreferences().legacy;
    DetectedFile file = DetectFile(path, reading);
    if (file.type == None) return nullptr;
    if (IsLegacy(file)) {
        if (Owned inspected = InspectLegacy(file, reading)) return inspected.release();
    }
    std::optional<Common::ByteSource> own = file.files ? std::nullopt : OpenFile(path);
    Common::ByteSource* const source = file.files ? &file.files->source : own ? &*own : nullptr;
    if (source == nullptr) return nullptr;
    if (file.type == DDS) {
        if (Owned inspected = InspectDds(path, *source, reading)) return inspected.release();
    }
    if (const auto input = OpenInput(path, *source)) return InspectByLibrary(*input).release();
    return InspectExr(path, file).release();
}

}  // namespace Kavra::Devices
