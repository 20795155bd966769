#include "frame/host/devices/EveryVectorWidth.h"
#include "load/OpaquePixels.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

namespace Kavra::Devices {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<unsigned char>(i * 7 % 251);
    return bytes;
}

TEST(OpaquePixels, HaveTheirColoursAndAFourthElement) {
    const Bytes in = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    Bytes out(16, 99);
    AddOpaqueAlpha(in.data(), 4, 1, 255, out.data());
    EXPECT_EQ(out, (Bytes{1, 2, 3, 255, 4, 5, 6, 255, 7, 8, 9, 255, 10, 11, 12, 255}));
    AddOpaqueAlpha(in.data(), 2, 2, 0x3C00, out.data());
    EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 5, 6, 0, 0x3C, 7, 8, 9, 10, 11, 12, 0, 0x3C}));
    AddOpaqueAlpha(in.data(), 1, 4, 0x3F800000, out.data());
    EXPECT_EQ(out, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 0, 0, 0x80, 0x3F}));
}

TEST(OpaquePixels, AreWhatTheyAreOneAfterTheOther) {
    Tests::ForEveryVectorWidth([] {
        for (const std::size_t elementBytes : {1, 2, 4}) {
            for (std::size_t count = 0; count < 300; ++count) {
                const Bytes in = Counting(3 * count * elementBytes + 1);
                Bytes out(4 * count * elementBytes + 2, 99), expected = out;
                AddOpaqueAlpha(in.data() + 1, count, elementBytes, 0x3F81C3A5, out.data() + 1);
                AddOpaqueAlphaPlainly(in.data() + 1, count, elementBytes, 0x3F81C3A5, expected.data() + 1);
                ASSERT_EQ(out, expected) << elementBytes << " bytes, " << count << " pixels";
            }
        }
    });
}

TEST(OpaquePixels, AreSplitOverAllCores) {
    const std::size_t count = 1'000'003;
    const Bytes in = Counting(3 * count);
    Bytes out(4 * count), expected = out;
    AddOpaqueAlpha(in.data(), count, 1, 255, out.data());
    AddOpaqueAlphaPlainly(in.data(), count, 1, 255, expected.data());
    EXPECT_TRUE(out == expected);
}

}  // namespace
}  // namespace Kavra::Devices
