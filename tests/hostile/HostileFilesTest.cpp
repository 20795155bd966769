// Damaged and malicious files: an answer, nothing lost, no crash, no memory that the file could not justify. The time
// limit is that of the test program.

#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <set>

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::Objects::ObjModel;
using Bytes = std::vector<unsigned char>;

namespace {

/// Counts what is alive before a test and expects the same after it.
class HostileFiles : public testing::Test {
protected:
    HostileFiles() : mBlocks(ObjModel::BlockCounters().liveBlocks), mObjects(ObjModel::ObjectCounters().liveBlocks) {
        ObjModel::SetBlockCeiling(std::size_t{2} << 30);
    }

    ~HostileFiles() override {
        ObjModel::SetBlockCeiling(0);
        EXPECT_EQ(ObjModel::BlockCounters().liveBlocks, mBlocks);
        EXPECT_EQ(ObjModel::ObjectCounters().liveBlocks, mObjects);
        for (const std::wstring& text : messages.Texts())
            EXPECT_TRUE(kMessages.contains(text) || text.starts_with(L"Bad code word in ")) << text.c_str();
    }

    /// Describes and loads; whether there was a block. Twice, since the answer must not depend on what was in memory.
    bool Try(const std::filesystem::path& path, const LoadRequest& request = {}) {
        IsDescribed(handler, path);
        const auto first = LoadFile(handler, path, request);
        const auto second = LoadFile(handler, path, request);
        EXPECT_EQ(first.has_value(), second.has_value()) << path;
        EXPECT_TRUE(!first || !second || first->bytes == second->bytes) << path;
        return first.has_value();
    }

