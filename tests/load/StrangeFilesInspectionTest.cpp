// What is told of files that claim, hide or repeat too much.

#include "load/Inspections.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Tests {
namespace {

using namespace Devices;
using Bytes = std::vector<unsigned char>;
using OIIO::ImageSpec;

}  // namespace

TEST_F(FileInspection, WhatNobodyReadsIsNotDescribed) {
    EXPECT_FALSE(Inspect(folder / "missing.png"));
    EXPECT_FALSE(Inspect(folder.Path()));
    EXPECT_FALSE(Inspect(folder.Write("text.png", "no picture")));
    EXPECT_FALSE(Inspect(folder.Write("empty.exr", "")));
    EXPECT_FALSE(Inspect(folder.Write("start.dds", "DDS ")));
}

TEST_F(FileInspection, TextsThatAreNoUtf8AreMadeIt) {
    ImageSpec spec(1, 1, 3, OIIO::TypeUInt8);
    spec.attribute("ImageDescription", "caf\xE9 \x1B[31m");
    const Inspected file = Inspect(WritePicture(folder / "latin.tif", spec, Bytes{1, 2, 3}));
    ASSERT_TRUE(file);
    EXPECT_STREQ(TextOf(file->Part(0), "ImageDescription"), "caf\xEF\xBF\xBD \x1B[31m");
}

/// A field of a TIFF's directory.
struct Field {
    std::uint32_t tag, type, count, value;
};

/// A TIFF of as many grey pages of one pixel (TIFF 6.0, section 2), each with one more field at its end. The last
/// directory is followed by the one at `after`: none where that is 0.
Bytes Pages(int count, const std::optional<Field>& more = {}, std::uint32_t after = 0) {
    Bytes file;
    const auto put = [&](std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            file.push_back(static_cast<unsigned char>(value >> 8 * i));
    };
    constexpr std::uint32_t kLong = 4;
    std::vector<Field> fields;
    for (const auto& [tag, value] : {std::pair(256U, 1U),
                                     {257U, 1U},
                                     {258U, 8U},
                                     {259U, 1U},
                                     {262U, 1U},
                                     {273U, 8U},
                                     {277U, 1U},
                                     {278U, 1U},
                                     {279U, 1U}}) {
        fields.push_back({tag, kLong, 1, value});
    }
    if (more) fields.push_back(*more);
    put(0x002A4949, 4);
    put(8, 4);
    for (int page = 0; page < count; ++page) {
        put(static_cast<std::uint32_t>(fields.size()), 2);
        for (const Field& field : fields) {
            put(field.tag, 2);
            put(field.type, 2);
            put(field.count, 4);
            put(field.value, 4);
        }
        put(page + 1 == count ? after : static_cast<std::uint32_t>(file.size() + 4), 4);
    }
    return file;
}

TEST_F(FileInspection, AProfileThatReachesBeyondTheFileIsNone) {
    constexpr std::uint32_t kProfile = 34675, kBytes = 7;
    const Field profile = {kProfile, kBytes, 0x7FFFFFFF, 8};
    const Inspected file = Inspect(folder.Write("profile.tif", Pages(1, profile)));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Part(0).iccProfile, nullptr);
    EXPECT_EQ(file->Part(0).iccBytes, 0U);
}

TEST_F(FileInspection, DirectoriesInACircleComeToAnEnd) {
    const Inspected file = Inspect(folder.Write("circle.tif", Pages(3, {}, 8)));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->PartCount(), 3U);
}

TEST_F(FileInspection, OfManyTextsAThousandAreTold) {
    ImageSpec spec(1, 1, 3, OIIO::TypeHalf);
    for (int i = 0; i < 1500; ++i)
        spec.attribute("remark" + std::to_string(i), "\x1B[2J");
    const Inspected file = Inspect(WritePicture(folder / "remarks.exr", spec, std::vector<float>(3)));
    ASSERT_TRUE(file);
    EXPECT_EQ(file->Part(0).textCount, 1024U);
}

TEST_F(FileInspection, ManyPartsAreCutAtTheirBoundInNoTime) {
    const auto path = folder.Write("many.tif", Pages(60'000));
    const auto start = std::chrono::steady_clock::now();
    const Inspected file = Inspect(path);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    ASSERT_TRUE(file);
    EXPECT_EQ(file->PartCount(), 4096U);
    EXPECT_LT(taken.count(), 10.0);  // some tenths
}

}  // namespace Kavra::Tests
