/// What the image library says of a file that it cannot read, and what is said of files that nobody reads.
#pragma once

#include <kavra/devices/LastFailure.h>

#include <OpenImageIO/imageio.h>

#include <span>
#include <string>
#include <string_view>

namespace Kavra::Devices {

/// Takes the errors that `input` has collected, which the library would keep for ever, and throws `std::bad_alloc` when
/// one of them is for want of memory. For after a failure: what fails for want of memory is not to be tried another
/// way.
std::string TakeErrors(const OIIO::ImageInput& input);

/// Says in the library's words why the file at `path` cannot be read; the kind is found in the words, and is `otherwise`
/// where nothing is found. Says nothing where there are no words.
void SayLibraryError(std::string_view errors, std::string_view path, EFailureKind otherwise);

/// Says of a file that begins with these bytes, and that no reader takes, what it is as far as that shows.
void SayOfUnknownFile(std::span<const unsigned char> start);

}  // namespace Kavra::Devices
