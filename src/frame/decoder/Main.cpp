// The decoder: loads the host libraries and a module once, and has a child of its own decode each picture.
//   kavra-decoder MODULE
// A host starts it with a socket as descriptor 3 and ends it by closing the other end. It never looks at a file itself.

#include "frame/decoder/Child.h"
#include "frame/decoder/Confinement.h"

#include <kavra/devices/IMemoryLoader.h>
#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/ObjModel.h>

#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <string_view>
#include <utility>
#include <vector>

namespace Kavra::Decoder {

namespace {

constexpr int kControl = 3;
constexpr std::size_t kFirstEnd = 2;  // of what is polled: behind what is always there
using Clock = std::chrono::steady_clock;
using namespace Devices;

IImageHandler* LoadModule(const char* path) {
    void* const module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) return nullptr;
    auto* const initialize = reinterpret_cast<bool (*)()>(dlsym(module, "KavraInitialize"));
    if (initialize == nullptr || !initialize()) return nullptr;
    auto& factory = Objects::ObjModel::Factory();
    return dynamic_cast<IImageHandler*>(factory.CloneObject(Objects::Intern(L"ImageHandlerOIIO")));
}

/// Swallows messages.
class NoMessages final : public Objects::IMessageSink {
public:
    void Message(Objects::EMessageKind /*kind*/, const wchar_t* /*text*/, const wchar_t* /*detail*/) override {}
};

/// Has all that is looked up once be looked up now: a child would look for it anew, and could not.
void WarmUp(IImageHandler& handler) {
    constexpr std::string_view kPicture = "P6 1 1 255 abc";  // a pixel
    constexpr std::string_view kNothing = "none";
    auto* const loader = dynamic_cast<IMemoryLoader*>(&handler);
    if (loader == nullptr) return;
    for (const auto& [bytes, name] : {std::pair(kPicture, L"x.ppm"), std::pair(kNothing, L"x.none")}) {
        const MemoryFile file{.bytes = bytes.data(), .size = bytes.size(), .name = name};
        ImageDescription desc;
        if (auto* const block = loader->LoadMemory(desc, file, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr))
            block->Delete();
    }
}

/// A picture that is being decoded.
struct Running {
    pid_t child;
    Common::Descriptor end;
    Clock::time_point deadline;
    bool timedOut = false;
    bool isGivenUp = false;  ///< by the host, which waits for it no longer
};

struct Spare {
    pid_t child = -1;
    Common::Descriptor requests;
};

class Server {
public:
    Server(IImageHandler& handler, int childEvents)
        : mHandler(handler), mSystem(SystemGreeting()), mChildEvents(childEvents) {}

    /// Until the host is gone.
    void Run() {
        Send(mSystem);
        for (;;) {
            if (mSpare.child <= 0) MakeSpare();
            std::vector<pollfd> events{{kControl, POLLIN, 0}, {mChildEvents, POLLIN, 0}};
            for (const Running& running : mRunning)
                events.push_back({running.isGivenUp ? -1 : running.end.Number(), 0, 0});
            const int count = poll(events.data(), events.size(), MillisecondsLeft());
            if (count < 0 && errno != EINTR) return;
            StopLateOnes();
            if (count <= 0) continue;
            for (std::size_t i = 0; i < mRunning.size(); ++i)
                if ((events[kFirstEnd + i].revents & (POLLHUP | POLLERR)) != 0) GiveUp(mRunning[i]);
            if (events[1].revents != 0) Collect();
            if (events[0].revents != 0 && !TakeRequest()) return;
        }
    }

private:
    static void Send(const Common::DecoderGreeting& greeting) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(&greeting);
        (void)Common::SendPacket(kControl, {bytes, sizeof greeting});
    }

    int MillisecondsLeft() const {
        if (mRunning.empty()) return -1;
        const auto first = std::ranges::min_element(mRunning, {}, &Running::deadline)->deadline;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(first - Clock::now()).count() + 1;
        constexpr decltype(left) kLongest = 60'000;
        return static_cast<int>(std::clamp<decltype(left)>(left, 0, kLongest));
    }

    void StopLateOnes() {
        const auto now = Clock::now();
        for (Running& running : mRunning) {
            if (now < running.deadline || running.timedOut) continue;
            running.timedOut = true;
            (void)kill(running.child, SIGKILL);
            constexpr std::chrono::hours kNever(24);
            running.deadline = now + kNever;
        }
    }

    /// The host has closed its end: nobody wants what the child makes.
    static void GiveUp(Running& running) {
        running.isGivenUp = true;
        (void)kill(running.child, SIGKILL);
    }

