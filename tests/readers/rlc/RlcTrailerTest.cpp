#include "readers/FileSamples.h"
#include "readers/rlc/RlcReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Tests;

std::optional<RlcTrailer> Read(const ByteBuilder& file) {
    ByteSource source = file.Source();
    return ReadRlcTrailer(source);
}

TEST(RlcTrailer, EndsAFileThatIsLongerThanIt) {
    ByteBuilder alone;
    AddRlcTrailer(alone, 2, 0);
    EXPECT_FALSE(Read(alone));
    ByteBuilder behind;
    behind.Byte(0x77);
    AddRlcTrailer(behind, 2, 0);
    EXPECT_TRUE(Read(behind));
    EXPECT_FALSE(Read(behind.At(345).Byte(0x77))) << "not at the end";
    EXPECT_FALSE(Read(ByteBuilder()));
}

TEST(RlcTrailer, ComesWithAllItsBytes) {
    ByteBuilder file;
    file.Byte(0x77);
    AddRlcTrailer(file, 2, 0);
    file.At(344).Byte(0x99);
    const auto trailer = Read(file);
    ASSERT_TRUE(trailer);
    EXPECT_EQ((*trailer)[8], 0x1A);
    EXPECT_EQ((*trailer)[343], 0x99);
}

TEST(RlcTrailer, ADirectoryIsFlaggedByTwoInLittleEndian) {
    const auto flagged = [](unsigned low, unsigned high) {
        ByteBuilder file;
        file.Byte(0x77);
        AddRlcTrailer(file, low, high);
        return HasDirectory(Read(file).value());
    };
    EXPECT_TRUE(flagged(2, 0));
    EXPECT_FALSE(flagged(0, 2));
    EXPECT_FALSE(flagged(1, 0));
    EXPECT_FALSE(flagged(2, 1));
}

}  // namespace
