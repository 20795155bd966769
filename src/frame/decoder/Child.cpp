#include "frame/decoder/Child.h"

#include "common/HostObject.h"
#include "common/isolation/DecoderRecords.h"
#include "common/isolation/InspectionRecords.h"
#include "frame/decoder/Confinement.h"
#include "frame/decoder/FileCalls.h"
#include "frame/decoder/SharedAllocator.h"

#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/IMemoryLoader.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace Kavra::Decoder {

using namespace Devices;
using Common::DecoderOperation;
using Common::DecoderRecord;

namespace {

constexpr int kFailedExit = 96;

std::atomic<bool> gRanOut{false};

/// Libraries swallow the want of memory, and say that a file is damaged.
void NoteWantOfMemory() {
    gRanOut = true;
    throw std::bad_alloc();
}

bool RanOutOfMemory() {
    return gRanOut;
}

/// The way to the host; what it is told is in order, whichever thread says it.
class Session {
public:
    explicit Session(int socket) : mSocket(socket) {}

    /// A host that is gone hears nothing, and wants nothing either.
    void Tell(const DecoderRecord& record) {
        const std::vector<unsigned char> packet = Common::PacketOf(record);
        const std::lock_guard lock(mMutex);
        if (write(mSocket, packet.data(), packet.size()) != static_cast<ssize_t>(packet.size())) _exit(kFailedExit);
    }
    std::int32_t Ask(const DecoderRecord& record) {
        Tell(record);
        std::int32_t answer = 0;
        if (read(mSocket, &answer, sizeof answer) != sizeof answer) _exit(kFailedExit);
        return answer;
    }

private:
    int mSocket;
    std::mutex mMutex;
};

/// Sends messages on.
class Messages final : public Objects::IMessageSink {
public:
    explicit Messages(Session& session) : mSession(session) {}
    void Message(Objects::EMessageKind kind, const wchar_t* text, const wchar_t* detail) override {
        Common::MessageRecord record{
            .isError = kind == Objects::EMessageKind::kError, .text = OS::ToUtf8(text), .detail = std::nullopt};
        if (detail != nullptr) record.detail = OS::ToUtf8(detail);
        mSession.Tell(record);
    }

private:
    Session& mSession;
};

class Observer final : public ILegacyObserver {
public:
    explicit Observer(Session& session) : mSession(session) {}
    void ReadingsDiffer(const char* how) noexcept override { mSession.Tell(Common::DifferenceRecord{how}); }

private:
    Session& mSession;
};

class FormatHandler final : public IImageFormatHandler {
public:
    explicit FormatHandler(Session& session) : mSession(session) {}
    void Delete() override {}
    EFormat ChooseFormat(EFormat fileFormat, int usage) override {
        return static_cast<EFormat>(mSession.Ask(Common::QuestionRecord{fileFormat, usage}));
    }

private:
    Session& mSession;
};

/// The bytes of an open file, mapped.
struct MappedFile {
    std::wstring name;
    const void* bytes = nullptr;
    std::size_t size = 0;
};

MappedFile MapFile(int file, const std::string& name) {
    MappedFile mapped{.name = OS::FromUtf8(name.c_str())};
    struct stat status{};
    if (fstat(file, &status) != 0 || status.st_size <= 0) return mapped;
    void* const bytes = mmap(nullptr, static_cast<std::size_t>(status.st_size), PROT_READ, MAP_PRIVATE, file, 0);
    if (bytes == MAP_FAILED) return mapped;
    mapped.bytes = bytes;
    mapped.size = static_cast<std::size_t>(status.st_size);
    return mapped;
}

/// The operation and what it says.
class Work {
public:
    Work(IMemoryLoader& loader, const Common::DecoderRequest& request, const Common::Packet& packet, std::string path)
        : mLoader(loader),
          mRequest(request),
          mPath(std::move(path)),
          mSession(packet.descriptors[Common::kSessionDescriptor].Number()),
          mBlocks(packet.descriptors[Common::kPixelsDescriptor].Number(), *Objects::ObjModel::mDefaultAllocator),
          mMessages(mSession),
          mObserver(mSession),
          mFormats(mSession) {
        for (std::size_t i = 0; i < request.names.size(); ++i) {
            const int file = packet.descriptors[Common::kFirstFileDescriptor + i].Number();
            mMapped.push_back(MapFile(file, request.names[i]));
        }
    }

