#include "frame/host/devices/DecoderLink.h"

#include "common/isolation/Packets.h"

#include <kavra/devices/DecoderProcess.h>

#include <dlfcn.h>
#include <linux/landlock.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace Kavra::Devices {

namespace {

using Common::Descriptor;

constexpr int kControl = 3;  ///< the decoder's end

/// A decoder that was started. Its end is seen by the socket.
class Decoder {
public:
    Decoder(pid_t process, Descriptor control) : mProcess(process), mControl(std::move(control)) {}
    ~Decoder() {
        mControl.Close();
        // Ends by itself when its children have; whoever waits for it later gets it.
        (void)waitpid(mProcess, nullptr, WNOHANG);
    }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    bool Send(std::span<const unsigned char> bytes, std::span<const int> descriptors) const {
        return Common::SendPacket(mControl.Number(), bytes, descriptors);
    }

    /// Whether it says that it is ready, in good time.
    bool IsReady() const {
        constexpr int kMilliseconds = 30'000;
        pollfd event{mControl.Number(), POLLIN, 0};
        int count = -1;
        do {
            count = poll(&event, 1, kMilliseconds);
        } while (count < 0 && errno == EINTR);
        if (count != 1) return false;
        const std::optional<Common::Packet> packet = Common::ReceivePacket(mControl.Number());
        return packet && packet->bytes.size() == sizeof(Common::DecoderGreeting);
    }

private:
    pid_t mProcess;
    Descriptor mControl;
};

/// The decoder that runs, and what it was started with.
struct State {
    std::mutex mutex;
    std::string program, module;  ///< as the host has set them; empty: not set
    std::string runningModule;
    std::shared_ptr<Decoder> running;
};

/// Never destroyed: operations may run as the process ends, which ends the decoder, too.
State& TheState() {
    static auto* const state = new State;
    return *state;
}

std::string DefaultProgram() {
    Dl_info library{};
    if (dladdr(reinterpret_cast<const void*>(&SetDecoder), &library) == 0 || library.dli_fname == nullptr) return {};
    const std::string path = library.dli_fname;
    const std::size_t slash = path.rfind('/');
    return (slash == std::string::npos ? std::string("./") : path.substr(0, slash + 1)) + "kavra/kavra-decoder";
}

/// 0 or an `errno` value. The decoder's signals are as a process's are at its start.
int Spawn(const std::string& program, const std::string& module, int socket, pid_t& process) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (posix_spawn_file_actions_init(&actions) != 0) return ENOMEM;
    if (posix_spawnattr_init(&attributes) != 0) {
        (void)posix_spawn_file_actions_destroy(&actions);
        return ENOMEM;
    }
    sigset_t none, all;
    (void)sigemptyset(&none);
    (void)sigfillset(&all);
    (void)posix_spawnattr_setsigmask(&attributes, &none);
    (void)posix_spawnattr_setsigdefault(&attributes, &all);
    (void)posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    (void)posix_spawn_file_actions_adddup2(&actions, socket, kControl);
    std::string name = program, argument = module;
    char* const arguments[] = {name.data(), argument.data(), nullptr};
    const int error = posix_spawn(&process, program.c_str(), &actions, &attributes, arguments, environ);
    (void)posix_spawnattr_destroy(&attributes);
    (void)posix_spawn_file_actions_destroy(&actions);
    return error;
}

/// Null where it cannot be started.
std::shared_ptr<Decoder> Start(const std::string& program, const std::string& module, std::string& reason) {
    auto ends = Common::NewPacketPair();
    if (!ends) {
        reason = std::string("the decoder cannot be started: ") + std::strerror(errno);
        return nullptr;
    }
    pid_t process = -1;
    if (const int error = Spawn(program, module, ends->second.Number(), process); error != 0) {
        reason = "the decoder " + program + " cannot be started: " + std::strerror(error);
        return nullptr;
    }
    ends->second.Close();
    auto decoder = std::make_shared<Decoder>(process, std::move(ends->first));
    if (decoder->IsReady()) return decoder;
    reason = "the decoder " + program + " does not start with the module " + module;
    return nullptr;
}

/// The decoder that runs, or a new one; `broken` is one that does not listen any more.
std::shared_ptr<Decoder> Find(const char* module, const std::shared_ptr<Decoder>& broken, std::string& reason) {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    const std::string wanted = state.module.empty() ? std::string(module) : state.module;
    if (state.running && (state.running == broken || state.runningModule != wanted)) state.running = nullptr;
    if (!state.running) {
        state.running = Start(state.program.empty() ? DefaultProgram() : state.program, wanted, reason);
        state.runningModule = wanted;
    }
    return state.running;
}

const char* FindGaps() {
    std::uint32_t action = 0x00050000;  // SECCOMP_RET_ERRNO
    constexpr int kGetActionAvailable = 2;
    const bool hasFilter = syscall(SYS_seccomp, kGetActionAvailable, 0, &action) == 0;
    const bool hasLandlock = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) > 0;
    if (hasFilter && hasLandlock) return "";
    if (hasFilter) return "no Landlock: files are kept from the decoder by the filter of system calls alone";
    if (hasLandlock)
        return "no filter of system calls: of the network the decoder is kept only as far as Landlock does";
    return "neither Landlock nor a filter of system calls: the decoder is a process of its own with limits of memory "
           "and "
           "time, and no more";
}

}  // namespace

void SetDecoder(const char* program, const char* module) {
    State& state = TheState();
    const std::lock_guard lock(state.mutex);
    state.program = program != nullptr ? program : "";
    state.module = module != nullptr ? module : "";
    state.running = nullptr;
}

const char* DecoderGaps() {
    static const char* const gaps = FindGaps();
    return gaps;
}

bool SendToDecoder(const char* module, const Common::DecoderRequest& request, std::span<const int> descriptors,
                   std::string& reason) {
    const std::vector<unsigned char> bytes = Common::ToBytes(request);
    if (bytes.size() > Common::kMaxPacketBytes) {
        reason = "the name of the file is too long for the decoder";
        return false;
    }
    std::shared_ptr<Decoder> decoder = Find(module, nullptr, reason);
    if (decoder && decoder->Send(bytes, descriptors)) return true;
    if (!decoder) return false;
    decoder = Find(module, decoder, reason);  // once more: the one before had ended
    if (decoder && decoder->Send(bytes, descriptors)) return true;
    if (decoder) reason = std::string("the decoder cannot be reached: ") + std::strerror(errno);
    return false;
}

}  // namespace Kavra::Devices
