#include "load/OpenInput.h"
#include "load/RowFormats.h"
#include "load/TextureFiles.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

// --- JPEG (ITU-T T.81, B.1) ------------------------------------------------------------------------------------------

void AppendSegment(Bytes& file, unsigned char code, const Bytes& body) {
    const std::size_t length = body.size() + 2;
    file.insert(file.end(), {0xFF, code, static_cast<unsigned char>(length >> 8), static_cast<unsigned char>(length)});
    file.insert(file.end(), body.begin(), body.end());
}

/// The segments of a JPEG up to its first scan: a table, a frame of some components, a scan of some.
Bytes Jpeg(unsigned char frame, unsigned char components, unsigned char scanned) {
    Bytes file = {0xFF, 0xD8};
    AppendSegment(file, 0xDB, Bytes(65, 1));
    file.push_back(0xFF);  // fill
    Bytes body = {8, 0, 16, 0, 16, components};
    for (unsigned char i = 1; i <= components; ++i)
        body.insert(body.end(), {i, 0x11, 0});
    AppendSegment(file, frame, body);
    AppendSegment(file, 0xC4, Bytes(20, 0));
    body = {scanned};
    for (unsigned char i = 1; i <= scanned; ++i)
        body.insert(body.end(), {i, 0});
    body.insert(body.end(), {0, 63, 0});
    AppendSegment(file, 0xDA, body);
    return file;
}

bool IsOfOneScan(const Bytes& bytes) {
    Common::ByteSource file{bytes};
    return IsJpegOfOneScan(file);
}

TEST(JpegOfOneScan, IsSequentialWithAllComponentsAtOnce) {
    EXPECT_TRUE(IsOfOneScan(Jpeg(0xC0, 3, 3)));
    EXPECT_TRUE(IsOfOneScan(Jpeg(0xC1, 1, 1)));
    EXPECT_TRUE(IsOfOneScan(Jpeg(0xC9, 4, 4)));
    EXPECT_FALSE(IsOfOneScan(Jpeg(0xC0, 3, 1))) << "one component after the other";
    EXPECT_FALSE(IsOfOneScan(Jpeg(0xC2, 3, 3))) << "progressive";
    EXPECT_FALSE(IsOfOneScan(Jpeg(0xC3, 3, 3))) << "lossless";
    EXPECT_FALSE(IsOfOneScan(Jpeg(0xC5, 3, 3))) << "hierarchical";
}

TEST(JpegOfOneScan, IsNoneThatEndsBeforeItsScan) {
    const Bytes whole = Jpeg(0xC0, 3, 3);
    for (std::size_t size = 0; size + 10 <= whole.size(); ++size)
        EXPECT_FALSE(IsOfOneScan(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)))) << size;
    Bytes fill(100'000, 0xFF);
    fill[1] = 0xD8;
    EXPECT_FALSE(IsOfOneScan(fill));
    Bytes twoFrames = {0xFF, 0xD8};
    AppendSegment(twoFrames, 0xC0, {8, 0, 16, 0, 16, 1, 1, 0x11, 0});
    AppendSegment(twoFrames, 0xC0, {8, 0, 16, 0, 16, 1, 1, 0x11, 0});
    AppendSegment(twoFrames, 0xDA, {1, 1, 0, 0, 63, 0});
    EXPECT_FALSE(IsOfOneScan(twoFrames));
}

// --- All formats -----------------------------------------------------------------------------------------------------

class RowFormats : public testing::Test {
protected:
    bool Gives(const std::filesystem::path& path) {
        auto file = OpenFile(Wide(path));
        const auto input = OpenInput(Wide(path), *file);
        return GivesRows(*input, input->spec(), *file);
    }
    bool Gives(const std::string& name, const ImageSpec& spec) {
        return Gives(
            WritePicture(folder / name, spec, Bytes(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels))));
    }
    TemporaryFolder folder;
};

TEST_F(RowFormats, AreThoseThatTheLibraryDecodesByRows) {
    const ImageSpec rgb(8, 8, 3, OIIO::TypeUInt8);
    for (const char* name : {"a.png", "a.jpg", "a.tif", "a.exr", "a.bmp", "a.hdr", "a.dpx", "a.sgi"})
        EXPECT_TRUE(Gives(name, rgb)) << name;
    for (const char* name : {"a.tga", "a.webp", "a.gif", "a.ppm"})
        EXPECT_FALSE(Gives(name, rgb)) << name;
}

TEST_F(RowFormats, AreNotThoseOfWhichTheLibraryTakesAllRowsAtOnce) {
    ImageSpec progressive(16, 16, 3, OIIO::TypeUInt8);
    progressive.attribute("jpeg:progressive", 1);
    EXPECT_FALSE(Gives("progressive.jpg", progressive));

    PngFile png;
    png.rows = {0, 1, 2, 3};
    Bytes bytes = png.Bytes();
    const auto input = OpenInput(Wide(folder.Write("plain.png", bytes)));
    bytes[28] = 1;  // IHDR: signature, length, type, width, height, four bytes, interlace method
    Common::ByteSource interlaced{bytes};
    EXPECT_FALSE(GivesRows(*input, input->spec(), interlaced));
}

TEST_F(RowFormats, AreNoTiffsThatLibtiffConverts) {
    const ImageSpec rgb(8, 8, 3, OIIO::TypeUInt8);
    const auto path = WritePicture(folder / "a.tif", rgb, Bytes(8 * 8 * 3));
    auto file = OpenFile(Wide(path));
    const auto input = OpenInput(Wide(path), *file);
    for (const auto& [name, value] : {std::pair("tiff:Compression", 7), {"tiff:PhotometricInterpretation", 6}}) {
        ImageSpec spec = input->spec();
        spec.attribute(name, value);
        EXPECT_FALSE(GivesRows(*input, spec, *file)) << name;
    }
}

}  // namespace
}  // namespace Kavra::Tests
