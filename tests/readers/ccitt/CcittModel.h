/// A slow decoder of fax data that does everything by the book, for comparison with the fast one.
#pragma once

#include "readers/ccitt/CcittCodes.h"
#include "readers/ccitt/CcittDecoder.h"

#include <algorithm>
#include <cstdint>
#include <format>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Tests {

/// Takes bytes into a 32-bit accumulator one at a time, matches code words as strings, keeps runs as lengths, looks
/// changes up in the reference row anew each time, and paints pixel by pixel.
class CcittModel {
public:
    CcittModel(std::span<const unsigned char> data, int width, Devices::Ccitt::Mode mode,
               Devices::Ccitt::BitOrder order)
        : mData(data.begin(), data.end()),
          mWidth(width),
          mMode(mode),
          mReversed(order == Devices::Ccitt::BitOrder::kMostSignificantFirst),
          mReference{width} {}

    /// What the last bad code was called.
    const std::wstring& Message() const { return mMessage; }

    Devices::Ccitt::Result DecodeRow(std::span<unsigned char> packed) {
        const std::uint32_t bits = mBits;
        const int count = mCount;
        const bool ended = mZerosTaken;
        mRuns.clear();
        mA0 = mPending = 0;
        try {
            DecodeRuns();
            Paint(packed);
            return Devices::Ccitt::Result::kDecoded;
        } catch (const EndOfData&) {
            mBits = 0;
            mCount = 0;
            Paint(packed);
            return Devices::Ccitt::Result::kEndOfData;
        } catch (const BadCode& bad) {
            mBits = bits;
            mCount = count;
            mZerosTaken = ended;
            mMessage = std::format(L"Bad code word in {} at scanline (x {})", bad.table, mA0);
            return Devices::Ccitt::Result::kBadCode;
        }
    }

private:
    struct EndOfData {};
    struct BadCode {
        const wchar_t* table;
    };
    using Words = std::vector<std::pair<std::string, int>>;

    // Bits

    void Need(int count) {
        mCut = false;
        while (mCount < count) {
            if (mNext == mData.size()) {
                if (mCount == 0) throw EndOfData();
                mCut = true;
                return;
            }
            unsigned byte = mData[mNext++];
            if (mReversed) {
                unsigned turned = 0;
                for (int bit = 0; bit < 8; ++bit)
                    turned |= (byte >> bit & 1) << (7 - bit);
                byte = turned;
            }
            mBits |= byte << mCount;
            mCount += 8;
        }
    }
    void Drop(std::size_t count) {
        mBits >>= count;
        mCount = std::max(0, mCount - static_cast<int>(count));
    }
    bool Bit() {
        Need(1);
        const bool bit = (mBits & 1) != 0;
        Drop(1);
        return bit;
    }
    [[noreturn]] void Fail(const wchar_t* table) const {
        if (mCut) throw EndOfData();
        throw BadCode(table);
    }

    /// The word with which the next bits begin; empty when there is none.
    std::string Match(int look, const Words& words) {
        Need(look);
        std::string bits;
        for (int i = 0; i < look; ++i)
            bits += (mBits >> i & 1) != 0 ? '1' : '0';
        for (const auto& [word, length] : words) {
            if (bits.starts_with(word)) {
                Drop(word.size());
                mValue = length;
                return word;
            }
        }
        return {};
    }

    // Runs

    bool IsBlack() const { return mRuns.size() % 2 == 1; }

    void AddRun(std::int64_t length) {
        if (mRuns.size() == static_cast<std::size_t>(mWidth) + 4) Fail(L"MainTable");
        mRuns.push_back(length);
    }

    static Words RunWords(bool black) {
        using namespace Devices::Ccitt;
        Words words;
        for (int i = 0; i < 64; ++i)
            words.emplace_back((black ? kBlackTerminating : kWhiteTerminating)[i], i);
        for (int i = 0; i < 27; ++i)
            words.emplace_back((black ? kBlackMakeUp : kWhiteMakeUp)[i], 64 * i + 64);
        for (int i = 0; i < 13; ++i)
            words.emplace_back(kCommonMakeUp[i], 64 * i + 1792);
        words.emplace_back("00000000000", -1);
        return words;
    }

    /// False on the zeros of an end of line.
    bool Run() {
        static const Words white = RunWords(false);
        static const Words black = RunWords(true);
        const bool isBlack = IsBlack();
        for (;;) {
            const std::string word = Match(isBlack ? 13 : 12, isBlack ? black : white);
            if (word.empty()) Fail(isBlack ? L"BlackTable" : L"WhiteTable");
            if (mValue < 0) return false;
            mPending += mValue;
            mA0 += mValue;
            if (mValue >= 64) continue;
            AddRun(mPending);
            mPending = 0;
            return true;
        }
    }

