// Operations of handlers, run by the decoder.

#include "common/Limits.h"
#include "common/Progress.h"
#include "common/Reasons.h"
#include "common/isolation/DecoderRecords.h"
#include "common/isolation/InspectionRecords.h"
#include "common/isolation/Packets.h"
#include "common/isolation/SharedMemory.h"
#include "frame/host/devices/DecoderLink.h"
#include "frame/host/devices/IsolatedFiles.h"
#include "frame/host/devices/SharedBlock.h"

#include <kavra/devices/DecoderProcess.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/ImageLimits.h>
#include <kavra/devices/LastFailure.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/devices/Sys.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Kavra::Devices {

namespace {

using Common::DecoderEnd;
using Common::DecoderOperation;
using Common::Descriptor;

constexpr std::uint32_t kDefaultSeconds = 60;
/// Blocks of so many bytes are copied, which takes less time than a process to end; larger ones stay where they are.
constexpr std::uint64_t kCopiedBytes = std::uint64_t{2} << 20;
constexpr int kAskedMilliseconds = 20;  ///< between two questions whether to go on

void Fail(EFailureKind kind, const std::string& text) noexcept {
    SetLastFailure({.kind = kind, .text = text.c_str()});
}

std::uint64_t DefaultBytes() {
    constexpr std::uint64_t kQuarters = 3;
    const auto pages = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES));
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE)) / 4 * kQuarters;
}

/// Texts that observers keep as long as they like: one each, and no more than some, whatever children say.
const char* Lasting(const std::string& text) {
    static std::mutex mutex;
    static auto* const texts = new std::unordered_set<std::string>;
    constexpr std::size_t kMaxTexts = 1000;
    const std::lock_guard lock(mutex);
    const auto found = texts->find(text);
    if (found != texts->end()) return found->c_str();
    return texts->size() < kMaxTexts ? texts->insert(text).first->c_str() : "in another way";
}

Common::DecoderRequest RequestOf(DecoderOperation kind, const IsolatedOperation& operation,
                                 const LoadPreferences& preferences, IsolatedFiles& files) {
    Common::DecoderRequest request;
    Common::DecoderWish& wish = request.wish;
    wish.operation = kind;
    wish.width = operation.width;
    wish.height = operation.height;
    wish.format = operation.format;
    wish.level = operation.level;
    wish.orientation = operation.orientation;
    wish.highQuality = operation.highQuality;
    wish.choosesFormat = operation.formatHandler != nullptr;
    wish.hearsOfReadings = preferences.legacyObserver != nullptr;
    wish.preferences = preferences;
    wish.preferences.channels = nullptr;
    wish.preferences.legacyObserver = nullptr;
    GetImageLimits(wish.limits);
    wish.blockCeiling = Objects::ObjModel::BlockCeiling();
    wish.maxBytes = preferences.maxDecoderBytes != 0 ? preferences.maxDecoderBytes : DefaultBytes();
    wish.timeoutSeconds = preferences.timeoutSeconds != 0 ? preferences.timeoutSeconds : kDefaultSeconds;
    request.choosesChannels = preferences.channels != nullptr;
    if (request.choosesChannels) request.channels = preferences.channels;
    request.names = std::move(files.names);
    return request;
}

/// One operation: the talk with the child, and what came of it.
class Conversation {
public:
    Conversation(DecoderOperation kind, const IsolatedOperation& operation) : mKind(kind), mOperation(operation) {
        GetLoadPreferences(mPreferences);
    }

    std::optional<Common::PictureRecord> picture;
    std::optional<Common::DescriptionRecord> description;
    std::optional<Common::InspectionRecord> inspection;

    int Memory() const { return mMemory.Number(); }

    /// Whether the child has answered with nothing that it still could change, or that is not copied before it is looked at.
    bool IsWhole() const { return mIsDone && !mIsNonsense && (!picture || picture->blockBytes <= kCopiedBytes); }

