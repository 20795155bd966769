#include "readers/flic/FlicChunks.h"

#include <algorithm>
#include <bit>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

// --- The frame ------------------------------------------------------------------------------------------------------

namespace {

/// Indices whose writing is kept track of together.
constexpr std::size_t kStretch = 1024;
constexpr std::size_t kBits = 64;

/// For a bit for each stretch.
constexpr std::size_t Words(std::size_t indices) {
    return indices / kStretch / kBits + 1;
}

}  // namespace

FlicFrame::FlicFrame(std::uint32_t width, std::uint32_t height)
    : mWidth(width),
      mHeight(height),
      mSize(std::size_t{width} * height),
      mIndices(Common::NewZeroedBlock(mSize)),
      mWritten(Words(mSize)) {}

std::uint64_t FlicFrame::BytesOf(std::uint32_t width, std::uint32_t height) {
    const std::size_t indices = std::size_t{width} * height;
    return indices + Words(indices) * sizeof(std::uint64_t);
}

std::span<unsigned char> FlicFrame::At(std::uint64_t offset, std::uint64_t count) {
    if (offset >= mSize || count == 0) return {};
    const auto first = static_cast<std::size_t>(offset);
    const auto inside = static_cast<std::size_t>(std::min<std::uint64_t>(count, mSize - first));
    for (std::size_t stretch = first / kStretch; stretch <= (first + inside - 1) / kStretch; ++stretch)
        mWritten[stretch / kBits] |= std::uint64_t{1} << stretch % kBits;
    return std::span(mIndices.get(), mSize).subspan(first, inside);
}

void FlicFrame::Clear() {
    const std::span<unsigned char> indices(mIndices.get(), mSize);
    for (std::size_t word = 0; word < mWritten.size(); ++word) {
        for (; mWritten[word] != 0; mWritten[word] &= mWritten[word] - 1) {
            const auto bit = static_cast<std::size_t>(std::countr_zero(mWritten[word]));
            const std::size_t first = (word * kBits + bit) * kStretch;
            std::ranges::fill(indices.subspan(first, std::min(kStretch, mSize - first)), 0);
        }
    }
}

// --- Chunks ---------------------------------------------------------------------------------------------------------

namespace {

/// Takes numbers one after another.
template <class... T>
Result<> Take(ByteSource& source, T&... numbers) {
    Result<> taken;
    const auto takeOne = [&]<class Number>(Number& number) {
        taken = source.Little<Number>().transform([&](Number read) { number = read; });
        return taken.has_value();
    };
    (void)(takeOne(numbers) && ...);
    return taken;
}

/// Takes as many as there are, and fails where that is not all of them.
Result<> TakeBytes(ByteSource& source, std::span<unsigned char> bytes) {
    if (source.ReadSome(bytes) < bytes.size()) return std::unexpected(Failure::kTruncated);
    return {};
}

/// Takes `count` indices, of which the last ones may lie beyond the frame.
Result<> TakeIndices(ByteSource& source, FlicFrame& frame, std::uint64_t offset, std::uint64_t count) {
    const std::span<unsigned char> indices = frame.At(offset, count);
    return TakeBytes(source, indices).and_then([&] { return source.Skip(count - indices.size()); });
}

/// Where a row begins. Rows below the frame begin at its end.
std::uint64_t RowStart(const FlicFrame& frame, std::uint64_t row) {
    return std::min<std::uint64_t>(row, frame.Height()) * frame.Width();
}

Result<> DecodeByteRunPacket(ByteSource& source, std::span<unsigned char> row, std::size_t& x) {
    std::int8_t count = 0;
    if (const Result<> taken = Take(source, count); !taken) return taken;
    const auto length = static_cast<std::size_t>(count < 0 ? -count : count);
    const std::span<unsigned char> part = row.subspan(x, std::min(length, row.size() - x));
    x += length;
    if (count < 0) return TakeBytes(source, part);
    std::uint8_t value = 0;
    return Take(source, value).transform([&] { std::ranges::fill(part, value); });
}

Result<> DecodeByteDeltaPacket(ByteSource& source, FlicFrame& frame, std::uint64_t& offset) {
    std::uint8_t skip = 0;
    std::int8_t count = 0;
    if (const Result<> taken = Take(source, skip, count); !taken) return taken;
    const std::uint64_t start = offset + skip;
    const auto length = static_cast<std::uint64_t>(count < 0 ? -count : count);
    offset = start + length;
    if (count >= 0) return TakeIndices(source, frame, start, length);
    std::uint8_t value = 0;
    return Take(source, value).transform([&] { std::ranges::fill(frame.At(start, length), value); });
}

Result<> DecodeWordDeltaPacket(ByteSource& source, FlicFrame& frame, std::uint64_t rowStart, Reading* reading) {
    std::uint8_t skip = 0;
    std::int8_t count = 0;
    if (const Result<> taken = Take(source, skip, count); !taken) return taken;
    if (count <= 0 && reading != nullptr)
        (void)reading->IsCommon("repeated pairs of pixels are drawn by their column by the host's rules");
    const std::uint64_t start = rowStart + skip;
    if (count > 0) return TakeIndices(source, frame, start, 2 * static_cast<std::uint64_t>(count));
    std::array<unsigned char, 2> word{};
    if (const Result<> taken = TakeBytes(source, word); !taken) return taken;
    const int times = -static_cast<std::int8_t>(skip);
    const std::span<unsigned char> indices = frame.At(start, times > 0 ? 2 * static_cast<std::uint64_t>(times) : 0);
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = word[i % 2];
    return {};
}

/// Takes the words before the packets of a row, and how many these are.
Result<> TakeRowWords(ByteSource& source, FlicFrame& frame, std::uint64_t& row, std::uint16_t& packets,
                      Reading* reading) {
    constexpr unsigned kMoveDown = 0x4000, kFlags = 0xC000;
    for (;;) {
        if (const Result<> taken = Take(source, packets); !taken) return taken;
        if ((packets & kFlags) == 0) return {};
        if ((packets & kMoveDown) != 0) {
            if (reading != nullptr)
                (void)reading->IsCommon("rows that are skipped lead out of the picture by the host's rules");
            row = std::min<std::uint64_t>(row + (packets & ~kFlags), frame.Height());
        } else if (frame.Width() > 0) {
            const std::uint64_t last = RowStart(frame, row) + frame.Width() - 1;
            std::ranges::fill(frame.At(last, 1), static_cast<unsigned char>(packets));
        }
    }
}

}  // namespace

