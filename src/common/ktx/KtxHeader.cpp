#include "common/ktx/KtxHeader.h"

#include "common/ktx/LittleBytes.h"

#include <algorithm>

namespace Kavra::Devices::Ktx {

namespace {

/// The fields of 32 bits in their order, from `kFieldsAt` on; two of 64 bits follow.
constexpr std::uint32_t Header::* kFields[] = {
    &Header::vkFormat,        &Header::typeSize,    &Header::width,      &Header::height, &Header::depth,
    &Header::layers,          &Header::faces,       &Header::levels,     &Header::scheme, &Header::descriptorOffset,
    &Header::descriptorBytes, &Header::textsOffset, &Header::textsBytes,
};
constexpr std::size_t kFieldsAt = 12, kGlobalsAt = 64;
static_assert(kFieldsAt + sizeof(std::uint32_t) * std::size(kFields) == kGlobalsAt);
static_assert(kGlobalsAt + 2 * sizeof(std::uint64_t) == kHeaderBytes);

constexpr std::size_t kTextAlignment = 4;
constexpr std::string_view kKeyOrientation = "KTXorientation", kKeySwizzle = "KTXswizzle", kKeyWriter = "KTXwriter",
                           kKeyFaces = "KTXcubemapIncomplete";
constexpr std::string_view kWriter = "kavra";

std::string_view TextOf(std::span<const unsigned char> bytes) {
    std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return text.substr(0, text.find('\0'));
}

void TakePair(std::string_view key, std::span<const unsigned char> value, Texts& texts) {
    if (key == kKeyOrientation) texts.orientation = TextOf(value);
    if (key == kKeySwizzle) texts.swizzle = TextOf(value);
    if (key == kKeyFaces && !value.empty()) texts.facesInFile = value[0];
}

void AddPair(LittleBytes& bytes, std::string_view key, std::string_view value) {
    bytes.Add32(key.size() + value.size() + 2);
    bytes.AddText(key);
    bytes.AddText(value);
    bytes.PadTo(kTextAlignment);
}

}  // namespace

std::optional<Header> ParseHeader(std::span<const unsigned char> file) {
    if (file.size() < kHeaderBytes || !std::ranges::equal(file.first(kIdentifier.size()), kIdentifier))
        return std::nullopt;
    Header header;
    std::size_t at = kFieldsAt;
    for (std::uint32_t Header::* const field : kFields) {
        header.*field = Little32(file, at);
        at += sizeof(std::uint32_t);
    }
    header.globalsOffset = Little64(file, kGlobalsAt);
    header.globalsBytes = Little64(file, kGlobalsAt + sizeof(std::uint64_t));
    return header;
}

std::vector<unsigned char> ComposeHeader(const Header& header) {
    LittleBytes bytes;
    bytes.AddBytes(kIdentifier);
    for (std::uint32_t Header::* const field : kFields)
        bytes.Add32(header.*field);
    bytes.Add64(header.globalsOffset);
    bytes.Add64(header.globalsBytes);
    return std::move(bytes).Take();
}

std::vector<LevelPlace> ParsePlaces(std::span<const unsigned char> bytes) {
    constexpr std::size_t kNumber = sizeof(std::uint64_t);
    std::vector<LevelPlace> places;
    for (; bytes.size() >= kPlaceBytes; bytes = bytes.subspan(kPlaceBytes))
        places.push_back({Little64(bytes, 0), Little64(bytes, kNumber), Little64(bytes, 2 * kNumber)});
    return places;
}

std::optional<Texts> ParseTexts(std::span<const unsigned char> pairs) {
    Texts texts;
    while (!pairs.empty()) {
        constexpr std::size_t kLengthBytes = 4;
        if (pairs.size() < kLengthBytes) return std::nullopt;
        const std::size_t length = Little32(pairs, 0);
        pairs = pairs.subspan(kLengthBytes);
        if (length > pairs.size()) return std::nullopt;
        const std::span<const unsigned char> pair = pairs.first(length);
        const auto end = std::ranges::find(pair, 0);
        if (end == pair.end()) return std::nullopt;
        TakePair(TextOf(pair), pair.subspan(static_cast<std::size_t>(end - pair.begin()) + 1), texts);
        // Some writers leave out the zeros behind the last pair.
        const std::size_t padded = (length + kTextAlignment - 1) / kTextAlignment * kTextAlignment;
        pairs = pairs.subspan(std::min(padded, pairs.size()));
    }
    return texts;
}

std::vector<unsigned char> ComposeTexts(const Texts& texts) {
    LittleBytes bytes;
    AddPair(bytes, kKeyOrientation, texts.orientation);
    if (!texts.swizzle.empty()) AddPair(bytes, kKeySwizzle, texts.swizzle);
    AddPair(bytes, kKeyWriter, kWriter);
    return std::move(bytes).Take();
}

}  // namespace Kavra::Devices::Ktx
