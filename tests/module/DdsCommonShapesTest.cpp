// DDS files in the common reading: levels, faces, slices, sizes, ends that come early, and what is said of all of it.

#include "load/FileInspection.h"
#include "module/DdsReadings.h"

#include <kavra/devices/IImageFormatHandler.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;

/// Pixels of 5, 6 and 5 bits: each a shade of 31, which is `Shade` of it.
Bytes Words(const std::vector<unsigned>& shades) {
    Bytes bytes;
    for (const unsigned shade : shades) {
        const unsigned word = shade << 11 | shade;
        bytes.push_back(static_cast<unsigned char>(word));
        bytes.push_back(static_cast<unsigned char>(word >> 8));
    }
    return bytes;
}

/// What becomes of them.
Bytes Shades(const std::vector<unsigned>& shades) {
    Bytes bytes;
    for (const unsigned shade : shades) {
        const auto value = static_cast<unsigned char>((shade * 510 + 31) / 62);
        for (const unsigned char channel :
             {value, static_cast<unsigned char>(0), value, static_cast<unsigned char>(255)})
            bytes.push_back(channel);
    }
    return bytes;
}

DdsFile Of565(DdsFile file) {
    return file.Masks(0x40, 16, 0xF800, 0x7E0, 0x1F);
}

LoadRequest Face(int face) {
    LoadRequest request;
    request.preferences.face = face;
    return request;
}

TEST_F(DdsReadings, LevelsAreTheirOwn) {
    const DdsFile file = Of565({.width = 2, .height = 2, .mips = 2, .data = Words({1, 2, 3, 4, 5})});
    EXPECT_EQ(CommonBytes(file), Shades({1, 2, 3, 4}));
    EXPECT_EQ(CommonBytes(file, {.level = 1}), Shades({5}));
    EXPECT_EQ(CommonBytes(file, {.level = -1}), Shades({1, 2, 3, 4}));
    EXPECT_FALSE(Common(file, {.level = 2}));
    EXPECT_EQ(messages.Texts(), (std::vector<std::wstring>{L"Frame index out of range", L"format is not supported"}));
}

TEST_F(DdsReadings, FacesStandOnOneAnotherAndAbsentOnesAreZero) {
    const DdsFile file = Of565({.width = 1, .height = 1, .faces = 0b100101, .data = Words({1, 2, 3})});
    const auto whole = Common(file);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->desc.textureType, kTextureCube);
    EXPECT_EQ(whole->desc.dataSize, 4U) << "of one face";
    Bytes expected = Shades({1});
    expected.resize(8);
    const auto append = [&](const Bytes& bytes) { expected.insert(expected.end(), bytes.begin(), bytes.end()); };
    append(Shades({2}));
    expected.resize(20);
    append(Shades({3}));
    EXPECT_EQ(whole->bytes, expected);

    EXPECT_EQ(CommonBytes(file, Face(2)), Shades({2}));
    EXPECT_FALSE(Common(file, Face(1))) << "is not in the file";
}

TEST_F(DdsReadings, FacesOfACubeAreFoundBehindLevelsThatOnlyTheCapsMean) {
    DdsFile file =
        Of565({.width = 2, .height = 2, .mips = 2, .faces = 0b11, .data = Words({1, 1, 1, 1, 2, 3, 3, 3, 3, 4})});
    Bytes bytes = file.Bytes();
    bytes[10] = 0;  // the flag of the number of levels
    const auto face = Load(bytes, kLegacyCommon, Face(1));
    ASSERT_TRUE(face);
    EXPECT_EQ(face->bytes, Shades({3, 3, 3, 3}));
    bytes[110] = 0;  // and that of the caps
    const auto unflagged = Load(bytes, kLegacyCommon, Face(1));
    ASSERT_TRUE(unflagged);
    EXPECT_EQ(unflagged->bytes, Shades({3, 3, 3, 3})) << "the file is long enough for levels";
}

TEST_F(DdsReadings, SlicesOfAVolumeStandBehindOneAnother) {
    const DdsFile file = Of565({.width = 2, .height = 1, .depth = 2, .data = Words({1, 2, 3, 4})});
    const auto whole = Common(file);
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->desc.textureType, kTextureVolume);
    EXPECT_EQ(whole->desc.depth, 2);
    EXPECT_EQ(whole->desc.dataSize, 16U);
    EXPECT_EQ(whole->bytes, Shades({1, 2, 3, 4}));
    LoadRequest second;
    second.preferences.slice = 1;
    EXPECT_EQ(CommonBytes(file, second), Shades({3, 4}));
    EXPECT_EQ(CommonBytes(file, {.orientation = kTopRight}), Shades({2, 1, 4, 3}));
    EXPECT_FALSE(Common(file, {.width = 1})) << "slices are not resized";
}

