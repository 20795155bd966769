#include "readers/ccitt/CcittDecoder.h"

#include <kavra/devices/Sys.h>

#include <algorithm>
#include <array>
#include <format>
#include <utility>

namespace Kavra::Devices::Ccitt {

namespace {

/// A drawing may have a million rows, each with one of these: no memory is asked for.
void WarnOfBadCode(const RowDecoder& row) {
    std::array<wchar_t, 80> message{};  // the names and numbers need less
    std::format_to_n(message.data(), message.size() - 1, L"Bad code word in {} at scanline (x {})", row.Table(),
                     row.Position());
    Sys::Warning(message.data(), nullptr);
}

}  // namespace

Decoder::Decoder(Common::ByteSource& source, std::int32_t width, Mode mode, BitOrder order)
    : mInput(source, order),
      mMode(mode),
      mRowBytes((static_cast<std::size_t>(std::max(width, 0)) + 7) / 8),
      mReference(std::max(width, 0)),
      mCurrent(std::max(width, 0)) {}

Outcome Decoder::DecodeRows(std::span<unsigned char> rows) {
    if (mRowBytes == 0) return Outcome::kDecoded;
    for (; rows.size() >= mRowBytes; rows = rows.subspan(mRowBytes)) {
        const Outcome result = DecodeRow(rows.first(mRowBytes));
        if (result != Outcome::kDecoded) return result;
    }
    return Outcome::kDecoded;
}

Outcome Decoder::DecodeRow(std::span<unsigned char> packed) {
    RowDecoder row(mInput, mReference, mCurrent);
    const RowEnd end = DecodeRuns(row);
    if (end == RowEnd::kBadCode) {
        WarnOfBadCode(row);
        mInput.GiveUp(row.Reach());
        return Outcome::kBadCode;
    }
    mCurrent.Fill(packed);
    std::swap(mCurrent, mReference);
    ++mRowsDecoded;
    if (end == RowEnd::kEndOfData) {
        mInput.Finish();
        return Outcome::kEndOfData;
    }
    mInput.Keep(row.Window(), row.Reach());
    mEndOfLineBegun = row.EndedOnEndOfLine();
    return Outcome::kDecoded;
}

RowEnd Decoder::DecodeRuns(RowDecoder& row) const {
    switch (mMode) {
        case Mode::kGroup3:
            return row.SkipEndOfLine(mEndOfLineBegun) ? row.OneDimensional() : row.CloseInWhite();
        case Mode::kRows:
            row.SkipToByte();
            return row.OneDimensional();
        case Mode::kGroup3TwoDimensional:
            if (!row.SkipEndOfLine(mEndOfLineBegun)) return row.CloseInWhite();
            return row.TakeBit() ? row.OneDimensional() : row.TwoDimensional();
        case Mode::kGroup4:
            break;
    }
    return row.TwoDimensional();
}

}  // namespace Kavra::Devices::Ccitt