    TemporaryFolder folder;
    MessageRecorder messages;

private:
    static inline const std::set<std::wstring> kMessages = {L"Frame index out of range",
                                                            L"Unsupported texture type",
                                                            L"format is not supported",
                                                            L"Currently not supported",
                                                            L"Override orientation of compressed DDS is not supported",
                                                            L"The data is corrupted.",
                                                            L"PCXReader::Invalid Frame -- out of data",
                                                            L"Invalid Row -- out of buffer bound"};
    OIIOImageHandler handler;
    std::size_t mBlocks;
    std::size_t mObjects;
};

Bytes Big32(std::uint32_t value) {
    return {static_cast<unsigned char>(value >> 24), static_cast<unsigned char>(value >> 16),
            static_cast<unsigned char>(value >> 8), static_cast<unsigned char>(value)};
}

void Append(Bytes& out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

std::uint32_t Crc32(const Bytes& bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const unsigned char byte : bytes) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~crc;
}

/// A PNG that claims `width` x `height` RGBA pixels and holds none.
Bytes PngBomb(std::uint32_t width, std::uint32_t height) {
    Bytes file = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    const auto chunk = [&file](const char* type, const Bytes& data) {
        Bytes body(type, type + 4);
        Append(body, data);
        Append(file, Big32(static_cast<std::uint32_t>(data.size())));
        Append(file, body);
        Append(file, Big32(Crc32(body)));
    };
    Bytes header = Big32(width);
    Append(header, Big32(height));
    Append(header, {8, 6, 0, 0, 0});
    chunk("IHDR", header);
    chunk("IDAT", {0x78, 0x01, 0x01, 0, 0, 0xFF, 0xFF, 0, 0, 0, 1});
    chunk("IEND", {});
    return file;
}

/// A DDS header of RGBA pixels; nothing behind it.
Bytes DdsBomb(std::uint32_t width, std::uint32_t height, std::uint32_t depth, std::uint32_t mips, std::uint32_t caps2) {
    std::array<std::uint32_t, 32> words{};
    words[0] = 0x20534444;
    words[1] = 124;
    words[2] = 0x1007 | (depth > 1 ? 0x800000U : 0U) | (mips > 1 ? 0x20000U : 0U);
    words[3] = height;
    words[4] = width;
    words[6] = depth;
    words[7] = mips;
    words[19] = 32;
    words[20] = 0x41;
    words[22] = 32;
    words[23] = 0xFF;
    words[24] = 0xFF00;
    words[25] = 0xFF0000;
    words[26] = 0xFF000000;
    words[27] = 0x1000 | (caps2 != 0 ? 8U : 0U) | (mips > 1 ? 0x400008U : 0U);
    words[28] = caps2;
    Bytes bytes(sizeof words);
    std::memcpy(bytes.data(), words.data(), sizeof words);
    return bytes;
}

long PeakKilobytes() {
    struct rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

TEST_F(HostileFiles, EverySampleCutAtManyLengths) {
    for (const auto& sample : AllSamples()) {
        const Bytes whole = ReadAll(sample);
        std::set<std::size_t> lengths = {0, 1, 3, 4, 5, 127, 128, 129, 148, whole.size() - 1};
        for (std::size_t i = 1; i < 16; ++i)
            lengths.insert(whole.size() * i / 16);
        for (const std::size_t length : lengths) {
            if (length < whole.size()) {
                Try(folder.Write("cut" + sample.extension().string(), std::span(whole).first(length)));
            }
        }
    }
}

TEST_F(HostileFiles, EveryByteOfAHeaderSetToExtremes) {
    for (const std::string name :
         {"bc1.dds", "dx10.dds", "studio.hdr", "spinner.gif", "luminance.exr", "photo-orientation-3.jpg"}) {
        const Bytes whole = ReadAll(Sample(name));
        const auto extension = Sample(name).extension().string();
        for (std::size_t at = 0; at < std::min<std::size_t>(whole.size(), 150); ++at) {
            for (const int value : {0x00, 0x7F, 0xFF}) {
                Bytes damaged = whole;
                damaged[at] = static_cast<unsigned char>(value);
                Try(folder.Write("damaged" + extension, damaged));
            }
        }
    }
}

TEST_F(HostileFiles, TheWrongContentUnderEveryExtension) {
    const std::vector<std::string> contents = {"photo-orientation-1.jpg", "bc1.dds", "luminance.exr", "studio.hdr",
                                               "spinner.gif"};
    for (const std::string extension :
         {".png", ".jpg", ".tif", ".exr", ".dds", ".hdr", ".gif", ".tga", ".bmp",     ".psd", ".webp",
          ".ico", ".jp2", ".dpx", ".pcx", ".bil", ".cin", ".sgi", ".iff", ".unknown", ""}) {
        for (const std::string& content : contents)
            Try(folder.Write("wrong" + extension, ReadAll(Sample(content))));
    }
}

TEST_F(HostileFiles, AHeaderThatClaimsMuchCostsNothing) {
    [[maybe_unused]] const long before = PeakKilobytes();
    const std::string hdr = "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 60000 +X 60000\n";
    const std::string ppm = "P6\n32000 32000\n255\nshort";
    EXPECT_FALSE(Try(folder.Write("bomb.png", PngBomb(16000, 16000))));
    EXPECT_FALSE(Try(folder.Write("bomb2.png", PngBomb(0x7FFFFFFF, 0x7FFFFFFF))));
    EXPECT_FALSE(Try(folder.Write("zero.png", PngBomb(0, 0))));
    EXPECT_FALSE(Try(folder.Write("bomb.hdr", hdr)));
    EXPECT_FALSE(Try(folder.Write("bomb.ppm", ppm)));
    EXPECT_FALSE(Try(folder.Write("flat.dds", DdsBomb(65535, 65535, 1, 1, 0))));
    EXPECT_FALSE(Try(folder.Write("cube.dds", DdsBomb(32768, 32768, 1, 1, 0xFE00))));
    EXPECT_FALSE(Try(folder.Write("volume.dds", DdsBomb(2048, 2048, 2048, 1, 0x200000))));
    EXPECT_FALSE(Try(folder.Write("huge.dds", DdsBomb(0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0x200000))));
    EXPECT_FALSE(Try(folder.Write("empty.dds", DdsBomb(0, 0, 0, 0, 0))));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    EXPECT_LT(PeakKilobytes() - before, 300 * 1024);
#endif
}

TEST_F(HostileFiles, EndlessMipCountsAreCountedToTheFullChain) {
    Bytes file = DdsBomb(16, 16, 1, 0x7FFFFFFF, 0);
    file.resize(128 + 4 * (256 + 64 + 16 + 4 + 1));
    const auto path = folder.Write("mips.dds", file);
    OIIOImageHandler handler;
    ImageDesc* desc = handler.GetImageDesc(Wide(path));
    ASSERT_NE(desc, nullptr);
    EXPECT_EQ(desc->frameCount, 5);
    desc->Delete();
    EXPECT_TRUE(LoadFile(handler, path, {.level = 4}));
    messages.Clear();
    EXPECT_FALSE(LoadFile(handler, path, {.level = 5}));
    EXPECT_EQ(messages.Texts(), (std::vector<std::wstring>{L"Frame index out of range", L"format is not supported"}));
    EXPECT_FALSE(LoadFile(handler, path, {.level = 0x7FFFFFFF}));
}

TEST_F(HostileFiles, AboveTheCeilingNothingIsAllocated) {
    ObjModel::SetBlockCeiling(1000);
    EXPECT_FALSE(Try(Sample("photo.jpg")));
    EXPECT_FALSE(Try(Sample("cube.dds")));
    EXPECT_FALSE(Try(Sample("rgba.exr")));
    EXPECT_FALSE(Try(Sample("float.dds")));
}

TEST_F(HostileFiles, FoldersPipesAndMissingFilesAreNoImages) {
    std::filesystem::create_directory(folder / "folder.png");
    ASSERT_EQ(mkfifo((folder / "pipe.png").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((folder / "pipe.dds").c_str(), 0600), 0);
    for (const std::string name :
         {"folder.png", "pipe.png", "pipe.dds", "missing.png", "missing.null", "missing.exr"}) {
        EXPECT_FALSE(Try(folder / name)) << name;
    }
    EXPECT_FALSE(Try(""));
    EXPECT_FALSE(Try("/" + std::string(5000, 'x') + ".png"));
}