    /// The first change beyond a0 (or at it, for the first code of a row) away from the present colour, and the one
    /// behind it.
    std::pair<std::int64_t, std::int64_t> Changes(bool first) const {
        auto change = first ? mReference.begin() : std::ranges::upper_bound(mReference, mA0);
        if (change != mReference.end() && ((change - mReference.begin()) % 2 == 1) != IsBlack()) ++change;
        if (change == mReference.end()) return {mWidth, mWidth};
        return {*change, change + 1 == mReference.end() ? mWidth : change[1]};
    }

    void Vertical(std::int64_t b1, int offset) {
        if (b1 + offset < mA0) Fail(L"MainTable");
        AddRun(mPending + b1 + offset - mA0);
        mPending = 0;
        mA0 = b1 + offset;
    }

    void TwoDimensional() {
        static const Words words = {{"0001", 0},     {"001", 0},     {"1", 0},      {"011", 1},
                                    {"000011", 2},   {"0000011", 3}, {"010", -1},   {"000010", -2},
                                    {"0000010", -3}, {"0000001", 0}, {"0000000", 0}};
        for (bool first = true; mA0 < mWidth; first = false) {
            const auto [b1, b2] = Changes(first);
            const std::string word = Match(7, words);
            if (word == "0001") {
                mPending += b2 - mA0;
                mA0 = b2;
            } else if (word == "001") {
                for (int run = 0; run < 2; ++run) {
                    const bool black = IsBlack();
                    if (!Run()) Fail(black ? L"BlackTable" : L"WhiteTable");
                }
            } else if (word == "0000001" || word == "0000000") {
                AddRun(mPending + mWidth - mA0);
                mPending = 0;
                if (word == "0000001") return;
                Need(4);
                if ((mBits & 15) != 0) Fail(L"EOL");
                Drop(4);
                mZerosTaken = true;
                return;
            } else {
                Vertical(b1, mValue);
            }
        }
        if (mPending > 0) AddRun(mPending);
        mPending = 0;
    }

    void OneDimensional() {
        while (mA0 < mWidth) {
            if (Run()) continue;
            mZerosTaken = true;
            return;
        }
    }

    void SkipEndOfLine() {
        if (!mZerosTaken) {
            for (Need(11); (mBits & 0x7FF) != 0; Need(11))
                Drop(1);
        }
        while (!Bit()) {
        }
        mZerosTaken = false;
    }

    void DecodeRuns() {
        using enum Devices::Ccitt::Mode;
        if (mMode == kGroup3 || mMode == kGroup3TwoDimensional) SkipEndOfLine();
        if (mMode == kRows) Drop(static_cast<std::size_t>(mCount % 8));
        const bool flat = mMode == kGroup3 || mMode == kRows || (mMode == kGroup3TwoDimensional && Bit());
        if (flat) {
            OneDimensional();
        } else {
            TwoDimensional();
        }
    }

    void Paint(std::span<unsigned char> packed) {
        if (mPending > 0 && IsBlack()) mRuns.push_back(mPending);  // a white one is part of the white rest
        mReference.clear();
        std::int64_t position = 0;
        for (const std::int64_t run : mRuns) {
            position = std::min(position + run, mWidth);
            mReference.push_back(position);
        }
        if (position < mWidth && IsBlack()) mReference.push_back(position);
        if (position < mWidth) mReference.push_back(mWidth);

        std::ranges::fill(packed, 0);
        for (std::size_t black = 1; black < mReference.size(); black += 2) {
            for (std::int64_t x = mReference[black - 1]; x < mReference[black]; ++x)
                packed[static_cast<std::size_t>(x / 8)] |= static_cast<unsigned char>(0x80 >> x % 8);
        }
    }

    std::vector<unsigned char> mData;
    std::size_t mNext = 0;
    std::int64_t mWidth;
    Devices::Ccitt::Mode mMode;
    bool mReversed;
    std::uint32_t mBits = 0;
    int mCount = 0;
    bool mCut = false;
    bool mZerosTaken = false;
    int mValue = 0;
    std::vector<std::int64_t> mReference;  // where the runs of the row before end
    std::vector<std::int64_t> mRuns;       // lengths
    std::int64_t mA0 = 0;
    std::int64_t mPending = 0;
    std::wstring mMessage;
};

}  // namespace Kavra::Tests
