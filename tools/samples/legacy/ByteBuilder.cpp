#include "legacy/ByteBuilder.h"

#include <algorithm>

namespace Kavra::Legacy {

ByteBuilder& ByteBuilder::Byte(unsigned value) {
    mBytes.resize(std::max(mBytes.size(), mNext + 1));
    mBytes[mNext++] = static_cast<unsigned char>(value);
    return *this;
}

}  // namespace Kavra::Legacy