    /// Returns when the answer is whole, or else when the child is dead: nothing that it wrote changes any more.
    EIsolatedEnd Run() {
        IsolatedFiles files = OpenIsolatedFiles(mOperation);
        if (files.files.empty()) return kIsolatedNoFile;
        if (!Begin(files)) return kIsolatedFailed;
        files.files.clear();
        Listen();
        return Judge();
    }

private:
    bool Begin(IsolatedFiles& files) {
        auto session = Common::NewPacketPair(), end = Common::NewPacketPair();
        mMemory = Common::NewSharedMemory();
        if (!session || !end || !mMemory) {
            Fail(kFailureOther, std::string("no connection to the decoder: ") + std::strerror(errno));
            return false;
        }
        const Common::DecoderRequest request = RequestOf(mKind, mOperation, mPreferences, files);
        mSeconds = request.wish.timeoutSeconds;
        mBytes = request.wish.maxBytes;
        std::vector<int> descriptors{session->second.Number(), end->second.Number(), mMemory.Number()};
        for (const Descriptor& file : files.files)
            descriptors.push_back(file.Number());
        std::string reason;
        if (!SendToDecoder(mOperation.modulePath, request, descriptors, reason)) {
            Fail(kFailureOther, reason);
            return false;
        }
        mSession = std::move(session->first);
        mEnd = std::move(end->first);
        return true;
    }

    /// Hears the child until it is dead, as the decoder says; a decoder that is gone has taken its children with it. Whoever
    /// watches may stop that: then all ends are closed, and the decoder ends the child. So it does where nothing is wanted
    /// of the child any more.
    void Listen() {
        using Clock = std::chrono::steady_clock;
        constexpr std::chrono::seconds kGrace(10);
        const auto deadline = Clock::now() + std::chrono::seconds(mSeconds) + kGrace;
        const Common::ProgressMeter meter(kProgressReading, 1);
        while (!mEnded && !IsWhole()) {
            meter.Expect(0);
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
            pollfd events[] = {{mEnd.Number(), POLLIN, 0}, {mSession ? mSession.Number() : -1, POLLIN, 0}};
            const auto wait = meter.IsWatched() ? std::min<decltype(left)>(left, kAskedMilliseconds) : left;
            const int count = left > 0 ? poll(events, std::size(events), static_cast<int>(wait)) : 0;
            if (count < 0 && errno == EINTR) continue;
            if (count == 0 && wait < left) continue;
            if (count <= 0) return;
            if (events[1].revents != 0)
                HearOne();
            else if (events[0].revents != 0)
                TakeEnd();
        }
    }

    /// A child that says what is no record is not listened to any longer.
    void HearOne() {
        const std::optional<Common::Packet> packet = Common::ReceivePacket(mSession.Number());
        if (packet && packet->bytes.empty()) return mSession.Close();
        const auto record = packet ? Common::ParseRecord(packet->bytes) : std::nullopt;
        if (record && !mIsDone) return std::visit([this](const auto& held) { Take(held); }, *record);
        mIsNonsense = true;
        mSession.Close();
    }

    void TakeEnd() {
        const std::optional<Common::Packet> packet = Common::ReceivePacket(mEnd.Number());
        mEnded = DecoderEnd{.status = -1};
        if (packet && packet->bytes.size() == sizeof(DecoderEnd))
            std::memcpy(&*mEnded, packet->bytes.data(), sizeof(DecoderEnd));
    }

