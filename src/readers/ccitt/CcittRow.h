/// Rows of two colours as the places where the colour changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace Kavra::Devices::Ccitt {

/// The ends of a row's runs, in pixels from its start, the first run white, then black and white in turn. Runs may be
/// empty; the last one ends at the width. Behind it the width follows twice more, so that whoever looks for a change to
/// the right of some place finds one of either colour.
class Row {
public:
    /// A row of this width (0 or more) in white.
    explicit Row(std::int32_t width);

    std::int32_t Width() const { return mWidth; }
    /// Runs that a row may hold. Pairs of empty runs could go on for ever.
    std::size_t Capacity() const { return static_cast<std::size_t>(mWidth) + 4; }

    /// Room for `Capacity()` ends and two more.
    std::int32_t* Ends() { return mEnds.data() + 1; }
    /// The ends; the place before the first one may be read too and is 0.
    const std::int32_t* Ends() const { return mEnds.data() + 1; }

    /// Says that `count` ends are set, at least one and at most two more than `Capacity()`; the last becomes the width.
    void Close(std::size_t count);

    /// Sets the bits of black pixels and clears those of white ones, highest bit first. The bits behind the width are
    /// cleared. `packed` has (width + 7) / 8 bytes.
    void Fill(std::span<unsigned char> packed) const;

private:
    std::int32_t mWidth;
    std::size_t mCount = 0;
    std::vector<std::int32_t> mEnds;
};

}  // namespace Kavra::Devices::Ccitt
