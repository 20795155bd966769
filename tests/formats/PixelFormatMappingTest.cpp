#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <climits>
#include <map>
#include <set>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

ImageSpec Spec(int channels, TypeDesc type) {
    return ImageSpec(7, 5, channels, type);
}

// --- FormatToImageSpec -----------------------------------------------------------------------------------------------

struct Mapped {
    TypeDesc::BASETYPE type;
    int channels;
};
const std::map<EFormat, Mapped> kMapped = {
    {kA8, {TypeDesc::UINT8, 1}},
    {kR8, {TypeDesc::UINT8, 1}},
    {kL8, {TypeDesc::UINT8, 1}},
    {kR16F, {TypeDesc::HALF, 1}},
    {kR16, {TypeDesc::UINT16, 1}},
    {kL16, {TypeDesc::UINT16, 1}},
    {kR32F, {TypeDesc::FLOAT, 1}},
    {kR16G16F, {TypeDesc::HALF, 2}},
    {kR16G16, {TypeDesc::UINT16, 2}},
    {kR8G8B8A8, {TypeDesc::UINT8, 4}},
    {kB8G8R8A8, {TypeDesc::UINT8, 4}},
    {kB8G8R8X8, {TypeDesc::UINT8, 4}},
    {kR8G8B8X8, {TypeDesc::UINT8, 4}},
    {kR32G32F, {TypeDesc::FLOAT, 2}},
    {kR16G16B16A16F, {TypeDesc::HALF, 4}},
    {kR16G16B16A16, {TypeDesc::UINT16, 4}},
    {kR32G32B32A32F, {TypeDesc::FLOAT, 4}},
};

TEST(FormatToImageSpec, GivesTypeAndChannelsOfTheFormatAndKeepsTheRest) {
    ImageSpec base = Spec(3, TypeDesc::DOUBLE);
    base.attribute("kept", 42);
    for (const auto& [format, mapped] : kMapped) {
        const ImageSpec spec = OIIOImageHandler::FormatToImageSpec(format, base);
        EXPECT_EQ(spec.format, TypeDesc(mapped.type)) << format;
        EXPECT_EQ(spec.nchannels, mapped.channels) << format;
        EXPECT_EQ(spec.width, 7);
        EXPECT_EQ(spec.height, 5);
        EXPECT_EQ(spec.get_int_attribute("kept"), 42);
        EXPECT_EQ(spec.channelnames, base.channelnames) << format;
    }
}

TEST(FormatToImageSpec, FourChannelsHaveTheirAlphaLastAndFewerKeepTheBasesIndex) {
    for (const int index : {-1, 0, 3}) {
        ImageSpec base = Spec(4, TypeDesc::UINT8);
        base.alpha_channel = index;
        for (const auto& [format, mapped] : kMapped) {
            EXPECT_EQ(OIIOImageHandler::FormatToImageSpec(format, base).alpha_channel, mapped.channels == 4 ? 3 : index)
                << format;
        }
    }
}

TEST(FormatToImageSpec, UnknownGivesTheBaseItself) {
    ImageSpec base = Spec(3, TypeDesc::INT16);
    base.alpha_channel = 1;
    base.channelformats = {TypeDesc::INT16, TypeDesc::UINT8, TypeDesc::FLOAT};
    const ImageSpec spec = OIIOImageHandler::FormatToImageSpec(kUnknown, base);
    EXPECT_EQ(spec.format, TypeDesc(TypeDesc::INT16));
    EXPECT_EQ(spec.nchannels, 3);
    EXPECT_EQ(spec.alpha_channel, 1);
    EXPECT_EQ(spec.channelformats, base.channelformats);
}

TEST(FormatToImageSpec, AFormatOfTheTableEndsMixedChannelTypes) {
    ImageSpec base = Spec(2, TypeDesc::FLOAT);
    base.channelformats = {TypeDesc::HALF, TypeDesc::FLOAT};
    EXPECT_TRUE(OIIOImageHandler::FormatToImageSpec(kR16G16F, base).channelformats.empty());
}

