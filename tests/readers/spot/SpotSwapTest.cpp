#include "readers/spot/SpotKernels.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Kavra::Devices;

TEST(SpotSwap, TurnsEachNumberRoundWhateverItsCount) {
    for (const std::size_t numberBytes : {2U, 4U}) {
        for (std::size_t count = 0; count < 100; ++count) {
            std::vector<unsigned char> numbers, expected;
            for (std::size_t i = 0; i < count * numberBytes; ++i) {
                numbers.push_back(static_cast<unsigned char>(i * 7));
                const std::size_t other = i / numberBytes * numberBytes + numberBytes - 1 - i % numberBytes;
                expected.push_back(static_cast<unsigned char>(other * 7));
            }
            SwapNumbers(numbers, numberBytes);
            ASSERT_EQ(numbers, expected) << count;
        }
    }
}

}  // namespace