TEST_F(DdsReadings, LowerLevelsOfAVolumeAreThere) {
    DdsFile file{.width = 4, .height = 4, .depth = 4, .mips = 2};
    AppendPixels(file.data, 64, {1, 1, 1, 1});
    AppendPixels(file.data, 8, {2, 3, 4, 5});
    Bytes expected;
    AppendPixels(expected, 8, {2, 3, 4, 5});
    EXPECT_EQ(CommonBytes(file, {.level = 1}), expected);
    EXPECT_FALSE(Contract(file, {.level = 1}));
    EXPECT_EQ(heard, (std::vector<std::string>{"lower levels of volumes are refused by the host's rules"}));
    EXPECT_TRUE(Contract(file));
    EXPECT_TRUE(heard.empty());
}

TEST_F(DdsReadings, WhatTheHostsReaderDeliversIsMadeSmallerAndTurned) {
    DdsFile file{.width = 2, .height = 2, .data = {0, 0x3C, 0, 0x3C, 0, 0x3C, 0, 0x3C}};
    file.Masks(4, 0, 0).fourCC = 111;
    EXPECT_EQ(CommonBytes(file, {.width = 1, .height = 1}), (Bytes{0, 0x3C}));
    EXPECT_FALSE(Contract(file, {.width = 1, .height = 1}));
    EXPECT_EQ(heard, (std::vector<std::string>{"neither made smaller nor turned by the host's rules"}));
    EXPECT_TRUE(Contract(file, {.orientation = kTopRight}));
    EXPECT_EQ(heard.size(), 1U);
    EXPECT_TRUE(Contract(file));
    EXPECT_TRUE(heard.empty());
}

TEST_F(DdsReadings, ACubeThatOnlyTheExtensionNamesIsOne) {
    DdsFile file{.width = 1, .height = 1, .miscFlags = 4};
    for (unsigned char face = 0; face < 6; ++face)
        AppendPixels(file.data, 1, {face, 0, 0, 255});
    const auto cube = Common(file.Dxgi(28));
    ASSERT_TRUE(cube);
    EXPECT_EQ(cube->desc.textureType, kTextureCube);
    EXPECT_EQ(cube->bytes, file.data);
    const auto flat = Contract(file);
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat->desc.textureType, kTexture2D);
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_NE(heard.front().find("faces"), std::string::npos);
}

TEST_F(DdsReadings, PicturesAreMadeSmallerAndTurned) {
    DdsFile file = Of565({.width = 4, .height = 2, .data = Words({9, 9, 9, 9, 9, 9, 9, 9})});
    const auto small = Common(file, {.width = 2, .height = 1});
    ASSERT_TRUE(small);
    EXPECT_EQ(small->desc.width, 2);
    EXPECT_EQ(small->desc.height, 1);
    EXPECT_EQ(small->bytes, Shades({9, 9}));

    file.data = Words({1, 2, 3, 4, 5, 6, 7, 8});
    EXPECT_EQ(CommonBytes(file, {.orientation = kTopRight}), Shades({4, 3, 2, 1, 8, 7, 6, 5}));
    const auto turned = Common(file, {.orientation = kLeftTop});
    ASSERT_TRUE(turned);
    EXPECT_EQ(turned->desc.width, 2);
    EXPECT_EQ(turned->desc.orientation, kLeftTop);
    EXPECT_FALSE(turned->desc.defaultOrientation);
    EXPECT_EQ(turned->bytes, Shades({1, 5, 2, 6, 3, 7, 4, 8}));
}

class Chooser final : public IImageFormatHandler {
public:
    EFormat ChooseFormat(EFormat fileFormat, int usage) override {
        asked = fileFormat;
        told = usage;
        return kB8G8R8A8;
    }
    EFormat asked = kUnknown;
    int told = 0;
};

