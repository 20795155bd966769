#include "frame/host/devices/EveryVectorWidth.h"
#include "support/FailingAllocator.h"
#include "support/MessageRecorder.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <Imath/half.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Objects::ObjModel;
using ByteVector = std::vector<unsigned char>;

template <class T>
ByteVector BytesOf(std::initializer_list<T> values) {
    ByteVector bytes(values.size() * sizeof(T));
    std::memcpy(bytes.data(), std::data(values), bytes.size());
    return bytes;
}
ByteVector Words(std::initializer_list<std::uint16_t> values) {
    return BytesOf(values);
}
ByteVector Floats(std::initializer_list<float> values) {
    return BytesOf(values);
}

void* const kGarbage = reinterpret_cast<void*>(std::uintptr_t{0xDEADBEEF});
constexpr std::size_t kUntouched = 0xABCDEF;

/// What the engine makes of packed pixels. `dst` holds garbage before, which must never be looked at.
ByteVector Convert(EFormat from, ByteVector source, EFormat to) {
    void* dst = kGarbage;
    std::size_t bytes = kUntouched;
    EXPECT_TRUE(OIIOImageHandler::FormatConversion(from, source.size(), source.data(), to, dst, bytes));
    if (dst == nullptr) {
        ADD_FAILURE() << from << " to " << to << " is not handled";
        return {};
    }
    ByteVector result(static_cast<unsigned char*>(dst), static_cast<unsigned char*>(dst) + bytes);
    Objects::KavraDelete(dst);
    return result;
}

constexpr EFormat kEightBitColours[] = {kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8};

TEST(FormatConversion, EightBitGreyWidensAndSpreads) {
    for (const EFormat grey : {kR8, kL8}) {
        EXPECT_EQ(Convert(grey, {0, 1, 255}, kR16), Words({0, 257, 65535}));
        EXPECT_EQ(Convert(grey, {1, 254}, kR16G16), Words({257, 257, 65278, 65278}));
        for (const EFormat colour : kEightBitColours) {
            EXPECT_EQ(Convert(grey, {7, 200}, colour), (ByteVector{7, 7, 7, 255, 200, 200, 200, 255}));
        }
    }
}

TEST(FormatConversion, SixteenBitGreySpreadsOrIsRounded) {
    for (const EFormat grey : {kR16, kL16}) {
        EXPECT_EQ(Convert(grey, Words({0x1234, 7}), kR16G16), Words({0x1234, 0x1234, 7, 7}));
        EXPECT_EQ(Convert(grey, Words({0x1234}), kR16G16B16A16), Words({0x1234, 0x1234, 0x1234, 65535}));
        for (const EFormat colour : kEightBitColours) {
            EXPECT_EQ(Convert(grey, Words({128, 129, 65535}), colour),
                      (ByteVector{0, 0, 0, 255, 1, 1, 1, 255, 255, 255, 255, 255}));
        }
    }
}

TEST(FormatConversion, SixteenBitGreyToHalfColourIsOpaqueBlackWhateverItHolds) {
    for (const EFormat grey : {kR16, kL16}) {
        EXPECT_EQ(Convert(grey, Words({65535, 1, 30000}), kR16G16B16A16F),
                  Words({0, 0, 0, 0x3C00, 0, 0, 0, 0x3C00, 0, 0, 0, 0x3C00}));
    }
}

TEST(FormatConversion, FloatGreysSpread) {
    EXPECT_EQ(Convert(kR16F, Words({0x7C01, 0x8000}), kR16G16B16A16F),
              Words({0x7C01, 0x7C01, 0x7C01, 0x3C00, 0x8000, 0x8000, 0x8000, 0x3C00}));
    EXPECT_EQ(Convert(kR32F, Floats({0.25F, -9.0F}), kR32G32B32A32F),
              Floats({0.25F, 0.25F, 0.25F, 1.0F, -9.0F, -9.0F, -9.0F, 1.0F}));
    EXPECT_EQ(Convert(kR32F, Floats({0.25F, -9.0F}), kR32G32B32F), Floats({0.25F, 0.25F, 0.25F, -9.0F, -9.0F, -9.0F}));
}

