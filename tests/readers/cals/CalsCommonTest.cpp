// CALS drawings in the common reading, beside the contract's. Letters are those of `BilevelPicture`: '.' black, '#' white.

#include "legacy/CalsFile.h"
#include "legacy/CcittEncoder.h"
#include "readers/BilevelPicture.h"
#include "readers/BothReadings.h"
#include "readers/FileTypeDetection.h"
#include "readers/cals/CalsReader.h"
#include "readers/ccitt/CcittStreams.h"
#include "support/Loading.h"

#include <kavra/devices/LoadPreferences.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <array>
#include <format>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Legacy::Bitmap;
using Kavra::Legacy::CalsFile;
using Kavra::Legacy::CalsHeaderBytes;
using Kavra::Legacy::EncodeGroup4;

using Texts = std::vector<std::wstring>;

Read Common(const ByteBuilder& file) {
    const TemporaryFolder folder;
    return ReadIn<CALSReader>(kLegacyCommon, folder.Write("file.cal", file.Bytes()));
}

Read Contract(const ByteBuilder& file) {
    const TemporaryFolder folder;
    return ReadIn<CALSReader>(kLegacyContract, folder.Write("file.cal", file.Bytes()));
}

DetectedFile DetectIn(ELegacyReading reading, const ByteBuilder& file) {
    const TemporaryFolder folder;
    return DetectFile(Wide(folder.Write("file.cal", file.Bytes())), reading);
}

/// 8 x 2 pixels: black ones in the middle of the first row, a longer run in the second.
constexpr const char* kCodes = "001 1000 11 1  1 011 1";
constexpr const char* kInk = "###..###|###...##|";
constexpr const char* kEndOfBlock = " 000000000001 000000000001";

ByteBuilder FileOf(int width, int height, std::string_view codes) {
    return CalsHeaderBytes({.counts = std::format("{},{}", width, height)}).Append(Codes(codes));
}

/// A header of these records, each of so many bytes, and the image of `kCodes`.
ByteBuilder FileOf(const std::vector<std::string>& records, std::size_t recordBytes, std::string_view recordEnd = "") {
    ByteBuilder file;
    for (std::string record : records) {
        if (record.size() < recordBytes) record.resize(recordBytes, ' ');
        file.Text(record + std::string(recordEnd));
    }
    return file.Append(Codes(kCodes));
}

const std::vector<std::string> kRecords = {"srcdocid: NONE", "dstdocid: NONE",    "txtfilid: NONE",
                                           "figid: NONE",    "srcgph: NONE",      "doccls: NONE",
                                           "rtype: 1",       "rorient: 000,270",  "rpelcnt: 000008,000002",
                                           "rdensty: 0300",  "notes: it is white"};

TEST(CalsCommon, InkIsBlackOnWhite) {
    const ByteBuilder file = FileOf(8, 2, kCodes);
    const Read read = Common(file);
    EXPECT_TRUE(read.read);
    EXPECT_EQ(BilevelPicture(read), kInk);
    EXPECT_TRUE(read.messages.empty());
    EXPECT_EQ(read.note, "");
    EXPECT_EQ(BilevelPicture(Contract(file)), "...##...|...###..|");
    EXPECT_EQ(Contract(file).note, "drawings are shown in negative by the host's rules");
}

TEST(CalsCommon, AnyImageComesBackAsItWas) {
    std::mt19937 random(5);
    for (int round = 0; round < 30; ++round) {
        const Bitmap image =
            RandomBitmap(random, 1 + static_cast<int>(random() % 300), 1 + static_cast<int>(random() % 40));
        const Read read = Common(CalsFile(image));
        ASSERT_EQ(read.width, image.width);
        std::string expected;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x)
                expected += image.At(x, y) ? '.' : '#';
            expected += '|';
        }
        ASSERT_EQ(BilevelPicture(read), expected);
        ASSERT_TRUE(read.messages.empty());
    }
}

