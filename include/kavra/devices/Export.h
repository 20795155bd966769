/// Visibility of what the host device library offers, and the object-model names that its interfaces speak.
#pragma once

#include <kavra/objects/ARefCounted.h>
#include <kavra/objects/IClone.h>
#include <kavra/objects/IDelete.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>
#include <kavra/objects/UString.h>

#if defined(KAVRA_DEVICES_BUILD)
#define KAVRA_DEVICES_API __attribute__((visibility("default")))
#else
#define KAVRA_DEVICES_API
#endif

namespace Kavra::Devices {

using Objects::ARefCounted;
using Objects::IClone;
using Objects::IDelete;
using Objects::IMemoryWrapper;
using Objects::KString;
using Objects::MemoryArrayWrapper;
using Objects::UString;

}  // namespace Kavra::Devices
