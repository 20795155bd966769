/// A module whose decoder does what a hostile file may bring one to do, by the name of the picture. For tests alone.

#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace Kavra::Devices;
using Kavra::Objects::MemoryArrayWrapper;

/// What the system says to each of what a decoder has no business with: 0 where it lets it.
std::vector<std::int32_t> TryEverything() {
    std::vector<std::int32_t> errors;
    const auto note = [&](long answer) { errors.push_back(answer >= 0 ? 0 : errno); };
    char* const none[] = {nullptr};
    note(open("/etc/passwd", O_RDONLY | O_CLOEXEC));
    note(open("/proc/self/fd/0", O_RDONLY | O_CLOEXEC));
    note(open("/tmp/kavra-decoder-was-here", O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    struct stat status{};
    note(stat("/etc/passwd", &status));
    note(fstatat(AT_FDCWD, "/etc/passwd", &status, AT_EMPTY_PATH));
    note(socket(AF_INET, SOCK_STREAM, 0));
    note(socket(AF_UNIX, SOCK_DGRAM, 0));
    note(execve("/bin/true", none, none));
    const pid_t child = fork();
    if (child == 0) _exit(0);
    note(child);
    note(kill(getppid(), 0));
    note(syscall(SYS_tgkill, getppid(), getppid(), 0));
    note(ptrace(PTRACE_ATTACH, getppid(), nullptr, nullptr));
    note(unlink("/tmp/kavra-decoder-was-here"));
    note(chdir("/"));
    note(syscall(SYS_memfd_create, "x", 0));
    note(syscall(SYS_process_vm_readv, getppid(), nullptr, 0, nullptr, 0, 0));
    return errors;
}

Kavra::Objects::IMemoryWrapper<void>* Picture(ImageDescription& desc, const std::vector<std::int32_t>& pixels) {
    const std::size_t bytes = pixels.size() * sizeof(std::int32_t);
    void* const block = ::operator new(bytes, Kavra::Objects::ObjModel::mDefaultAllocator);
    std::memcpy(block, pixels.data(), bytes);
    desc.width = static_cast<std::int32_t>(pixels.size());
    desc.height = desc.depth = 1;
    desc.format = kR8G8B8A8;
    desc.rowPitch = static_cast<std::int32_t>(bytes);
    desc.dataSize = bytes;
    desc.textureType = kTexture2D;
    return new MemoryArrayWrapper<void, unsigned char>(block);
}

volatile std::uint64_t gSink = 0;

[[noreturn]] void Loop() {
    for (;;)
        gSink = gSink + 1;
}

/// Memory that is touched, until there is none.
void Swell() {
    constexpr std::size_t kStep = std::size_t{16} << 20;
    std::vector<std::unique_ptr<char[]>> held;
    for (;;) {
        held.push_back(std::make_unique<char[]>(kStep));
        std::memset(held.back().get(), 1, kStep);
    }
}

/// Writes where nothing is.
void Overrun() {
    volatile std::uintptr_t nowhere = 16;            // whose value the compiler does not know
    *reinterpret_cast<volatile char*>(nowhere) = 1;  // NOLINT(performance-no-int-to-ptr): that is what it is for
}

/// Parts of which each is as large as one may be, and all together are more than any file says of itself.
class Flood final : public IFileInspection {
public:
    Flood() : mProfile(std::size_t{16} << 20) {
        mPart.size = sizeof(FilePart);
        mPart.textureType = kTexture2D;
        mPart.levels = &mLevel;
        mPart.levelCount = 1;
        mPart.name = mPart.colourSpace = mPart.compression = "";
        mPart.iccProfile = mProfile.data();
        mPart.iccBytes = mProfile.size();
    }
    void Delete() override { delete this; }
    const char* FileType() const override { return "flood"; }
    std::size_t PartCount() const override { return 5; }
    const FilePart& Part(std::size_t /*index*/) const override { return mPart; }

private:
    FileLevel mLevel{1, 1, 1};
    std::vector<char> mProfile;
    FilePart mPart{};
};

class FaultyHandler final : public OIIOImageHandler {
public:
    IFileInspection* InspectMemory(const MemoryFile& file) override {
        if (std::wstring_view(file.name).ends_with(L".flood")) return new Flood;
        return OIIOImageHandler::InspectMemory(file);
    }
    IMemoryWrapper<void>* LoadMemory(ImageDescription& desc, const MemoryFile& file, int width, int height, int depth,
                                     EFormat format, bool highQuality, int level, EDataOrientation orientation,
                                     IImageFormatHandler* formatHandler) override {
        const std::wstring_view name = file.name;
        const auto is = [&](std::wstring_view end) { return name.ends_with(end); };
        if (is(L".abort")) std::abort();
        if (is(L".overrun")) Overrun();
        if (is(L".loop")) Loop();
        if (is(L".sleep")) std::this_thread::sleep_for(std::chrono::hours(1));
        if (is(L".exit")) _exit(0);
        if (is(L".swell")) return Swallowed();
        if (is(L".nonsense")) return Nonsense();
        if (is(L".lie")) return Lie(desc);
        if (is(L".calls")) return Picture(desc, TryEverything());
        if (is(L".thread")) return InThread(desc);
        return OIIOImageHandler::LoadMemory(desc, file, width, height, depth, format, highQuality, level, orientation,
                                            formatHandler);
    }

private:
    static IMemoryWrapper<void>* Swallowed() {
        try {
            Swell();
        } catch (const std::bad_alloc&) {
            return nullptr;
        }
        return nullptr;
    }

    /// Writes to whatever is open.
    static IMemoryWrapper<void>* Nonsense() {
        constexpr int kLast = 63;
        for (int descriptor = 3; descriptor <= kLast; ++descriptor)
            (void)!write(descriptor, "nonsense", 8);
        return nullptr;
    }

    /// A picture that says to be larger than it is.
    static IMemoryWrapper<void>* Lie(ImageDescription& desc) {
        auto* const wrapper = Picture(desc, std::vector<std::int32_t>(64));
        desc.height = 1 << 20;
        return wrapper;
    }

    static IMemoryWrapper<void>* InThread(ImageDescription& desc) {
        std::vector<std::int32_t> errors;
        std::thread([&] { errors = TryEverything(); }).join();
        return Picture(desc, errors);
    }
};

}  // namespace

extern "C" KAVRA_OIIO_API bool KavraInitialize() {
    return Kavra::Objects::ObjModel::Factory().AddObject(Kavra::Objects::Intern(L"ImageHandlerOIIO"),
                                                         new FaultyHandler);
}

extern "C" KAVRA_OIIO_API bool KavraShutdown() {
    return Kavra::Objects::ObjModel::Factory().RemoveObject(Kavra::Objects::Intern(L"ImageHandlerOIIO"));
}
