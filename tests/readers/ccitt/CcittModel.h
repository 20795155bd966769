/// A slow decoder of fax data that does everything by the book, for comparison with the fast one.
#pragma once

#include "readers/ccitt/CcittCodes.h"
#include "readers/ccitt/CcittRows.h"

#include <algorithm>
#include <cstdint>
#include <format>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Kavra::Tests {

/// Takes bytes into a 32-bit accumulator one at a time, matches code words bit by bit, keeps runs as lengths, looks
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

    Devices::Ccitt::Outcome DecodeRow(std::span<unsigned char> packed) {
        const std::uint32_t bits = mBits;
        const int count = mCount;
        const bool zerosTaken = mZerosTaken;
        mRuns.clear();
        mA0 = mPending = 0;
        mResult = Devices::Ccitt::Outcome::kDecoded;
        DecodeRuns();
        if (mResult == Devices::Ccitt::Outcome::kBadCode) {
            mBits = bits;
            mCount = count;
            mZerosTaken = zerosTaken;
            return mResult;
        }
        if (mResult == Devices::Ccitt::Outcome::kEndOfData) mBits = mCount = 0;
        Paint(packed);
        return mResult;
    }

private:
    /// What a word stands for, by its bits behind a one.
    using Words = std::unordered_map<unsigned, int>;

    // Bits. What goes wrong is noted in mResult, once; false is then passed up.

    bool Need(int count) {
        mCut = false;
        while (mCount < count) {
            if (mNext == mData.size()) {
                mCut = true;
                if (mCount == 0) mResult = Devices::Ccitt::Outcome::kEndOfData;
                return mCount != 0;
            }
            unsigned byte = mData[mNext++];
            if (mReversed) {
                unsigned reversed = 0;
                for (int bit = 0; bit < 8; ++bit)
                    reversed |= (byte >> bit & 1) << (7 - bit);
                byte = reversed;
            }
            mBits |= byte << mCount;
            mCount += 8;
        }
        return true;
    }
    void Drop(std::size_t count) {
        mBits >>= count;
        mCount = std::max(0, mCount - static_cast<int>(count));
    }
    bool Fail(const wchar_t* table) {
        using enum Devices::Ccitt::Outcome;
        if (mResult != kDecoded) return false;
        mResult = mCut ? kEndOfData : kBadCode;
        if (mResult == kBadCode) mMessage = std::format(L"Bad code word in {} at scanline (x {})", table, mA0);
        return false;
    }

    static constexpr unsigned Key(std::string_view word) {
        unsigned key = 1;
        for (const char bit : word)
            key = 2 * key + (bit == '1' ? 1 : 0);
        return key;
    }

    /// Takes the word with which the next bits begin; 0 when there is none.
    unsigned Match(int look, const Words& words) {
        if (!Need(look)) return 0;
        unsigned key = 1;
        for (int bit = 0; bit < look; ++bit) {
            key = 2 * key + (mBits >> bit & 1);
            const auto word = words.find(key);
            if (word == words.end()) continue;
            Drop(static_cast<std::size_t>(bit) + 1);
            mValue = word->second;
            return key;
        }
        return 0;
    }

    // Runs

    bool IsBlack() const { return mRuns.size() % 2 == 1; }

    bool AddRun(std::int64_t length) {
        if (mRuns.size() == static_cast<std::size_t>(mWidth) + 4) return Fail(L"MainTable");
        mRuns.push_back(length);
        mPending = 0;
        return true;
    }

    static Words RunWords(bool black) {
        using namespace Devices::Ccitt;
        Words words;
        for (int i = 0; i < 64; ++i)
            words.emplace(Key((black ? kBlackTerminating : kWhiteTerminating)[i]), i);
        for (int i = 0; i < 27; ++i)
            words.emplace(Key((black ? kBlackMakeUp : kWhiteMakeUp)[i]), 64 * i + 64);
        for (int i = 0; i < 13; ++i)
            words.emplace(Key(kCommonMakeUp[i]), 64 * i + 1792);
        words.emplace(Key("00000000000"), kEndOfLine);
        return words;
    }

    /// Also false on the zeros of an end of line, which are then the last value.
    bool Run() {
        static const Words white = RunWords(false);
        static const Words black = RunWords(true);
        const bool isBlack = IsBlack();
        for (;;) {
            if (Match(isBlack ? 13 : 12, isBlack ? black : white) == 0) return FailRun();
            if (mValue == kEndOfLine) return false;
            mPending += mValue;
            mA0 += mValue;
            if (mValue < 64) return AddRun(mPending);
        }
    }
    bool FailRun() { return Fail(IsBlack() ? L"BlackTable" : L"WhiteTable"); }

    /// The first change beyond a0 (or at it, for the first code of a row) away from the present colour, and the one
    /// behind it.
    std::pair<std::int64_t, std::int64_t> Changes(bool first) const {
        auto change = first ? mReference.begin() : std::ranges::upper_bound(mReference, mA0);
        if (change != mReference.end() && ((change - mReference.begin()) % 2 == 1) != IsBlack()) ++change;
        if (change == mReference.end()) return {mWidth, mWidth};
        return {*change, change + 1 == mReference.end() ? mWidth : change[1]};
    }

    bool Vertical(std::int64_t b1, int offset) {
        if (b1 + offset < mA0) return Fail(L"MainTable");
        if (!AddRun(mPending + b1 + offset - mA0)) return false;
        mA0 = b1 + offset;
        return true;
    }

    bool Horizontal() {
        for (int run = 0; run < 2; ++run) {
            if (Run()) continue;
            return FailRun();
        }
        return true;
    }

    void EndOfLine() {
        if (!Need(4)) return;
        if ((mBits & 15) != 0) {
            Fail(L"EOL");
            return;
        }
        Drop(4);
        mZerosTaken = true;
    }

    void TwoDimensional() {
        constexpr unsigned kPass = Key("0001"), kHorizontal = Key("001");
        constexpr unsigned kExtension = Key("0000001"), kZeros = Key("0000000");
        static const Words words = {{kPass, 0},       {kHorizontal, 0},    {kExtension, 0},     {kZeros, 0},
                                    {Key("1"), 0},    {Key("011"), 1},     {Key("000011"), 2},  {Key("0000011"), 3},
                                    {Key("010"), -1}, {Key("000010"), -2}, {Key("0000010"), -3}};
        for (bool first = true; mA0 < mWidth; first = false) {
            const auto [b1, b2] = Changes(first);
            const unsigned word = Match(7, words);
            if (word == 0) return;
            if (word == kPass) {
                mPending += b2 - mA0;
                mA0 = b2;
            } else if (word == kHorizontal) {
                if (!Horizontal()) return;
            } else if (word == kExtension || word == kZeros) {
                if (AddRun(mPending + mWidth - mA0) && word == kZeros) EndOfLine();
                return;
            } else if (!Vertical(b1, mValue)) {
                return;
            }
        }
        if (mPending > 0) AddRun(mPending);
    }

    void OneDimensional() {
        while (mA0 < mWidth) {
            if (Run()) continue;
            mZerosTaken = mResult == Devices::Ccitt::Outcome::kDecoded;
            return;
        }
    }

    /// False at the end of the data.
    bool SkipEndOfLine() {
        while (!mZerosTaken) {
            if (!Need(11)) return false;
            if ((mBits & 0x7FF) == 0) break;
            Drop(1);
        }
        mZerosTaken = false;
        for (bool one = false; !one;) {
            if (!Need(1)) return false;
            one = (mBits & 1) != 0;
            Drop(1);
        }
        return true;
    }

    void DecodeRuns() {
        using enum Devices::Ccitt::Mode;
        if (mMode == kGroup4) return TwoDimensional();
        if (mMode == kRows) {
            Drop(static_cast<std::size_t>(mCount % 8));
            return OneDimensional();
        }
        if (!SkipEndOfLine()) return;
        if (mMode == kGroup3) return OneDimensional();
        if (!Need(1)) return;
        const bool tag = (mBits & 1) != 0;
        Drop(1);
        tag ? OneDimensional() : TwoDimensional();
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

    static constexpr int kEndOfLine = -1;

    std::vector<unsigned char> mData;
    std::size_t mNext = 0;
    std::int64_t mWidth;
    Devices::Ccitt::Mode mMode;
    bool mReversed;
    std::uint32_t mBits = 0;
    int mCount = 0;
    bool mCut = false;  // the last look-up took zeros for missing bits
    bool mZerosTaken = false;
    int mValue = 0;
    std::vector<std::int64_t> mReference;  // where the runs of the row before end
    std::vector<std::int64_t> mRuns;       // lengths
    std::int64_t mA0 = 0;
    std::int64_t mPending = 0;
    Devices::Ccitt::Outcome mResult = Devices::Ccitt::Outcome::kDecoded;
    std::wstring mMessage;
};

}  // namespace Kavra::Tests
