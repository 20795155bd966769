#include "load/FileSignatures.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using namespace std::string_literals;

bool MayBe(std::string_view format, const std::string& start) {
    std::vector<unsigned char> bytes(start.begin(), start.end());
    bytes.resize(kSignatureBytes);
    return MayBeOfFormat(format, bytes);
}

TEST(FileSignatures, AFormatsFirstBytesDecide) {
    EXPECT_TRUE(MayBe("png", "\x89PNG\r\n\x1A\n"));
    EXPECT_TRUE(MayBe("tiff", "II\x2A\0"s));
    EXPECT_TRUE(MayBe("tiff", "MM\0\x2B"s));
    EXPECT_TRUE(MayBe("jpeg2000", "\0\0\0\x0CjP  \r\n\x87\n"s));
    EXPECT_TRUE(MayBe("dicom", std::string(128, '\0') + "DICM\x02\0"s));
    for (const char* start : {"P1\n", "P6 ", "P7\n", "PF\n", "Pf\n"})
        EXPECT_TRUE(MayBe("pnm", start)) << start;
    EXPECT_FALSE(MayBe("pnm", "P8\n"));
    EXPECT_FALSE(MayBe("png", "II\x2A\0"s));
    for (const char* format : {"dds", "dicom", "dpx", "fits", "gif", "iff", "jpeg", "jpeg2000", "openexr", "png", "pnm",
                               "psd", "sgi", "softimage", "tiff"}) {
        EXPECT_FALSE(MayBe(format, "")) << format << " is no zeros";
        EXPECT_FALSE(MayBeOfFormat(format, {})) << format;
    }
}

TEST(FileSignatures, FormatsWithoutOneMayBeAnything) {
    for (const char* format : {"targa", "rla", "raw", "ffmpeg", "webp", "of a later library"}) {
        EXPECT_TRUE(MayBe(format, "")) << format;
        EXPECT_TRUE(MayBeOfFormat(format, {})) << format;
    }
}

TEST(FileSignatures, BehindTheMarkOfADicomFileStandsItsFirstElement) {
    const std::string preamble = std::string(128, '\0') + "DICM";
    EXPECT_TRUE(MayBe("dicom", preamble + "\x02\0"s));
    EXPECT_TRUE(MayBe("dicom", preamble + "\0\x08"s));
    EXPECT_FALSE(MayBe("dicom", preamble + "\0\0"s)) << "the reader takes zeros for one empty element after another";
    EXPECT_FALSE(MayBe("dicom", preamble));
}

TEST(FileSignatures, ADicomFileMayStartWithItsFirstElement) {
    EXPECT_TRUE(MayBe("dicom", "\x08\x00\x05\x00"s));
    EXPECT_TRUE(MayBe("dicom", "\x00\x08\x00\x05"s));
    EXPECT_FALSE(MayBe("dicom", "\x00\x00\x01\x00"s));
    EXPECT_FALSE(MayBe("dicom", "\x08\x08\x01\x00"s));
    EXPECT_FALSE(MayBe("dicom", "\x09\x00\x01\x00"s));
}

}  // namespace
}  // namespace Kavra::Tests