TEST_F(DdsReadings, FormatsAndChannelsAreThoseOfTheRequest) {
    const DdsFile file = Of565({.data = {0x00, 0xF8}});  // red
    EXPECT_EQ(CommonBytes(file, {.format = kB8G8R8A8}), (Bytes{0, 0, 255, 255}));
    EXPECT_EQ(CommonBytes(file, {.format = kL8}), (Bytes{76}));  // 0.299 of 255
    Chooser chooser;
    EXPECT_EQ(CommonBytes(file, {.formatHandler = &chooser}), (Bytes{0, 0, 255, 255}));
    EXPECT_EQ(chooser.asked, kR8G8B8A8);
    EXPECT_EQ(chooser.told, 8) << "flat";
    LoadRequest red;
    red.preferences.channels = "R";
    EXPECT_EQ(CommonBytes(file, red), (Bytes{255, 255, 255, 255}));
    red.preferences.channels = "Z";
    EXPECT_FALSE(Common(file, red));
}

TEST_F(DdsReadings, RowsWithGapsAreFoundByThePitchThatTheLengthOfTheFileConfirms) {
    DdsFile file{.width = 1, .height = 2, .data = {1, 2, 3, 99, 4, 5, 6, 99}};
    Bytes bytes = file.Masks(0x40, 24, 0xFF, 0xFF00, 0xFF0000).Bytes();
    const Bytes tight = {1, 2, 3, 255, 99, 4, 5, 255}, right = {1, 2, 3, 255, 4, 5, 6, 255};
    EXPECT_EQ(Load(bytes, kLegacyCommon)->bytes, tight) << "no pitch";
    bytes[8] |= 0x8;
    bytes[20] = 4;
    EXPECT_EQ(Load(bytes, kLegacyCommon)->bytes, right);
    EXPECT_EQ(Load(bytes, kLegacyContract)->bytes, tight);
    EXPECT_EQ(heard, (std::vector<std::string>{"rows with gaps between them are skewed by the host's rules"}));
    bytes.pop_back();
    EXPECT_EQ(Load(bytes, kLegacyCommon)->bytes, right) << "the last row without its gap";
    EXPECT_EQ(Load(bytes, kLegacyCommon, {.orientation = kBottomLeft})->bytes, (Bytes{4, 5, 6, 255, 1, 2, 3, 255}));
    bytes[20] = 5;
    EXPECT_EQ(Load(bytes, kLegacyCommon)->bytes, tight) << "another pitch";
}

// --- Files that end early --------------------------------------------------------------------------------------------

TEST_F(DdsReadings, OfFilesThatEndEarlyTheRowsAreThereThatAre) {
    DdsFile file{.width = 1, .height = 4, .data = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10}};  // two rows and a half
    EXPECT_EQ(CommonBytes(file), (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(Contract(file));
    ASSERT_EQ(heard.size(), 1U);
    EXPECT_NE(heard.front().find("ends early"), std::string::npos);

    file.data.resize(3);
    EXPECT_FALSE(Common(file)) << "not one row";
    EXPECT_FALSE(Contract(file));
    EXPECT_TRUE(heard.empty());
}

TEST_F(DdsReadings, OfBlocksThatEndEarlyTheRowsOfBlocksAreThere) {
    constexpr struct {
        std::uint32_t dxgi;
        Bytes (*block)();
        std::size_t pixelBytes;
    } kKinds[] = {
        {71, [] { return Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}; }, 4},
        // BC7 of mode 5: both ends white, opaque
        {98, [] { return Bytes(16, 0xFF); }, 4},
    };
    for (const auto& kind : kKinds) {
        DdsFile file{.width = 4, .height = 8, .data = kind.block()};
        const auto loaded = Common(file.Dxgi(kind.dxgi));
        ASSERT_TRUE(loaded) << kind.dxgi;
        const std::size_t half = 16 * kind.pixelBytes;
        ASSERT_EQ(loaded->bytes.size(), 2 * half);
        EXPECT_EQ(Bytes(loaded->bytes.begin(), loaded->bytes.begin() + 16), Bytes(16, 255)) << kind.dxgi;
        EXPECT_EQ(Bytes(loaded->bytes.begin() + static_cast<std::ptrdiff_t>(half), loaded->bytes.end()),
                  Bytes(half, 0));
        EXPECT_EQ(Common(file, {.width = 4, .height = 4})->bytes.size(), half) << "also made smaller";
    }
}

