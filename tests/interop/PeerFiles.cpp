#include "interop/PeerFiles.h"

#include "support/TemporaryFolder.h"

#include <kavra/devices/LoadPreferences.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace Kavra::Tests {

namespace fs = std::filesystem;

fs::path Peer(std::string_view name) {
    return fs::path(KAVRA_INTEROP_FOLDER) / name;
}

std::vector<fs::path> Peers(std::string_view folder, std::string_view extension) {
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(Peer(folder))) {
        if (entry.path().extension() == extension) files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

std::vector<unsigned char> PeerPixels(const fs::path& file, std::string_view suffix) {
    std::vector<unsigned char> pixels = ReadAll(file.string() + std::string(suffix));
    EXPECT_FALSE(pixels.empty()) << file << suffix;
    return pixels;
}

std::vector<unsigned char> Channels(const std::vector<unsigned char>& rgba, int channels) {
    std::vector<unsigned char> chosen;
    chosen.reserve(rgba.size() / 4 * channels);
    for (std::size_t i = 0; i + 4 <= rgba.size(); i += 4)
        chosen.insert(chosen.end(), &rgba[i], &rgba[i] + channels);
    return chosen;
}

Loaded LoadPeer(const fs::path& file, const LoadRequest& request) {
    Devices::OIIOImageHandler handler;
    const std::optional<Loaded> loaded = LoadFile(handler, file, request);
    EXPECT_TRUE(loaded) << file;
    return loaded.value_or(Loaded{});
}

Loaded LoadPeerCommon(const fs::path& file, const LoadRequest& request) {
    Devices::LoadPreferences preferences;
    preferences.legacy = Devices::kLegacyCommon;
    const Devices::LoadPreferencesScope scope(preferences);
    return LoadPeer(file, request);
}

std::size_t Differences(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b) {
    if (a.size() != b.size()) return std::max(a.size(), b.size());
    std::size_t differences = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        differences += a[i] != b[i];
    return differences;
}

}  // namespace Kavra::Tests
