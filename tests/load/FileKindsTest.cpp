#include "load/FileKinds.h"

#include <OpenImageIO/imageio.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace Kavra::Devices;

std::vector<std::string> Words(const char* text) {
    return OIIO::Strutil::splits(text, " ");
}

bool Has(const char* text, const char* extension) {
    return std::ranges::contains(Words(text), extension);
}

}  // namespace

TEST(FileKinds, AreSortedWithoutRepetitionsAndEachHasItsDot) {
    for (const char* text : {ReadableExtensions(), WritableExtensions()}) {
        const std::vector<std::string> words = Words(text);
        EXPECT_TRUE(std::ranges::is_sorted(words));
        EXPECT_EQ(std::ranges::adjacent_find(words), words.end());
        for (const std::string& word : words) {
            EXPECT_EQ(word.rfind('.'), 0U) << word;
            EXPECT_EQ(word, OIIO::Strutil::lower(word));
        }
    }
}

TEST(FileKinds, AreThoseOfTheLibraryAndOurOwn) {
    for (const char* extension : {".png", ".jpg", ".jpeg", ".exr", ".tif", ".hdr", ".gif", ".bmp"}) {
        EXPECT_TRUE(Has(ReadableExtensions(), extension)) << extension;
        EXPECT_TRUE(Has(WritableExtensions(), extension)) << extension;
    }
    for (const char* extension : {".pcx", ".pict", ".cal", ".flc", ".rlc", ".bil", ".psd"}) {
        EXPECT_TRUE(Has(ReadableExtensions(), extension)) << extension;
        EXPECT_FALSE(Has(WritableExtensions(), extension)) << extension;
    }
    EXPECT_TRUE(Has(ReadableExtensions(), ".dds"));
    EXPECT_TRUE(Has(WritableExtensions(), ".dds"));
}

TEST(FileKinds, LeaveOutWhatIsNoFile) {
    for (const char* extension : {".null", ".nul", ".term"}) {
        EXPECT_FALSE(Has(ReadableExtensions(), extension)) << extension;
        EXPECT_FALSE(Has(WritableExtensions(), extension)) << extension;
    }
}