TEST(FormatConversion, EightBitColourBecomesGrey) {
    const ByteVector colours = {255, 255, 255, 0, 0, 0, 0, 255, 255, 0, 0, 3};
    for (const EFormat grey : {kR8, kL8}) {
        EXPECT_EQ(Convert(kR8G8B8A8, colours, grey), (ByteVector{255, 0, 76}));
        EXPECT_EQ(Convert(kB8G8R8A8, colours, grey), (ByteVector{255, 0, 29}));
    }
}

TEST(FormatConversion, EightBitColourChangesItsOrder) {
    const ByteVector colours = {1, 2, 3, 4, 5, 6, 7, 8}, swapped = {3, 2, 1, 4, 7, 6, 5, 8};
    for (const EFormat blue : {kB8G8R8A8, kB8G8R8X8})
        EXPECT_EQ(Convert(kR8G8B8A8, colours, blue), swapped);
    for (const EFormat red : {kR8G8B8A8, kR8G8B8X8})
        EXPECT_EQ(Convert(kB8G8R8A8, colours, red), swapped);
}

TEST(FormatConversion, EightBitColourWidens) {
    const ByteVector colour = {0, 51, 255, 1};
    EXPECT_EQ(Convert(kR8G8B8A8, colour, kR16G16B16A16), Words({0, 13107, 65535, 257}));
    EXPECT_EQ(Convert(kR8G8B8A8, colour, kR32G32B32A32F), Floats({0.0F, 51.0F * (1.0F / 255.0F), 1.0F, 1.0F / 255.0F}));
    EXPECT_EQ(Convert(kR8G8B8A8, colour, kR16G16B16A16F), Words({0, 0x3266, 0x3C00, 0x1C04}));
}

TEST(FormatConversion, BlueFirstColourWidensToRedFirst) {
    const ByteVector blueFirst = {10, 20, 30, 40, 50, 60, 70, 80}, redFirst = {30, 20, 10, 40, 70, 60, 50, 80};
    for (const EFormat to : {kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}) {
        EXPECT_EQ(Convert(kB8G8R8A8, blueFirst, to), Convert(kR8G8B8A8, redFirst, to));
    }
    EXPECT_EQ(Convert(kB8G8R8A8, blueFirst, kR32G32B32A32F).size(), 32U);
}

/// Exchanges the first and third of every four elements.
template <class T>
ByteVector Swapped(ByteVector bytes) {
    for (std::size_t i = 0; i + 4 * sizeof(T) <= bytes.size(); i += 4 * sizeof(T)) {
        std::swap_ranges(&bytes[i], &bytes[i] + sizeof(T), &bytes[i + 2 * sizeof(T)]);
    }
    return bytes;
}

TEST(FormatConversion, EveryValueOfABlueFirstConversionEqualsSwappingAndThenConverting) {
    ByteVector bytes(4 * 256 * 5), words(2 * 65536);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<unsigned char>(i + i / 1280);
    for (std::size_t i = 0; i < 65536; ++i) {
        const auto word = static_cast<std::uint16_t>(i);
        std::memcpy(&words[2 * i], &word, 2);
    }
    const ByteVector redFirst = Swapped<std::uint8_t>(bytes);
    for (const EFormat to : {kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}) {
        ForEveryVectorWidth(
            [&] { EXPECT_TRUE(Convert(kB8G8R8A8, bytes, to) == Convert(kR8G8B8A8, redFirst, to)) << to; });
    }
    ForEveryVectorWidth([&] {
        EXPECT_TRUE(Convert(kR16G16B16A16, words, kB8G8R8A8) ==
                    Swapped<std::uint8_t>(Convert(kR16G16B16A16, words, kR8G8B8A8)));
    });
}

