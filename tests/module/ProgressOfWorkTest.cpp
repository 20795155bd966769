// What is done to pictures in memory, watched and stopped.

#include "module/Reasons.h"
#include "support/Watching.h"

#include <kavra/devices/FormatFacts.h>
#include <kavra/devices/MipChain.h>
#include <kavra/devices/Resampler.h>
#include <kavra/devices/TextureCompressor.h>
#include <kavra/devices/TextureFile.h>

#include <cstring>
#include <functional>
#include <vector>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

constexpr int kSide = 1024;
constexpr std::size_t kPitch = std::size_t{4} * kSide;
using Bytes = std::vector<unsigned char>;

Bytes Noise(std::size_t count) {
    Bytes bytes(count);
    std::uint32_t state = 1;
    for (unsigned char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<unsigned char>(state >> 24);
    }
    return bytes;
}

class ProgressOfWork : public Reasons {
protected:
    /// That work is heard of from its beginning to its end in one stage, gives the same, and can be stopped.
    /// `work` returns whether it answered and writes to what it is given.
    void ExpectWatched(EProgressStage stage, std::size_t outBytes, const std::function<bool(unsigned char*)>& work) {
        Bytes plain(outBytes), watched(outBytes);
        ASSERT_TRUE(work(plain.data()));
        Watcher whole;
        {
            const ProgressScope scope(whole);
            ASSERT_TRUE(work(watched.data()));
        }
        EXPECT_EQ(plain, watched);
        EXPECT_TRUE(whole.Rises());
        EXPECT_TRUE(whole.Ends());
        EXPECT_TRUE(whole.isOwnThread);
        for (const Watcher::Call& call : whole.calls)
            EXPECT_EQ(call.stage, stage);
        Watcher stopping(1);
        const ProgressScope scope(stopping);
        EXPECT_FALSE(work(plain.data()));
        EXPECT_EQ(ReasonNow().kind, kFailureCancelled);
        EXPECT_EQ(stopping.calls.size(), 1U);
    }

    const Bytes pixels = Noise(kPitch * kSide);
};

/// Gives the rows of a picture, and takes them.
struct Rows final : IRowSource, IRowSink {
    const unsigned char* next = nullptr;
    unsigned char* out = nullptr;
    std::size_t inBytes = 0, outBytes = 0;
    bool ReadRows(void* rows, int count) override {
        std::memcpy(rows, next, inBytes * static_cast<std::size_t>(count));
        next += inBytes * static_cast<std::size_t>(count);
        return true;
    }
    bool WriteRows(const void* rows, int count) override {
        std::memcpy(out, rows, outBytes * static_cast<std::size_t>(count));
        out += outBytes * static_cast<std::size_t>(count);
        return true;
    }
};

}  // namespace

TEST_F(ProgressOfWork, ResizingByEveryFilter) {
    for (const EResampleFilter filter : {kResampleNearest, kResampleBox, kResampleMitchell, kResampleLanczos3}) {
        ResampleOptions options;
        options.filter = filter;
        for (const int side : {100, 1500}) {
            const std::size_t pitch = std::size_t{4} * static_cast<unsigned>(side);
            ExpectWatched(kProgressResizing, pitch * static_cast<unsigned>(side), [&](unsigned char* out) {
                return ResamplePicture({}, pixels.data(), kPitch, kSide, kSide, out, pitch, side, side, options);
            });
        }
    }
}

TEST_F(ProgressOfWork, ResizingRowByRow) {
    constexpr int kSmall = 100;
    ExpectWatched(kProgressResizing, std::size_t{4} * kSmall * kSmall, [&](unsigned char* out) {
        Rows rows;
        rows.next = pixels.data();
        rows.inBytes = kPitch;
        rows.out = out;
        rows.outBytes = std::size_t{4} * kSmall;
        return ResampleRows({}, rows, kSide, kSide, rows, kSmall, kSmall);
    });
}