    void Run() {
        Objects::ObjModel::SetMessageSink(&mMessages);
        SetImageLimits(mRequest.wish.limits);
        Objects::ObjModel::SetBlockCeiling(mRequest.wish.blockCeiling);
        LoadPreferences preferences = mRequest.wish.preferences;
        preferences.channels = mRequest.choosesChannels ? mRequest.channels.c_str() : nullptr;
        preferences.legacyObserver = mRequest.wish.hearsOfReadings ? &mObserver : nullptr;
        preferences.isolated = false;
        const LoadPreferencesScope scope(preferences);
        Objects::ObjModel::mDefaultAllocator = &mBlocks;
        std::set_new_handler(NoteWantOfMemory);
        ClearLastFailure();
        Answer();
        FailureReport failure = LastFailure();
        if (!mHasAnswer && RanOutOfMemory()) failure = {.kind = kFailureOutOfMemory};
        if (failure.kind != kFailureNone) mSession.Tell(Common::FailureRecord{failure, failure.text});
        mSession.Tell(Common::DoneRecord{});
    }

private:
    std::vector<MemoryFile> Neighbours() const {
        std::vector<MemoryFile> files;
        for (std::size_t i = 1; i < mMapped.size(); ++i)
            files.push_back({.bytes = mMapped[i].bytes, .size = mMapped[i].size, .name = mMapped[i].name.c_str()});
        return files;
    }

    void Answer() {
        const std::vector<MemoryFile> neighbours = Neighbours();
        const MemoryFile file{.bytes = mMapped[0].bytes,
                              .size = mMapped[0].size,
                              .name = mMapped[0].name.c_str(),
                              .neighbours = neighbours.data(),
                              .neighbourCount = neighbours.size(),
                              .systemPath = mPath.empty() ? nullptr : mPath.c_str()};
        switch (mRequest.wish.operation) {
            case DecoderOperation::kLoad:
                return Load(file);
            case DecoderOperation::kDescribe:
                return Describe(file);
            case DecoderOperation::kInspect:
                return Inspect(file);
        }
    }

    void Load(const MemoryFile& file) {
        const Common::DecoderWish& wish = mRequest.wish;
        ImageDescription desc;
        // Never freed: it is the host's.
        const IMemoryWrapper<void>* const block =
            mLoader.LoadMemory(desc, file, wish.width, wish.height, 1, wish.format, wish.highQuality, wish.level,
                               wish.orientation, wish.choosesFormat ? &mFormats : nullptr);
        if (block == nullptr || block->mData == nullptr) return;
        mHasAnswer = true;
        const std::size_t bytes = desc.dataSize * static_cast<unsigned>(FaceCount(desc.textureType));
        mSession.Tell(Common::PictureRecord{desc, mBlocks.OffsetOf(block->mData, bytes), bytes});
    }

    void Describe(const MemoryFile& file) {
        const Common::HostObject<ImageDesc> d(mLoader.GetMemoryDesc(file));
        if (!d) return;
        mHasAnswer = true;
        mSession.Tell(Common::DescriptionRecord{.width = d->width,
                                                .height = d->height,
                                                .depth = d->depth,
                                                .format = d->format,
                                                .textureType = d->textureType,
                                                .frameCount = d->frameCount,
                                                .orientation = d->orientation,
                                                .gamma = d->gamma});
    }

    void Inspect(const MemoryFile& file) {
        const std::unique_ptr<IFileInspection> inspection(mLoader.InspectMemory(file));
        if (!inspection) return;
        mHasAnswer = true;
        const std::vector<unsigned char> bytes = Common::BytesOfInspection(*inspection);
        mSession.Tell(Common::InspectionRecord{mBlocks.Put(bytes), bytes.size()});
    }

    IMemoryLoader& mLoader;
    const Common::DecoderRequest& mRequest;
    std::string mPath;  ///< by which the picture can be opened
    Session mSession;
    SharedAllocator mBlocks;
    Messages mMessages;
    Observer mObserver;
    FormatHandler mFormats;
    std::vector<MappedFile> mMapped;
    bool mHasAnswer = false;
};

}  // namespace

void RunChild(IImageHandler& handler, const Common::DecoderRequest& request, const Common::Packet& packet,
              const Common::DecoderGreeting& system) {
    std::vector<int> kept{packet.descriptors[Common::kSessionDescriptor].Number(),
                          packet.descriptors[Common::kPixelsDescriptor].Number()};
    for (std::size_t i = 0; i < request.names.size(); ++i)
        kept.push_back(packet.descriptors[Common::kFirstFileDescriptor + i].Number());
    CloseOthers(kept.data(), kept.size());
    const auto threads = static_cast<std::uint64_t>(std::max(sysconf(_SC_NPROCESSORS_ONLN), 1L));
    const Bounds bounds{.addressBytes = request.wish.maxBytes,
                        .seconds = (std::uint64_t{request.wish.timeoutSeconds} + 1) * threads};
    std::string path = AnswerFileCalls(packet.descriptors[Common::kFirstFileDescriptor].Number(), request.names[0]);
    if (!Confine(bounds, system)) _exit(Common::kUnconfinedExit);
    try {
        auto* const loader = dynamic_cast<IMemoryLoader*>(&handler);
        if (loader == nullptr) _exit(kFailedExit);
        Work(*loader, request, packet, std::move(path)).Run();
    } catch (const std::bad_alloc&) {
        _exit(Common::kMemoryExit);
    } catch (const std::exception&) {
        _exit(kFailedExit);
    }
    _exit(0);
}

}  // namespace Kavra::Decoder
