#include "readers/pict/PictCanvas.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;

using Bytes = std::vector<unsigned char>;

TEST(PictPalette, ARecordWithoutColoursHasARampOf256Greys) {
    const PictRecord record;
    const auto table = PictColourTable(record);
    ASSERT_EQ(table.size(), 256U);
    for (unsigned i = 0; i < 256; ++i) {
        const auto grey = static_cast<std::uint16_t>(i << 8 | i);
        EXPECT_EQ(table[i], (PictColour{grey, grey, grey}));
    }
}

TEST(PictPalette, ARecordWithColoursHasThese) {
    PictRecord record;
    record.colours = {{1, 2, 3}};
    ASSERT_EQ(PictColourTable(record).size(), 1U);
    EXPECT_EQ(PictColourTable(record)[0], (PictColour{1, 2, 3}));
}

TEST(PictPalette, GivesTheHighBytesOfAColourAndAlpha255) {
    const std::vector<PictColour> colours = {{0x12FF, 0x3480, 0x5600}, {0xFFFF, 0, 0x00FF}};
    Bytes out(12, 7);
    PictPalette(colours).ToRgba(Bytes{1, 0, 1}, out);
    EXPECT_EQ(out, (Bytes{255, 0, 0, 255, 0x12, 0x34, 0x56, 255, 255, 0, 0, 255}));
}

TEST(PictPalette, AnIndexWithoutAColourLeavesThePixelAlone) {
    const std::vector<PictColour> colours = {{0x1200, 0x3400, 0x5600}};
    Bytes out(12, 7);
    PictPalette(colours).ToRgba(Bytes{1, 0, 255}, out);
    EXPECT_EQ(out, (Bytes{7, 7, 7, 7, 0x12, 0x34, 0x56, 255, 7, 7, 7, 7}));
}

}  // namespace
