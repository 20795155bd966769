/// \file
/// The confined process that decodes files for hosts that want nothing of a file to reach them but its picture.
#pragma once

#include <kavra/devices/EDataOrientation.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/IMemoryLoader.h>
#include <kavra/devices/ImageDesc.h>
#include <kavra/devices/ImageDescription.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>

#include <cstdint>

namespace Kavra::Devices {

class IImageFormatHandler;

// A host asks for isolation by a preference, and needs nothing else of this file:
//
//     Kavra::Devices::LoadPreferences preferences;
//     preferences.isolated = true;
//     const Kavra::Devices::LoadPreferencesScope scope(preferences);
//     IMemoryWrapper<void>* block = handler->LoadTexture(...);
//     if (block == nullptr && LastFailure().kind == kFailureDecoderDied) ...
//
// The first such operation starts the program `kavra-decoder`, which loads the module once and then has a child decode
// each file: one that has no file system, no network, no other processes and a limit of memory and time. The host opens
// the file and hands the descriptor over; the pixels come in shared memory, which becomes the block. What the child says
// is checked as a hostile file is. Answers are those of the same operation without isolation, and
//
// - `kFailureDecoderDied`, `kFailureTimedOut` or `kFailureTooLarge` where the child came to its end, with the warning
//   "format is not supported" of any load that fails;
// - `kFailureOther` where the decoder cannot be started: nothing is decoded in the host then, either.
//
// The decoder is a child process of the host until it ends. A block of shared memory is the same memory to processes
// that the host forks. Threads: any number at once, each has a child of its own.

/// Says where things lie. `program` is that of the decoder; null: `kavra/kavra-decoder` beside this library. `module` is
/// what it loads; null: the module that is asked. Holds from the next start of a decoder on; one that runs is ended when
/// its last operation is over. Throws `std::bad_alloc`. Threads: any.
KAVRA_DEVICES_API void SetDecoder(const char* program, const char* module);

/// Returns what of the confinement this system lacks, as one line in English; empty where all of it holds: "no Landlock:
/// files are kept from the decoder by the filter of system calls alone". Lives as long as the process. Threads: any.
KAVRA_DEVICES_API const char* DecoderGaps();

/// An operation of a handler that is to run isolated. For modules.
struct IsolatedOperation {
    std::uint32_t size = sizeof(IsolatedOperation);  ///< of the structure as the module knows it, in bytes
    const char* modulePath = nullptr;                ///< the module itself
    const wchar_t* path = nullptr;                   ///< of the file
    const MemoryFile* memory = nullptr;              ///< the file itself, where it is in memory; its name is `path`
    std::int32_t width = 0;                          ///< this and what follows as for `IImageHandler::LoadTexture`
    std::int32_t height = 0;                         ///< pixels, as well
    EFormat format = kUnknown;                       ///< as there
    bool highQuality = false;                        ///< as there
    std::int32_t level = 0;                          ///< as there
    EDataOrientation orientation = kTopLeft;         ///< as there
    IImageFormatHandler* formatHandler = nullptr;    ///< as there; the caller's
};

/// What came of an isolated operation.
enum EIsolatedEnd : int {
    kIsolatedAnswered = 0,  ///< the child answered; with nothing, if that is the answer
    kIsolatedNoFile = 1,    ///< there is no file that could be handed over: the operation may run without isolation
    kIsolatedFailed = 2,    ///< there is no answer; `LastFailure` says why
};

/// Loads; `block` is the caller's to delete, null for none. The preferences of the thread hold. Never throws.
KAVRA_DEVICES_API EIsolatedEnd LoadIsolated(const IsolatedOperation& operation, ImageDescription& desc,
                                            Objects::IMemoryWrapper<void>*& block) noexcept;
/// Describes likewise.
KAVRA_DEVICES_API EIsolatedEnd DescribeIsolated(const IsolatedOperation& operation, ImageDesc*& desc) noexcept;
/// Describes in full likewise.
KAVRA_DEVICES_API EIsolatedEnd InspectIsolated(const IsolatedOperation& operation, IFileInspection*& file) noexcept;

}  // namespace Kavra::Devices
