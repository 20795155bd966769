// How commands resample: the filter, and what is on for pictures and off for blocks.

#include "app/Answers.h"
#include "app/PictureFiles.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Kavra::Tests;

namespace {

const Words kFilters = {"nearest", "bilinear", "linear", "box", "triangle", "mitchell", "catmull-rom", "lanczos3"};

}  // namespace

TEST(ResamplingOptions, EveryFilterMakesTheSizeAndKeepsAnEvenColour) {
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.png", 40, 30, [](int, int) { return Colour{200, 100, 50, 255}; });
    const std::string out = folder / "out.png";
    for (const std::string& filter : kFilters) {
        for (const Words& line : {Words{"convert", in, out, "--fit", "20x20"},
                                  {"convert", in, out, "--size", "20x15"},
                                  {"convert", in, out, "--scale", "50%"},
                                  {"frames", in, folder / "%dout.png", "--fit", "20x20"},
                                  {"resize", in, out, "--size", "20x15"},
                                  {"resize", in, out, "--scale", "50%"},
                                  {"crop", in, out, "--rect", "0,0,40,30", "--size", "20x15"},
                                  {"target", in, out, "--fit", "20x20"},
                                  {"tile", in, out, "--repeat", "1x1", "--fit", "20x20"}}) {
            ExpectDone(Joined({line, {"--filter", filter}}));
            const PictureFile picture(line.front() == "frames" ? folder / "0out.png" : folder / "out.png");
            EXPECT_EQ(picture.Size(), "20x15") << line.front() << filter;
            for (const auto& [x, y] : {std::pair(7, 7), std::pair(19, 14)}) {
                Colour colour = picture.At(x, y);
                colour.resize(3);  // some commands keep an alpha that says nothing
                EXPECT_EQ(colour, (Colour{200, 100, 50})) << line.front() << filter;
            }
        }
    }
}

TEST(ResamplingOptions, FiltersHaveNoCase) {
    const TemporaryFolder folder;
    ExpectDone({"convert", Sample("grey.png"), folder / "out.png", "--fit", "9x9", "--filter", "Catmull-ROM"});
}

TEST(ResamplingOptions, CommandsForPeopleTakeThePlainFilterAndThoseForHostsWhatIsBeyondIt) {
    const TemporaryFolder folder;
    const std::string photo = Sample("photo.tga");
    const std::string out = folder / "out.png";
    for (const Words& line : {Words{"convert", photo, out, "--fit", "9x9", "--fast"},
                              {"frames", photo, folder / "%dout.png", "--fit", "9x9", "--fast"},
                              {"resize", photo, out, "--fit", "9x9"},
                              {"crop", photo, out, "--rect", "0,0,9,9", "--fit", "5x5"},
                              {"compose", out, "--size", "9x9", "--fit", "9x9", photo + "@0,0", "--fast"},
                              {"sheet", out, photo, "--no-fast"},
                              {"target", photo, out, "--fit", "9x9", "--fast"},
                              {"tile", photo, out, "--repeat", "2x2", "--fit", "9x9", "--fast"}}) {
        ExpectDone(Joined({line, {"--plain-filter", "--linear-light", "--filter", "triangle"}}));
        ExpectWrongUsage(Joined({line, {"--bounded"}}), line.front() + ": error: there is no option --bounded");
    }
    const Words dump = {"dump", photo, "--out", folder / "block", "--fit", "9x9"};
    ExpectDone(Joined({dump, {"--alpha-weighted", "--bounded", "--linear-light", "--fast", "--filter", "triangle"}}));
    ExpectWrongUsage(Joined({dump, {"--plain-filter"}}), "dump: error: there is no option --plain-filter");
}

TEST(ResamplingOptions, ABlockIsWhatAHostGetsThatSaysNothing) {
    // Alone on its row, a transparent red pixel lends its colour to what is filtered over it.
    const TemporaryFolder folder;
    const auto in = WritePicture(folder / "in.tif", 2, 2,
                                 [](int x, int) { return x == 0 ? Colour{200, 0, 0, 0} : Colour{254, 254, 254, 254}; });
    const std::vector<unsigned char> block = Dumped(in, {"--size", "1x2", "--high-quality"});
    EXPECT_EQ(block, (std::vector<unsigned char>{227, 127, 127, 127, 227, 127, 127, 127}));
    EXPECT_EQ(Dumped(in, {"--fit", "1x0"}).size(), 4U);
}
