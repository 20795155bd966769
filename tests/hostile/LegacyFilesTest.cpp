// The files that make_legacy_files.py writes: small, and asking for much. Their names say what a load answers.

#include "support/Loading.h"
#include "support/MessageRecorder.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;

namespace {

std::vector<std::filesystem::path> FilesThatAre(const std::string& answer) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(KAVRA_SOURCE_DIR "/tests/hostile/files")) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("legacy-" + answer) && entry.path().extension() != ".hdr") files.push_back(entry.path());
    }
    return files;
}

}  // namespace

TEST(LegacyHostileFiles, WhatAsksForTooMuchGetsNoMemoryForIt) {
    const std::vector<std::filesystem::path> files = FilesThatAre("refused");
    ASSERT_GE(files.size(), 10U);
    OIIOImageHandler handler;
    for (const auto& file : files) {
        MessageRecorder messages;
        const std::size_t given = ObjModel::BlockCounters().liveBytes;
        EXPECT_FALSE(LoadFile(handler, file)) << file;
        EXPECT_EQ(ObjModel::BlockCounters().liveBytes, given) << file;
        ASSERT_FALSE(messages.Texts().empty()) << file;
        EXPECT_EQ(messages.Texts().back(), L"format is not supported") << file;
    }
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // a page takes a gigabyte
TEST(LegacyHostileFiles, WhatAsksForMuchAndIsAPictureLoads) {
    const std::vector<std::filesystem::path> files = FilesThatAre("loaded");
    ASSERT_GE(files.size(), 10U);
    OIIOImageHandler handler;
    for (const auto& file : files) {
        const MessageRecorder messages;
        const std::size_t given = ObjModel::BlockCounters().liveBytes;
        ImageDescription desc;
        auto* const block = static_cast<IImageHandler&>(handler).LoadTexture(
            desc, Kavra::Objects::KString(file.wstring().c_str()), 0, 0, 0, kUnknown, false, 0, kTopLeft, nullptr);
        ASSERT_NE(block, nullptr) << file;
        EXPECT_LE(desc.dataSize, ObjModel::BlockCounters().liveBytes - given) << file;
        block->Delete();
    }
}
#endif
