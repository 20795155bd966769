/// What OpenImageIO's writers do not tell about themselves, as measured with 3.1.
#pragma once

#include <kavra/devices/Export.h>

#include <OpenImageIO/imageio.h>

namespace Kavra::Devices {

/// Pictures that a writer aborts on, or reports as written though no reader will open them.
bool Mishandles(const OIIO::ImageOutput& writer, const OIIO::ImageSpec& spec, const KString& path);

/// Whether a writer that knows no half floats takes them for something else: it turns the picture upside down, writes
/// nonsense or a file that cannot be read. Floats it knows.
bool WantsFloatsForHalves(const OIIO::ImageOutput& writer);

/// Whether all that the writer writes goes through the proxy it is given. Those that offer none open the file
/// themselves, and so does, whatever it offers, the one for bare JPEG 2000 codestreams.
bool WritesThroughProxy(const OIIO::ImageOutput& writer, const KString& path);

/// Whether a writer wants a C stream for its proxy.
bool WantsStream(const OIIO::ImageOutput& writer);

/// Whether a file that its writer opened itself is there to its end; a full disk goes unnoticed by some of them.
/// `bytes` are those of the picture's samples.
bool IsWhole(const OIIO::ImageOutput& writer, OIIO::imagesize_t bytes, const KString& path);

}  // namespace Kavra::Devices
