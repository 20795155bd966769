// What is said of files that end before all of their picture.

#include "module/Reasons.h"
#include "support/Program.h"

#include <kavra/devices/DDSReader.h>
#include <kavra/devices/LoadPreferences.h>

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <optional>
#include <span>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

using Bytes = std::vector<unsigned char>;

/// 40 x 60 pixels of three channels without a pattern.
constexpr int kWidth = 40, kHeight = 60, kChannels = 3;

Bytes Noise() {
    Bytes pixels(std::size_t{kWidth} * kHeight * kChannels);
    unsigned state = 5;
    for (unsigned char& byte : pixels) {
        state = state * 1103515245 + 12345;
        byte = static_cast<unsigned char>(state >> 16);
    }
    return pixels;
}

class CutFiles : public Reasons {
protected:
    /// The bytes of a file of noise as the library writes it.
    Bytes Written(const std::string& name, const OIIO::ImageSpec& spec) {
        const std::string path = (folder / name).string();
        const auto output = OIIO::ImageOutput::create(path);
        const Bytes pixels = Noise();
        EXPECT_TRUE(output && output->open(path, spec) && output->write_image(OIIO::TypeUInt8, pixels.data()) &&
                    output->close());
        return ReadAll(path);
    }
    Bytes Written(const std::string& name) { return Written(name, {kWidth, kHeight, kChannels, OIIO::TypeUInt8}); }

    Reason AfterLoadOf(std::string_view name, std::span<const unsigned char> bytes) {
        return AfterLoad(folder.Write(name, bytes));
    }

    /// Cuts a file that loads in part: the rows that are said to be good are those of the whole file, the next is not.
    void ExpectGoodRowsAreThoseOfTheWhole(const std::filesystem::path& path, std::size_t bytes,
                                          bool nextIsOther = true) {
        const auto whole = LoadFile(handler, path);
        ASSERT_TRUE(whole) << path;
        Bytes file = ReadAll(path);
        file.resize(bytes);
        const auto cut = LoadFile(handler, folder.Write("cut" + path.extension().string(), file));
        const Reason reason = ReasonNow();
        ASSERT_TRUE(cut) << path;
        ASSERT_EQ(cut->desc.height, whole->desc.height) << path;
        EXPECT_EQ(reason.kind, kFailureEndsEarly) << path << ": " << reason.text;
        EXPECT_EQ(reason.position, static_cast<std::int64_t>(bytes)) << path;
        EXPECT_EQ(reason.rows, whole->desc.height) << path;
        EXPECT_GT(reason.goodRows, 0) << path;
        EXPECT_LT(reason.goodRows, reason.rows) << path;
        const auto pitch = static_cast<std::ptrdiff_t>(whole->desc.rowPitch);
        const std::ptrdiff_t good = std::max<std::int64_t>(reason.goodRows, 0) * pitch;
        EXPECT_TRUE(std::equal(whole->bytes.begin(), whole->bytes.begin() + good, cut->bytes.begin())) << path;
        if (!nextIsOther) return;
        EXPECT_FALSE(
            std::equal(whole->bytes.begin() + good, whole->bytes.begin() + good + pitch, cut->bytes.begin() + good))
            << path << ": a row more is there";
    }
};

std::size_t Part(const Bytes& file, int percent) {
    return file.size() * static_cast<std::size_t>(percent) / 100;
}

}  // namespace

TEST_F(CutFiles, AJpegThatLoadsInPartSaysWhichRowsAreGood) {
    const auto photo = Sample("photo.jpg");
    for (const int percent : {30, 60, 90})
        ExpectGoodRowsAreThoseOfTheWhole(photo, Part(ReadAll(photo), percent), false);
}

TEST_F(CutFiles, LegacyFilesThatLoadInPartSayWhichRowsAreGood) {
    for (const char* name : {"photo.pcx", "drawing.cal"})
        ExpectGoodRowsAreThoseOfTheWhole(Sample(name), Part(ReadAll(Sample(name)), 60), false);
}

TEST_F(CutFiles, TheSameGoesForTheirCommonReading) {
    LoadPreferences common;
    common.legacy = kLegacyCommon;
    const LoadPreferencesScope scope(common);
    for (const char* name : {"photo.pcx", "drawing.cal"})
        ExpectGoodRowsAreThoseOfTheWhole(Sample(name), Part(ReadAll(Sample(name)), 60), false);
}

/// A PPM has its rows one after the other behind its header: 23 of them and half a one.
TEST_F(CutFiles, APlainFileHasTheRowsThatItsLengthAllows) {
    Bytes file = Written("a.ppm");
    const std::size_t rowBytes = kWidth * kChannels, header = file.size() - rowBytes * kHeight;
    file.resize(header + 23 * rowBytes + rowBytes / 2);
    const Reason reason = AfterLoadOf("b.ppm", file);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_EQ(reason.goodRows, 23);
    EXPECT_EQ(reason.rows, kHeight);
    EXPECT_EQ(reason.position, static_cast<std::int64_t>(file.size()));
    EXPECT_EQ(reason.text, "ends early: 23 of 60 rows are there");
}