    /// Tells of the children that have ended.
    void Collect() {
        signalfd_siginfo info;
        while (read(mChildEvents, &info, sizeof info) > 0) {
        }
        int status = 0;
        for (pid_t child = 0; (child = waitpid(-1, &status, WNOHANG)) > 0;) {
            if (child == mSpare.child) mSpare = {};
            const auto found = std::ranges::find(mRunning, child, &Running::child);
            if (found == mRunning.end()) continue;
            const Common::DecoderEnd end{.status = status, .timedOut = found->timedOut};
            const auto* const bytes = reinterpret_cast<const unsigned char*>(&end);
            (void)Common::SendPacket(found->end.Number(), {bytes, sizeof end});
            mRunning.erase(found);
        }
    }

    /// A child that waits for a request: forking takes as long as a small picture.
    void MakeSpare() {
        auto ends = Common::NewPacketPair();
        if (!ends) return;
        const pid_t server = getpid();
        const pid_t child = fork();
        if (child == 0) Become(ends->second, server);
        if (child > 0) mSpare = {.child = child, .requests = std::move(ends->first)};
    }

    /// False where the host is gone. Where nothing can be made of the request, whoever waits sees the descriptors close.
    bool TakeRequest() {
        std::optional<Common::Packet> packet = Common::ReceivePacket(kControl);
        if (!packet || packet->bytes.empty()) return false;
        Common::DecoderRequest request;
        if (!IsSound(*packet, request)) return true;
        std::vector<int> descriptors;
        for (const Common::Descriptor& descriptor : packet->descriptors)
            descriptors.push_back(descriptor.Number());
        if (mSpare.child <= 0) MakeSpare();
        if (mSpare.child <= 0 || !Common::SendPacket(mSpare.requests.Number(), packet->bytes, descriptors)) return true;
        const auto deadline = Clock::now() + std::chrono::seconds(request.wish.timeoutSeconds);
        mRunning.push_back({.child = mSpare.child,
                            .end = std::move(packet->descriptors[Common::kEndDescriptor]),
                            .deadline = deadline});
        mSpare = {};
        return true;
    }

    static bool IsSound(const Common::Packet& packet, Common::DecoderRequest& request) {
        return Common::FromBytes(packet.bytes, request) &&
               packet.descriptors.size() == Common::kFirstFileDescriptor + request.names.size();
    }

    [[noreturn]] void Become(const Common::Descriptor& requests, pid_t server) {
        (void)prctl(PR_SET_PDEATHSIG, SIGKILL, 0, 0, 0);
        if (getppid() != server) _exit(Common::kUnconfinedExit);
        sigset_t none;
        (void)sigemptyset(&none);
        (void)sigprocmask(SIG_SETMASK, &none, nullptr);
        const std::optional<Common::Packet> packet = Common::ReceivePacket(requests.Number());
        Common::DecoderRequest request;
        if (!packet || !IsSound(*packet, request)) _exit(0);
        RunChild(mHandler, request, *packet, mSystem);
    }

    IImageHandler& mHandler;
    Common::DecoderGreeting mSystem;
    int mChildEvents;
    std::vector<Running> mRunning;
    Spare mSpare;
};

/// What libraries print goes nowhere: it is of no known file, and may be what a file wants to have printed.
void Silence() {
    const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (nowhere >= 0) (void)dup2(nowhere, stream);
    }
    if (nowhere > kControl) close(nowhere);
}

int WatchChildren() {
    sigset_t children;
    (void)sigemptyset(&children);
    (void)sigaddset(&children, SIGCHLD);
    (void)sigprocmask(SIG_BLOCK, &children, nullptr);
    return signalfd(-1, &children, SFD_NONBLOCK | SFD_CLOEXEC);
}

}  // namespace

}  // namespace Kavra::Decoder

int main(int argc, char** argv) {
    using namespace Kavra::Decoder;
    if (argc != 2) return 2;
    std::setlocale(LC_ALL, "");
    (void)fcntl(kControl, F_SETFD, FD_CLOEXEC);
    Silence();
    constexpr int kArenas = 2;  // each reserves address space, of which a child has as much as it is given
    (void)mallopt(M_ARENA_MAX, kArenas);
    Kavra::Devices::IImageHandler* const handler = LoadModule(argv[1]);
    if (handler == nullptr) return 1;
    NoMessages silence;
    Kavra::Objects::IMessageSink* const sink = Kavra::Objects::ObjModel::SetMessageSink(&silence);
    WarmUp(*handler);
    Kavra::Objects::ObjModel::SetMessageSink(sink);
    (void)std::signal(SIGPIPE, SIG_IGN);
    (void)std::signal(SIGINT,
                      SIG_IGN);  // of a terminal; the host that it is meant for ends this process by its own end
    const int childEvents = WatchChildren();
    if (childEvents < 0) return 1;
    Server(*handler, childEvents).Run();
    return 0;
}
