#include "frame/host/objects/MessageSink.h"

#include <kavra/objects/OS.h>

#include <unistd.h>

#include <new>
#include <string>
#include <string_view>

namespace Kavra::Objects {
namespace {

std::string Line(EMessageKind kind, const wchar_t* text, const wchar_t* detail) {
    std::string line = kind == EMessageKind::kWarning ? "kavra: warning: " : "kavra: error: ";
    line += OS::ToUtf8(text);
    if (detail != nullptr) line += ": " + OS::ToUtf8(detail);
    return line + '\n';
}

void WriteOnce(std::string_view line) {
    [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

void StandardErrorSink::Message(EMessageKind kind, const wchar_t* text, const wchar_t* detail) {
    try {
        WriteOnce(Line(kind, text, detail));
    } catch (const std::bad_alloc&) {
        WriteOnce("kavra: error: no memory for a message\n");
    }
}

}  // namespace Kavra::Objects
