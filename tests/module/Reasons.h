/// What tests of reasons share: an operation, and what the thread's failure says after it.
#pragma once

#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/LastFailure.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace Kavra::Tests {

/// A copy of what was said last.
struct Reason {
    Devices::EFailureKind kind;
    std::string text;
    std::int64_t position, goodRows, rows;
};

inline Reason ReasonNow() {
    const Devices::FailureReport report = Devices::LastFailure();
    return {report.kind, report.text, report.position, report.goodRows, report.rows};
}

class Reasons : public testing::Test {
protected:
    /// Loads a file, whatever comes of it.
    Reason AfterLoad(const std::filesystem::path& path, const LoadRequest& request = {}) {
        mLoaded = LoadFile(handler, path, request).has_value();
        return ReasonNow();
    }
    /// The same for bytes under a name.
    Reason AfterLoadOf(std::string_view name, std::string_view bytes) { return AfterLoad(folder.Write(name, bytes)); }

    TemporaryFolder folder;
    Devices::OIIOImageHandler handler;
    MessageRecorder messages;
    bool mLoaded = false;
};

}  // namespace Kavra::Tests
