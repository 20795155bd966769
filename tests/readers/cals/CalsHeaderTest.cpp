#include "legacy/CalsFile.h"
#include "readers/cals/CalsReader.h"

#include <gtest/gtest.h>

namespace {

using namespace Kavra::Devices;
using Kavra::Legacy::ByteBuilder;
using Kavra::Legacy::CalsHeaderBytes;

CalsHeader Header(const ByteBuilder& file) {
    return CalsHeader(file.Bytes());
}

CalsHeader WithCounts(const std::string& counts) {
    return Header(CalsHeaderBytes({.counts = counts}));
}

CalsHeader WithOrientation(const std::string& angles) {
    return Header(CalsHeaderBytes({.orientation = angles}));
}

TEST(CalsHeader, CountsArePixelsARowAndRows) {
    EXPECT_EQ(WithCounts("001728,002200").Width(), 1728);
    EXPECT_EQ(WithCounts("001728,002200").Height(), 2200);
}

TEST(CalsHeader, NumbersAreReadLikeTheCLibraryReadsThem) {
    EXPECT_EQ(WithCounts("1728, 2200").Height(), 2200);
    EXPECT_EQ(WithCounts("  \t+17x28,\n 0022.5").Width(), 17);
    EXPECT_EQ(WithCounts("  \t+17x28,\n 0022.5").Height(), 22);
    EXPECT_EQ(WithCounts("-5,-7").Width(), -5);
    EXPECT_EQ(WithCounts("-5,-7").Height(), -7);
    EXPECT_EQ(WithCounts("wide,high").Width(), 0);
    EXPECT_EQ(WithCounts("wide,high").Height(), 0);
    EXPECT_EQ(WithCounts("99999999999,1").Width(), 2147483647);
}

TEST(CalsHeader, ACommaOrColonThatIsMissingIsTakenFromALaterRecord) {
    ByteBuilder file = CalsHeaderBytes({.counts = "001728 002200"});
    EXPECT_EQ(Header(file).Height(), 0) << "none anywhere";
    file.At(1280).Text("notes: see sheet, 77 of it");
    EXPECT_EQ(Header(file).Width(), 1728);
    EXPECT_EQ(Header(file).Height(), 77);

    // The orientation without its own comma takes the one of the counts.
    ByteBuilder mirrored = CalsHeaderBytes({.orientation = "000 090", .counts = "000013,000090"});
    EXPECT_EQ(Header(mirrored).Orientation(), kBottomLeft);

    ByteBuilder noColon = CalsHeaderBytes({.counts = "5,6"}).At(1024).Text("rpelcnt  5,6");
    EXPECT_EQ(Header(noColon).Width(), 300) << "of the density record";
    EXPECT_EQ(Header(noColon).Height(), 6);
}

TEST(CalsHeader, ACommaBeforeTheColonCountsToo) {
    const ByteBuilder file = CalsHeaderBytes({.counts = ""}).At(1024).Text("rpelcnt,9: 7,8");
    EXPECT_EQ(Header(file).Width(), 7);
    EXPECT_EQ(Header(file).Height(), 9);
}

TEST(CalsHeader, SearchesAndNumbersEndWithTheHeader) {
    ByteBuilder file = CalsHeaderBytes({.counts = "5 6"});
    file.At(2046).Text(",7").Text("8,9");
    EXPECT_EQ(Header(file).Height(), 7);
    file.At(2046).Text("  ,9");
    EXPECT_EQ(Header(file).Height(), 0);
}

TEST(CalsHeader, WhatAShortFileLacksIsZero) {
    ByteBuilder file = CalsHeaderBytes({.counts = "001728,002200"});
    EXPECT_EQ(Header(file.CutTo(1046)).Height(), 2200);
    EXPECT_EQ(Header(file.CutTo(1044)).Height(), 22) << "digits that are not there";
    EXPECT_EQ(Header(file.CutTo(1036)).Height(), 0);
    EXPECT_EQ(Header(file.CutTo(1036)).Width(), 1);
    EXPECT_EQ(Header(file.CutTo(896)).Width(), 0);
    EXPECT_EQ(Header(file.CutTo(896)).Orientation(), kTopLeft);
    EXPECT_EQ(Header(ByteBuilder()).Width(), 0);
}

TEST(CalsHeader, OrientationComesFromTwoAngles) {
    const std::vector<std::tuple<const char*, EDataOrientation, EDataOrientation>> table = {
        {"000", kTopLeft, kBottomLeft},   {"090", kLeftBottom, kLeftTop}, {"180", kBottomRight, kTopRight},
        {"270", kRightTop, kRightBottom}, {"045", kTopLeft, kTopLeft},    {"-90", kTopLeft, kTopLeft},
        {"360", kTopLeft, kTopLeft},
    };
    for (const auto& [rows, otherwise, up] : table) {
        EXPECT_EQ(WithOrientation(std::string(rows) + ",090").Orientation(), up) << rows;
        EXPECT_EQ(WithOrientation(std::string(rows) + ", 90").Orientation(), up) << rows;
        for (const char* columns : {",270", ",000", ",180", ",-90", ",x"})
            EXPECT_EQ(WithOrientation(std::string(rows) + columns).Orientation(), otherwise) << rows << columns;
    }
    EXPECT_EQ(static_cast<int>(WithOrientation("090,090").Orientation()), 4);
    EXPECT_EQ(static_cast<int>(WithOrientation("270,270").Orientation()), 5);
}

}  // namespace