TEST(FormatToImageSpec, OtherValuesOnlyStoreTheUnknownType) {
    ImageSpec base = Spec(3, TypeDesc::FLOAT);
    base.alpha_channel = 2;
    base.channelformats = {TypeDesc::HALF, TypeDesc::HALF, TypeDesc::FLOAT};
    for (const int value : {-1, 6, 48, 50, 51, 63, 73, 75, 77, 78, 12345, INT_MIN, INT_MAX}) {
        const ImageSpec spec = OIIOImageHandler::FormatToImageSpec(static_cast<EFormat>(value), base);
        EXPECT_EQ(spec.format, TypeDesc(TypeDesc::UNKNOWN)) << value;
        EXPECT_EQ(spec.nchannels, 3) << value;
        EXPECT_EQ(spec.alpha_channel, 2) << value;
        EXPECT_EQ(spec.channelformats, base.channelformats) << value;
    }
}

// --- ImageSpecToFormat -----------------------------------------------------------------------------------------------

EFormat FormatOf(int channels, TypeDesc type) {
    return OIIOImageHandler::ImageSpecToFormat(Spec(channels, type));
}

TEST(ImageSpecToFormat, ChoosesByTypeAndNumberOfChannels) {
    const std::map<TypeDesc::BASETYPE, std::vector<EFormat>> byChannels = {
        // 0, 1, 2, 3, 4, 5, 9 channels
        {TypeDesc::UINT8, {kUnknown, kL8, kR8G8B8A8, kR8G8B8A8, kR8G8B8A8, kR8G8B8A8, kR8G8B8A8}},
        {TypeDesc::UINT16, {kUnknown, kL16, kL16, kR16G16B16A16, kR16G16B16A16, kUnknown, kUnknown}},
        {TypeDesc::HALF, {kUnknown, kR16F, kR16G16F, kR16G16B16A16F, kR16G16B16A16F, kUnknown, kUnknown}},
        {TypeDesc::FLOAT, {kUnknown, kR32F, kR32G32F, kR32G32B32A32F, kR32G32B32A32F, kUnknown, kUnknown}},
    };
    const int counts[] = {0, 1, 2, 3, 4, 5, 9};
    for (const auto& [type, formats] : byChannels) {
        for (std::size_t i = 0; i < formats.size(); ++i) {
            EXPECT_EQ(FormatOf(counts[i], type), formats[i]) << int(type) << " x " << counts[i];
        }
    }
}

TEST(ImageSpecToFormat, OtherTypesHaveNoFormat) {
    for (const auto type : {TypeDesc::UNKNOWN, TypeDesc::INT8, TypeDesc::INT16, TypeDesc::UINT32, TypeDesc::INT32,
                            TypeDesc::INT64, TypeDesc::UINT64, TypeDesc::DOUBLE}) {
        for (int channels = 0; channels < 6; ++channels)
            EXPECT_EQ(FormatOf(channels, type), kUnknown) << int(type);
    }
}

ImageSpec WithDepth(std::vector<TypeDesc> types, int depthChannel) {
    ImageSpec spec = Spec(static_cast<int>(types.size()), TypeDesc::FLOAT);
    spec.channelformats = std::move(types);
    spec.z_channel = depthChannel;
    return spec;
}

TEST(ImageSpecToFormat, LeavesTheDepthChannelOutOfCountAndType) {
    const TypeDesc h = TypeDesc::HALF, f = TypeDesc::FLOAT, b = TypeDesc::UINT8;
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(WithDepth({f, f}, 1)), kR32F);
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(WithDepth({h, h, h, f}, 3)), kR16G16B16A16F);
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(WithDepth({f, h, h}, 0)), kR16G16F);
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(WithDepth({h, f, h, h, f}, 4)), kR32G32B32A32F);
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(WithDepth({b, h, f}, 2)), kR16G16F);
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(WithDepth({f}, 0)), kUnknown);
}

TEST(ImageSpecToFormat, AnAlphaIsCounted) {
    ImageSpec spec = Spec(2, TypeDesc::FLOAT);
    spec.alpha_channel = 1;
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(spec), kR32G32F);
    spec.alpha_channel = 0;
    EXPECT_EQ(OIIOImageHandler::ImageSpecToFormat(spec), kR32G32F);
}

