#include <kavra/devices/CubeFaces.h>
#include <kavra/devices/ETextureType.h>

#include <gtest/gtest.h>

#include <array>

namespace Kavra::Devices {
namespace {

TEST(CubeFaces, APlaceIsWhereItsDirectionPointsTo) {
    for (int face = 0; face < kCubeFaces; ++face) {
        for (const auto& [s, t] : {std::array{0.0F, 0.0F}, {0.25F, -0.75F}, {-0.5F, 0.875F}}) {
            vec3<float> direction = CubeDirection({face, s, t});
            direction = {3 * direction.x, 3 * direction.y, 3 * direction.z};
            const CubePlace place = CubePlaceOf(direction);
            EXPECT_EQ(place.face, face);
            EXPECT_FLOAT_EQ(place.s, s);
            EXPECT_FLOAT_EQ(place.t, t);
        }
    }
}

TEST(CubeFaces, FacesLieAsSeenFromInside) {
    const auto expect = [](const CubePlace& place, float x, float y, float z) {
        const vec3<float> direction = CubeDirection(place);
        EXPECT_EQ((std::array{direction.x, direction.y, direction.z}), (std::array{x, y, z}));
    };
    expect({4, 1, -1}, 1, 1, 1);    // ahead, up at the right
    expect({0, -1, -1}, 1, 1, 1);   // at the right, up at the left
    expect({2, 1, 1}, 1, 1, 1);     // above, down at the right
    expect({5, -1, 1}, 1, -1, -1);  // behind, down at the left
}

}  // namespace
}  // namespace Kavra::Devices
