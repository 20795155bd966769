#include "common/Boundary.h"
#include "common/Progress.h"
#include "common/resample/RowResampler.h"

#include <kavra/devices/Resampler.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

namespace Kavra::Devices {

namespace {

using Common::Resampling;

constexpr const char* kImpossible = "no picture of this size, layout or filter is resized";

Resampling Between(const ResamplePixels& pixels, int fromWidth, int fromHeight, int toWidth, int toHeight,
                   const ResampleOptions& options) {
    return {pixels, Common::ResampleAxis::Whole(fromWidth, toWidth), Common::ResampleAxis::Whole(fromHeight, toHeight),
            options};
}

/// Rows of the result on their way to whoever takes them: those that were handed out before are complete as soon as
/// more are asked for.
class RowsToSink final : public Common::RowSink {
public:
    RowsToSink(IRowSink& sink, std::size_t rowBytes) : mSink(sink), mRowBytes(rowBytes) {}

    std::span<unsigned char> NextRows(std::size_t most) override {
        if (!Deliver()) return {};
        mRows.resize(std::min(most, kRows) * mRowBytes);
        return mRows;
    }

    /// Hands on what is complete. False where the sink said so once.
    bool Deliver() {
        if (!mRows.empty() && mIsWanted) {
            mIsWanted = mSink.WriteRows(mRows.data(), static_cast<int>(mRows.size() / mRowBytes));
            mRows.clear();
        }
        return mIsWanted;
    }

private:
    static constexpr std::size_t kRows = 64;

    IRowSink& mSink;
    std::size_t mRowBytes;
    std::vector<unsigned char> mRows;
    bool mIsWanted = true;
};

}  // namespace

bool ResamplePicture(const ResamplePixels& pixels, const void* from, std::size_t fromPitch, int fromWidth,
                     int fromHeight, void* to, std::size_t toPitch, int toWidth, int toHeight,
                     const ResampleOptions& options) {
    const Resampling resampling = Between(pixels, fromWidth, fromHeight, toWidth, toHeight, options);
    return Common::InOperation([&] {
        const bool isPossible = from != nullptr && to != nullptr && resampling.IsPossible() &&
                                fromPitch >= resampling.FromRowBytes() && toPitch >= resampling.ToRowBytes();
        if (!Common::Require(isPossible, kFailureArguments, kImpossible)) return false;
        Common::Resample(resampling, static_cast<const unsigned char*>(from), fromPitch,
                         static_cast<unsigned char*>(to), toPitch);
        return true;
    });
}

bool ResampleRows(const ResamplePixels& pixels, IRowSource& source, int fromWidth, int fromHeight, IRowSink& sink,
                  int toWidth, int toHeight, const ResampleOptions& options) {
    const Resampling resampling = Between(pixels, fromWidth, fromHeight, toWidth, toHeight, options);
    return Common::InOperation([&] {
        if (!Common::Require(resampling.IsPossible(), kFailureArguments, kImpossible)) return false;
        RowsToSink out(sink, resampling.ToRowBytes());
        Common::RowResampler resampler(resampling, out);
        constexpr std::size_t kRows = 64;
        Common::ProgressMeter meter(kProgressResizing, static_cast<unsigned>(fromHeight));
        for (int done = 0; done < fromHeight;) {
            meter.Expect(kRows);
            const std::span<unsigned char> rows = resampler.NextRows(kRows);
            const int count = static_cast<int>(rows.size() / resampling.FromRowBytes());
            if (count == 0 || !source.ReadRows(rows.data(), count))
                return Common::Require(false, kFailureCancelled, "no more rows were given or taken");
            done += count;
            meter.Advance(static_cast<unsigned>(count));
        }
        resampler.Finish();
        return Common::Require(out.Deliver(), kFailureCancelled, "no more rows were taken");
    });
}

}  // namespace Kavra::Devices
