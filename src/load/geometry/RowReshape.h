/// A picture that changes its size while it is decoded.
#pragma once

#include "common/RowSink.h"
#include "load/geometry/Reshape.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace Kavra::Devices {

/// A flat picture, or a cube map whose faces stand on one another, as its rows come.
struct IncomingRows {
    EFormat format = kUnknown;  ///< one that the image library has pixels for
    int width = 0, height = 0;  ///< of one face, at least 1
    int faces = 1;
};

/// `Reshape` for a picture that comes row by row: the same pixels, from memory for a few rows of it where its size
/// changes. Rows that are not filled are zero.
class RowReshape : public Common::RowSink {
public:
    /// Takes memory for the result, or for the whole picture where its size stays. Throws `std::bad_alloc`.
    RowReshape(const IncomingRows& picture, const Reshaping& wanted);
    ~RowReshape() override;

    std::span<unsigned char> NextRows(std::size_t most) override;

    /// The picture as it is wanted, in a block of its own; empty where `Reshape` answers so. Rows that were never asked
    /// for are zero. To be called once, at the end. Throws `std::bad_alloc`.
    Raster Finish();

    /// Bytes that all of this takes at a time at most, with the result.
    static std::uint64_t BytesFor(const IncomingRows& picture, const Reshaping& wanted);

private:
    struct Work;
    std::unique_ptr<Work> mWork;
};

}  // namespace Kavra::Devices
