// Colour profiles and texts in the files that are saved.

#include "output/PreferredSaving.h"
#include "support/ColourProfile.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

using SavedMetadata = PreferredSaving;

Profile ProfileOf(const Part& part) {
    const OIIO::ParamValue* const found = part.spec.find_attribute("ICCProfile");
    if (found == nullptr) return {};
    const auto* const bytes = static_cast<const unsigned char*>(found->data());
    return {bytes, bytes + found->type().size()};
}

SavePreferences WithProfile(const Profile& profile) {
    SavePreferences preferences;
    preferences.iccProfile = profile.data();
    preferences.iccBytes = profile.size();
    return preferences;
}

TEST_F(SavedMetadata, AProfileIsWrittenAsItIs) {
    for (const std::size_t bytes : {std::size_t{400}, std::size_t{200'000}}) {
        const Profile profile = MakeProfile("RGB ", bytes);
        for (const char* kind : {"x.png", "x.jpg", "x.tif", "x.webp"}) {
            if (bytes > 65519 && std::string_view(kind) == "x.jpg") continue;
            ASSERT_TRUE(SaveWith(WithProfile(profile), kind, Detailed(kR8G8B8A8))) << kind;
            EXPECT_EQ(ProfileOf(First(kind)), profile) << kind;
        }
    }
    const Profile grey = MakeProfile("GRAY", 400);
    for (const char* kind : {"x.png", "x.jpg", "x.tif"}) {
        ASSERT_TRUE(SaveWith(WithProfile(grey), kind, Detailed(kL8))) << kind;
        EXPECT_EQ(ProfileOf(First(kind)), grey) << kind;
    }
}

TEST_F(SavedMetadata, AJpegHasAProfileThatOneOfItsMarkersHoldsOrNone) {
    for (const auto& [bytes, isKept] : {std::pair(65516, true), std::pair(65520, false), std::pair(1 << 20, false)}) {
        Profile profile = MakeProfile("RGB ", static_cast<std::size_t>(bytes) - 144);
        ASSERT_TRUE(SaveWith(WithProfile(profile), "x.jpg", Detailed(kR8G8B8A8)));
        EXPECT_EQ(ProfileOf(First("x.jpg")), isKept ? profile : Profile()) << bytes;
    }
}

TEST_F(SavedMetadata, AProfileThatIsDamagedOrOfOtherChannelsIsLeftOutOfEveryFile) {
    std::vector<Profile> profiles(6, MakeProfile());
    profiles[0].resize(100);
    profiles[1][36] = 0;
    Kavra::Tests::SetNumber(profiles[2], 128, 0xFFFFFFFF);
    Kavra::Tests::SetSignature(profiles[3], 16, "CMYK");
    Kavra::Tests::SetSignature(profiles[4], 16, "GRAY");
    profiles[5].clear();
    for (const char* kind : kTimeless) {
        for (const Profile& profile : profiles)
            EXPECT_TRUE(SavesAlike(WithProfile(profile), kind, Detailed(kR8G8B8A8))) << kind;
    }
}

TEST_F(SavedMetadata, NoProfileMakesAWriterFail) {
    Profile hollow = MakeProfile("RGB ", 400);
    std::fill(hollow.begin() + 144, hollow.end(), static_cast<unsigned char>(0xA5));  // sound outside, nonsense inside
    const Profile large = MakeProfile("RGB ", (std::size_t{16} << 20) - 144);
    for (const char* kind : kKinds) {
        EXPECT_TRUE(SaveWith(WithProfile(hollow), kind, Detailed(kR8G8B8A8))) << kind;
        EXPECT_EQ(First(kind).pixels.empty(), false) << kind;
        EXPECT_TRUE(SaveWith(WithProfile(large), kind, Detailed(kR8G8B8A8))) << kind;
        EXPECT_EQ(First(kind).pixels.empty(), false) << kind;
    }
}

SavePreferences WithTexts(const std::vector<FileText>& texts) {
    SavePreferences preferences;
    preferences.texts = texts.data();
    preferences.textCount = texts.size();
    return preferences;
}

TEST_F(SavedMetadata, TextsAreWrittenWhereThereIsAPlaceForThem) {
    const std::vector<FileText> texts = {{"ImageDescription", "A ship \xC3\xA4"},
                                         {"Copyright", "2026 Ann"},
                                         {"Artist", "Ann"},
                                         {"Make", "Maker"},
                                         {"ExposureTime", "0.004"},
                                         {"Exif:FocalLength", "35"},
                                         {"DateTime", "2026:01:02 03:04:05"}};
    for (const char* kind : {"x.png", "x.jpg", "x.tif", "x.exr"}) {
        ASSERT_TRUE(SaveWith(WithTexts(texts), kind, Detailed(kR8G8B8A8)));
        const Part part = First(kind);
        for (const char* name : {"ImageDescription", "Copyright", "Artist", "Make", "DateTime"}) {
            const auto text =
                std::ranges::find_if(texts, [&](const FileText& t) { return std::string_view(t.name) == name; });
            EXPECT_EQ(part.Text(name), text->value) << kind << name;
        }
        EXPECT_NEAR(part.Number("ExposureTime"), 0.004, 1e-5) << kind;
        EXPECT_NEAR(part.Number("Exif:FocalLength"), 35, 1e-3) << kind;
    }
    ASSERT_TRUE(SaveWith(WithTexts(texts), "x.tga", Detailed(kR8G8B8A8)));
    EXPECT_EQ(First("x.tga").Text("Artist"), "Ann");
    EXPECT_EQ(First("x.tga").Text("Make"), "");
}

TEST_F(SavedMetadata, TextsOfOtherNamesDoNotReachAWriter) {
    const std::vector<FileText> texts = {{"compression", "none"},       {"Orientation", "6"},
                                         {"oiio:ColorSpace", "linear"}, {"textureformat", "CubeFace Environment"},
                                         {"GPS:Latitude", "1"},         {"oiio:UnassociatedAlpha", "0"},
                                         {"ImageDescriptio", "x"},      {"", "x"},
                                         {"Exif:MakerNote", "x"},       {nullptr, "x"},
                                         {"Copyright", nullptr},        {"Artist", ""}};
    for (const char* kind : kTimeless)
        EXPECT_TRUE(SavesAlike(WithTexts(texts), kind, Detailed(kR8G8B8A8))) << kind;
}

TEST_F(SavedMetadata, AMillionTextsAndLongOnesHarmNoWriter) {
    const std::string endless(3'000'000, 'x');
    const std::vector<FileText> many(1'000'000, FileText{"Copyright", "mine"});
    const std::vector<FileText> longOnes = {{"ImageDescription", endless.c_str()}, {"Copyright", endless.c_str()},
                                            {"Artist", endless.c_str()},           {"Make", endless.c_str()},
                                            {"DateTime", endless.c_str()},         {"ExposureTime", endless.c_str()}};
    for (const char* kind : kKinds) {
        EXPECT_TRUE(SaveWith(WithTexts(many), kind, Detailed(kR8G8B8A8))) << kind;
        EXPECT_FALSE(First(kind).pixels.empty()) << kind;
        EXPECT_TRUE(SaveWith(WithTexts(longOnes), kind, Detailed(kR8G8B8A8))) << kind;
        EXPECT_FALSE(First(kind).pixels.empty()) << kind;
        EXPECT_LT(Size(kind), 200'000) << kind;
    }
}

TEST_F(SavedMetadata, ALongTextIsCutAtTheEndOfACharacter) {
    std::string text(32 * 1024 - 1, 'x');
    text += "\xC3\xA4 and more";
    ASSERT_TRUE(SaveWith(WithTexts({{"ImageDescription", text.c_str()}}), "x.tif", Detailed(kR8G8B8A8)));
    EXPECT_EQ(First("x.tif").Text("ImageDescription"), std::string(32 * 1024 - 1, 'x'));
}

TEST_F(SavedMetadata, NumbersAndDatesThatAreNoneHarmNoWriter) {
    for (const char* value : {"nan", "inf", "-1", "1e300", "1e-300", "0", "x", "99:99:99", "0000:00:00 00:00:00",
                              "9999:99:99 99:99:99", "\xFF\xFF\xFF", "%s%s%n", "<rdf:RDF>&]]>"}) {
        const std::vector<FileText> texts = {{"ExposureTime", value},
                                             {"FNumber", value},
                                             {"DateTime", value},
                                             {"Exif:PhotographicSensitivity", value},
                                             {"Exif:DateTimeOriginal", value},
                                             {"ImageDescription", value}};
        for (const char* kind : kKinds) {
            EXPECT_TRUE(SaveWith(WithTexts(texts), kind, Detailed(kR8G8B8A8))) << kind << value;
            EXPECT_FALSE(First(kind).pixels.empty()) << kind << value;
        }
    }
}

}  // namespace
