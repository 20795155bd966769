// Telling files apart by content: any bytes, as a file and as a Spot raster's data with a header beside it.

#include "FuzzFile.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"

#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view kHeader = "NCOLS 2\nNROWS 2\n";

std::span<const unsigned char> Bytes(std::string_view text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Kavra;
    const Fuzz::FuzzFile file({data, size}, ".dat");
    const int type = Devices::DetectImageFileType(file.Name());
    if (type < Devices::CALS || type > Devices::Other || type == Devices::Spot) std::abort();

    // The common reading knows more files, and none otherwise.
    const int common = Devices::DetectFile(file.Name(), Devices::kLegacyCommon).type;
    if (type != Devices::Other && common != type) std::abort();

    // A side file matters to nothing but what would be unknown without it.
    const Fuzz::FuzzFile header(Bytes(kHeader), ".hdr");
    const Fuzz::FuzzFile raster({data, size}, ".bil");
    const int expected = type == Devices::Other && size >= 4 ? Devices::Spot : type;
    if (Devices::DetectImageFileType(raster.Name()) != expected) std::abort();
    return 0;
}
