#include "legacy/Bitmap.h"

namespace Kavra::Legacy {

std::vector<int> Changes(const Bitmap& image, int y) {
    std::vector<int> changes;
    bool black = false;
    for (int x = 0; x < image.width;) {
        const unsigned byte = image.Row(y)[static_cast<std::size_t>(x) / 8];
        if (x % 8 == 0 && byte == (black ? 0xFFU : 0x00U)) {
            x += 8;
            continue;
        }
        if (image.At(x, y) != black) {
            changes.push_back(x);
            black = !black;
        }
        ++x;
    }
    return changes;
}

}  // namespace Kavra::Legacy
