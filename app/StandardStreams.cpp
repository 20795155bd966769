#include "StandardStreams.h"

#include "LibraryLines.h"
#include "OutputFile.h"
#include "StreamFiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <system_error>

namespace Kavra::App {
namespace {

std::atomic<int> outputError = 0;

void Remember(int error) {
    int none = 0;
    if (error != 0) outputError.compare_exchange_strong(none, error);
}

}  // namespace

int WriteTo(int stream, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = write(stream, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EPIPE) {
            EndByBrokenPipe();
            return EPIPE;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void HoldStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        // The lowest free number is this one; opened the other way round, so that using it is still an error.
        (void)open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

void WriteOutput(std::string_view text) {
    Remember(WriteTo(STDOUT_FILENO, WithGivenNames(text)));
}

void WriteError(std::string_view text) {
    (void)WriteTo(ErrorStream(), WithGivenNames(text));
}

std::string OutputLoss() {
    if (close(STDOUT_FILENO) != 0) Remember(errno);  // a network's disk may say only now that it is full
    return outputError == 0 ? std::string() : std::generic_category().message(outputError);
}

}  // namespace Kavra::App