TEST(FormatConversion, WideColoursChangeTheirType) {
    EXPECT_EQ(Convert(kR16G16B16A16F, Words({0x3C00, 0xC000, 0x0001, 0x7C00}), kR32G32B32A32F),
              Floats({1.0F, -2.0F, 0x1p-24F, std::numeric_limits<float>::infinity()}));
    const ByteVector words = Words({0, 65535, 128, 129});
    for (const EFormat red : {kR8G8B8A8, kR8G8B8X8}) {
        EXPECT_EQ(Convert(kR16G16B16A16, words, red), (ByteVector{0, 255, 0, 1}));
    }
    for (const EFormat blue : {kB8G8R8A8, kB8G8R8X8}) {
        EXPECT_EQ(Convert(kR16G16B16A16, words, blue), (ByteVector{0, 255, 0, 1}));
        EXPECT_EQ(Convert(kR16G16B16A16, Words({0, 257, 514, 771}), blue), (ByteVector{2, 1, 0, 3}));
    }
    EXPECT_EQ(Convert(kR16G16B16A16, words, kR32G32B32A32F),
              Floats({0.0F, 1.0F, 128 * (1.0F / 65535), 129 * (1.0F / 65535)}));
    EXPECT_EQ(Convert(kR16G16B16A16, Words({0, 65535, 32768, 1}), kR16G16B16A16F), Words({0, 0x3C00, 0x3800, 0x0100}));
}

TEST(FormatConversion, FloatColourPacksIntoEveryFormat) {
    const ByteVector colours = Floats({0.0F, 0.5F, 1.0F, 0.2F, 2.0F, -1.0F, 0.6F, 1.0F});
    EXPECT_EQ(Convert(kR32G32B32A32F, colours, kR8G8B8A8), (ByteVector{0, 128, 255, 51, 255, 0, 153, 255}));
    EXPECT_EQ(Convert(kR32G32B32A32F, colours, kB8G8R8X8), (ByteVector{255, 128, 0, 51, 153, 0, 255, 255}));
    EXPECT_EQ(Convert(kR32G32B32A32F, colours, kA8), (ByteVector{0, 255}));
    EXPECT_EQ(Convert(kR32G32B32A32F, colours, kR16G16), Words({0, 32768, 65535, 0}));
    EXPECT_EQ(Convert(kR32G32B32A32F, colours, kR32G32F), Floats({0.0F, 0.5F, 2.0F, -1.0F}));
    EXPECT_EQ(Convert(kR32G32B32A32F, colours, kR32G32B32A32F), colours);
}

TEST(FormatConversion, FloatColourWithoutAlphaKeepsTheSizeOfItsSource) {
    const ByteVector packed = Convert(kR32G32B32A32F, Floats({1, 2, 3, 4, 5, 6, 7, 8}), kR32G32B32F);
    ASSERT_EQ(packed.size(), 32U);
    EXPECT_EQ(packed, Floats({1, 2, 3, 5, 6, 7, 0, 0}));
}

TEST(FormatConversion, ReportsTheBytesOfItsFormulaForEveryPair) {
    struct Rule {
        EFormat from, to;
        std::size_t bytes;  // of 48 source bytes
    };
    const Rule rules[] = {
        {kL8, kR16, 96},
        {kL8, kR16G16, 192},
        {kL8, kR8G8B8A8, 192},
        {kR16F, kR16G16B16A16F, 192},
        {kL16, kR16G16, 96},
        {kL16, kB8G8R8X8, 96},
        {kL16, kR16G16B16A16F, 192},
        {kL16, kR16G16B16A16, 192},
        {kR32F, kR32G32B32F, 144},
        {kR32F, kR32G32B32A32F, 192},
        {kR8G8B8A8, kL8, 12},
        {kR8G8B8A8, kB8G8R8A8, 48},
        {kR8G8B8A8, kR16G16B16A16F, 96},
        {kR8G8B8A8, kR16G16B16A16, 96},
        {kR8G8B8A8, kR32G32B32A32F, 192},
        {kB8G8R8A8, kL8, 12},
        {kB8G8R8A8, kR8G8B8X8, 48},
        {kB8G8R8A8, kR16G16B16A16F, 96},
        {kB8G8R8A8, kR16G16B16A16, 96},
        {kB8G8R8A8, kR32G32B32A32F, 192},
        {kR16G16B16A16F, kR32G32B32A32F, 96},
        {kR16G16B16A16, kR8G8B8A8, 24},
        {kR16G16B16A16, kB8G8R8A8, 24},
        {kR16G16B16A16, kR16G16B16A16F, 48},
        {kR16G16B16A16, kR32G32B32A32F, 96},
        {kR32G32B32A32F, kL8, 3},
        {kR32G32B32A32F, kL16, 6},
        {kR32G32B32A32F, kR8G8B8A8, 12},
        {kR32G32B32A32F, kR16G16B16A16, 24},
        {kR32G32B32A32F, kR32G32B32F, 48},
        {kR32G32B32A32F, kR32G32B32A32F, 48},
    };
    for (const auto& [from, to, bytes] : rules)
        EXPECT_EQ(Convert(from, ByteVector(48), to).size(), bytes) << from << to;
}

