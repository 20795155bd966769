/// Which files can be read and written, by their extensions.
#pragma once

namespace Kavra::Devices {

/// `IImageInspector::ReadableExtensions` and `WritableExtensions`: what the image library that is installed lists, and
/// the kinds of the module and the host. The texts live as long as the process. Threads: any.
const char* ReadableExtensions();
const char* WritableExtensions();

}  // namespace Kavra::Devices
