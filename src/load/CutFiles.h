/// Files that end before all of their picture: what they promise, and which rows are there.
#pragma once

#include "common/ByteSource.h"
#include "load/TextureLoader.h"

#include <string_view>

namespace Kavra::Devices {

/// Whether the headers of a file of the library's format of this name (`format_name`) promise more bytes than it has.
/// False for formats that promise nothing, and where the headers cannot be read.
bool PromisesMore(Common::ByteSource& file, std::string_view format);

/// Says that a file of this format ends early, with its rows where a header alone tells where they lie; false, and
/// nothing is said, where it does not promise more than it has.
bool SayIfCut(Common::ByteSource& file, std::string_view format) noexcept;

/// Says why the library could not read the pixels of a load (`load.errors`), and how many rows it can. The file is read
/// once more for that, and only for a host that asks for reasons.
void SayOfUnreadPixels(const TextureLoad& load, Common::ByteSource& file) noexcept;

/// Says that the file of a load which answers all the same ends early, and how many rows the library had no fault with.
void SayOfPartialPicture(const TextureLoad& load, Common::ByteSource& file) noexcept;

/// Whether the library's words are that a file ended while it read it.
bool SpeaksOfTheEnd(std::string_view errors);

}  // namespace Kavra::Devices
