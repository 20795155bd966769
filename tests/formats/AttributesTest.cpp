#include "formats/Attributes.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

template <class T>
ImageSpec With(TypeDesc type, T value) {
    ImageSpec spec(4, 4, 3, TypeDesc::UINT8);
    spec.attribute("Orientation", type, &value);
    return spec;
}

TEST(IntegerAttribute, TakesIntegersOfAnyWidth) {
    EXPECT_EQ(IntegerAttribute(With(TypeDesc::INT32, 6), "Orientation"), 6);
    EXPECT_EQ(IntegerAttribute(With(TypeDesc::UINT16, std::uint16_t{6}), "Orientation"), 6);
    EXPECT_EQ(IntegerAttribute(With(TypeDesc::UINT8, std::uint8_t{6}), "Orientation"), 6);
    EXPECT_EQ(IntegerAttribute(With(TypeDesc::UINT32, std::uint32_t{6}), "Orientation"), 6);
    EXPECT_EQ(IntegerAttribute(With(TypeDesc::INT32, 6), "orientation"), 6) << "case does not matter";
}

TEST(IntegerAttribute, TextFloatsAndListsAreNoIntegers) {
    ImageSpec spec(4, 4, 3, TypeDesc::UINT8);
    EXPECT_EQ(IntegerAttribute(spec, "Orientation"), std::nullopt);
    spec.attribute("Orientation", "6");
    EXPECT_EQ(IntegerAttribute(spec, "Orientation"), std::nullopt);
    spec.attribute("Orientation", 6.0F);
    EXPECT_EQ(IntegerAttribute(spec, "Orientation"), std::nullopt);
    const int two[] = {6, 1};
    spec.attribute("Orientation", TypeDesc(TypeDesc::INT32, 2), two);
    EXPECT_EQ(IntegerAttribute(spec, "Orientation"), std::nullopt);
}

TEST(FloatAttribute, TakesFloatsAlone) {
    ImageSpec spec(4, 4, 3, TypeDesc::UINT8);
    spec.attribute("oiio:Gamma", "2.0");
    EXPECT_EQ(FloatAttribute(spec, "oiio:Gamma"), std::nullopt);
    spec.attribute("oiio:Gamma", 2);
    EXPECT_EQ(FloatAttribute(spec, "oiio:Gamma"), std::nullopt);
    spec.attribute("oiio:Gamma", 2.0F);
    EXPECT_EQ(FloatAttribute(spec, "oiio:Gamma"), 2.0F);
}

TEST(TextAttribute, TakesTextAlone) {
    ImageSpec spec(4, 4, 3, TypeDesc::UINT8);
    spec.attribute("planarconfig", 2);
    EXPECT_EQ(TextAttribute(spec, "planarconfig"), std::nullopt);
    spec.attribute("planarconfig", "separate");
    EXPECT_EQ(TextAttribute(spec, "planarconfig"), "separate");
}

TEST(IsGreyTiff, BelievesNumbersNotText) {
    ImageSpec spec(4, 4, 3, TypeDesc::UINT8);
    EXPECT_FALSE(IsGreyTiff(spec));
    for (const int photometric : {-1, 0, 1, 2, 3, 1 << 30}) {
        spec.attribute("tiff:PhotometricInterpretation", photometric);
        EXPECT_EQ(IsGreyTiff(spec), photometric == 0 || photometric == 1) << photometric;
    }
    spec.attribute("tiff:PhotometricInterpretation", "1");
    EXPECT_FALSE(IsGreyTiff(spec));
}

}  // namespace
}  // namespace Kavra::Tests
