// Loads, saves and measurements that somebody watches, and stops.

#include "module/Reasons.h"
#include "output/SavingFixture.h"
#include "support/Watching.h"

#include <kavra/devices/EXRHandler.h>
#include <kavra/devices/IWriteImageLineProvider.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/devices/SavePreferences.h>

#include <fstream>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

constexpr int kSide = 1500;

/// A picture in which neighbours differ, so that it takes a while to decode.
Texture Noise(int side, EFormat format) {
    Texture texture(side, side, format);
    std::uint32_t state = 1;
    for (unsigned char& byte : texture.bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<unsigned char>(state >> 27);  // 0 to 31: no NaN of halves, and small files
    }
    return texture;
}

/// A raster of bands, whose pixels follow a header of text.
void WriteBil(const std::filesystem::path& path, int side) {
    std::filesystem::path header = path;
    std::ofstream(header.replace_extension(".hdr"))
        << "nrows " << side << "\nncols " << side << "\nnbands 3\nnbits 8\nlayout bil\n";
    std::ofstream(path, std::ios::binary) << std::string(static_cast<std::size_t>(3 * side * side), 'x');
}

/// Version 5, 24 bits in three planes, each byte below 0xC0 its own run.
void WritePcx(const std::filesystem::path& path, int side) {
    std::string header(128, '\0');
    header[0] = 10, header[1] = 5, header[2] = 1, header[3] = 8, header[65] = 3;
    const auto put = [&](std::size_t at, int value) {
        header[at] = static_cast<char>(value & 0xFF);
        header[at + 1] = static_cast<char>(value >> 8);
    };
    put(8, side - 1), put(10, side - 1), put(66, side), put(68, 1);
    std::ofstream(path, std::ios::binary) << header << std::string(static_cast<std::size_t>(3 * side * side), 'x');
}

class Progress : public Reasons {
protected:
    std::filesystem::path Saved(std::string_view name, EFormat format = kR8G8B8A8, int side = kSide) {
        const Texture texture = Noise(side, format);
        EXPECT_TRUE(handler.SaveTexture(Wide(folder / name), texture.desc, texture.bytes.data())) << name;
        return folder / name;
    }

    /// That a load is heard of from its beginning to its end, and can be stopped at each call, of which there are some.
    void ExpectWatched(const std::filesystem::path& path, const LoadRequest& request = {}) {
        SCOPED_TRACE(path.filename());
        const std::optional<Loaded> plain = LoadFile(handler, path, request);
        ASSERT_TRUE(plain);
        Watcher whole;
        {
            const ProgressScope scope(whole);
            const std::optional<Loaded> watched = LoadFile(handler, path, request);
            ASSERT_TRUE(watched);
            EXPECT_EQ(watched->bytes, plain->bytes);
        }
        EXPECT_TRUE(whole.Heard(kProgressReading));
        EXPECT_TRUE(whole.Rises());
        EXPECT_TRUE(whole.Ends());
        EXPECT_TRUE(whole.isOwnThread);
        messages.Clear();
        for (const std::size_t stop : {std::size_t{1}, Watcher::kEnd}) {
            Watcher watcher(stop);
            const ProgressScope scope(watcher);
            EXPECT_FALSE(LoadFile(handler, path, request));
            EXPECT_EQ(ReasonNow().kind, kFailureCancelled);
            EXPECT_TRUE(watcher.Stopped());
            EXPECT_TRUE(watcher.Rises());
        }
        EXPECT_TRUE(LoadFile(handler, path, request));
        EXPECT_EQ(ReasonNow().kind, kFailureNone);
    }
};

}  // namespace

TEST_F(Progress, FilesThatTheLibraryReadsAreWatchedAndStopped) {
    for (const char* const name : {"a.png", "a.tif", "a.jpg", "a.bmp", "a.tga", "a.sgi"})
        ExpectWatched(Saved(name));
}

TEST_F(Progress, OpenExrFilesAreWatchedAndStopped) {
    ExpectWatched(Saved("a.exr", kR16G16B16A16F, 700));
}

