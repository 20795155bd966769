/// What the minimal host's libraries show to its program, beside what they show to modules.
#pragma once

#include <kavra/objects/IClone.h>

extern "C" {

/// A clone of the prototype under `key`, or null.
__attribute__((visibility("default"))) Kavra::Objects::IClone* MinimalHostObject(const wchar_t* key);

/// Blocks and objects that were given out and are not given back.
__attribute__((visibility("default"))) int MinimalHostLiveBlocks();

/// Messages that were raised.
__attribute__((visibility("default"))) int MinimalHostMessages();
}