// What is stored is written out here by hand for each pair of angles: a picture of 3 x 2 pixels, the letters
//     A B C
//     D E F
// of which A, B and E are ink, walked through in the direction of the pixels of a row, then from row to row.
TEST(CalsCommon, AllEightOrientationsStandUpright) {
    struct Walk {
        const char* angles;
        const char* rows;  // as stored
        EDataOrientation orientation;
        EDataOrientation ofContract;
    };
    constexpr std::array<Walk, 8> kWalks = {{
        {"000,270", "ABC|DEF|", kTopLeft, kTopLeft},          // right, then down
        {"000,090", "DEF|ABC|", kBottomLeft, kBottomLeft},    // right, then up
        {"090,270", "DA|EB|FC|", kLeftBottom, kLeftBottom},   // up, then right
        {"090,090", "FC|EB|DA|", kRightBottom, kLeftTop},     // up, then left
        {"180,270", "FED|CBA|", kBottomRight, kBottomRight},  // left, then up
        {"180,090", "CBA|FED|", kTopRight, kTopRight},        // left, then down
        {"270,270", "CF|BE|AD|", kRightTop, kRightTop},       // down, then left
        {"270,090", "AD|BE|CF|", kLeftTop, kRightBottom},     // down, then right
    }};
    for (const Walk& walk : kWalks) {
        const std::string_view rows(walk.rows);
        const auto width = static_cast<int>(rows.find('|'));
        const int height = static_cast<int>(std::ranges::count(rows, '|'));
        Bitmap stored(width, height);
        int x = 0, y = 0;
        for (const char letter : rows) {
            if (letter == '|') {
                x = 0, ++y;
                continue;
            }
            if (letter == 'A' || letter == 'B' || letter == 'E') stored.Set(x, y);
            ++x;
        }
        const TemporaryFolder folder;
        const auto path = folder.Write("file.cal", CalsFile(stored, {.orientation = walk.angles}).Bytes());
        EXPECT_EQ(ReadIn<CALSReader>(kLegacyCommon, path).orientation, walk.orientation) << walk.angles;
        EXPECT_EQ(ReadIn<CALSReader>(kLegacyContract, path).orientation, walk.ofContract) << walk.angles;

        OIIOImageHandler handler;
        LoadPreferences preferences;
        preferences.legacy = kLegacyCommon;
        const LoadPreferencesScope scope(preferences);
        const auto loaded = LoadFile(handler, path);
        ASSERT_TRUE(loaded) << walk.angles;
        EXPECT_EQ(loaded->desc.width, 3);
        EXPECT_EQ(loaded->desc.height, 2);
        std::string letters;
        for (std::size_t at = 0; at < loaded->bytes.size(); at += 4)
            letters += loaded->bytes[at] == 0 ? '.' : '#';
        EXPECT_EQ(letters, "..##.#") << walk.angles;
    }
}

TEST(CalsCommon, AnglesThatAreMissingOrNoneLeaveItUpright) {
    for (const char* orientation : {"", "NONE", "045,270", "000", "0 , 270", "360,270"}) {
        const ByteBuilder file = CalsHeaderBytes({.orientation = orientation, .counts = "8,2"}).Append(Codes(kCodes));
        EXPECT_EQ(Common(file).orientation, kTopLeft) << orientation;
        EXPECT_EQ(BilevelPicture(Common(file)), kInk) << orientation;
    }
    EXPECT_EQ(Common(CalsHeaderBytes({.orientation = "90", .counts = "8,2"}).Append(Codes(kCodes))).orientation,
              kLeftBottom);
}

TEST(CalsCommon, RecordsHaveAnyKindOfEnd) {
    const std::pair<std::size_t, const char*> cases[] = {{128, ""},   {126, "\r\n"}, {127, "\n"}, {128, "\r\n"},
                                                         {128, "\n"}, {0, "\n"},     {0, "\r\n"}};
    for (const auto& [bytes, end] : cases) {
        const ByteBuilder file = FileOf(kRecords, bytes, end);
        EXPECT_EQ(BilevelPicture(Common(file)), kInk) << bytes << " and " << std::string(end).size();
        EXPECT_EQ(DetectIn(kLegacyCommon, file).type, CALS) << bytes;
        EXPECT_TRUE(DetectIn(kLegacyCommon, file).isShown);
    }
}

TEST(CalsCommon, TheHeaderIsFilledUpToAnyLength) {
    for (const std::size_t records : {11U, 12U, 15U, 16U, 20U, 32U}) {
        std::vector<std::string> all = kRecords;
        all.resize(records);
        EXPECT_EQ(BilevelPicture(Common(FileOf(all, 128))), kInk) << records;
        EXPECT_EQ(BilevelPicture(Common(FileOf(all, 128, "\r\n"))), kInk) << records;
    }
    ByteBuilder lines = FileOf(kRecords, 0, "\r\n");
    const std::size_t header = lines.Size() - Codes(kCodes).size();
    lines.CutTo(header);
    lines.At(header).Fill(2048 - header, ' ');
    EXPECT_EQ(BilevelPicture(Common(lines.At(2048).Append(Codes(kCodes)))), kInk);
    lines.CutTo(header);
    lines.At(header).Fill(2048 - header, 0);
    EXPECT_EQ(BilevelPicture(Common(lines.At(2048).Append(Codes(kCodes)))), kInk) << "with zeros, too";
}

TEST(CalsCommon, UnusedRecordsMayHoldAnything) {
    const Bitmap image = [] {
        std::mt19937 random(7);
        return RandomBitmap(random, 60, 40);
    }();
    ByteBuilder file = CalsFile(image);
    const std::string plain = BilevelPicture(Common(file));
    for (std::size_t at = 1408; at < 2048; ++at)
        file.At(at).Byte(static_cast<unsigned>(at * 37 & 0xFF));
    EXPECT_EQ(BilevelPicture(Common(file)), plain);
}

