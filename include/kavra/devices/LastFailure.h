/// \file
/// Why the last operation of a thread gave its no-answer.
#pragma once

#include <kavra/devices/Export.h>

#include <cstdint>

namespace Kavra::Devices {

/// What went wrong, as far as a program has to tell one thing from another. Numbers never change their meaning; later
/// versions may add some.
enum EFailureKind : int {
    kFailureNone = 0,           ///< nothing failed
    kFailureNoSuchFile = 1,     ///< there is no such file, or a link leads nowhere
    kFailureIsFolder = 2,       ///< the path names a folder
    kFailureNoPermission = 3,   ///< the file may not be read, or a folder on its way not be entered
    kFailureNoRegularFile = 4,  ///< the path names a pipe, a socket or a device
    kFailureEmptyFile = 5,      ///< the file has no bytes
    kFailureNotAnImage = 6,     ///< the bytes are of no format that is known
    kFailureUnknownType = 7,    ///< nothing reads, or writes, files of this type
    kFailureUnsupported = 8,    ///< the file is of a known format, in a variety that is not read
    kFailureDamaged = 9,        ///< the file contradicts its format; `position` where that shows, if known
    kFailureEndsEarly = 10,     ///< the file ends before all of its picture; `goodRows` of `rows` are there, if known
    kFailureTooLarge = 11,      ///< the picture is beyond a limit, or beyond what a description can hold
    kFailureOutOfMemory = 12,   ///< there was no memory for it
    kFailureOutOfRange = 13,    ///< no such frame, level, face, slice or channel; the text says what there is
    kFailureFormat = 14,        ///< the format, or the type of file, cannot hold what is there
    kFailureArguments = 15,     ///< the operation was asked for something that it never does
    kFailureCannotRead = 16,    ///< the system did not deliver bytes that belong to the file
    kFailureCannotWrite = 17,   ///< the file cannot be made, or the system did not take its bytes
    kFailureDiskFull = 18,      ///< the disk, or the owner's share of it, is full
    kFailureCancelled = 19,     ///< whoever watched the progress stopped it
    kFailureTimedOut = 20,      ///< it took longer than it was given
    kFailureDecoderDied = 21,   ///< the process that decoded the file ended before it had answered
    kFailureOther = 22,         ///< none of these
};

/// One failure.
///
///     IMemoryWrapper<void>* block = handler->LoadTexture(...);
///     if (block == nullptr) std::puts(Kavra::Devices::LastFailure().text);
struct FailureReport {
    std::uint32_t size = sizeof(FailureReport);  ///< of the structure as its user knows it, in bytes
    EFailureKind kind = kFailureNone;            ///< what went wrong
    /// What is wrong, in UTF-8, in the words for a person: "ends early: 37 of 120 rows". Without the name of the file.
    /// Bytes of files stand in it only escaped. Never null, empty only without a failure; belongs to the thread and
    /// lives until its next operation.
    const char* text = "";
    std::int64_t position = -1;  ///< of the byte in the file where it shows, from 0; negative where that is not known
    /// The rows from the first on that the file holds whole, of a picture of `rows` rows; of cube maps and volumes
    /// those of all faces and slices one after the other. Negative where that is not known.
    std::int64_t goodRows = -1;
    std::int64_t rows = -1;  ///< those that the file promises; negative where that is not known
};

/// Fills `report`, as far as its `size` goes, with why the last operation of an image handler, an image object or a
/// reader of the host gave its no-answer on this thread: null, false, zero. `kFailureNone` if it did not fail. A load
/// whose file ends early may well answer, with the rows that are there; it says `kFailureEndsEarly` here all the same.
/// An operation that begins clears what the one before had left. Threads: any; each has its own.
KAVRA_DEVICES_API void GetLastFailure(FailureReport& report);

/// Returns why the last operation on this thread failed.
inline FailureReport LastFailure() {
    FailureReport report;
    GetLastFailure(report);
    return report;
}

/// Says why an operation on this thread fails; for whoever offers operations: modules, and a host's own handlers. The
/// text is copied, cut after 1,023 bytes; null is none. What is said first stays until `ClearLastFailure`: it is said
/// where the cause is known, and what fails because of it further up knows less. Never throws.
KAVRA_DEVICES_API void SetLastFailure(const FailureReport& report) noexcept;

/// Forgets the failure of this thread.
KAVRA_DEVICES_API void ClearLastFailure() noexcept;

/// Begins an operation on this thread, for whoever offers operations; one call of `EndOperation` follows each. Forgets
/// the failure of the operation before, unless this one is part of another, which may have said something by then.
KAVRA_DEVICES_API void BeginOperation() noexcept;

/// Ends the operation that this thread began last. Where it is part of no other: one that `hasAnswered` forgets what was
/// said on the way, but for a file that ends early; one that has not, and has said nothing, is given words of its own.
KAVRA_DEVICES_API void EndOperation(bool hasAnswered) noexcept;

}  // namespace Kavra::Devices
