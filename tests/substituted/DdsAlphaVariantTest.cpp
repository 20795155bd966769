// DDS files whose host reader reports one of the two reserved 8-bit formats. Ours reports neither.

#include "load/DdsFile.h"
#include "load/TextureFiles.h"
#include "substituted/SubstituteDdsReader.h"

#include <gtest/gtest.h>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;

class DdsAlphaVariant : public ::testing::TestWithParam<EFormat> {
protected:
    DdsAlphaVariant() {
        Substitute().format = GetParam();
        Substitute().opens = true;
    }
    LoadedTexture Load(EFormat format, DdsFile file = {.data = {255, 20, 0, 40}}) {
        return LoadFile(folder.Write("x.dds", file.Bytes()), {.format = format}, DDS);
    }
    TemporaryFolder folder;
};

TEST_P(DdsAlphaVariant, CountsAsBlueFirstWithoutMovingAByte) {
    const LoadedTexture texture = Load(kUnknown);
    ASSERT_TRUE(texture);
    EXPECT_EQ(texture.desc.format, kB8G8R8A8);
    EXPECT_EQ(texture.bytes, (Bytes{255, 20, 0, 40}));
    EXPECT_EQ(Load(kB8G8R8A8).bytes, (Bytes{255, 20, 0, 40}));
    EXPECT_EQ(Load(kB8G8R8X8).bytes, (Bytes{255, 20, 0, 40})) << "not swapped after the read";
}

TEST_P(DdsAlphaVariant, IsConvertedFromBlueFirst) {
    EXPECT_EQ(Load(kR8G8B8A8).bytes, (Bytes{0, 20, 255, 40}));
    // 20 x 0.587 + 255 x 0.114 + 0 x 0.299 = 40.81
    EXPECT_EQ(Load(kL8).bytes, Bytes{41});
}

TEST_P(DdsAlphaVariant, ChangesNoOtherFormat) {
    EXPECT_EQ(Load(kUnknown, DdsFile{.data = {77}}.Luminance8()).desc.format, kL8);
}

TEST_P(DdsAlphaVariant, CountsOnlyWhereTheReaderOpensTheFile) {
    Substitute().opens = false;
    EXPECT_EQ(Load(kUnknown).desc.format, kR8G8B8A8);
}

INSTANTIATE_TEST_SUITE_P(ReservedFormats, DdsAlphaVariant, ::testing::Values(kReserved50, kReserved51));

TEST(DdsAlphaVariantOff, OtherReportsKeepRedFirst) {
    const TemporaryFolder folder;
    Substitute().opens = true;
    for (const EFormat format : {kR8G8B8A8, kB8G8R8A8, kUnknown}) {
        Substitute().format = format;
        const auto path = folder.Write("x.dds", DdsFile{.data = {1, 2, 3, 4}}.Bytes());
        EXPECT_EQ(LoadFile(path, {}, DDS).desc.format, kR8G8B8A8);
    }
}

}  // namespace
}  // namespace Kavra::Tests
