/// The files that other programs wrote, and what those programs read in them (make-files).
#pragma once

#include "support/Loading.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

/// A file by its name below the folder that make-files filled.
std::filesystem::path Peer(std::string_view name);

/// All such files of one folder with this extension (with its dot), in order of name.
std::vector<std::filesystem::path> Peers(std::string_view folder, std::string_view extension);

/// The pixels of `file` as another program decodes them: the file with `suffix` (".rgb", ".gray" ...) at its end.
std::vector<unsigned char> PeerPixels(const std::filesystem::path& file, std::string_view suffix);

/// The first `channels` bytes of each pixel of four.
std::vector<unsigned char> Channels(const std::vector<unsigned char>& rgba, int channels);

/// Loads with the handler as a host does; the test fails and the result is empty when that fails.
Loaded LoadPeer(const std::filesystem::path& file, const LoadRequest& request = {});

/// The same in the common reading of legacy files.
Loaded LoadPeerCommon(const std::filesystem::path& file, const LoadRequest& request = {});

/// How many bytes differ; all when the sizes do.
std::size_t Differences(const std::vector<unsigned char>& a, const std::vector<unsigned char>& b);

}  // namespace Kavra::Tests
