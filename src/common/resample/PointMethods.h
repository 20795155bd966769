/// Resampling that looks at one pixel of the source, or at the four around a point.
#pragma once

#include "common/resample/ResampleMethod.h"

#include <vector>

namespace Kavra::Common {

/// The pixel that the centre lies in; 0 where that is none, as rounding puts it beyond the end of a very long side.
class NearestMethod final : public ResampleMethod {
public:
    explicit NearestMethod(const Resampling& resampling);

    RowSpan Needs(int y) const override;
    void Make(const SourceRows& source, int y, int count, unsigned char* out) const override;
    int GroupRows() const override { return 16; }

private:
    std::vector<int> mColumns, mRows;  ///< of the source, -1: none
    std::size_t mPixelBytes;
    int mFromRows;
};

/// The four pixels whose centres lie around the centre, blended: first across, then down, in single precision and in
/// the order in which the image library does it, so that the numbers are the same.
class BilinearMethod final : public ResampleMethod {
public:
    explicit BilinearMethod(const Resampling& resampling);

    RowSpan Needs(int y) const override;
    void Make(const SourceRows& source, int y, int count, unsigned char* out) const override;
    int GroupRows() const override { return 16; }

private:
    struct Pair {
        int first, second;  ///< within the source
        float fraction;     ///< what the second one weighs
    };
    static std::vector<Pair> PairsOf(const ResampleAxis& axis);
    void Blend(const float* upper, const float* lower, float down, float* out) const;

    Devices::ElementType mElement;
    std::size_t mChannels, mPixelBytes, mFromElements;
    std::vector<Pair> mColumns, mRows;
};

}  // namespace Kavra::Common