TEST_F(Progress, TexturesAreWatchedAndStopped) {
    ExpectWatched(Saved("a.dds"));
    ExpectWatched(Saved("b.dds", kR16));  // which the host's own reader reads
}

TEST_F(Progress, LegacyFilesAreWatchedAndStopped) {
    WriteBil(folder / "a.bil", kSide);
    ExpectWatched(folder / "a.bil");
    WritePcx(folder / "a.pcx", kSide);
    ExpectWatched(folder / "a.pcx");
    LoadPreferences common;
    common.legacy = kLegacyCommon;
    const LoadPreferencesScope scope(common);
    ExpectWatched(folder / "a.bil");
    ExpectWatched(folder / "a.pcx");
}

TEST_F(Progress, ALoadThatIsConvertedResizedOrTurnedIsWatchedThroughAllOfIt) {
    const std::filesystem::path path = Saved("a.png");
    LoadRequest request;
    request.format = kR32G32B32A32F;
    ExpectWatched(path, request);
    const auto hears = [&](EProgressStage stage) {
        Watcher watcher;
        const ProgressScope scope(watcher);
        EXPECT_TRUE(LoadFile(handler, path, request));
        return watcher.Heard(stage);
    };
    EXPECT_TRUE(hears(kProgressAnalysing));
    request.format = kL8;
    EXPECT_TRUE(hears(kProgressConverting));
    ExpectWatched(path, request);
    request.width = request.height = 200;
    ExpectWatched(path, request);
    LoadRequest turned;
    turned.orientation = kBottomRight;
    ExpectWatched(path, turned);
}

TEST_F(Progress, ALargeFileIsAskedAboutInItsMiddle) {
    const std::filesystem::path path = Saved("a.png", kR8G8B8A8, 3000);
    Watcher watcher;
    const ProgressScope scope(watcher);
    EXPECT_TRUE(LoadFile(handler, path));
    int inside = 0;
    for (const Watcher::Call& call : watcher.calls)
        inside += call.stage == kProgressReading && call.fraction > 0 && call.fraction < 1 ? 1 : 0;
    EXPECT_GE(inside, 3);
}

TEST_F(Progress, TheHostsOwnReadersAreWatched) {
    const std::filesystem::path path = Saved("a.exr", kR16G16B16A16F, 700);
    Watcher watcher;
    {
        const ProgressScope scope(watcher);
        EXRHandler exr(true);
        EXPECT_TRUE(exr.ReadFromFile(Wide(path)));
    }
    EXPECT_TRUE(watcher.Rises());
    EXPECT_TRUE(watcher.Ends());
    Watcher stopping(1);
    const ProgressScope scope(stopping);
    EXRHandler exr(true);
    EXPECT_FALSE(exr.ReadFromFile(Wide(path)));
    EXPECT_EQ(ReasonNow().kind, kFailureCancelled);
    EXPECT_EQ(exr.internalBuffer(), nullptr);
}

TEST_F(Progress, AStoppedLoadRaisesNoMessage) {
    const std::filesystem::path path = Saved("a.png");
    messages.Clear();
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    EXPECT_FALSE(LoadFile(handler, path));
    EXPECT_TRUE(messages.Texts().empty());
}

// --- Saving ----------------------------------------------------------------------------------------------------------

namespace {

class SavingProgress : public Progress {
protected:
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.Path()))
            names.push_back(entry.path().filename());
        return names;
    }

    bool Save(std::string_view name, const Texture& texture) {
        return handler.SaveTexture(Wide(folder / name), texture.desc, texture.bytes.data());
    }

    /// That a save is heard of from its beginning to its end, makes the same file, and leaves nothing where it is stopped.
    void ExpectWatched(const std::string& name, const Texture& texture) {
        SCOPED_TRACE(name);
        constexpr int kTries = 5;  // some files hold the second that they were written in
        std::vector<unsigned char> plain, watched;
        Watcher whole;
        for (int i = 0; i < kTries && (plain != watched || plain.empty()); ++i) {
            ASSERT_TRUE(Save(name, texture));
            plain = ReadAll(folder / name);
            std::filesystem::remove(folder / name);
            whole = Watcher();
            const ProgressScope scope(whole);
            ASSERT_TRUE(Save(name, texture));
            watched = ReadAll(folder / name);
        }
        EXPECT_TRUE(plain == watched);
        EXPECT_TRUE(whole.Heard(kProgressSaving));
        EXPECT_TRUE(whole.Rises());
        EXPECT_TRUE(whole.Ends());
        EXPECT_TRUE(whole.isOwnThread);
        for (const std::size_t stop : {std::size_t{1}, Watcher::kEnd}) {
            folder.Write(name, "old");
            ExpectStopped(name, texture, stop);
            EXPECT_EQ(Names(), std::vector{name});
            EXPECT_EQ(ReadAll(folder / name).size(), 3U);  // the old one
            std::filesystem::remove(folder / name);
            ExpectStopped(name, texture, stop);
            EXPECT_TRUE(Names().empty());
        }
    }

