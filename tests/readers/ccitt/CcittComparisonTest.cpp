// The decoder beside a slow one, and beside the images that an encoder started from.

#include "legacy/CcittEncoder.h"
#include "readers/ccitt/CcittModel.h"
#include "readers/ccitt/CcittStreams.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace Kavra::Devices;
using Kavra::Common::ByteSource;
using namespace Kavra::Devices::Ccitt;
using namespace Kavra::Tests;
using Kavra::Legacy::Bitmap;

constexpr std::array kModes = {Mode::kGroup3, Mode::kRows, Mode::kGroup3TwoDimensional, Mode::kGroup4};

Bytes Encode(const Bitmap& image, Mode mode) {
    switch (mode) {
        case Mode::kGroup3:
            return Kavra::Legacy::EncodeGroup3(image);
        case Mode::kRows:
            return Kavra::Legacy::EncodeRows(image);
        case Mode::kGroup3TwoDimensional:
            return Kavra::Legacy::EncodeGroup3TwoDimensional(image, 4);
        case Mode::kGroup4:
            break;
    }
    return Kavra::Legacy::EncodeGroup4(image);
}

/// Both decoders say and deliver the same for every row.
void ExpectAgreement(const Bytes& data, int width, int height, Mode mode, BitOrder order) {
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, width, mode, order);
    CcittModel model(data, width, mode, order);
    const std::size_t rowBytes = (static_cast<std::size_t>(width) + 7) / 8;
    Bytes row(rowBytes);
    Bytes expected(rowBytes);
    for (int y = 0; y < height; ++y) {
        const Outcome result = decoder.DecodeRows(row);
        ASSERT_EQ(result, model.DecodeRow(expected)) << "row " << y;
        ASSERT_EQ(row, expected) << "row " << y;
        if (result != Outcome::kBadCode) continue;
        ASSERT_EQ(decoder.LastBadCode().Message().data(), model.Message()) << "row " << y;
    }
}

class CcittModes : public testing::TestWithParam<Mode> {
protected:
    int Below(int limit) { return static_cast<int>(mRandom() % static_cast<unsigned>(limit)); }

    std::mt19937 mRandom{20};
};

std::string NameOf(const testing::TestParamInfo<Mode>& info) {
    constexpr std::array kNames = {"Group3", "Rows", "Group3TwoDimensional", "Group4"};
    return kNames[static_cast<std::size_t>(info.param)];
}

INSTANTIATE_TEST_SUITE_P(, CcittModes, testing::ValuesIn(kModes), NameOf);

TEST_P(CcittModes, WhatWasEncodedComesBack) {
    for (int round = 0; round < 400; ++round) {
        const Bitmap image = RandomBitmap(mRandom, 1 + Below(round % 10 == 0 ? 6000 : 200), 1 + Below(40));
        const Bytes data = Encode(image, GetParam());
        ByteSource source{std::span<const unsigned char>(data)};
        Decoder decoder(source, image.width, GetParam(), BitOrder::kMostSignificantFirst);
        Bytes rows(image.bytes.size(), 0xEE);
        ASSERT_EQ(decoder.DecodeRows(rows), Outcome::kDecoded);
        ASSERT_EQ(rows, image.bytes);
        ASSERT_EQ(decoder.RowsDecoded(), static_cast<std::uint64_t>(image.height));
    }
}

TEST_P(CcittModes, EveryRunLengthComesBackInBothColours) {
    constexpr int kWidth = 5300;
    Bitmap image(kWidth, 2 * 2700);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < y / 2; ++x)
            image.Set(y % 2 == 0 ? x : kWidth - 1 - x, y);
    }
    const Bytes data = Encode(image, GetParam());
    ByteSource source{std::span<const unsigned char>(data)};
    Decoder decoder(source, kWidth, GetParam(), BitOrder::kMostSignificantFirst);
    Bytes rows(image.bytes.size());
    ASSERT_EQ(decoder.DecodeRows(rows), Outcome::kDecoded);
    EXPECT_EQ(rows, image.bytes);
}

