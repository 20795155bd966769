#include "StreamFiles.h"

#include "FileNames.h"
#include "OutputFile.h"
#include "StandardStreams.h"
#include "StreamTypes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <format>
#include <memory>
#include <span>
#include <stdexcept>
#include <system_error>

namespace Kavra::App {
namespace {

struct Stream {
    std::string given;                 ///< its name on the command line
    std::unique_ptr<OutputFile> file;  ///< never given another name: it is gone with the program
    bool isOutput = false;

    std::string Path() const { return file->TemporaryPath().string(); }
};

std::vector<Stream>& Streams() {
    static std::vector<Stream> streams;
    return streams;
}

class Descriptor {
public:
    explicit Descriptor(int number) : mNumber(number) {}
    ~Descriptor() {
        if (mNumber > STDERR_FILENO) close(mNumber);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return mNumber; }

private:
    int mNumber;
};

bool IsPipe(const std::string& name) {
    std::error_code ignored;
    return std::filesystem::is_fifo(std::filesystem::status(name, ignored));
}

const Stream* Find(const std::string& name, bool isOutput) {
    const auto found = std::ranges::find_if(
        Streams(), [&](const Stream& stream) { return stream.given == name && stream.isOutput == isOutput; });
    return found == Streams().end() ? nullptr : &*found;
}

const Stream& Add(const std::string& name, const std::string& extension, bool isOutput) {
    auto file = std::make_unique<OutputFile>(std::filesystem::temp_directory_path() / ("stream" + extension));
    return Streams().emplace_back(name, std::move(file), isOutput);
}

[[noreturn]] void Throw(const std::string& name, const char* what, int error) {
    const std::string shown = name == "-" ? std::string("standard input") : name;
    throw std::runtime_error(std::format("{} cannot be {}: {}", shown, what, std::generic_category().message(error)));
}

/// Reads until the buffer is full or there is no more.
std::size_t Fill(int from, std::span<char> buffer, const std::string& name) {
    std::size_t count = 0;
    while (count < buffer.size()) {
        const ssize_t got = read(from, buffer.data() + count, buffer.size() - count);
        if (got == 0) break;
        if (got < 0 && errno != EINTR) Throw(name, "read", errno);
        if (got > 0) count += static_cast<std::size_t>(got);
    }
    return count;
}

constexpr std::size_t kBuffer = 1 << 16;

/// What was read first, and all the rest.
void Spool(int from, std::string_view first, const Stream& stream) {
    const Descriptor to(open(stream.Path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (to.Number() < 0) Throw(stream.given, "kept", errno);
    std::array<char, kBuffer> buffer{};
    for (std::string_view part = first; !part.empty();) {
        if (const int error = WriteTo(to.Number(), part); error != 0) Throw(stream.given, "kept", error);
        part = {buffer.data(), Fill(from, buffer, stream.given)};
    }
}

int Send(const Stream& stream) {
    const Descriptor from(open(stream.Path().c_str(), O_RDONLY | O_CLOEXEC));
    if (from.Number() < 0) return 0;  // nothing was written, and the command has said why
    const bool isStandard = IsStandardOutput(stream.given);
    const Descriptor to(isStandard ? STDOUT_FILENO : open(stream.given.c_str(), O_WRONLY | O_CLOEXEC));
    if (to.Number() < 0) return errno;
    std::array<char, kBuffer> buffer{};
    while (const std::size_t count = Fill(from.Number(), buffer, stream.given)) {
        const int error = WriteTo(to.Number(), {buffer.data(), count});
        if (error != 0) return error;
    }
    return 0;
}

}  // namespace

void AddStreamType(CLI::App& command, Names& names) {
    command.add_option("--to", names.to,
                       "The file type, as an extension, where OUT is - for standard output, or a pipe");
}

void AddInAndOut(CLI::App& command, Names& names, std::string& in, std::string& out) {
    command.add_option("IN", in, "The picture, taken as it is displayed")->required();
    command
        .add_option("OUT", out,
                    "The file to write, or - for standard output; with {dir} {stem} {ext} {name} of the input")
        ->required();
    names.in.push_back(&in);
    names.out.push_back(&out);
    AddStreamType(command, names);
}

bool IsInputStream(const std::string& name) {
    const bool isHanded = name == "/dev/stdin" || name.starts_with("/dev/fd/") || name.starts_with("/proc/self/fd/");
    return name == "-" || (isHanded && IsPipe(name));
}

bool IsStandardOutput(const std::string& name) {
    return name == "-" || name == "/dev/stdout";
}

bool IsOutputStream(const std::string& name) {
    return IsStandardOutput(name) || IsPipe(name);
}

std::string ReadStream(const std::string& name) {
    if (!IsInputStream(name)) return name;
    if (const Stream* known = Find(name, false)) return known->Path();
    const Descriptor from(name == "-" ? STDIN_FILENO : open(name.c_str(), O_RDONLY | O_CLOEXEC));
    if (from.Number() < 0) Throw(name, "read", errno);
    std::array<char, kBuffer> first{};
    const std::string_view begin(first.data(), Fill(from.Number(), first, name));
    const std::string extension = ExtensionOf(begin);
    const Stream& stream = Add(name, extension, false);
    Spool(from.Number(), begin, stream);
    return stream.Path();
}

std::string WriteStream(const std::string& name, const std::string& to) {
    if (!IsOutputStream(name)) return name;
    const std::string extension = to.empty() ? LowerExtension(name) : (to.starts_with('.') ? to : "." + to);
    return Add(name, extension, true).Path();
}

std::string SendStreams() {
    std::string failure;
    for (const Stream& stream : Streams()) {
        if (!stream.isOutput) continue;
        const int error = Send(stream);
        if (error == 0) continue;
        failure = std::format("{}: error: cannot be written: {}", stream.given, std::generic_category().message(error));
    }
    Streams().clear();
    return failure;
}

std::string WithGivenNames(std::string_view text) {
    std::string result(text);
    for (const Stream& stream : Streams()) {
        const std::string path = stream.Path();
        for (std::size_t at = 0; (at = result.find(path, at)) != std::string::npos; at += stream.given.size())
            result.replace(at, path.size(), stream.given);
    }
    return result;
}

}  // namespace Kavra::App
