#include "readers/pict/PictQuickTime.h"

#include "readers/EmbeddedPicture.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace Kavra::Devices {

using Common::ByteSource;
using Common::Failure;
using Common::Result;

namespace {

using FourLetters = std::array<unsigned char, 4>;

/// Of the codecs that are files of a format of their own, the format as the image library calls it. TIFF is left out:
/// nobody put it there, and its files can keep the library busy for long.
struct Codec {
    std::string_view letters;
    const char* format;
};
constexpr Codec kCodecs[] = {{"jpeg", "jpeg"}, {"png ", "png"}, {"WRLE", "bmp"}, {"gif ", "gif"}};

constexpr std::string_view Letters(const FourLetters& letters) {
    return {reinterpret_cast<const char*>(letters.data()), letters.size()};
}

const char* FormatOf(const FourLetters& letters) {
    const auto* const codec = std::ranges::find(kCodecs, Letters(letters), &Codec::letters);
    return codec == std::end(kCodecs) ? nullptr : codec->format;
}

/// The scale and place of a matrix of 3 x 3; turned and slanted pictures are drawn upright.
struct Matrix {
    double xScale = 1, yScale = 1, x = 0, y = 0;
};

Result<Matrix> ReadMatrix(ByteSource& source) {
    return source.BytesAt<36>(source.Position()).transform([](const auto& bytes) {
        const auto fixed = [](std::int32_t number) { return number / 65536.0; };
        return Matrix{fixed(Common::BigAt<std::int32_t, 0>(bytes)), fixed(Common::BigAt<std::int32_t, 16>(bytes)),
                      fixed(Common::BigAt<std::int32_t, 24>(bytes)), fixed(Common::BigAt<std::int32_t, 28>(bytes))};
    });
}

PictRect Moved(const PictRect& rect, const Matrix& matrix) {
    const auto place = [](int at, double scale, double by) {
        return static_cast<int>(std::clamp(std::lround(at * scale + by), -0x8000L, 0x7FFFL));
    };
    if (matrix.xScale <= 0 || matrix.yScale <= 0) return rect;
    return {.top = place(rect.top, matrix.yScale, matrix.y),
            .left = place(rect.left, matrix.xScale, matrix.x),
            .bottom = place(rect.bottom, matrix.yScale, matrix.y),
            .right = place(rect.right, matrix.xScale, matrix.x)};
}

/// A matte, which is not drawn with: an image description, which begins with its size, and so many bytes of data.
Result<> SkipMatte(ByteSource& source, std::uint32_t bytes) {
    if (bytes == 0) return {};
    return source.Big<std::uint32_t>()
        .and_then([&](std::uint32_t description) { return source.Skip(std::max(description, 4U) - 4U); })
        .and_then([&] { return source.Skip(bytes); });
}

/// What stands before the picture itself.
///
///     bytes  field
///         2  version
///        36  matrix
///         4  bytes of a matte, which follows all these
///         8  rectangle of the matte
///         2  mode; from here on only of compressed pictures
///         8  source rectangle
///         4  accuracy
///         4  bytes of a mask region, which follows the matte
struct Placement {
    Matrix matrix;
    std::uint32_t matteBytes = 0, maskBytes = 0;
    std::uint16_t mode = 0;
    PictRect source;
};

Result<Placement> ReadPlacement(ByteSource& source, bool isCompressed) {
    Placement placement;
    const auto put = [](auto& field) { return [&field](const auto& value) { field = value; }; };
    Result<> read = source.Skip(2).and_then([&] { return ReadMatrix(source).transform(put(placement.matrix)); });
    read =
        read.and_then([&] { return source.Big<std::uint32_t>().transform(put(placement.matteBytes)); }).and_then([&] {
            return source.Skip(8);
        });
    if (isCompressed) {
        read = read.and_then([&] { return source.Big<std::uint16_t>().transform(put(placement.mode)); })
                   .and_then([&] { return ReadPictRect(source).transform(put(placement.source)); })
                   .and_then([&] { return source.Skip(4); })
                   .and_then([&] { return source.Big<std::uint32_t>().transform(put(placement.maskBytes)); });
    }
    read = read.and_then([&] { return SkipMatte(source, placement.matteBytes); });
    if (!read) return std::unexpected(read.error());
    return placement;
}

/// The first 48 bytes of an image description: its size (4), the codec (4), bytes of the data behind it (4 from 44 on).
Result<PictCompressed> ReadDescription(ByteSource& source, std::uint64_t end) {
    const std::uint64_t start = source.Position();
    const auto bytes = source.BytesAt<48>(start);
    if (!bytes) return std::unexpected(bytes.error());
    const auto size = Common::BigAt<std::uint32_t, 0>(*bytes);
    PictCompressed picture;
    picture.format = FormatOf({(*bytes)[4], (*bytes)[5], (*bytes)[6], (*bytes)[7]});
    if (picture.format == nullptr || size < bytes->size() || start + size >= end)
        return std::unexpected(Failure::kUnsupported);
    picture.offset = start + size;
    // The whole rest where the size of the data is left open.
    const std::uint64_t rest = end - picture.offset;
    const std::uint64_t data = Common::BigAt<std::uint32_t, 44>(*bytes);
    picture.bytes = data == 0 ? rest : std::min(rest, data);
    return picture;
}

std::span<const unsigned char> BytesOf(std::span<const unsigned char> file, const PictCompressed& picture) {
    return file.subspan(picture.offset, picture.bytes);
}

Result<PictRegion> ReadMask(ByteSource& source, std::uint32_t bytes) {
    if (bytes == 0) return PictRegion{.box = kPictEverywhere};
    const std::uint64_t end = source.Position() + bytes;
    return ReadPictRegion(source).and_then(
        [&](const PictRegion& region) { return source.Seek(end).transform([&] { return region; }); });
}

/// The size of the pixels is the library's, which decodes them, whatever the description says.
bool TakeSize(ByteSource& source, PictCommonRecord& record) {
    if (!source.Seek(0)) return false;
    const auto size = EmbeddedPictureSize(BytesOf(source.Peek(), record.compressed), record.compressed.format);
    if (!size) return false;
    record.bitmap.bounds = {.bottom = size->height, .right = size->width};
    record.bitmap.layout = {
        .width = size->width, .pixelSize = 32, .components = 3, .storage = PictRowStorage::kWithoutPad};
    record.storedRows = size->height;
    return true;
}

}  // namespace

