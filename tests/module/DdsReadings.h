/// DDS files in both readings, through whole loads.
#pragma once

#include "load/DdsFile.h"
#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/LoadPreferences.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Kavra::Tests {

using Bytes = std::vector<unsigned char>;

/// The bytes of 16-bit numbers.
inline Bytes Shorts(const std::vector<std::uint16_t>& values) {
    Bytes bytes(2 * values.size());
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

class DdsReadings : public testing::Test {
protected:
    class Listener final : public Devices::ILegacyObserver {
    public:
        void ReadingsDiffer(const char* how) noexcept override { heard.emplace_back(how); }
        std::vector<std::string> heard;
    };

    /// Loads, and keeps in `heard` what was said of the readings.
    std::optional<Loaded> Load(const Bytes& file, Devices::ELegacyReading reading, const LoadRequest& request = {}) {
        const auto path = folder.Write("x.dds", file);
        Listener listener;
        Devices::LoadPreferences preferences = request.preferences;
        preferences.legacy = reading;
        preferences.legacyObserver = &listener;
        const Devices::LoadPreferencesScope scope(preferences);
        auto loaded = LoadFile(handler, path, request);
        heard = listener.heard;
        return loaded;
    }
    std::optional<Loaded> Common(const DdsFile& file, const LoadRequest& request = {}) {
        return Load(file.Bytes(), Devices::kLegacyCommon, request);
    }
    std::optional<Loaded> Contract(const DdsFile& file, const LoadRequest& request = {}) {
        return Load(file.Bytes(), Devices::kLegacyContract, request);
    }
    Bytes CommonBytes(const DdsFile& file, const LoadRequest& request = {}) {
        const auto loaded = Common(file, request);
        EXPECT_TRUE(heard.empty()) << "the common reading has nothing to say";
        return loaded ? loaded->bytes : Bytes{};
    }

    TemporaryFolder folder;
    Devices::OIIOImageHandler handler;
    MessageRecorder messages;
    std::vector<std::string> heard;
};

}  // namespace Kavra::Tests