TEST_F(DdsReadings, AFaceOfWhichNoRowIsThereIsRefused) {
    DdsFile file = Of565({.width = 2, .height = 2, .faces = 0x3F, .data = Words({1, 1, 1, 1, 2, 2})});
    EXPECT_EQ(CommonBytes(file, Face(0)), Shades({1, 1, 1, 1}));
    Bytes half = Shades({2, 2});
    half.resize(16);
    EXPECT_EQ(CommonBytes(file, Face(1)), half);
    EXPECT_FALSE(Common(file, Face(2)));
}

TEST_F(DdsReadings, WhatAHeaderClaimsBeyondTheLimitsIsRefused) {
    DdsFile file = Of565({.width = 1 << 20, .height = 1 << 20, .data = {}});
    file.data.assign(std::size_t{2} << 20, 0);  // one row
    EXPECT_FALSE(Common(file));
    EXPECT_EQ(messages.Texts(), (std::vector<std::wstring>{L"format is not supported"}));
}

TEST_F(DdsReadings, TransparentPixelsAreToldOf) {
    DdsFile file{.width = 3, .height = 1, .data = {0, 0, 0, 0x80, 0xFF, 0xFF}};
    file.Masks(0x41, 16, 0x7C00, 0x3E0, 0x1F, 0x8000);
    const auto loaded = Common(file);
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->desc.hasAlpha);
    EXPECT_TRUE(loaded->desc.hasTransparentPixels);
    EXPECT_FALSE(loaded->desc.hasTranslucentPixels);
}

// --- What is said of a file ------------------------------------------------------------------------------------------

struct DeleteIt {
    void operator()(ImageDesc* desc) const { desc->Delete(); }
    void operator()(IFileInspection* file) const { file->Delete(); }
};

class DdsAnswers : public DdsReadings {
protected:
    void Look(const DdsFile& file) {
        const auto path = Wide(folder.Write("x.dds", file.Bytes()));
        LoadPreferences preferences;
        preferences.legacy = kLegacyCommon;
        const LoadPreferencesScope scope(preferences);
        desc.reset(handler.GetImageDesc(path));
        inspection.reset(InspectFile(path));
        ASSERT_TRUE(desc);
        ASSERT_TRUE(inspection);
        part = &inspection->Part(0);
    }
    std::string ChannelNames() const {
        std::string names;
        for (std::size_t i = 0; i < part->channelCount; ++i)
            names += part->channels[i].name;
        return names;
    }

    std::unique_ptr<ImageDesc, DeleteIt> desc;
    std::unique_ptr<IFileInspection, DeleteIt> inspection;
    const FilePart* part = nullptr;
};

TEST_F(DdsAnswers, AreOfWhatALoadGives) {
    Look(DdsFile{.width = 8, .height = 4, .mips = 2}.FourCC("BC5S"));
    EXPECT_EQ(desc->format, kR8G8B8A8);
    EXPECT_EQ(desc->width, 8);
    EXPECT_EQ(desc->height, 4);
    EXPECT_EQ(desc->frameCount, 2);
    EXPECT_EQ(part->levelCount, 2U);
    EXPECT_EQ(ChannelNames(), "RG");
    EXPECT_EQ(part->alpha, kAlphaNone);
    EXPECT_EQ(part->transfer, kTransferSrgb);
    EXPECT_STREQ(part->compression, "BC5Snorm");
}

TEST_F(DdsAnswers, TellLightAndPremultipliedColours) {
    DdsFile half{.width = 1, .height = 1, .data = Bytes(8)};
    half.Masks(4, 0, 0).fourCC = 113;
    Look(half);
    EXPECT_EQ(desc->format, kR16G16B16A16F);
    EXPECT_EQ(part->transfer, kTransferLinear);
    EXPECT_EQ(part->bitsPerSample, 16);
    EXPECT_EQ(part->alpha, kAlphaStraight);
    EXPECT_EQ(ChannelNames(), "RGBA");

    Look(DdsFile{.width = 4, .height = 4, .data = Bytes(16)}.FourCC("DXT2"));
    EXPECT_EQ(part->alpha, kAlphaPremultiplied);
    EXPECT_EQ(part->transfer, kTransferSrgb);
}

TEST_F(DdsAnswers, OfWhatTheLibraryDecodesAreOfItsPixels) {
    Look(DdsFile{.width = 4, .height = 4, .data = Bytes(8)}.FourCC("DXT1"));
    EXPECT_EQ(desc->format, kR8G8B8A8);
}

}  // namespace
}  // namespace Kavra::Tests
