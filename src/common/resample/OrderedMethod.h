/// Resampling in the image library's own order: every pixel under the filter in one sum, row by row. The same numbers
/// to the last bit, for as much work as the library's; so for small pictures only, where last bits show.
#pragma once

#include "common/resample/ResampleMethod.h"

#include <cstdint>
#include <vector>

namespace Kavra::Common {

class OrderedMethod final : public ResampleMethod {
public:
    /// Without options but the filter.
    explicit OrderedMethod(const Resampling& resampling);

    /// Whether the library's order takes no longer than is worth it.
    static bool IsWorthIt(const Resampling& resampling);

    /// Bytes of the rows that a thread holds as floats, at most.
    static std::uint64_t BytesOfThread(const Resampling& resampling);

    RowSpan Needs(int y) const override;
    void Make(const SourceRows& source, int y, int count, unsigned char* out) const override;

private:
    void MakeRow(const std::vector<const float*>& rows, const float* rowWeights, float* out) const;

    Devices::ElementType mElement;
    AxisPlan mColumns, mRows;
    int mFromColumns, mFromRows;
    std::size_t mChannels, mElementBytes;
    float mFull;  ///< the largest value of an integer, else 1
};

}  // namespace Kavra::Common