constexpr EFormat kSources[] = {kR8,       kL8,       kR16F,          kR16,          kL16,          kR32F,
                                kR8G8B8A8, kB8G8R8A8, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F};

TEST(FormatConversion, HandlesExactlyThePairsThatCanBeConverted) {
    const MessageRecorder recorder;
    ByteVector source(48);
    for (int from = -2; from < 90; ++from) {
        for (int to = -2; to < 90; ++to) {
            const auto f = static_cast<EFormat>(from), t = static_cast<EFormat>(to);
            bool isHandled = OIIOImageHandler::CanConvertTo(f, t);
            if (f == kR32G32B32A32F) isHandled = Utilities::AFormatConvertor::BytesPerPixel(t) > 0;
            void* dst = kGarbage;
            std::size_t bytes = kUntouched;
            EXPECT_TRUE(OIIOImageHandler::FormatConversion(f, source.size(), source.data(), t, dst, bytes));
            EXPECT_EQ(dst != nullptr, isHandled) << from << " to " << to;
            EXPECT_EQ(bytes != kUntouched, isHandled) << from << " to " << to;
            Objects::KavraDelete(dst);
        }
    }
}

TEST(FormatConversion, APairThatIsNotHandledRaisesOneErrorAndLeavesTheSizeAlone) {
    const std::pair<EFormat, EFormat> pairs[] = {
        {kA8, kR8G8B8A8},
        {kR8G8B8A8, kR8G8B8X8},
        {kR16G16F, kR8G8B8A8},
        {kUnknown, kR8G8B8A8},
        {kL8, kL8},
        {kL16, kL8},
        {kR32G32B32A32F, kUnknown},
        {kR32G32B32A32F, kBC1},
        {kBC7, kL8},
        {kR8G8B8A8, kUnknown},
        {kR32G32B32A32F, static_cast<EFormat>(12345)},
    };
    ByteVector source(48);
    for (const auto& [from, to] : pairs) {
        const MessageRecorder recorder;
        void* dst = kGarbage;
        std::size_t bytes = kUntouched;
        EXPECT_TRUE(OIIOImageHandler::FormatConversion(from, source.size(), source.data(), to, dst, bytes));
        EXPECT_EQ(dst, nullptr) << from << " to " << to;
        EXPECT_EQ(bytes, kUntouched);
        const std::vector<MessageRecorder::Entry> expected = {
            {Objects::EMessageKind::kError, L"Currently not supported", false}};
        EXPECT_EQ(recorder.Entries(), expected) << from << " to " << to;
    }
}

TEST(FormatConversion, NoSourceIsAPairThatIsNotHandledUnlessItIsEmpty) {
    for (const EFormat from : kSources) {
        const EFormat to = from == kR16F                                 ? kR16G16B16A16F
                           : from == kR32F || from == kR16G16B16A16F     ? kR32G32B32A32F
                           : from == kR8G8B8A8 || from == kR32G32B32A32F ? kL8
                                                                         : kR8G8B8A8;
        const EFormat target = from == kB8G8R8A8 ? kL8 : to;
        const MessageRecorder recorder;
        void* dst = kGarbage;
        std::size_t bytes = kUntouched;
        EXPECT_TRUE(OIIOImageHandler::FormatConversion(from, 16, nullptr, target, dst, bytes));
        EXPECT_EQ(dst, nullptr) << from;
        EXPECT_EQ(bytes, kUntouched);
        EXPECT_EQ(recorder.Texts(), std::vector<std::wstring>{L"Currently not supported"});

        EXPECT_TRUE(OIIOImageHandler::FormatConversion(from, 0, nullptr, target, dst, bytes));
        EXPECT_NE(dst, nullptr) << from;
        EXPECT_EQ(bytes, 0U);
        Objects::KavraDelete(dst);
    }
}

