// What a confined child says is a parser's input: records come through whole, all else is refused.

#include "common/isolation/DecoderRecords.h"
#include "common/isolation/DecoderRequest.h"
#include "common/isolation/InspectionRecords.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

using namespace Kavra::Common;
using namespace Kavra::Devices;

namespace {

/// 4 x 3 pixels of four bytes.
PictureRecord SmallPicture() {
    PictureRecord record;
    record.desc.width = 4;
    record.desc.height = 3;
    record.desc.depth = 1;
    record.desc.format = kR8G8B8A8;
    record.desc.rowPitch = 16;
    record.desc.dataSize = 48;
    record.desc.textureType = kTexture2D;
    record.desc.hasAlpha = true;
    record.desc.gamma = 2.2;
    record.offset = 8192;
    record.blockBytes = 48;
    return record;
}

bool IsSound(const PictureRecord& record) {
    return ParseRecord(PacketOf(record)).has_value();
}

template <class Change>
bool IsSoundWith(Change&& change) {
    PictureRecord record = SmallPicture();
    change(record);
    return IsSound(record);
}

template <class T>
T Through(const T& record) {
    const auto parsed = ParseRecord(PacketOf(record));
    return parsed && std::holds_alternative<T>(*parsed) ? std::get<T>(*parsed) : T{};
}

}  // namespace

TEST(DecoderRecords, ComeThroughAsTheyAre) {
    const PictureRecord picture = Through(SmallPicture());
    EXPECT_EQ(picture.desc.width, 4);
    EXPECT_EQ(picture.desc.dataSize, 48U);
    EXPECT_TRUE(picture.desc.hasAlpha);
    EXPECT_FALSE(picture.desc.hasTransparentPixels);
    EXPECT_EQ(picture.offset, 8192U);
    const MessageRecord message = Through(MessageRecord{.isError = true, .text = "wörd", .detail = "d"});
    EXPECT_TRUE(message.isError);
    EXPECT_EQ(message.text, "wörd");
    EXPECT_EQ(message.detail, "d");
    FailureRecord failure;
    failure.report.kind = kFailureEndsEarly;
    failure.report.goodRows = 37;
    failure.text = "ends early";
    EXPECT_EQ(Through(failure).report.goodRows, 37);
    EXPECT_EQ(Through(failure).text, "ends early");
    EXPECT_EQ(Through(QuestionRecord{kR16F, 2}).fileFormat, kR16F);
    EXPECT_EQ(Through(DescriptionRecord{.width = 5, .format = kL8}).width, 5);
    EXPECT_TRUE(ParseRecord(PacketOf(DoneRecord{})).has_value());
}

TEST(DecoderRecords, PicturesThatSayMoreThanTheirBlockHoldsAreRefused) {
    EXPECT_TRUE(IsSound(SmallPicture()));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.blockBytes = 47; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.height = 4; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.depth = 2; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.width = 5; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.rowPitch = 15; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.rowPitch = -16; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.textureType = kTextureCube; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.dataSize = std::numeric_limits<std::uint64_t>::max(); }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.offset = 100; }));
}

TEST(DecoderRecords, BlocksOfCompressedPicturesAreCountedInBlocks) {
    const auto compressed = [](std::uint64_t bytes) {
        return IsSoundWith([bytes](PictureRecord& r) {
            r.desc.width = r.desc.height = 5;  // 2 x 2 blocks of 8 bytes
            r.desc.format = kBC1;
            r.desc.rowPitch = 0;
            r.desc.dataSize = r.blockBytes = bytes;
        });
    };
    EXPECT_TRUE(compressed(32));
    EXPECT_FALSE(compressed(31));
}

TEST(DecoderRecords, ValuesThatAreNoneAreRefused) {
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.width = 0; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.height = -3; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.format = static_cast<EFormat>(79); }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.format = kUnknown; }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.textureType = static_cast<ETextureType>(2); }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.orientation = static_cast<EDataOrientation>(8); }));
    EXPECT_FALSE(IsSoundWith([](PictureRecord& r) { r.desc.gamma = std::numeric_limits<double>::quiet_NaN(); }));
    FailureRecord failure;
    failure.report.kind = static_cast<EFailureKind>(23);
    EXPECT_FALSE(ParseRecord(PacketOf(failure)).has_value());
}

TEST(DecoderRecords, PacketsThatAreCutOrTooLongAreRefused) {
    const std::vector<DecoderRecord> records = {
        SmallPicture(),         MessageRecord{.text = "text", .detail = std::nullopt},
        QuestionRecord{kR8, 1}, DescriptionRecord{.format = kL8},
        InspectionRecord{},     FailureRecord{}};
    for (const DecoderRecord& record : records) {
        const std::vector<unsigned char> packet = PacketOf(record);
        for (std::size_t length = 0; length < packet.size(); ++length)
            EXPECT_FALSE(ParseRecord(std::span(packet).first(length)).has_value()) << record.index() << ' ' << length;
        std::vector<unsigned char> longer = packet;
        longer.push_back(0);
        EXPECT_FALSE(ParseRecord(longer).has_value()) << record.index();
    }
    EXPECT_FALSE(ParseRecord({}).has_value());
    EXPECT_FALSE(ParseRecord(std::vector<unsigned char>{8, 0, 0, 0}).has_value());
}

TEST(DecoderRecords, TextsLeadNoTerminalAstray) {
    EXPECT_EQ(Through(MessageRecord{.text = "a\033[2Jb\nc\x7F", .detail = std::nullopt}).text, "a�[2Jb�c�");
    EXPECT_EQ(Through(DifferenceRecord{"\xFF\xC2\x9B"}).text, "��");
    EXPECT_EQ(CleanText("gut: Größe"), "gut: Größe");
}

TEST(DecoderRecords, LongTextsAreCutToAPacket) {
    const std::vector<unsigned char> packet =
        PacketOf(MessageRecord{.text = std::string(1 << 20, 'x'), .detail = std::string(1 << 20, 'y')});
    EXPECT_LE(packet.size(), std::size_t{64} << 10);
    EXPECT_TRUE(ParseRecord(packet).has_value());
}

TEST(DecoderRecords, RequestsComeThroughAsTheyAre) {
    DecoderRequest request;
    request.wish.width = 12;
    request.wish.preferences.bounded = true;
    request.choosesChannels = true;
    request.channels = "Z";
    request.names = {"/a/b.bil", "/a/b.hdr"};
    DecoderRequest again;
    ASSERT_TRUE(FromBytes(ToBytes(request), again));
    EXPECT_EQ(again.wish.width, 12);
    EXPECT_TRUE(again.wish.preferences.bounded);
    EXPECT_EQ(again.channels, "Z");
    EXPECT_EQ(again.names, request.names);
}

TEST(InspectionRecords, BytesThatAreNoInspectionAreRefused) {
    EXPECT_EQ(ParseInspection({}), nullptr);
    for (std::size_t bytes = 1; bytes < 300; ++bytes) {
        const std::vector<unsigned char> ones(bytes, 1), all(bytes, 0xFF);
        const std::unique_ptr<IFileInspection> one(ParseInspection(ones)), other(ParseInspection(all));
        EXPECT_EQ(one, nullptr) << bytes;
        EXPECT_EQ(other, nullptr) << bytes;
    }
}