TEST_F(CutFiles, BmpAndTargaFilesHaveTheRowsThatTheirLengthAllows) {
    const std::size_t rowBytes = kWidth * kChannels;  // a multiple of four, as BMP wants it
    for (const auto& [name, header] : {std::pair("a.bmp", 54), std::pair("a.tga", 18)}) {
        Bytes file = Written(name);
        file.resize(static_cast<std::size_t>(header) + 23 * rowBytes + rowBytes / 2);
        const Reason reason = AfterLoadOf(name, file);
        EXPECT_FALSE(mLoaded) << name;
        EXPECT_EQ(reason.kind, kFailureEndsEarly) << name << ": " << reason.text;
        EXPECT_EQ(reason.goodRows, 23) << name;
        EXPECT_EQ(reason.rows, kHeight) << name;
    }
}

/// Eight rows a strip, stored as they are: three strips and a half.
TEST_F(CutFiles, ATiffHasTheRowsOfItsWholeStrips) {
    OIIO::ImageSpec spec(kWidth, kHeight, kChannels, OIIO::TypeUInt8);
    spec.attribute("compression", "lzw");
    spec.attribute("tiff:RowsPerStrip", 8);
    Bytes file = Written("a.tif", spec);
    const Reason whole = AfterLoadOf("whole.tif", file);
    EXPECT_EQ(whole.kind, kFailureNone);
    file.resize(file.size() / 2);
    const Reason reason = AfterLoadOf("b.tif", file);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_EQ(reason.goodRows % 8, 0);
    EXPECT_GT(reason.goodRows, 0);
    EXPECT_LE(reason.goodRows, kHeight / 2 + 8);
}

/// Blocks of 16 rows are packed together; noise takes as many bytes in each.
TEST_F(CutFiles, AnOpenExrFileHasTheRowsOfItsWholeBlocks) {
    OIIO::ImageSpec spec(kWidth, kHeight, kChannels, OIIO::TypeHalf);
    spec.attribute("compression", "zip");
    Bytes file = Written("a.exr", spec);
    file.resize(file.size() * 6 / 10);
    const Reason reason = AfterLoadOf("b.exr", file);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_EQ(reason.goodRows, 32);
    EXPECT_EQ(reason.rows, kHeight);
}

/// The PNG library reads 8 KiB at a time, so what is known to be good may be less than what is there.
TEST_F(CutFiles, APngSaysNoMoreRowsThanThereAre) {
    const Bytes photo = ReadAll(Sample("photo-16bit.png"));
    Bytes file = photo;
    file.resize(photo.size() * 7 / 10);
    const Reason reason = AfterLoadOf("b.png", file);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_GT(reason.goodRows, 0);
    EXPECT_LT(reason.goodRows, reason.rows);
}

TEST_F(CutFiles, FilesThatSayHowLongTheyAreAreKnownToEndEarly) {
    for (const char* name : {"a.gif", "a.webp", "a.dpx", "a.hdr", "a.rla", "a.iff"}) {
        Bytes file = Written(name);
        file.resize(file.size() * 6 / 10);
        const Reason reason = AfterLoadOf(name, file);
        EXPECT_FALSE(mLoaded) << name;
        EXPECT_EQ(reason.kind, kFailureEndsEarly) << name << ": " << reason.text;
        EXPECT_EQ(reason.position, static_cast<std::int64_t>(file.size())) << name;
    }
}

/// A DDS of 128 x 128 pixels of four bytes, behind 128 bytes of header.
TEST_F(CutFiles, ADdsHasTheRowsThatItsLengthAllows) {
    Bytes file = ReadAll(Sample("photo.dds"));
    ASSERT_EQ(file.size(), 65664U);
    file.resize(128 + 41 * 512 + 100);
    const Reason reason = AfterLoadOf("b.dds", file);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_EQ(reason.goodRows, 41);
    EXPECT_EQ(reason.rows, 128);
}

/// The faces of a cube count one after the other.
TEST_F(CutFiles, ACubeHasTheRowsOfTheFacesBeforeTheEnd) {
    Bytes file = ReadAll(Sample("cube.dds"));
    DDSReader reader;
    ASSERT_TRUE(reader.Load(Wide(Sample("cube.dds"))));
    const int side = reader.Width();
    const std::size_t rowBytes = (file.size() - 128) / 6 / static_cast<std::size_t>(side);
    file.resize(128 + rowBytes * static_cast<std::size_t>(2 * side + 5) + 1);
    const Reason reason = AfterLoadOf("b.dds", file);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_EQ(reason.goodRows, 2 * side + 5);
    EXPECT_EQ(reason.rows, 6 * side);
}

TEST_F(CutFiles, AFlicSaysThatItEndsEarly) {
    Bytes file = ReadAll(Sample("balloon.flc"));
    file.resize(file.size() / 2);
    const Reason reason = AfterLoadOf("b.flc", file);
    EXPECT_EQ(reason.kind, kFailureEndsEarly) << reason.text;
    EXPECT_EQ(reason.position, static_cast<std::int64_t>(file.size()));
    EXPECT_EQ(reason.goodRows, -1);
}

/// Bytes in the middle that are others, in a file that is as long as it says.
TEST_F(CutFiles, DamageIsNoEnd) {
    Bytes file = ReadAll(Sample("photo-16bit.png"));
    for (std::size_t i = file.size() / 2; i < file.size() / 2 + 64; ++i)
        file[i] ^= 0x5A;
    EXPECT_EQ(AfterLoadOf("b.png", file).kind, kFailureDamaged);
    EXPECT_FALSE(mLoaded);
    EXPECT_EQ(ReasonNow().text.find('\n'), std::string::npos);
}
