#include "output/LibraryFile.h"
#include "output/SavingFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

using Kavra::Devices::KString;
using Kavra::Devices::LibraryFile;
using Kavra::Tests::ReadAll;
using Kavra::Tests::ReadPicture;
using Kavra::Tests::TemporaryFolder;
using Kavra::Tests::Wide;
using testing::ElementsAre;

namespace {

const OIIO::ImageSpec kOnePixel(1, 1, 4, OIIO::TypeDesc::UINT8);
const unsigned char kPixel[] = {1, 2, 3, 4};

TEST(LibraryFile, IsWrittenOpenedAndClosed) {
    const TemporaryFolder folder;
    for (const char* name : {"x.png", "x.tif", "x.jpg"}) {
        const KString path = Wide(folder / name);
        LibraryFile file(path);
        ASSERT_TRUE(file.HasWriter());
        ASSERT_TRUE(file.Open(kOnePixel));
        EXPECT_TRUE(file.WriteImage(kPixel, 4, 4));
        EXPECT_TRUE(file.Close()) << name;
        EXPECT_EQ(ReadPicture(folder / name).width, 1) << name;
    }
}

TEST(LibraryFile, HasNoWriterForOtherExtensionsAndLeavesNoErrorBehind) {
    const KString path(L"x.xyz");
    const LibraryFile file(path);
    EXPECT_FALSE(file.HasWriter());
    EXPECT_EQ(OIIO::geterror(), "");
}

TEST(LibraryFile, ThatDoesNotOpenLeavesAnOldFileAsItIs) {
    const TemporaryFolder folder;
    const KString path = Wide(folder.Write("x.webp", "old"));
    LibraryFile file(path);
    EXPECT_FALSE(file.Open(OIIO::ImageSpec(4, 4, 1, OIIO::TypeDesc::UINT8)));
    EXPECT_THAT(ReadAll(folder / "x.webp"), ElementsAre('o', 'l', 'd'));
}

TEST(LibraryFile, IsClosedWithItsOwner) {
    const TemporaryFolder folder;
    for (const char* name : {"x.png", "x.tif", "x.jpg", "x.exr", "x.bmp"}) {
        const KString path = Wide(folder / name);
        LibraryFile file(path);
        EXPECT_TRUE(file.Open(OIIO::ImageSpec(8, 8, 3, OIIO::TypeDesc::UINT8)));
    }
}

}  // namespace
