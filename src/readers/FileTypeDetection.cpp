#include "readers/FileTypeDetection.h"

#include "common/ByteSource.h"
#include "readers/ImageFileType.h"
#include "readers/cals/CalsReader.h"
#include "readers/flic/FlicReader.h"
#include "readers/pcx/PcxHeader.h"
#include "readers/pict/PictProbe.h"
#include "readers/rlc/RlcReader.h"
#include "readers/spot/BandProbe.h"

#include <array>
#include <cwctype>
#include <string>
#include <string_view>
#include <unordered_set>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::LittleAt;
using Common::Result;

namespace {

/// Reads into zeros, so that a file may be shorter than the number asked for.
std::uint32_t FirstNumber(ByteSource& source) {
    std::array<unsigned char, 4> bytes{};
    if (source.Seek(0)) (void)source.ReadSome(bytes);
    return LittleAt<std::uint32_t, 0>(bytes);
}

bool IsDds(ByteSource& source) {
    return FirstNumber(source) == 0x20534444;  // "DDS "
}

bool IsOpenExr(ByteSource& source) {
    return FirstNumber(source) == 20000630;
}

bool IsPcx(ByteSource& source) {
    return ReadPcxHeader(source).has_value();
}

struct ContentProbe {
    ImageFileType type;
    bool (*accepts)(ByteSource& source);
};

/// The first that accepts a file decides, so the order is as much a part of the answer as the probes are.
constexpr ContentProbe kContentProbes[] = {
    {DDS, IsDds}, {OpenEXR, IsOpenExr}, {PCX, IsPcx}, {CALS, IsCals}, {FLIC, IsFlic}, {PICT, IsPict}, {RLC, IsRlc},
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

int DetectImageFileType(const KString& path) {
    if (const int common = IsCommonImageExtension(path); common > 0) return common;
    Result<ByteSource> source = ByteSource::Open(path);
    if (!source) return None;
    for (const ContentProbe& probe : kContentProbes) {
        if (probe.accepts(*source)) return probe.type;
    }
    return IsBandRaster(path) ? Spot : Other;
}

}  // namespace Kavra::Devices
