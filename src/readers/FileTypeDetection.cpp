#include "readers/FileTypeDetection.h"

#include "common/ByteSource.h"
#include "common/PathReasons.h"
#include "readers/cals/CalsReader.h"
#include "readers/flic/FlicReader.h"
#include "readers/pcx/PcxReader.h"
#include "readers/pict/PictReader.h"
#include "readers/rlc/RlcReader.h"
#include "readers/spot/SpotCommonHeader.h"
#include "readers/spot/SpotReader.h"

#include <algorithm>
#include <array>
#include <cwctype>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::LittleAt;
using Common::Result;

// --- Telling files apart ---------------------------------------------------------------------------------------------

namespace {

using Start = std::array<unsigned char, 4>;

/// Reads into zeros, so that a file may be shorter than the number asked for.
Start ReadStart(ByteSource& source) {
    Start bytes{};
    if (source.Seek(0)) (void)source.ReadSome(bytes);
    return bytes;
}

bool IsDds(ByteSource& source) {
    return LittleAt<std::uint32_t, 0>(ReadStart(source)) == 0x20534444;  // "DDS "
}

bool IsOpenExr(ByteSource& source) {
    return LittleAt<std::uint32_t, 0>(ReadStart(source)) == 20000630;
}

struct ContentProbe {
    ImageFileType type;
    bool (*accepts)(ByteSource& source);
    bool isShown = true;
};

/// The first that accepts a file decides, so the order is as much a part of the answer as the probes are.
constexpr ContentProbe kContentProbes[] = {
    {DDS, IsDds}, {OpenEXR, IsOpenExr}, {PCX, IsPcx}, {CALS, IsCals}, {FLIC, IsFlic}, {PICT, IsPict}, {RLC, IsRlc},
};

/// Settles what a file is; leaves what it was where no probe accepts it.
void TakeType(ByteSource& source, std::span<const ContentProbe> probes, DetectedFile& file) {
    const auto accepts = [&](const ContentProbe& probe) { return probe.accepts(source); };
    const auto found = std::ranges::find_if(probes, accepts);
    if (found == probes.end()) return;
    file.type = found->type;
    file.isShown = found->isShown;
}

bool IsCommonCals(ByteSource& source) {
    const Result<CalsCommonHeader> header = ReadCalsCommonHeader(source);
    return header && header->rasterType == 1;
}

bool IsOtherCals(ByteSource& source) {
    return ReadCalsCommonHeader(source).has_value();
}

/// Files that only the common reading knows, asked when the contract's knows nothing of them.
constexpr ContentProbe kCommonProbes[] = {
    {PCX, IsCommonPcx},         {PCX, IsDcx},         {FLIC, IsOtherFlic, false}, {CALS, IsCommonCals},
    {CALS, IsOtherCals, false}, {PICT, IsCommonPict},
};

}  // namespace

int IsCommonImageExtension(const KString& path) {
    static const std::unordered_set<std::wstring_view> kCommon = {
        L".png", L".jpg",  L".jpeg", L".jp2",  L".jfif", L".tif", L".tiff", L".bmp", L".rle", L".hdr",
        L".tga", L".tpic", L".gif",  L".webp", L".pbm",  L".pgm", L".ppm",  L".ico", L".psd",
    };
    const std::wstring_view text = path.ToChars();
    const std::size_t dot = text.rfind(L'.');
    if (dot == std::wstring_view::npos) return -1;
    std::wstring extension(text.substr(dot));
    for (wchar_t& character : extension)
        character = static_cast<wchar_t>(std::towlower(static_cast<wint_t>(character)));
    return kCommon.contains(extension) ? Other : -1;
}

namespace {

/// A raster whose files these are, in the contract's reading.
bool TakeSpot(const KString& path, ByteSource& source, DetectedFile& file) {
    Result<PictureFiles> raster = OpenSpotFiles(path, &source);
    if (!raster || !IsSpot(*raster)) return false;
    file.type = Spot;
    file.files = *std::move(raster);
    return true;
}

/// The same in the common reading.
bool TakeSpotCommon(const KString& path, ByteSource& source, DetectedFile& file) {
    Result<PictureFiles> raster = OpenSpotCommonFiles(path, &source);
    const SpotFiles kind = raster ? AreSpotCommon(*raster) : SpotFiles::kOther;
    if (kind == SpotFiles::kOther) return false;
    file.type = Spot;
    file.isShown = kind == SpotFiles::kWhole;
    file.files = *std::move(raster);
    return true;
}

}  // namespace

DetectedFile DetectFile(const KString& path, ELegacyReading reading) {
    DetectedFile file;
    if (IsCommonImageExtension(path) > 0) {
        file.type = Other;
        return file;
    }
    Result<ByteSource> source = ByteSource::Open(path);
    if (!source) {
        Common::SayOfPathToRead(path.ToChars());
        return file;
    }
    file.start = ReadStart(*source);
    const bool isCommon = reading == kLegacyCommon;
    // Samples may look like anything: a name that says what they are and a header that describes them are known better.
    const bool isNamed = SpotNameOf(path.ToChars()) != SpotName::kOther;
    if (isCommon && isNamed && TakeSpotCommon(path, *source, file)) return file;
    file.type = Other;
    TakeType(*source, kContentProbes, file);
    if (file.type == Other) {
        if (isCommon ? TakeSpotCommon(path, *source, file) : TakeSpot(path, *source, file)) return file;
        if (isCommon) TakeType(*source, kCommonProbes, file);
    }
    file.files = PictureFiles{path.ToChars(), *std::move(source), std::nullopt};
    return file;
}

int DetectImageFileType(const KString& path) {
    return DetectFile(path).type;
}

// --- Making readers --------------------------------------------------------------------------------------------------

namespace {

/// A new reader, or null when there is no memory for it or for what it holds.
template <class Reader>
ImageReaderInterface* Make(ELegacyReading reading) {
    try {
        return new Reader(reading);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

struct ReaderEntry {
    int fileType;
    ImageReaderInterface* (*make)(ELegacyReading reading);
};

/// One line a reader: `{PCX, Make<PCXReader>},`.
constexpr ReaderEntry kReaders[] = {
    {CALS, Make<CALSReader>}, {FLIC, Make<FLICReader>}, {PCX, Make<PCXReader>},
    {PICT, Make<PictReader>}, {RLC, Make<RlcReader>},   {Spot, Make<SpotReader>},
};

}  // namespace

bool HasImageReader(int fileType) {
    return std::ranges::contains(kReaders, fileType, &ReaderEntry::fileType);
}

ImageReaderInterface* CreateImageReader(int fileType, ELegacyReading reading) {
    const auto* const found = std::ranges::find(kReaders, fileType, &ReaderEntry::fileType);
    return found == std::end(kReaders) ? nullptr : found->make(reading);
}

}  // namespace Kavra::Devices
