// Damaged files: whatever they hold, the reader answers, and the same way every time.

#include "readers/Decode.h"
#include "readers/pcx/PcxBytes.h"
#include "readers/pcx/PcxReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

/// A small file of each layout, coded and raw, with data that reach into the third of four rows.
std::vector<ByteBuilder> SmallFiles() {
    std::vector<ByteBuilder> files;
    std::mt19937 random(7);
    for (const auto& [bits, planes] : {std::pair{1, 1}, {4, 1}, {8, 1}, {1, 4}, {2, 4}, {8, 3}, {1, 24}}) {
        for (const std::uint8_t encoding : {0, 1}) {
            PcxHeader header = PcxFields(bits, planes, 21, 4, 22);
            header.encoding = encoding;
            ByteBuilder file = PcxHead(header);
            for (int i = 0; i < 60; ++i)
                file.Byte(random() & 0xFF);
            if (header.HasTrailingPalette()) file.Append(PcxTail());
            files.push_back(file);
        }
    }
    return files;
}

class PcxHostile : public testing::Test {
protected:
    /// Decodes twice. Nothing may depend on what was there before, and no pixel may be half written.
    static void ExpectSound(const std::filesystem::path& path) {
        const Decoded first = DecodeFile<PCXReader>(path);
        const Decoded second = DecodeFile<PCXReader>(path);
        ASSERT_EQ(first.opened, second.opened);
        ASSERT_EQ(first.block, second.block);
        ASSERT_EQ(first.messages, second.messages);
        ASSERT_EQ(first.read, !first.block.empty()) << "decoding never fails";
        ASSERT_LE(first.messages.size(), 8U * static_cast<unsigned>(first.height)) << "one warning a line";
        const Bytes unwritten(4, kUnwritten);
        for (std::size_t at = 0; at < first.block.size(); at += 4) {
            const auto pixel = std::span(first.block).subspan(at, 4);
            ASSERT_TRUE(pixel[3] == 255 || std::ranges::equal(pixel, unwritten)) << at;
        }
    }

    std::filesystem::path Write(const ByteBuilder& file) const { return folder.Write("file", file.Bytes()); }

    /// Changes one byte of a file where it stands: thousands of files take a disk too long.
    static void Set(const std::filesystem::path& path, std::size_t at, unsigned char value) {
        std::fstream stream(path, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(at)).put(static_cast<char>(value));
        ASSERT_TRUE(stream.flush());
    }

    TemporaryFolder folder;
};

TEST_F(PcxHostile, FilesMayEndAnywhere) {
    for (const ByteBuilder& file : SmallFiles()) {
        const auto path = Write(file);
        for (std::size_t length = file.Size() + 1; length-- > 0;) {
            SCOPED_TRACE(length);
            std::filesystem::resize_file(path, length);
            ASSERT_NO_FATAL_FAILURE(ExpectSound(path));
        }
    }
}

TEST_F(PcxHostile, EveryByteOfTheHeaderMayBeAnything) {
    for (const ByteBuilder& file : SmallFiles()) {
        const auto path = Write(file);
        for (std::size_t at = 0; at < 70; ++at) {
            if (at == 11) continue;  // thousands of rows: see below
            for (const unsigned char value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
                SCOPED_TRACE(testing::Message() << at << " = " << int{value});
                ASSERT_NO_FATAL_FAILURE(Set(path, at, value));
                ASSERT_NO_FATAL_FAILURE(ExpectSound(path));
            }
            Set(path, at, file.Bytes()[at]);
        }
    }
}

TEST_F(PcxHostile, RowsThatTheFileDoesNotHoldCostAWarningALine) {
    PcxHeader header = PcxFields(1, 8, 1, 1, 0xFFFF);
    header.version = 3;
    header.yMax = 2'000;
    ExpectSound(Write(PcxHead(header, Bytes(1'000, 0xFF))));
    EXPECT_EQ(Decode<PCXReader>(PcxHead(header)).messages.size(), 8U * 2'001);
}

TEST_F(PcxHostile, TheLongestLinesAreReadForAPictureOfOnePixel) {
    for (const auto& [bits, planes] : {std::pair{8, 1}, {4, 1}, {1, 1}, {1, 8}, {1, 24}}) {
        for (const std::uint8_t encoding : {0, 1}) {
            PcxHeader header = PcxFields(bits, planes, 1, 1, 0xFFFF);
            header.encoding = encoding;
            ByteBuilder file = PcxHead(header);
            ExpectSound(Write(file.Fill(5000, 0xFF)));
        }
    }
}

TEST_F(PcxHostile, DataThatSayNothingAreWalkedOnce) {
    // Runs of no bytes: each takes two bytes of the file, so the work is bounded by its length.
    ByteBuilder file = PcxHead(PcxFields(8, 3, 100, 100, 100));
    file.Fill(100'000, 0xC0);
    const Decoded decoded = Decode<PCXReader>(file);
    EXPECT_TRUE(decoded.read);
    EXPECT_EQ(decoded.messages.size(), 300U);
}

}  // namespace