TEST(ImageSpecToFormat, AGreyTIFFHasOneChannelHoweverManyItHas) {
    const auto withPhotometric = [](int channels, TypeDesc type, int value) {
        ImageSpec spec = Spec(channels, type);
        spec.attribute("TIFF:photometricinterpretation", value);  // names are compared without case
        return OIIOImageHandler::ImageSpecToFormat(spec);
    };
    EXPECT_EQ(withPhotometric(4, TypeDesc::UINT8, 0), kL8);
    EXPECT_EQ(withPhotometric(4, TypeDesc::UINT8, 1), kL8);
    EXPECT_EQ(withPhotometric(4, TypeDesc::UINT8, 2), kR8G8B8A8);
    EXPECT_EQ(withPhotometric(4, TypeDesc::UINT8, 3), kR8G8B8A8);
    EXPECT_EQ(withPhotometric(4, TypeDesc::UINT8, -1), kR8G8B8A8);
    EXPECT_EQ(withPhotometric(4, TypeDesc::UINT16, 1), kL16);
    EXPECT_EQ(withPhotometric(9, TypeDesc::FLOAT, 1), kR32F);
    EXPECT_EQ(withPhotometric(3, TypeDesc::UINT32, 1), kUnknown);
}

// --- CanConvertTo, NeedConvert ---------------------------------------------------------------------------------------

const std::map<EFormat, std::set<EFormat>> kConvertible = {
    {kR8, {kR16, kR16G16, kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8}},
    {kL8, {kR16, kR16G16, kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8}},
    {kR16F, {kR16G16B16A16F}},
    {kR16, {kR16G16, kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8, kR16G16B16A16F, kR16G16B16A16}},
    {kL16, {kR16G16, kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8, kR16G16B16A16F, kR16G16B16A16}},
    {kR32F, {kR32G32B32F, kR32G32B32A32F}},
    {kR8G8B8A8, {kR8, kL8, kB8G8R8A8, kB8G8R8X8, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}},
    {kB8G8R8A8, {kR8, kL8, kR8G8B8A8, kR8G8B8X8, kR16G16B16A16F, kR16G16B16A16, kR32G32B32A32F}},
    {kR16G16B16A16F, {kR32G32B32A32F}},
    {kR16G16B16A16, {kR8G8B8A8, kB8G8R8A8, kB8G8R8X8, kR8G8B8X8, kR16G16B16A16F, kR32G32B32A32F}},
};

TEST(CanConvertTo, IsTheMatrixForEveryPair) {
    for (int from = -5; from < 100; ++from) {
        if (from == kR32G32B32A32F) continue;
        const auto row = kConvertible.find(static_cast<EFormat>(from));
        for (int to = -5; to < 100; ++to) {
            const bool expected = row != kConvertible.end() && row->second.contains(static_cast<EFormat>(to));
            EXPECT_EQ(OIIOImageHandler::CanConvertTo(static_cast<EFormat>(from), static_cast<EFormat>(to)), expected)
                << from << " to " << to;
        }
    }
}

TEST(CanConvertTo, FloatColourConvertsToEverything) {
    for (int to = -5; to < 100; ++to) {
        EXPECT_TRUE(OIIOImageHandler::CanConvertTo(kR32G32B32A32F, static_cast<EFormat>(to))) << to;
    }
    EXPECT_TRUE(OIIOImageHandler::CanConvertTo(kR32G32B32A32F, static_cast<EFormat>(12345)));
    EXPECT_TRUE(OIIOImageHandler::CanConvertTo(kR32G32B32A32F, static_cast<EFormat>(INT_MIN)));
}

TEST(NeedConvert, DifferentKindsNeedItWhereTheFormatsDiffer) {
    EXPECT_TRUE(OIIOImageHandler::NeedConvert(kL8, 1, kR8G8B8A8, 4));
    EXPECT_TRUE(OIIOImageHandler::NeedConvert(kR8G8B8A8, 4, kR8G8B8X8, 3));
    EXPECT_FALSE(OIIOImageHandler::NeedConvert(kL8, 1, kL8, 4));
    EXPECT_FALSE(OIIOImageHandler::NeedConvert(static_cast<EFormat>(999), 1, static_cast<EFormat>(999), 2));
}

TEST(NeedConvert, EqualKindsNeedItOnlyWhereRedAndBlueChangePlaces) {
    const std::set<EFormat> red = {kR8G8B8A8, kR8G8B8X8}, blue = {kB8G8R8A8, kB8G8R8X8};
    for (int from = -5; from < 100; ++from) {
        for (int to = -5; to < 100; ++to) {
            const auto f = static_cast<EFormat>(from), t = static_cast<EFormat>(to);
            const bool expected = (red.contains(f) && blue.contains(t)) || (blue.contains(f) && red.contains(t));
            EXPECT_EQ(OIIOImageHandler::NeedConvert(f, 4, t, 4), expected) << from << " to " << to;
        }
    }
}

}  // namespace
}  // namespace Kavra::Tests
