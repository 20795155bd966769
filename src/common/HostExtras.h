/// What a host may offer beyond the operations that every host has: the one place that asks for it.
///
/// Each is looked up as the module is loaded. A host without it is served by the operations that every host has.
#pragma once

#include <kavra/devices/DecoderProcess.h>
#include <kavra/devices/EFormat.h>
#include <kavra/devices/ImageLimits.h>
#include <kavra/devices/LastFailure.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/devices/ProgressScope.h>
#include <kavra/devices/SavePreferences.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>

#include <cstddef>
#include <optional>
#include <span>

namespace Kavra::Devices {
class DDSReader;
class EXRHandler;
}  // namespace Kavra::Devices

namespace Kavra::Common {

/// `bytes` zeroed bytes of the default allocator, freed with `KavraDelete`. A host that offers this knows which of its
/// memory is zero already. Throws `std::bad_alloc`.
void* NewZeroed(std::size_t bytes);

/// The largest block in bytes that the host's default allocator gives; where it does not say, `MemoryShare`.
std::size_t HostBlockCeiling();

/// Whether the wrapper is the contract's own `MemoryArrayWrapper`, which frees what its pointer shows and remembers
/// nothing. False where the host does not let its kind be told.
bool IsPlainWrapper(const Objects::IMemoryWrapper<void>& wrapper);

/// The limits that the host has set for pictures; none where it knows of no such thing.
Devices::ImageLimits HostImageLimits();

/// The calling thread's preferences; the defaults where the host knows of no such thing. A filter that is none of those
/// known here counts as none chosen, such a reading of legacy files as the contract's.
Devices::LoadPreferences HostLoadPreferences();

/// The same of what is saved.
Devices::SavePreferences HostSavePreferences();

/// Says why an operation on this thread fails, unless that was said already (`Devices::SetLastFailure`). Does nothing
/// where the host knows of no such thing.
void SetFailure(const Devices::FailureReport& report) noexcept;

/// Whether the host knows of such a thing.
bool HostTakesFailures() noexcept;

/// Forgets the failure of this thread, as an operation begins.
void ClearFailure() noexcept;

/// What was said since.
Devices::FailureReport HostsFailure();

/// Begins an operation of this thread, and ends it (`Devices::BeginOperation`, `Devices::EndOperation`).
void BeginOperation() noexcept;
void EndOperation(bool hasAnswered) noexcept;

/// Stages of an operation (`Devices::BeginStage` and those beside it). Nobody watches where the host knows of no such
/// thing.
bool BeginStage(Devices::EProgressStage stage) noexcept;
bool AdvanceStage(float fraction, float part) noexcept;
void EndStage() noexcept;

/// Whether the host's OpenEXR reader wants the file at `path`, which begins with `start`. A host that does not judge by
/// bytes is given the path, and may open the file.
bool PrefersExrHandler(const Objects::KString& path, std::span<const unsigned char> start);
/// The same without a path; nothing of a host that does not judge by bytes.
std::optional<bool> PrefersExrHandler(std::span<const unsigned char> start);

/// Has the host's readers open bytes that stand in memory, which must outlive the reader. Nothing where they take files
/// alone.
std::optional<bool> OpenDdsInMemory(Devices::DDSReader& reader, std::span<const unsigned char> bytes);
/// The same of OpenEXR.
std::optional<bool> ReadExrInMemory(Devices::EXRHandler& handler, std::span<const unsigned char> bytes);

/// Whether the host has a decoder for operations that are to be isolated. The three below are asked only then.
bool HostIsolates();
Devices::EIsolatedEnd LoadIsolated(const Devices::IsolatedOperation& operation, Devices::ImageDescription& desc,
                                   Objects::IMemoryWrapper<void>*& block);
Devices::EIsolatedEnd DescribeIsolated(const Devices::IsolatedOperation& operation, Devices::ImageDesc*& desc);
Devices::EIsolatedEnd InspectIsolated(const Devices::IsolatedOperation& operation, Devices::IFileInspection*& file);

/// Packs `count` colours (four floats each, any alignment) into pixels of `format` on the caller's thread. `size` is
/// the capacity of `out` in bytes; pixels that do not fit are left out, and the result is how many were written. A host
/// that offers this does it many at a time.
std::size_t PackFloats(const float* colours, std::size_t count, Devices::EFormat format, char* out, std::size_t size);

}  // namespace Kavra::Common
