/// The byte builder under the name by which the tests know it.
#pragma once

#include "legacy/ByteBuilder.h"

namespace Kavra::Tests {

using Legacy::ByteBuilder;

}  // namespace Kavra::Tests