TEST_F(ProgressOfWork, ResizingByTheHandler) {
    constexpr int kSmall = 100;
    ExpectWatched(kProgressResizing, std::size_t{4} * kSmall * kSmall, [&](unsigned char* out) {
        int pitch = 0;
        auto* const block =
            handler.Resize(kResizeFilter, pixels.data(), pixels.size(), static_cast<int>(kPitch), {kSide, kSide, 1},
                           kR8G8B8A8, kTexture2D, {kSmall, kSmall, 1}, pitch, kFilterMitchell);
        if (block == nullptr) return false;
        std::memcpy(out, block->mData, std::size_t{4} * kSmall * kSmall);
        block->Delete();
        return true;
    });
}

TEST_F(ProgressOfWork, CompressingToEveryFormatAndBack) {
    for (const EFormat format : {kBC1, kBC3, kBC4, kBC5, kBC6H, kBC7}) {
        CompressionOptions options;
        options.effort = kCompressionFast;
        const auto bytes = static_cast<std::size_t>(BlockBytes(format, kSide, kSide));
        ExpectWatched(kProgressCompressing, bytes, [&](unsigned char* out) {
            return CompressPicture(kR8G8B8A8, pixels.data(), kPitch, kSide, kSide, format, out, options);
        });
    }
    const Bytes blocks = Noise(static_cast<std::size_t>(BlockBytes(kBC7, kSide, kSide)));
    ExpectWatched(kProgressCompressing, kPitch * kSide, [&](unsigned char* out) {
        return DecompressPicture(kBC7, blocks.data(), kSide, kSide, out, kPitch);
    });
}

// Rows of blocks are compressed in pieces, whether somebody watches or not.
TEST_F(ProgressOfWork, APieceOfARowOfBlocksIsCompressedAsTheWholeRowIs) {
    constexpr int kWide = 1030, kHeight = 6;  // more than one piece, and a last block that is not full
    const Bytes wide = Noise(std::size_t{4} * kWide * kHeight);
    Bytes whole(static_cast<std::size_t>(BlockBytes(kBC1, kWide, kHeight)));
    ASSERT_TRUE(CompressPicture(kR8G8B8A8, wide.data(), std::size_t{4} * kWide, kWide, kHeight, kBC1, whole.data()));
    const std::size_t rowBlocks = (kWide + 3) / 4;
    for (const int block : {0, 255, 256, 257}) {
        const int width = std::min(4, kWide - 4 * block);
        Bytes one(8);
        ASSERT_TRUE(CompressPicture(kR8G8B8A8, wide.data() + std::size_t{16} * static_cast<unsigned>(block),
                                    std::size_t{4} * kWide, width, 4, kBC1, one.data()));
        const auto begin = whole.begin() + std::ptrdiff_t{8} * block;
        EXPECT_EQ(Bytes(begin, begin + 8), one) << block;
    }
    EXPECT_EQ(whole.size(), rowBlocks * 2 * 8);
}

TEST_F(ProgressOfWork, LevelsOfTextures) {
    TextureShape shape;
    shape.format = kR8G8B8A8;
    shape.width = shape.height = kSide;
    shape.levels = FullTextureLevels(kSide, kSide);
    for (const EResampleFilter filter : {kResampleBox, kResampleLanczos3}) {
        MipOptions options;
        options.filter = filter;
        ExpectWatched(kProgressResizing, static_cast<std::size_t>(TextureBytes(shape)),
                      [&](unsigned char* out) { return BuildMipChain(shape, pixels.data(), out, options); });
    }
    shape.type = kTextureCube;
    shape.width = shape.height = 256;
    shape.levels = FullTextureLevels(256, 256);
    ExpectWatched(kProgressResizing, static_cast<std::size_t>(TextureBytes(shape)),
                  [&](unsigned char* out) { return BuildMipChain(shape, pixels.data(), out); });
}

