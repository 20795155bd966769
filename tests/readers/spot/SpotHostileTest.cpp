// Damaged rasters: whatever the files hold, there is an answer, and always the same.

#include "readers/ImageFileType.h"
#include "readers/LegacyLoad.h"
#include "readers/spot/RasterFiles.h"
#include "support/HandlerAccess.h"

#include <kavra/objects/ObjModel.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;

using Bytes = std::vector<unsigned char>;

const std::string kColours =
    "NCOLS 3\nNROWS 4\nNBANDS 3\nNBITS 8\nLAYOUT BSQ\nBAND_RGB 321\nSKIPBYTES 1\nRECORDSKIPBYTES 1\n"
    "BANDROWBYTES 4\nTOTALROWBYTES 12\nBANDGAPBYTES 2\n";
const std::string kFloats = "NCOLS 2\nNROWS 3\nNBITS 32\nPIXELTYPE FLOAT\nLAYOUT BIP\nBYTEORDER I\n";
const std::string kPalette = "! colours\n1 2 3 4\n255 7 8 9\n";

Bytes Data() {
    Bytes data;
    for (unsigned char i = 0; i < 60; ++i)
        data.push_back(static_cast<unsigned char>(i * 5));
    return data;
}

class SpotHostile : public testing::Test {
protected:
    SpotHostile() { WriteRaster(folder, {kColours, Data(), "", kPalette}); }

    /// Some file systems wait for the disk when a file is overwritten, but not when a new one takes its place.
    template <class Contents>
    void Replace(const char* name, const Contents& contents) {
        std::filesystem::remove(folder / name);
        folder.Write(name, contents);
    }

    /// Reads a frame twice, and looks that the result depends on nothing but the files.
    void Try() {
        const Decoded first = DecodeFile<SpotReader>(folder / "q.bil", 1);
        const Decoded second = DecodeFile<SpotReader>(folder / "q.bil", 1);
        ASSERT_EQ(first.opened, second.opened);
        ASSERT_EQ(first.read, second.read);
        ASSERT_EQ(first.block, second.block);
        ASSERT_TRUE(first.messages.empty());
    }

    TemporaryFolder folder;
    OIIOImageHandlerAccess access;
    ImageDescription desc;
};

TEST_F(SpotHostile, HeadersCutAtEveryLength) {
    for (const std::string& header : {kColours, kFloats}) {
        for (std::size_t length = 0; length <= header.size(); ++length) {
            Replace("q.hdr", header.substr(0, length));
            Try();
        }
    }
}

TEST_F(SpotHostile, PalettesCutAtEveryLength) {
    for (std::size_t length = 0; length <= kPalette.size(); ++length) {
        Replace("q.clr", kPalette.substr(0, length));
        Try();
    }
}

TEST_F(SpotHostile, DataCutAtEveryLength) {
    for (const std::string& header : {kColours, kFloats}) {
        Replace("q.hdr", header);
        for (std::size_t length = 0; length <= Data().size(); ++length) {
            Replace("q.bil", Bytes(length, 9));
            Try();
        }
    }
}

TEST_F(SpotHostile, EveryByteOfAHeaderSetToExtremes) {
    for (const std::string& header : {kColours, kFloats}) {
        for (std::size_t at = 0; at < header.size(); ++at) {
            for (const int value : {0, 1, 0x7F, 0x80, 0xFF, 0x2D, 0x39}) {
                std::string damaged = header;
                damaged[at] = static_cast<char>(value);
                Replace("q.hdr", damaged);
                Try();
            }
        }
    }
}

TEST_F(SpotHostile, NumbersThatNoFileJustifiesTakeNoMemory) {
    for (const std::string number : {"2147483647", "1000000", "99999999999999"}) {
        WriteRaster(folder, {"NCOLS " + number + "\nNROWS " + number + "\nTOTALROWBYTES 0\n", {1, 2, 3}});
        const std::size_t blocks = ObjModel::BlockCounters().totalBlocks;
        EXPECT_EQ(access.LoadSpecial(desc, Wide(folder / "q.bil"), 0, 0, false, 0, kTopLeft, Spot), nullptr);
        EXPECT_LE(ObjModel::BlockCounters().totalBlocks, blocks + 1) << "the reader itself";
    }
}

TEST_F(SpotHostile, PlacesFarBeyondTheFileAreZero) {
    const std::string shape = "NCOLS 2\nNROWS 2\nNBANDS 3\nTOTALROWBYTES 0\n";
    const Bytes black = {0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};
    for (const char* layout : {"bil", "bip", "bsq"}) {
        for (const char* lines :
             {"RECORDSKIPBYTES 2147483647\n", "RECORDSKIPBYTES 2147483647\nBANDROWBYTES 2147483640\n",
              "BANDROWBYTES 2147483647\nRECORDSKIPBYTES 3\n", "SKIPBYTES 3\nBANDGAPBYTES 2147483647\n"}) {
            EXPECT_EQ(DecodeRaster({shape + "LAYOUT " + layout + "\n" + lines, {1, 2, 3}}).block, black)
                << layout << " " << lines;
        }
    }
}

}  // namespace