Result<> DecodeFlicPalette(ByteSource& source, FlicPalette& palette, unsigned scale) {
    constexpr std::size_t kColours = 256;
    std::uint16_t packets = 0;
    if (const Result<> taken = Take(source, packets); !taken) return taken;
    std::size_t index = 0;
    for (; packets > 0; --packets) {
        std::uint8_t skip = 0, count = 0;
        if (const Result<> taken = Take(source, skip, count); !taken) return taken;
        index += skip;
        const std::size_t colours = count == 0 ? kColours : count;
        const std::size_t first = std::min(index, kColours);
        const auto bytes = std::span(palette).subspan(3 * first, 3 * std::min(colours, kColours - first));
        const std::size_t taken = source.ReadSome(bytes);
        for (unsigned char& component : bytes.first(taken))
            component = static_cast<unsigned char>(component * scale);
        if (taken < bytes.size()) return std::unexpected(Failure::kTruncated);
        index += colours;
    }
    return {};
}

Result<> DecodeFlicCopy(ByteSource& source, FlicFrame& frame) {
    return TakeIndices(source, frame, 0, frame.Indices().size());
}

Result<> DecodeFlicByteRun(ByteSource& source, FlicFrame& frame) {
    for (std::uint64_t y = 0; y < frame.Height(); ++y) {
        if (const Result<> skipped = source.Skip(1); !skipped) return skipped;
        const std::span<unsigned char> row = frame.At(RowStart(frame, y), frame.Width());
        for (std::size_t x = 0; x < row.size();) {
            if (const Result<> decoded = DecodeByteRunPacket(source, row, x); !decoded) return decoded;
        }
    }
    return {};
}

Result<> DecodeFlicByteDelta(ByteSource& source, FlicFrame& frame) {
    std::uint16_t row = 0, rows = 0;
    if (const Result<> taken = Take(source, row, rows); !taken) return taken;
    for (std::uint64_t y = row; rows > 0; --rows, ++y) {
        std::uint8_t packets = 0;
        if (const Result<> taken = Take(source, packets); !taken) return taken;
        for (std::uint64_t offset = RowStart(frame, y); packets > 0; --packets) {
            if (const Result<> decoded = DecodeByteDeltaPacket(source, frame, offset); !decoded) return decoded;
        }
    }
    return {};
}

Result<> DecodeFlicWordDelta(ByteSource& source, FlicFrame& frame) {
    return CompareFlicWordDelta(source, frame, nullptr);
}

Result<> CompareFlicWordDelta(ByteSource& source, FlicFrame& frame, Reading* reading) {
    std::uint16_t rows = 0;
    if (const Result<> taken = Take(source, rows); !taken) return taken;
    for (std::uint64_t row = 0; rows > 0; --rows, ++row) {
        std::uint16_t packets = 0;
        if (const Result<> taken = TakeRowWords(source, frame, row, packets, reading); !taken) return taken;
        if (packets > 1 && reading != nullptr)
            (void)reading->IsCommon("every change of a row counts its columns from the left by the host's rules");
        for (const std::uint64_t start = RowStart(frame, row); packets > 0; --packets) {
            if (const Result<> decoded = DecodeWordDeltaPacket(source, frame, start, reading); !decoded) return decoded;
        }
    }
    return {};
}