TEST(CalsCommon, KeysComeInAnyCaseAndOrder) {
    const ByteBuilder file = FileOf({"SRCDOCID : 1", "RPELCNT :  0008 , 002   pels", "Notes: rpelcnt 1,1 was wrong",
                                     "RTYPE:1 (untiled)", "ROrient:000,270"},
                                    128);
    EXPECT_EQ(BilevelPicture(Common(file)), kInk);
    EXPECT_EQ(DetectIn(kLegacyCommon, file).type, CALS);
    EXPECT_EQ(DetectIn(kLegacyContract, file).type, Other);
    EXPECT_EQ(BilevelPicture(Common(FileOf({"rpelcnt: 8 2"}, 128))), kInk) << "one record is enough";
    EXPECT_EQ(BilevelPicture(Common(FileOf({"version: MIL-STD-1840A", "rpelcnt: 8,2"}, 128))), kInk);
}

TEST(CalsCommon, TiledRastersAreRefusedWithTheirReason) {
    const ByteBuilder file = CalsHeaderBytes({.counts = "8,2"}).At(768).Text("rtype: 2").At(2048).Append(Codes(kCodes));
    const Read read = Common(file);
    EXPECT_TRUE(read.opened) << "and described";
    EXPECT_EQ(read.width, 8);
    EXPECT_FALSE(read.read);
    EXPECT_EQ(read.messages, (Texts{L"CALS rasters of type 2 are not read: type 1 is"}));
    EXPECT_EQ(DetectIn(kLegacyCommon, file).type, CALS);
    EXPECT_FALSE(DetectIn(kLegacyCommon, file).isShown);
    EXPECT_EQ(DetectIn(kLegacyContract, file).type, Other);
}

TEST(CalsCommon, TheImageEndsWithItsEndOfBlock) {
    EXPECT_EQ(BilevelPicture(Common(FileOf(8, 5, kCodes + std::string(kEndOfBlock) + "0000 10101010 11111111"))),
              std::string(kInk) + "########|########|########|");
    EXPECT_EQ(BilevelPicture(Common(FileOf(8, 4, kCodes))), std::string(kInk) + "########|########|")
        << "or with its data";
    EXPECT_EQ(BilevelPicture(Common(FileOf(8, 1, kCodes))), "###..###|") << "or with the rows of its header";
    EXPECT_TRUE(Common(FileOf(8, 5, kCodes)).messages.empty());
}

TEST(CalsCommon, ASingleEndOfLineBeforeARowIsSteppedOver) {
    EXPECT_EQ(BilevelPicture(Common(FileOf(8, 2, "000000000001 001 1000 11 1 000000000001 1 011 1"))), kInk);
}

TEST(CalsCommon, AMissingNumberOfRowsIsCounted) {
    for (const char* counts : {"8", "8,0", "000008,", "8 rows unknown"}) {
        const ByteBuilder file = CalsHeaderBytes({.counts = counts}).Append(Codes(kCodes + std::string(kEndOfBlock)));
        EXPECT_EQ(BilevelPicture(Common(file)), kInk) << counts;
    }
}

TEST(CalsCommon, ABadCodeEndsTheImageWithOneWarning) {
    const Read read = Common(FileOf(8, 5, std::string(kCodes) + "001 000000001 1111 1 1 1 1 0000010 1 1"));
    EXPECT_TRUE(read.read);
    EXPECT_EQ(BilevelPicture(read), std::string(kInk) + "########|########|########|");
    EXPECT_EQ(read.messages, (Texts{L"Bad code word in WhiteTable at scanline (x 0)"}));
}

TEST(CalsCommon, WhatIsNoCalsIsNotOpened) {
    for (const std::string text : {"", "srcdocid: NONE", "rpelcnt", "rpelcnt:", "rpelcnt: x", "rpelcnt: 0,5",
                                   "hello rpelcnt: 5,5", "xrpelcnt: 5,5"}) {
        const ByteBuilder file = ByteBuilder().Text(text);
        EXPECT_FALSE(Common(file).opened) << text;
        EXPECT_EQ(DetectIn(kLegacyCommon, file).type, Other) << text;
    }
    EXPECT_FALSE(Common(FileOf({"srcdocid: NONE", "rtype: 1"}, 128)).opened);
}

TEST(CalsCommon, HugeSidesMakeNothingHuge) {
    const ByteBuilder file =
        CalsHeaderBytes({.counts = "2147483647,0"}).At(1500).Byte(0xFF).At(2048).Append(Codes(kCodes));
    EXPECT_TRUE(Common(file).opened);
    EXPECT_EQ(Common(file).height, 0);
    EXPECT_FALSE(Common(file).read);
}

TEST(CalsCommon, CutFilesAreWhiteWhereTheirDataEnd) {
    const ByteBuilder whole = FileOf(8, 2, kCodes);
    for (std::size_t bytes = 1200; bytes <= whole.Size(); bytes += 7) {
        ByteBuilder file = whole;
        const Read read = Common(file.CutTo(bytes));
        EXPECT_TRUE(read.read) << bytes;
        EXPECT_TRUE(IsBilevel(read)) << bytes;
    }
    EXPECT_EQ(BilevelPicture(Common(ByteBuilder(whole).CutTo(2048))), "########|########|");
}

}  // namespace
