#include "common/Progress.h"

#include "common/HostExtras.h"

namespace Kavra::Common {

ProgressMeter::ProgressMeter(Devices::EProgressStage stage, std::uint64_t total) noexcept
    : mTotal(std::max<std::uint64_t>(total, 1)), mIsWatched(Common::BeginStage(stage)) {}

ProgressMeter::~ProgressMeter() {
    if (mIsWatched) Common::EndStage();
}

void ProgressMeter::Tell(std::uint64_t next) const {
    const auto share = [this](std::uint64_t units) {
        return static_cast<float>(static_cast<double>(units) / static_cast<double>(mTotal));
    };
    if (!Common::AdvanceStage(share(mDone), share(next))) throw Cancelled();
}

}  // namespace Kavra::Common
