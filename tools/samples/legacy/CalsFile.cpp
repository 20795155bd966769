#include "legacy/CalsFile.h"

#include "legacy/CcittEncoder.h"

#include <array>
#include <format>

namespace Kavra::Legacy {

ByteBuilder CalsHeaderBytes(const CalsHeader& header) {
    constexpr std::size_t kHeaderBytes = 2048;
    constexpr std::size_t kRecordBytes = 128;
    const std::array<std::string, 11> records = {
        "srcdocid: NONE",
        "dstdocid: NONE",
        "txtfilid: NONE",
        "figid: NONE",
        "srcgph: NONE",
        "doccls: NONE",
        "rtype: 1",
        "rorient: " + header.orientation,
        "rpelcnt: " + header.counts,
        "rdensty: " + header.density,
        "notes: NONE",
    };
    ByteBuilder file;
    file.Fill(kHeaderBytes, ' ');
    for (std::size_t i = 0; i < records.size(); ++i)
        file.At(i * kRecordBytes).Text(records[i]);
    return file.At(kHeaderBytes);
}

ByteBuilder CalsFile(const Bitmap& image, CalsHeader header) {
    if (header.counts.empty()) header.counts = std::format("{:06},{:06}", image.width, image.height);
    return CalsHeaderBytes(header).Append(EncodeGroup4(image));
}

}  // namespace Kavra::Legacy