// --- The common reading ---------------------------------------------------------------------------------------------

namespace {

Result<> DecodeCommonWordPacket(ByteSource& source, FlicFrame& frame, std::uint64_t& offset) {
    std::uint8_t skip = 0;
    std::int8_t count = 0;
    if (const Result<> taken = Take(source, skip, count); !taken) return taken;
    const std::uint64_t start = offset + skip;
    const auto length = 2 * static_cast<std::uint64_t>(count < 0 ? -count : count);
    offset = start + length;
    if (count >= 0) return TakeIndices(source, frame, start, length);
    std::array<unsigned char, 2> word{};
    if (const Result<> taken = TakeBytes(source, word); !taken) return taken;
    const std::span<unsigned char> indices = frame.At(start, length);
    for (std::size_t i = 0; i < indices.size(); ++i)
        indices[i] = word[i % 2];
    return {};
}

/// Takes the words before the packets of a row, and how many these are.
Result<> TakeCommonRowWords(ByteSource& source, FlicFrame& frame, std::uint64_t& row, std::uint16_t& packets) {
    constexpr unsigned kFlags = 0xC000, kLastIndex = 0x8000;
    for (;;) {
        if (const Result<> taken = Take(source, packets); !taken) return taken;
        if ((packets & kFlags) == 0) return {};
        if ((packets & kFlags) == kFlags) {
            row = std::min<std::uint64_t>(row + (0x10000U - packets), frame.Height());
        } else if ((packets & kFlags) == kLastIndex && frame.Width() > 0) {
            const std::uint64_t last = RowStart(frame, row) + frame.Width() - 1;
            std::ranges::fill(frame.At(last, 1), static_cast<unsigned char>(packets));
        }
    }
}

}  // namespace

Result<> DecodeFlicCommonPalette(ByteSource& source, FlicPalette& palette, bool hasSixBits) {
    constexpr std::size_t kColours = 256;
    std::uint16_t packets = 0;
    if (const Result<> taken = Take(source, packets); !taken) return taken;
    for (std::size_t index = 0; packets > 0; --packets) {
        std::uint8_t skip = 0, count = 0;
        if (const Result<> taken = Take(source, skip, count); !taken) return taken;
        index = std::min(index + skip, kColours);
        const std::size_t colours = count == 0 ? kColours : count;
        const auto bytes = std::span(palette).subspan(3 * index, 3 * std::min(colours, kColours - index));
        const std::size_t taken = source.ReadSome(bytes);
        if (hasSixBits) {
            for (unsigned char& component : bytes.first(taken))
                component = static_cast<unsigned char>(component << 2 | (component >> 4 & 3));
        }
        if (taken < bytes.size()) return std::unexpected(Failure::kTruncated);
        if (const Result<> skipped = source.Skip(3 * colours - bytes.size()); !skipped) return skipped;
        index += bytes.size() / 3;
    }
    return {};
}

std::uint64_t FlicCopyRowBytes(std::uint64_t bodyBytes, const FlicFrame& frame) {
    const std::uint64_t width = frame.Width();
    for (const std::uint64_t step : {2, 4}) {
        const std::uint64_t filled = (width + step - 1) / step * step;
        if (frame.Height() > 1 && bodyBytes == filled * frame.Height()) return filled;
    }
    return width;
}

Result<> DecodeFlicCommonCopy(ByteSource& source, FlicFrame& frame) {
    const std::uint64_t width = frame.Width();
    const std::uint64_t rowBytes = FlicCopyRowBytes(source.Remaining(), frame);
    if (rowBytes == width) return DecodeFlicCopy(source, frame);
    for (std::uint64_t y = 0; y < frame.Height(); ++y) {
        const Result<> taken = TakeIndices(source, frame, RowStart(frame, y), width).and_then([&] {
            return source.Skip(rowBytes - width);
        });
        if (!taken) return taken;
    }
    return {};
}

Result<> DecodeFlicCommonWordDelta(ByteSource& source, FlicFrame& frame) {
    std::uint16_t rows = 0;
    if (const Result<> taken = Take(source, rows); !taken) return taken;
    for (std::uint64_t row = 0; rows > 0; --rows, ++row) {
        std::uint16_t packets = 0;
        if (const Result<> taken = TakeCommonRowWords(source, frame, row, packets); !taken) return taken;
        for (std::uint64_t offset = RowStart(frame, row); packets > 0; --packets) {
            if (const Result<> decoded = DecodeCommonWordPacket(source, frame, offset); !decoded) return decoded;
        }
    }
    return {};
}

}  // namespace Kavra::Devices
