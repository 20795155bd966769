/// Why a file failed: as a line for people, and as JSON for programs.
#pragma once

#include <kavra/devices/LastFailure.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>

namespace Kavra::App {

/// One failure, kept beyond the operation that had it.
struct Reason {
    Devices::EFailureKind kind = Devices::kFailureNone;
    std::string text;            ///< what, where and what to do, without the name of the file
    std::int64_t position = -1;  ///< these as in `Devices::FailureReport`
    std::int64_t goodRows = -1;
    std::int64_t rows = -1;

    bool IsKnown() const { return kind != Devices::kFailureNone; }
};

/// Why the last operation on this thread failed, with the option that helps where one does. Of no kind where it did not
/// fail, or the module is an older one.
Reason LastReason();

/// A failure that the program itself finds; its kind is told by the words where the system gave them.
Reason OwnReason(std::string_view text, Devices::EFailureKind otherwise = Devices::kFailureOther);

/// A stable word for each kind: "noSuchFile", "endsEarly" ... Empty for no failure.
std::string_view KindWord(Devices::EFailureKind kind);

/// Adds `error`, which is the text, `kind`, and `position`, `goodRows` and `rows` where they are known.
void AddReason(nlohmann::ordered_json& json, const Reason& reason);

}  // namespace Kavra::App
