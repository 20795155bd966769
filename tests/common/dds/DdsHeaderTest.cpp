#include "common/dds/DdsHeader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <utility>

namespace Kavra::Tests {
namespace {

using namespace Devices::Dds;
using Bytes = std::vector<unsigned char>;

void Set(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> 8 * i);
}

/// A header of so many bytes with nothing in it but what every file has.
Bytes Blank(std::size_t size) {
    Bytes bytes(size);
    std::memcpy(bytes.data(), "DDS ", 4);
    Set(bytes, 4, 124);
    Set(bytes, 76, 32);
    return bytes;
}

/// One that says "DX10", with or without the flag that means it.
Bytes Dx10(bool flagged, std::size_t size = 148) {
    Bytes bytes = Blank(size);
    Set(bytes, 80, flagged ? 0x4 : 0x40);
    std::memcpy(&bytes.at(84), "DX10", 4);
    return bytes;
}

/// Where each field lies, by the description of the format.
constexpr std::pair<std::size_t, std::uint32_t Header::*> kPlaces[] = {
    {8, &Header::flags},       {12, &Header::height},      {16, &Header::width},      {20, &Header::pitch},
    {24, &Header::depth},      {28, &Header::mipCount},    {88, &Header::bitCount},   {92, &Header::redMask},
    {96, &Header::greenMask},  {100, &Header::blueMask},   {104, &Header::alphaMask}, {108, &Header::caps1},
    {112, &Header::caps2},     {128, &Header::dxgiFormat}, {132, &Header::dimension}, {136, &Header::misc},
    {140, &Header::arraySize},
};

TEST(DdsHeader, EveryFieldHasItsPlace) {
    Bytes bytes = Dx10(true);
    for (const auto& [offset, field] : kPlaces)
        Set(bytes, offset, 0x89AB0000 + static_cast<std::uint32_t>(offset));
    const std::optional<Header> header = ParseHeader(bytes);
    ASSERT_TRUE(header);
    for (const auto& [offset, field] : kPlaces)
        EXPECT_EQ((*header).*field, 0x89AB0000 + offset) << offset;
    EXPECT_EQ(header->pixelFlags, 4U);
    EXPECT_EQ(header->fourCC, 0x30315844U) << "DX10, its first letter lowest";
    EXPECT_EQ(ComposeHeader(*header), bytes);
}

TEST(DdsHeader, ReservedFieldsAreNotKept) {
    Bytes bytes = Blank(128);
    for (std::size_t reserved = 32; reserved < 76; reserved += 4)
        Set(bytes, reserved, 0xFFFFFFFF);
    for (std::size_t reserved = 116; reserved < 128; reserved += 4)
        Set(bytes, reserved, 0xFFFFFFFF);
    const std::optional<Header> header = ParseHeader(bytes);
    ASSERT_TRUE(header);
    EXPECT_EQ(*header, Header());
    EXPECT_EQ(ComposeHeader(*header), Blank(128));
}

TEST(DdsHeader, AWrongMagicNumberOrStructureSizeIsNoDds) {
    ASSERT_TRUE(ParseHeader(Blank(128)));
    for (const auto& [offset, value] : std::initializer_list<std::pair<std::size_t, std::uint32_t>>{
             {0, 0x20534445}, {4, 0}, {4, 128}, {76, 0}, {76, 0xFFFFFFFF}}) {
        Bytes bytes = Blank(128);
        Set(bytes, offset, value);
        EXPECT_FALSE(ParseHeader(bytes)) << offset << " " << value;
    }
}

TEST(DdsHeader, OneThatIsCutOffIsNone) {
    const Bytes plain = Blank(128);
    const Bytes extended = Dx10(true);
    for (std::size_t size = 0; size < plain.size(); ++size)
        EXPECT_FALSE(ParseHeader(std::span(plain).first(size))) << size;
    for (std::size_t size = 0; size < extended.size(); ++size)
        EXPECT_FALSE(ParseHeader(std::span(extended).first(size))) << size;
    EXPECT_EQ(ParseHeader(plain)->Bytes(), 128U);
    EXPECT_EQ(ParseHeader(extended)->Bytes(), 148U);
}

TEST(DdsHeader, PixelsBehindAPlainHeaderAreNoExtension) {
    Bytes bytes = Blank(128);
    bytes.resize(148, 0xFF);
    EXPECT_EQ(ParseHeader(bytes), Header());
}

TEST(DdsHeader, TheExtensionFollowsACodeThatIsMeant) {
    EXPECT_TRUE(ParseHeader(Dx10(true))->isExtended);
    EXPECT_FALSE(ParseHeader(Dx10(false))->isExtended);
    Bytes flaggedOnly = Blank(148);
    Set(flaggedOnly, 80, 0x4);
    EXPECT_FALSE(ParseHeader(flaggedOnly)->isExtended);
}

TEST(DdsHeader, ByTheOtherRuleTheCodeAloneSaysThatTheExtensionFollows) {
    Bytes bytes = Dx10(false);
    Set(bytes, 128, 28);
    const std::optional<Header> header = ParseHeader(bytes, ExtensionRule::kAnyCode);
    ASSERT_TRUE(header);
    EXPECT_TRUE(header->isExtended);
    EXPECT_EQ(header->dxgiFormat, 28U);
    EXPECT_EQ(ComposeHeader(*header), bytes);

    EXPECT_TRUE(ParseHeader(Dx10(true), ExtensionRule::kAnyCode)->isExtended);
    EXPECT_FALSE(ParseHeader(Blank(148), ExtensionRule::kAnyCode)->isExtended);
    EXPECT_TRUE(ParseHeader(Dx10(false, 147))) << "the plain header is whole";
    EXPECT_FALSE(ParseHeader(Dx10(false, 147), ExtensionRule::kAnyCode));
}

TEST(DdsHeader, TheCapsNameAFaceABit) {
    for (int face = 0; face < 6; ++face) {
        Header header;
        header.caps2 = 0x400U << face;
        EXPECT_EQ(header.NamedFaces(), 1U << face);
    }
    Header header;
    header.caps2 = 0xFFFF03FF;
    EXPECT_EQ(header.NamedFaces(), 0U);
    header.caps2 = 0xFC00;
    EXPECT_EQ(header.NamedFaces(), kAllFaces);
}

}  // namespace
}  // namespace Kavra::Tests
