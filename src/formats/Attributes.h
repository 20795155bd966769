/// What the image library says of a picture beside its pixels.
///
/// A file may name any attribute in words of its own - a comment of a PNG, a header line of an OpenEXR - and the
/// library takes text for a number where it is asked for one. So every attribute is asked for here, by name and by
/// kind.
#pragma once

#include <OpenImageIO/imageio.h>

#include <optional>

namespace Kavra::Devices {

/// An attribute that was stored as one integer of any width; nothing when there is none of this name or it is of
/// another kind. Case does not matter in names.
std::optional<int> IntegerAttribute(const OIIO::ImageSpec& spec, const char* name);

/// An attribute that was stored as one 32-bit float.
std::optional<float> FloatAttribute(const OIIO::ImageSpec& spec, const char* name);

/// An attribute that was stored as one text.
std::optional<OIIO::string_view> TextAttribute(const OIIO::ImageSpec& spec, const char* name);

/// Whether a TIFF says that its first channel is grey (0 white is zero, 1 black is zero); any others are extra ones
/// then.
bool IsGreyTiff(const OIIO::ImageSpec& spec);

}  // namespace Kavra::Devices
