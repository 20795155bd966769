/// How far the work for one file is.
#pragma once

#include <kavra/devices/ProgressScope.h>

#include <chrono>
#include <optional>
#include <string>

namespace Kavra::App {

/// A bar on standard error with the stage that the work is in, for what takes longer than half a second. Drawn only on a
/// terminal, and not where there is a bar for several files already. Nobody watches the work where none can be drawn.
class StageBar final : public Devices::IProgress {
public:
    StageBar();
    /// Takes the bar off the screen, so that something else can be printed.
    ~StageBar();
    StageBar(const StageBar&) = delete;
    StageBar& operator=(const StageBar&) = delete;

    bool Progress(Devices::EProgressStage stage, float fraction) override;

private:
    std::chrono::steady_clock::time_point mBegan = std::chrono::steady_clock::now();
    std::string mDrawn;
    std::optional<Devices::ProgressScope> mScope;
};

}  // namespace Kavra::App
