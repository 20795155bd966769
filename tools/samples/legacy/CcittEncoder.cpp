#include "legacy/CcittEncoder.h"

#include "readers/ccitt/CcittCodes.h"

#include <cstdlib>

namespace Kavra::Legacy {

namespace {

using namespace Devices::Ccitt;

class BitWriter {
public:
    void Write(CodeWord word) {
        for (const char bit : word) {
            if (mBits % 8 == 0) mBytes.push_back(0);
            if (bit == '1') mBytes.back() |= static_cast<unsigned char>(0x80 >> mBits % 8);
            ++mBits;
        }
    }
    void FillByte() { mBits = mBytes.size() * 8; }

    std::vector<unsigned char> Take() { return std::move(mBytes); }

private:
    std::vector<unsigned char> mBytes;
    std::size_t mBits = 0;
};

void WriteRun(BitWriter& out, int pixels, bool black) {
    constexpr int kLongest = kFirstCommonMakeUp + (static_cast<int>(kCommonMakeUp.size()) - 1) * kMakeUpUnit;
    for (; pixels >= kLongest + kMakeUpUnit; pixels -= kLongest)
        out.Write(kCommonMakeUp.back());
    if (pixels >= kFirstCommonMakeUp) {
        out.Write(kCommonMakeUp[static_cast<std::size_t>((pixels - kFirstCommonMakeUp) / kMakeUpUnit)]);
    } else if (pixels >= kMakeUpUnit) {
        out.Write((black ? kBlackMakeUp : kWhiteMakeUp)[static_cast<std::size_t>(pixels / kMakeUpUnit - 1)]);
    }
    out.Write((black ? kBlackTerminating : kWhiteTerminating)[static_cast<std::size_t>(pixels % kMakeUpUnit)]);
}

void WriteOneDimensional(BitWriter& out, const std::vector<int>& changes, int width) {
    int start = 0;
    bool black = false;
    for (const int change : changes) {
        WriteRun(out, change - start, black);
        start = change;
        black = !black;
    }
    WriteRun(out, width - start, black);
}

/// A row's changes, looked up from left to right.
class ChangeCursor {
public:
    ChangeCursor(const std::vector<int>& changes, int width) : mChanges(changes), mWidth(width) {}

    /// Goes to the first change right of `position`, at which the colour turns away from `black`.
    void MoveBeyond(int position, bool black) {
        while (mNext > 0 && At(mNext - 1) > position)
            --mNext;
        while (At(mNext) <= position && At(mNext) < mWidth)
            ++mNext;
        if ((mNext % 2 == 1) != black) ++mNext;
    }
    int Change() const { return At(mNext); }
    int ChangeAfter() const { return At(mNext + 1); }

private:
    int At(std::size_t i) const { return i < mChanges.size() ? mChanges[i] : mWidth; }

    const std::vector<int>& mChanges;
    int mWidth;
    std::size_t mNext = 0;
};

/// By the flow chart of T.6, figure 4.
void WriteTwoDimensional(BitWriter& out, const std::vector<int>& changes, const std::vector<int>& reference,
                         int width) {
    ChangeCursor row(changes, width);
    ChangeCursor above(reference, width);
    bool black = false;
    for (int position = -1; position < width;) {
        row.MoveBeyond(position, black);
        above.MoveBeyond(position, black);
        const int distance = row.Change() - above.Change();
        if (above.ChangeAfter() < row.Change()) {
            out.Write(kPass);
            position = above.ChangeAfter();
        } else if (std::abs(distance) <= 3) {
            out.Write(distance == 0  ? kVertical
                      : distance > 0 ? kVerticalRight[static_cast<std::size_t>(distance - 1)]
                                     : kVerticalLeft[static_cast<std::size_t>(-distance - 1)]);
            position = row.Change();
            black = !black;
        } else {
            out.Write(kHorizontal);
            WriteRun(out, row.Change() - std::max(position, 0), black);
            WriteRun(out, row.ChangeAfter() - row.Change(), !black);
            position = row.ChangeAfter();
        }
    }
}

void WriteEndsOfLine(BitWriter& out, int count, CodeWord tag) {
    for (int i = 0; i < count; ++i) {
        out.Write(kEndOfLine);
        out.Write(tag);
    }
}

constexpr int kEndsOfPage = 6;

}  // namespace

std::vector<unsigned char> EncodeGroup4(const Bitmap& image) {
    BitWriter out;
    std::vector<int> reference;
    for (int y = 0; y < image.height; ++y) {
        std::vector<int> changes = Changes(image, y);
        WriteTwoDimensional(out, changes, reference, image.width);
        reference = std::move(changes);
    }
    WriteEndsOfLine(out, 2, "");
    return out.Take();
}

std::vector<unsigned char> EncodeGroup3(const Bitmap& image) {
    BitWriter out;
    for (int y = 0; y < image.height; ++y) {
        out.Write(kEndOfLine);
        WriteOneDimensional(out, Changes(image, y), image.width);
    }
    WriteEndsOfLine(out, kEndsOfPage, "");
    return out.Take();
}

std::vector<unsigned char> EncodeRows(const Bitmap& image) {
    BitWriter out;
    for (int y = 0; y < image.height; ++y) {
        WriteOneDimensional(out, Changes(image, y), image.width);
        out.FillByte();
    }
    return out.Take();
}

std::vector<unsigned char> EncodeGroup3TwoDimensional(const Bitmap& image, int period) {
    BitWriter out;
    std::vector<int> reference;
    for (int y = 0; y < image.height; ++y) {
        std::vector<int> changes = Changes(image, y);
        out.Write(kEndOfLine);
        out.Write(y % period == 0 ? "1" : "0");
        if (y % period == 0) {
            WriteOneDimensional(out, changes, image.width);
        } else {
            WriteTwoDimensional(out, changes, reference, image.width);
        }
        reference = std::move(changes);
    }
    WriteEndsOfLine(out, kEndsOfPage, "1");
    return out.Take();
}

}  // namespace Kavra::Legacy