TEST(FormatConversion, LeavesNothingBehindWhenThereIsNoMemory) {
    ByteVector source(4800, 1);
    for (const EFormat from : kSources) {
        for (int to = 20; to < 70; ++to) {
            const auto target = static_cast<EFormat>(to);
            if (!OIIOImageHandler::CanConvertTo(from, target)) continue;
            if (Utilities::AFormatConvertor::BytesPerPixel(target) == 0) continue;
            for (int granted = 0;; ++granted) {
                FailingAllocator allocator(ObjModel::mDefaultAllocator, granted);
                void* dst = kGarbage;
                std::size_t bytes = kUntouched;
                try {
                    OIIOImageHandler::FormatConversion(from, source.size(), source.data(), target, dst, bytes);
                    EXPECT_EQ(allocator.LiveBlocks(), 1) << from << " to " << to;  // the result, and no intermediate
                    Objects::KavraDelete(dst);
                    break;
                } catch (const std::bad_alloc&) {
                    EXPECT_EQ(allocator.LiveBlocks(), 0) << from << " to " << to;
                    EXPECT_EQ(bytes, kUntouched);
                }
            }
        }
    }
}

TEST(FormatConversion, TheBlockHoldsAllTheBytesThatAreReportedWhateverTheSourceEndsWith) {
    for (const EFormat from : kSources) {
        for (int to = 20; to < 70; ++to) {
            const auto target = static_cast<EFormat>(to);
            if (!OIIOImageHandler::CanConvertTo(from, target)) continue;
            if (Utilities::AFormatConvertor::BytesPerPixel(target) == 0) continue;
            for (std::size_t size = 0; size < 40; ++size) {
                ByteVector source(size + 1, 0x11);
                FailingAllocator allocator(ObjModel::mDefaultAllocator, 100);
                void* dst = kGarbage;
                std::size_t bytes = kUntouched;
                OIIOImageHandler::FormatConversion(from, size, source.data(), target, dst, bytes);
                EXPECT_LE(bytes, allocator.LargestBlock()) << from << " to " << to << " of " << size;
                Objects::KavraDelete(dst);
            }
        }
    }
}

TEST(FormatConversion, BlocksThatAreSplitOverAllCoresAreWhole) {
    const std::size_t pixels = 1000003;
    ByteVector colours(pixels * 4);
    for (std::size_t i = 0; i < colours.size(); ++i)
        colours[i] = static_cast<unsigned char>(i * 7 + i / 251);
    const ByteVector grey = Convert(kR8G8B8A8, colours, kL8);
    const ByteVector floats = Convert(kB8G8R8A8, colours, kR32G32B32A32F);
    const ByteVector again = Convert(kR32G32B32A32F, floats, kB8G8R8A8);
    ASSERT_EQ(grey.size(), pixels);
    EXPECT_TRUE(again == colours);
    const ByteVector words = Convert(kB8G8R8A8, colours, kR16G16B16A16);
    EXPECT_TRUE(Convert(kR16G16B16A16, words, kB8G8R8A8) == colours);
    for (std::size_t i = 0; i < pixels; i += 997) {
        const unsigned char* pixel = colours.data() + 4 * i;
        const float sum = (pixel[1] * 0.587F + pixel[0] * 0.299F) + pixel[2] * 0.114F;
        ASSERT_EQ(grey[i], static_cast<unsigned char>(static_cast<double>(sum) + 0.5)) << i;
    }
}

}  // namespace
}  // namespace Kavra::Tests