    void Take(const Common::MessageRecord& record) {
        const std::wstring text = OS::FromUtf8(record.text.c_str());
        const std::wstring detail = record.detail ? OS::FromUtf8(record.detail->c_str()) : std::wstring();
        const wchar_t* const further = record.detail ? detail.c_str() : nullptr;
        record.isError ? Sys::Error(text.c_str(), further) : Sys::Warning(text.c_str(), further);
    }
    void Take(const Common::QuestionRecord& record) {
        std::int32_t answer = kUnknown;
        if (mOperation.formatHandler != nullptr)
            answer = mOperation.formatHandler->ChooseFormat(record.fileFormat, record.usage);
        (void)Common::SendPacket(mSession.Number(), {reinterpret_cast<const unsigned char*>(&answer), sizeof answer});
    }
    void Take(const Common::DifferenceRecord& record) {
        if (mPreferences.legacyObserver != nullptr) mPreferences.legacyObserver->ReadingsDiffer(Lasting(record.text));
    }
    void Take(const Common::FailureRecord& record) { mFailure = record; }
    void Take(const Common::PictureRecord& record) { picture = record; }
    void Take(const Common::DescriptionRecord& record) { description = record; }
    void Take(const Common::InspectionRecord& record) { inspection = record; }
    void Take(const Common::DoneRecord& /*record*/) { mIsDone = true; }

    EIsolatedEnd Judge() {
        const bool hasEndedWell =
            mEnded && !mEnded->timedOut && WIFEXITED(mEnded->status) && WEXITSTATUS(mEnded->status) == 0;
        const bool isGood = IsWhole() || (hasEndedWell && mIsDone && !mIsNonsense);
        if (!isGood) {
            SayHowItEnded();
            return kIsolatedFailed;
        }
        if (mFailure) SayFailure();
        return kIsolatedAnswered;
    }

    void SayFailure() {
        FailureReport report = mFailure->report;
        const bool isSwollen = report.kind == kFailureOutOfMemory;  // there is enough for others
        const std::string text = isSwollen ? MemoryText() : mFailure->text;
        if (isSwollen) report.kind = kFailureTooLarge;
        report.text = text.c_str();
        SetLastFailure(report);
    }

    std::string MemoryText() const {
        return "decoding takes more memory than the " + std::to_string(mBytes) + " bytes that it may";
    }

    void SayHowItEnded() {
        const int status = mEnded ? mEnded->status : -1;
        const bool isSlow = !mEnded || mEnded->timedOut || (WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU);
        if (isSlow) return Fail(kFailureTimedOut, "decoding took longer than " + std::to_string(mSeconds) + " s");
        if (mIsNonsense) return Fail(kFailureDecoderDied, "the process that decoded the file gave a damaged answer");
        const bool hadNone = WIFEXITED(status) && WEXITSTATUS(status) == Common::kMemoryExit;
        if (hadNone || (mFailure && mFailure->report.kind == kFailureOutOfMemory))
            return Fail(kFailureTooLarge, MemoryText());
        if (WIFSIGNALED(status)) {
            const char* const name = sigabbrev_np(WTERMSIG(status));
            const std::string signal = name != nullptr ? std::string("SIG") + name : std::to_string(WTERMSIG(status));
            return Fail(kFailureDecoderDied, "the process that decoded the file was ended by " + signal);
        }
        if (WIFEXITED(status) && WEXITSTATUS(status) == Common::kUnconfinedExit)
            return Fail(kFailureOther, "the process that was to decode the file could not be confined");
        Fail(kFailureDecoderDied, "the process that decoded the file ended without an answer");
    }

    DecoderOperation mKind;
    const IsolatedOperation& mOperation;
    LoadPreferences mPreferences;
    Descriptor mMemory, mSession, mEnd;
    std::uint32_t mSeconds = 0;
    std::uint64_t mBytes = 0;
    std::optional<DecoderEnd> mEnded;
    std::optional<Common::FailureRecord> mFailure;
    bool mIsDone = false, mIsNonsense = false;
};

EIsolatedEnd Nonsense() {
    Fail(kFailureDecoderDied, "the process that decoded the file gave a damaged answer");
    return kIsolatedFailed;
}

/// Whether a load of the host itself could have made such a block. The child was told the limits, and may not care.
bool IsAllowed(const Common::PictureRecord& record) {
    const ImageDescription& desc = record.desc;
    const auto faces = static_cast<std::uint64_t>(FaceCount(desc.textureType));
    const auto side = [](std::int32_t value) { return static_cast<std::uint64_t>(value); };
    const std::uint64_t slice = Common::Product<std::uint64_t>(side(desc.width), side(desc.height));
    const std::uint64_t pixels =
        Common::Product<std::uint64_t>(slice, Common::Product<std::uint64_t>(side(desc.depth), faces));
    return record.blockBytes <= Objects::ObjModel::BlockCeiling() &&
           Common::HostBounds().Hold({.pixels = pixels, .blockBytes = record.blockBytes});
}