std::optional<PictCommonRecord> ReadPictCompressed(ByteSource& source, std::uint64_t end, const PictState& state) {
    const Result<Placement> placement = ReadPlacement(source, true);
    if (!placement) return std::nullopt;
    PictCommonRecord record;
    const Result<PictRegion> mask = ReadMask(source, placement->maskBytes);
    const Result<PictCompressed> compressed = mask ? ReadDescription(source, end) : std::unexpected(mask.error());
    if (!compressed) return std::nullopt;
    record.mask = *mask;
    record.compressed = *compressed;
    if (!TakeSize(source, record)) return std::nullopt;
    record.bitmap.source = placement->source.IsEmpty() ? record.bitmap.bounds : placement->source;
    record.bitmap.destination = Moved(record.bitmap.source, placement->matrix);
    record.bitmap.mode = ToPictMode(placement->mode);
    PlacePictRecord(record, state);
    return record;
}

std::optional<PictCommonRecord> ReadPictUncompressed(ByteSource& source, std::uint64_t end, const PictState& state) {
    const Result<Placement> placement = ReadPlacement(source, false);
    if (!placement) return std::nullopt;
    const Result<std::uint16_t> opcode = source.Big<std::uint16_t>();
    const std::optional<PictBitmapOpcode> bitmap = opcode ? PictBitmapOpcodeOf(*opcode) : std::nullopt;
    if (!bitmap) return std::nullopt;
    Result<PictCommonRecord> record = ReadPictCommonRecord(source, *bitmap, state);
    if (!record || source.Position() > end) return std::nullopt;
    record->bitmap.destination = Moved(record->bitmap.destination, placement->matrix);
    PlacePictRecord(*record, state);
    return *std::move(record);
}

std::vector<unsigned char> DecodePictCompressed(std::span<const unsigned char> file, const PictCompressed& picture) {
    return DecodeEmbeddedPicture(BytesOf(file, picture), picture.format);
}

}  // namespace Kavra::Devices
