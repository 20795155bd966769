// What files say of their colours themselves: powers, premultiplied alpha, profiles.

#include "app/ColourFiles.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>

using namespace Kavra::Tests;

namespace {

/// The checksum of PNG chunks: ISO 3309, bit by bit.
std::uint32_t Checksum(const std::string& bytes) {
    std::uint32_t sum = 0xFFFFFFFF;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ ((sum & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~sum;
}

std::string BigEndian(std::uint32_t number) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(number >> shift);
    return bytes;
}

/// A PNG that says by which power its values are encoded, in 1/100,000.
Path WithGamma(const TemporaryFolder& folder, const Path& png, std::uint32_t gamma) {
    std::string bytes = TextOf(png);
    for (const std::string other : {"sRGB", "gAMA", "cHRM", "cICP", "iCCP"}) {
        const std::size_t at = bytes.find(other);
        if (at == std::string::npos) continue;
        const auto length = static_cast<std::size_t>(static_cast<unsigned char>(bytes[at - 1]));  // all are short
        bytes.erase(at - 4, length + 12);
    }
    const std::string chunk = "gAMA" + BigEndian(gamma);
    constexpr std::size_t kEndOfHeader = 33;
    bytes.insert(kEndOfHeader, BigEndian(4) + chunk + BigEndian(Checksum(chunk)));
    return folder.Write("gamma.png", bytes);
}

/// A TIFF of one pixel with a colour profile of these bytes.
Path WithProfile(const TemporaryFolder& folder, const std::string& profile) {
    const auto path = folder / "profile.tif";
    OIIO::ImageSpec spec(1, 1, 3, OIIO::TypeDesc::UINT8);
    spec.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, static_cast<int>(profile.size())),
                   profile.data());
    const auto output = OIIO::ImageOutput::create(path.string());
    const std::array<unsigned char, 3> pixel = {128, 128, 128};
    EXPECT_TRUE(output && output->open(path.string(), spec) &&
                output->write_image(OIIO::TypeDesc::UINT8, pixel.data()) && output->close());
    return path;
}

}  // namespace

TEST(Colour, ValuesOfAPowerAreDecodedByIt) {
    const TemporaryFolder folder;
    const auto in = WithGamma(folder, Pixels(folder, {{51, 128, 255, 255}}), 50000);
    ExpectDone({"convert", in, folder / "out.exr"});
    const std::vector<float> light = FloatsOf(folder / "out.exr");
    EXPECT_NEAR(light[0], 0.04, 1e-4);
    EXPECT_NEAR(light[2], 1, 1e-4);
    const Bytes shown = Converted(folder, in, "out.tga");
    EXPECT_EQ(shown[0], Shown(0.04));
    const auto usual = WithGamma(folder, folder / "pixels.png", 45455);
    EXPECT_EQ(Converted(folder, usual, "same.tga"), (Bytes{51, 128, 255, 255}));
}

TEST(Colour, PremultipliedTiffBecomesStraight) {
    const TemporaryFolder folder;
    const auto in = folder / "premultiplied.tif";
    OIIO::ImageSpec spec(1, 1, 4, OIIO::TypeDesc::UINT8);  // which the library writes as "associated"
    const auto output = OIIO::ImageOutput::create(in.string());
    const std::array<unsigned char, 4> pixel = {40, 20, 0, 51};
    ASSERT_TRUE(output && output->open(in.string(), spec) && output->write_image(OIIO::TypeDesc::UINT8, pixel.data()) &&
                output->close());
    EXPECT_EQ(Converted(folder, in, "out.png"), (Bytes{200, 100, 0, 51}));
    ExpectDone({"convert", in, folder / "out.exr"});
    EXPECT_NEAR(FloatsOf(folder / "out.exr")[0], LightOf(200) / 5, 1e-3);
}

TEST(Colour, AProfileThatIsNotAppliedIsSaid) {
    const TemporaryFolder folder;
    const auto other = WithProfile(folder, std::string(128, '\1') + "Wide Gamut");
    ExpectDone({"convert", other, folder / "out.exr"},
               NoteLine(other, "its colour profile was not applied: the colours were taken for those of sRGB"));
    ExpectDone({"convert", other, folder / "out.tga"},
               NoteLine(other, "the colour profile is damaged or of other channels, and is left out"));
    const std::string wide("s\0R\0G\0B", 7);
    for (const std::string& name : {std::string("sRGB IEC61966-2.1"), wide}) {
        const auto usual = WithProfile(folder, std::string(128, '\1') + name);
        ExpectDone({"convert", usual, folder / "out.exr"});
    }
}