TEST_F(ProgressOfWork, AverageColours) {
    ImageDescription desc;
    desc.width = desc.height = kSide;
    desc.format = kR8G8B8A8;
    desc.textureType = kTexture2D;
    ExpectWatched(kProgressAnalysing, sizeof(Kavra::vec4<float>), [&](unsigned char* out) {
        const Kavra::vec4<float> colour = handler.GetAverageColor(desc, pixels.data(), false);
        std::memcpy(out, &colour, sizeof colour);
        return colour.w > 0;
    });
}

TEST_F(ProgressOfWork, EnvironmentMaps) {
    constexpr int kWidth = 512, kHeight = 256;
    Bytes floats(std::size_t{16} * kWidth * kHeight);
    for (std::size_t i = 0; i < floats.size() / 4; ++i) {
        const auto value = static_cast<float>(pixels[i]);
        std::memcpy(floats.data() + 4 * i, &value, sizeof value);
    }
    ImageDescription desc;
    desc.width = kWidth;
    desc.height = kHeight;
    desc.format = kR32G32B32A32F;
    desc.textureType = kTexture2D;
    desc.rowPitch = 16 * kWidth;
    ExpectWatched(kProgressAnalysing, sizeof(Kavra::vec3<float>), [&](unsigned char* out) {
        const Kavra::vec3<float> light = handler.GetIBLIntensity(desc, floats.data(), false, nullptr);
        std::memcpy(out, &light, sizeof light);
        return light.x > 0;
    });
    ExpectWatched(kProgressAnalysing, sizeof(Kavra::vec3<float>), [&](unsigned char* out) {
        Kavra::vec3<float> directions[8], colours[8];
        const unsigned found = handler.FindIBLLightDirections(desc, floats.data(), directions, colours, 8);
        std::memcpy(out, directions, sizeof directions[0]);
        return found > 0;
    });
}

TEST_F(ProgressOfWork, WholeTexturesInFiles) {
    TextureShape shape;
    shape.format = kR8G8B8A8;
    shape.width = shape.height = kSide;
    for (const char* const name : {"a.dds", "a.ktx2", "packed.ktx2"}) {
        TextureWriteOptions options;
        options.zstdLevel = name[0] == 'p' ? 1 : 0;
        const auto write = [&] {
            return WriteTextureFile(Wide(folder / name), shape, pixels.data(), pixels.size(), options);
        };
        ExpectWatched(kProgressSaving, 1, [&](unsigned char*) {
            std::filesystem::remove(folder / name);
            return write();
        });
        EXPECT_TRUE(std::filesystem::is_empty(folder.Path())) << name;  // the last one was stopped
        ASSERT_TRUE(write());
        ExpectWatched(kProgressReading, pixels.size(), [&](unsigned char* out) {
            TextureFileReader reader;
            return reader.Open(Wide(folder / name)) && reader.ReadAll(out);
        });
        std::filesystem::remove(folder / name);
    }
}

// Workers never tell: what they work on for another thread is that thread's.
TEST_F(ProgressOfWork, OfTwoThreadsIsHeardByEachOnesOwn) {
    const auto resize = [&](Watcher& watcher) {
        const ProgressScope scope(watcher);
        Bytes out(std::size_t{4} * 500 * 500);
        return ResamplePicture({}, pixels.data(), kPitch, kSide, kSide, out.data(), std::size_t{4} * 500, 500, 500);
    };
    bool isDone = false, isStopped = false;
    bool isOwn = false;
    std::thread one([&] {
        Watcher watcher;
        isDone = resize(watcher);
        isOwn = watcher.isOwnThread && watcher.Ends();
    });
    std::thread other([&] {
        Watcher watcher(1);
        isStopped = !resize(watcher) && watcher.calls.size() == 1;
    });
    one.join();
    other.join();
    EXPECT_TRUE(isDone && isOwn && isStopped);
}
