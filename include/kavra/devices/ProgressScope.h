/// \file
/// How far an operation is, and stopping it.
#pragma once

#include <kavra/devices/Export.h>

namespace Kavra::Devices {

/// What an operation does at the moment. Numbers never change their meaning; later versions may add some.
enum EProgressStage : int {
    kProgressReading = 0,      ///< a file is read and decoded; with a change of size all of that, too
    kProgressConverting = 1,   ///< pixels become those of another format
    kProgressResizing = 2,     ///< pixels change their number or their order; levels of textures are made
    kProgressCompressing = 3,  ///< pixels become blocks, or blocks pixels
    kProgressSaving = 4,       ///< a file is encoded and written
    kProgressAnalysing = 5,    ///< light, colour or alpha is measured
};

/// Hears how far the operations of a thread are.
class IProgress {
public:
    /// The operation has done `fraction` of `stage`, from 0 to 1. False stops it: it gives its no-answer,
    /// `LastFailure` says `kFailureCancelled`, nothing that it had begun to write is left, and it asks no more.
    ///
    /// An operation passes through some of the stages, one after another; one that it enters again goes on from where
    /// it was. Within one the fraction never falls, and ends at 1 where the operation succeeds. Called on the thread of
    /// the operation, at most once in 10 ms beside its first call and the ends of stages; the operation waits for the
    /// answer. One that is called from within here is not watched. Exceptions should not pass; one that does counts as
    /// false.
    virtual bool Progress(EProgressStage stage, float fraction) = 0;

protected:
    ~IProgress() = default;
};

/// Makes `progress` hear of the operations of the calling thread, in place of the one before; null: nobody does. Not
/// owned; it must live until it is popped. Throws `std::bad_alloc`. Threads: any; each has its own.
KAVRA_DEVICES_API void PushProgress(IProgress* progress);

/// Makes the one before the last one pushed hear again on the calling thread; does nothing where there is none.
KAVRA_DEVICES_API void PopProgress() noexcept;

/// Has one hear of the operations of the calling thread while it lives, and stop them.
///
///     class Patience : public Kavra::Devices::IProgress {
///         bool Progress(Kavra::Devices::EProgressStage, float fraction) override {
///             bar.Show(fraction);
///             return !stopButton.IsPressed();
///         }
///     } patience;
///     const Kavra::Devices::ProgressScope scope(patience);
///     handler->LoadTexture(...);  // null if it was stopped
///
/// Scopes end in the opposite order of their beginning, on the thread that they began on; the innermost counts. Without
/// one operations are as fast as if there were no such thing.
///
/// Operations ask as often as rows, or parts of a picture, allow, in general every 10 to 30 ms. A save that is stopped
/// leaves an old file as it was, and no new one; a provider of lines is asked for no more of them.
///
/// What the image library does in one piece cannot be stopped before it has done it: decoding what it holds whole (DDS,
/// GIF, HEIF, ICO, IFF, JPEG 2000, JPEG XL, PNM, PSD, TGA and WebP files, interlaced PNG, JPEG of several scans);
/// encoding what it packs at the end (GIF, HEIF, ICO, JPEG 2000, JPEG XL, WebP); one tile or strip, however large; the
/// rest of a JPEG, which it fills with grey before it lets go of the file. So it is with a KTX2 level that is packed by
/// Zstandard. Decoding is stopped at once all the same where it is isolated
/// (`LoadPreferences::isolated`): the process that does it is ended. Its fraction is 0 until the picture is there.
class ProgressScope {
public:
    /// Pushes it; the end pops it. Throws `std::bad_alloc`.
    explicit ProgressScope(IProgress& progress) { PushProgress(&progress); }
    ~ProgressScope() { PopProgress(); }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;
};

/// Begins a stage of the operation that runs on this thread; for whoever offers operations: modules, and a host's own
/// handlers. True if somebody hears of it; then one call of `EndStage` follows. Else there is nothing to end, and
/// nobody need be told anything. A stage that is begun within another is a part of it, and not told apart.
KAVRA_DEVICES_API bool BeginStage(EProgressStage stage) noexcept;

/// The stage begun last has done `fraction` of its work, 0 to 1; those that it begins before the next call share out
/// `part` more of it. False if the operation is to stop, then or at any time before in the same operation (BeginOperation
/// in LastFailure.h): whoever called undoes what was begun, says `kFailureCancelled` and gives its no-answer. May be
/// called as often as one likes.
KAVRA_DEVICES_API bool AdvanceStage(float fraction, float part) noexcept;

/// Ends the stage begun last.
KAVRA_DEVICES_API void EndStage() noexcept;

}  // namespace Kavra::Devices