private:
    void ExpectStopped(const std::string& name, const Texture& texture, std::size_t stop) {
        Watcher watcher(stop);
        const ProgressScope scope(watcher);
        EXPECT_FALSE(Save(name, texture));
        EXPECT_EQ(ReasonNow().kind, kFailureCancelled);
        EXPECT_TRUE(watcher.Stopped());
    }
};

/// Counts the lines that are asked for.
class CountedLines final : public IWriteImageLineProvider {
public:
    void FillLine(void*) override { ++asked; }
    int asked = 0;
};

}  // namespace

TEST_F(SavingProgress, FilesOfTheLibraryAreWatchedAndStopped) {
    const Texture texture = Noise(600, kR8G8B8A8);
    for (const char* const name : {"a.png", "a.tif", "a.jpg", "a.bmp", "a.tga", "a.sgi"})
        ExpectWatched(name, texture);
    for (const char* const name : {"a.webp", "a.gif", "a.jp2"})
        ExpectWatched(name, Noise(100, kR8G8B8A8));
    ExpectWatched("a.exr", Noise(300, kR16G16B16A16F));
}

TEST_F(SavingProgress, TexturesAreWatchedAndStopped) {
    ExpectWatched("a.dds", Noise(600, kR8G8B8A8));
}

TEST_F(SavingProgress, TilesAndSeveralPicturesAreWatchedAndStopped) {
    const Texture texture = Noise(300, kR8G8B8A8);
    SavePreferences preferences;
    preferences.tileSize = 64;
    {
        const SavePreferencesScope scope(preferences);
        ExpectWatched("a.tif", texture);
    }
    SavePreferences several;
    const SaveFrame more[] = {{&texture.desc, texture.bytes.data()}, {&texture.desc, texture.bytes.data()}};
    several.moreFrames = more;
    several.moreFrameCount = 2;
    const SavePreferencesScope scope(several);
    ExpectWatched("a.tif", texture);
}

TEST_F(SavingProgress, ARowOfEveryBandIsWrittenWhateverTheHeight) {
    for (const int height : {1, 31, 33, 65}) {
        Texture texture(40, height, kR8G8B8A8);
        ExpectWatched("a.tif", texture);
        ExpectWatched("a.png", texture);
    }
}

TEST_F(SavingProgress, LinesAreWatchedAndStopped) {
    constexpr int kWidth = 64, kHeight = 2000;
    const auto write = [&](CountedLines& lines) {
        return handler.writeImageOneLineAtATime(Wide(folder / "a.png"), 72, &lines, kWidth, kHeight, 4);
    };
    Watcher whole;
    {
        const ProgressScope scope(whole);
        CountedLines lines;
        EXPECT_TRUE(write(lines));
        EXPECT_EQ(lines.asked, kHeight);
    }
    EXPECT_TRUE(whole.Rises());
    EXPECT_TRUE(whole.Ends());
    std::filesystem::remove(folder / "a.png");
    Watcher watcher(1);
    const ProgressScope scope(watcher);
    CountedLines lines;
    EXPECT_FALSE(write(lines));
    EXPECT_EQ(ReasonNow().kind, kFailureCancelled);
    EXPECT_LT(lines.asked, kHeight);
    EXPECT_TRUE(Names().empty());
}
