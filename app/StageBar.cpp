#include "StageBar.h"

#include "LibraryLines.h"
#include "Messages.h"
#include "StandardStreams.h"
#include "Workers.h"

#include <unistd.h>

#include <format>

namespace Kavra::App {
namespace {

const char* NameOf(Devices::EProgressStage stage) {
    switch (stage) {
        case Devices::kProgressReading:
            return "reading";
        case Devices::kProgressConverting:
            return "converting";
        case Devices::kProgressResizing:
            return "resizing";
        case Devices::kProgressCompressing:
            return "compressing";
        case Devices::kProgressSaving:
            return "saving";
        case Devices::kProgressAnalysing:
            return "measuring";
    }
    return "working";
}

}  // namespace

StageBar::StageBar() {
    if (!PrintsOnlyErrors() && !Kavra::App::Progress::IsShown() && isatty(ErrorStream()) != 0) mScope.emplace(*this);
}

StageBar::~StageBar() {
    if (!mDrawn.empty()) WriteError("\r\x1b[K");
}

bool StageBar::Progress(Devices::EProgressStage stage, float fraction) {
    constexpr std::chrono::milliseconds kPatience{500};
    constexpr std::size_t kWidth = 40;
    if (std::chrono::steady_clock::now() - mBegan < kPatience || Kavra::App::Progress::IsShown()) return true;
    const auto filled = static_cast<std::size_t>(fraction * static_cast<float>(kWidth));
    std::string bar =
        std::format("\r[{}{}] {}\x1b[K", std::string(filled, '#'), std::string(kWidth - filled, ' '), NameOf(stage));
    if (bar == mDrawn) return true;
    WriteError(bar);
    mDrawn = std::move(bar);
    return true;
}

}  // namespace Kavra::App