EIsolatedEnd Load(const IsolatedOperation& operation, ImageDescription& desc, Objects::IMemoryWrapper<void>*& block) {
    Conversation talk(DecoderOperation::kLoad, operation);
    const EIsolatedEnd end = talk.Run();
    if (end != kIsolatedAnswered || !talk.picture) return end;
    if (!IsAllowed(*talk.picture)) return Nonsense();
    Common::ProgressMeter(kProgressReading, 1).Advance(1);
    block = talk.IsWhole() ? NewCopiedBlock(talk.Memory(), talk.picture->offset, talk.picture->blockBytes)
                           : NewSharedBlock(talk.Memory(), talk.picture->offset, talk.picture->blockBytes);
    if (block == nullptr) return Nonsense();
    desc = talk.picture->desc;
    return end;
}

EIsolatedEnd Describe(const IsolatedOperation& operation, ImageDesc*& desc) {
    Conversation talk(DecoderOperation::kDescribe, operation);
    const EIsolatedEnd end = talk.Run();
    if (end != kIsolatedAnswered || !talk.description) return end;
    desc = new ImageDesc;
    if (desc == nullptr) throw std::bad_alloc();
    const Common::DescriptionRecord& said = *talk.description;
    desc->width = said.width;
    desc->height = said.height;
    desc->depth = said.depth;
    desc->format = said.format;
    desc->textureType = said.textureType;
    desc->frameCount = said.frameCount;
    desc->orientation = said.orientation;
    desc->gamma = said.gamma;
    return end;
}

EIsolatedEnd Inspect(const IsolatedOperation& operation, IFileInspection*& file) {
    Conversation talk(DecoderOperation::kInspect, operation);
    const EIsolatedEnd end = talk.Run();
    if (end != kIsolatedAnswered || !talk.inspection) return end;
    constexpr std::uint64_t kMaxBytes = std::uint64_t{64} << 20;  // of which the host makes some times as many
    const std::uint64_t bytes = talk.inspection->bytes;
    if (bytes > kMaxBytes) return Nonsense();
    std::vector<unsigned char> copy(bytes);
    if (!Common::CopyShared(talk.Memory(), talk.inspection->offset, copy)) return Nonsense();
    file = Common::ParseInspection(copy);
    return file != nullptr ? end : Nonsense();
}

/// The end of an operation in which nothing is thrown on.
template <class Operation>
EIsolatedEnd Guarded(Operation&& operation) noexcept {
    try {
        return operation();
    } catch (const Common::Cancelled&) {
        Common::SayCaught();
    } catch (const std::bad_alloc&) {
        SetLastFailure({.kind = kFailureOutOfMemory, .text = "there is no memory for it"});
    } catch (...) {
        SetLastFailure({.kind = kFailureOther, .text = "the decoder's answer could not be taken"});
    }
    return kIsolatedFailed;
}

}  // namespace

EIsolatedEnd LoadIsolated(const IsolatedOperation& operation, ImageDescription& desc,
                          Objects::IMemoryWrapper<void>*& block) noexcept {
    block = nullptr;
    return Guarded([&] { return Load(operation, desc, block); });
}

EIsolatedEnd DescribeIsolated(const IsolatedOperation& operation, ImageDesc*& desc) noexcept {
    desc = nullptr;
    return Guarded([&] { return Describe(operation, desc); });
}

EIsolatedEnd InspectIsolated(const IsolatedOperation& operation, IFileInspection*& file) noexcept {
    file = nullptr;
    return Guarded([&] { return Inspect(operation, file); });
}

}  // namespace Kavra::Devices
