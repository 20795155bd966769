// Fax data in every mode and bit order, beside the slow decoder of the tests.
//
// The first three bytes are the mode and bit order and the width; the rest is the data.

#include "../tests/readers/ccitt/CcittModel.h"
#include "readers/ccitt/CcittRows.h"

#include <cstdlib>
#include <span>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Kavra;
    using namespace Kavra::Devices::Ccitt;
    constexpr std::size_t kChoices = 3;
    constexpr int kRows = 64;
    if (size < kChoices) return 0;
    const auto mode = static_cast<Mode>(data[0] % 4);
    const auto order = static_cast<BitOrder>(data[0] / 4 % 2);
    const int width = 1 + (data[1] + 256 * data[2]) % 2600;
    const std::span<const unsigned char> bytes(data + kChoices, size - kChoices);

    Common::ByteSource source(bytes);
    Decoder decoder(source, width, mode, order);
    Tests::CcittModel model(bytes, width, mode, order);
    std::vector<unsigned char> row((static_cast<std::size_t>(width) + 7) / 8);
    std::vector<unsigned char> expected(row.size());
    for (int y = 0; y < kRows; ++y) {
        if (decoder.DecodeRows(row) != model.DecodeRow(expected) || row != expected) std::abort();
    }
    return 0;
}
