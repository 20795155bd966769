#include "load/InspectedFile.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Owned = std::unique_ptr<InspectedFile>;

PartFacts OneLevel() {
    PartFacts facts;
    facts.levels = {{4, 2, 1}};
    return facts;
}

}  // namespace

TEST(ValidUtf8, BadBytesAreReplacedAndGoodOnesStay) {
    EXPECT_EQ(ToValidUtf8("caf\xC3\xA9", 100), "caf\xC3\xA9");
    EXPECT_EQ(ToValidUtf8("caf\xE9", 100), "caf\xEF\xBF\xBD");
    EXPECT_EQ(ToValidUtf8(std::string_view("ab\0cd", 5), 100), "ab");
    EXPECT_EQ(ToValidUtf8("\xED\xA0\x80", 100), "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");  // half of a pair
    EXPECT_EQ(ToValidUtf8("", 100), "");
}

TEST(ValidUtf8, IsCutBeforeACharacterThatWouldBe) {
    EXPECT_EQ(ToValidUtf8("abcd", 3), "abc");
    EXPECT_EQ(ToValidUtf8("ab\xC3\xA9", 3), "ab");
    EXPECT_EQ(ToValidUtf8("\xFF\xFF", 4), "\xEF\xBF\xBD");  // each becomes three bytes
}

TEST(InspectedFile, HoldsNoMoreOfAPartThanItsBounds) {
    const Owned file(new InspectedFile("png"));
    PartFacts facts = OneLevel();
    facts.texts.assign(5000, {"name", std::string(100'000, 'x')});
    const std::vector<unsigned char> profile(InspectedFile::kMaxProfileBytes + 1);
    facts.profile = profile;
    file->Add(facts);
    const FilePart& part = file->Part(0);
    EXPECT_LE(part.textCount, InspectedFile::kMaxTexts);
    EXPECT_GT(part.textCount, 100U);
    EXPECT_EQ(std::string(part.texts[0].value).size(), InspectedFile::kMaxTextBytes);
    EXPECT_EQ(part.iccProfile, nullptr);
    EXPECT_EQ(part.iccBytes, 0U);
}

TEST(InspectedFile, HoldsNoMorePartsThanItsBound) {
    const Owned file(new InspectedFile("gif"));
    for (int i = 0; i < 5000; ++i)
        file->Add(OneLevel());
    EXPECT_EQ(file->PartCount(), InspectedFile::kMaxParts);
}

TEST(InspectedFile, PartsShareProfilesAndTextsThatAreAlike) {
    const Owned file(new InspectedFile("tiff"));
    PartFacts facts = OneLevel();
    facts.texts = {{"Copyright", "me"}};
    const std::vector<unsigned char> profile(InspectedFile::kMaxProfileBytes, 3);
    facts.profile = profile;
    for (int i = 0; i < 100; ++i)
        file->Add(facts);
    EXPECT_EQ(file->Part(0).iccProfile, file->Part(99).iccProfile);
    EXPECT_EQ(file->Part(99).iccBytes, profile.size());
    EXPECT_EQ(file->Part(0).texts[0].value, file->Part(99).texts[0].value);
}

TEST(InspectedFile, EveryPartHasTextsThatCanBeRead) {
    const Owned file(new InspectedFile("png"));
    file->Add(OneLevel());
    const FilePart& part = file->Part(0);
    EXPECT_STREQ(part.name, "");
    EXPECT_STREQ(part.colourSpace, "");
    EXPECT_STREQ(part.compression, "");
    EXPECT_STREQ(file->FileType(), "png");
}