TEST_P(CcittModes, AgreesWithTheModelOnDataCutAtEveryLength) {
    for (int round = 0; round < 12; ++round) {
        const Bitmap image = RandomBitmap(mRandom, 1 + Below(90), 1 + Below(12));
        const Bytes whole = Encode(image, GetParam());
        for (std::size_t size = 0; size <= whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            ExpectAgreement(cut, image.width, image.height + 3, GetParam(), BitOrder::kMostSignificantFirst);
            ASSERT_FALSE(HasFatalFailure()) << "cut to " << size;
        }
    }
}

TEST_P(CcittModes, AgreesWithTheModelOnDamagedData) {
    for (int round = 0; round < 1500; ++round) {
        const Bitmap image = RandomBitmap(mRandom, 1 + Below(150), 1 + Below(25));
        Bytes data = Encode(image, GetParam());
        for (int damage = 1 + Below(4); damage > 0 && !data.empty(); --damage)
            data[static_cast<std::size_t>(Below(static_cast<int>(data.size())))] ^=
                static_cast<unsigned char>(1 << Below(8));
        ExpectAgreement(data, image.width, image.height + 3, GetParam(), BitOrder::kMostSignificantFirst);
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
}

TEST_P(CcittModes, AgreesWithTheModelOnNoise) {
    for (int round = 0; round < 2000; ++round) {
        Bytes data(static_cast<std::size_t>(Below(80)));
        // Each kind of noise reaches other codes: few ones lead to ends of line and unknown words, many to vertical
        // codes.
        const int ones = Below(4);
        for (unsigned char& byte : data) {
            byte = static_cast<unsigned char>(mRandom());
            if (ones == 0) byte &= static_cast<unsigned char>(mRandom() & mRandom());
            if (ones == 1) byte |= static_cast<unsigned char>(mRandom() | mRandom());
        }
        ExpectAgreement(data, 1 + Below(70), 20, GetParam(),
                        Below(2) == 0 ? BitOrder::kMostSignificantFirst : BitOrder::kLeastSignificantFirst);
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
}

TEST_P(CcittModes, AgreesWithTheModelOnRowsOfEmptyRuns) {
    // Few kinds of words, empty runs most of all: rows get as many runs as they hold, and more.
    constexpr std::array<std::string_view, 8> kWords = {
        "001001101010000110111", "1", "010", "011", "0001", "00110101", "0000110111", "000111"};
    for (int round = 0; round < 1000; ++round) {
        std::string codes(static_cast<std::size_t>(Below(8)), '1');
        for (int word = Below(60); word > 0; --word)
            codes += kWords[static_cast<std::size_t>(Below(3) == 0 ? Below(8) : 0)];
        ExpectAgreement(Codes(codes), 1 + Below(9), 20, GetParam(), BitOrder::kMostSignificantFirst);
        ASSERT_FALSE(HasFatalFailure()) << "round " << round;
    }
}

TEST_P(CcittModes, AgreesWithTheModelAcrossBufferEdges) {
    Bitmap noisy(3000, 90);
    for (int speck = 0; speck < 60'000; ++speck)
        noisy.Set(Below(noisy.width), Below(noisy.height));
    Bytes data = Encode(noisy, GetParam());
    ASSERT_GT(data.size(), 20'000U) << "several buffers";
    ExpectAgreement(data, noisy.width, noisy.height + 2, GetParam(), BitOrder::kMostSignificantFirst);
    for (int damage = 0; damage < 60; ++damage)
        data[static_cast<std::size_t>(Below(static_cast<int>(data.size())))] ^= 0x10;
    for (std::size_t edge = 8180; edge < 8200; edge += 3) {
        Bytes damaged = data;
        damaged[edge] = damaged[edge + 1] = 0;
        damaged[2 * edge] = damaged[2 * edge + 1] = 0;
        ExpectAgreement(damaged, noisy.width, noisy.height + 2, GetParam(), BitOrder::kMostSignificantFirst);
        ASSERT_FALSE(HasFatalFailure()) << edge;
    }
}

}  // namespace
