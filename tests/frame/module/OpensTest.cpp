// How often a load opens the files of a picture.

#include "frame/module/SampleFiles.h"

#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <map>
#include <string>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

/// Counts how often the files of a folder are opened, as the system tells it. It tells equal events in a row but once:
/// reading and closing are watched too, one of which comes between any two opens.
class Opens {
public:
    explicit Opens(const std::filesystem::path& folder) : mQueue(inotify_init1(IN_NONBLOCK)) {
        EXPECT_GE(inotify_add_watch(mQueue, folder.c_str(), IN_OPEN | IN_ACCESS | IN_CLOSE), 0);
    }
    ~Opens() { close(mQueue); }
    Opens(const Opens&) = delete;
    Opens& operator=(const Opens&) = delete;

    /// By name, since the last time.
    std::map<std::string, int> Take() const {
        std::map<std::string, int> counts;
        alignas(inotify_event) std::array<char, 4096> buffer;
        for (ssize_t size = 0; (size = read(mQueue, buffer.data(), buffer.size())) > 0;) {
            for (const char* at = buffer.data(); at < buffer.data() + size;) {
                const auto* event = reinterpret_cast<const inotify_event*>(at);
                if (event->len > 0 && (event->mask & IN_OPEN) != 0) ++counts[event->name];
                at += sizeof(inotify_event) + event->len;
            }
        }
        return counts;
    }

private:
    int mQueue;
};

using Counts = std::map<std::string, int>;

class OpensOfALoad : public testing::Test {
protected:
    /// A copy of a sample, which no other test opens.
    std::filesystem::path Copy(const std::filesystem::path& sample) {
        const auto from = std::filesystem::path(KAVRA_SOURCE_DIR) / "examples" / sample;
        std::filesystem::copy_file(from, folder / sample.filename().string());
        return folder / sample.filename().string();
    }

    Counts Load(const std::filesystem::path& path) {
        const Opens opens(folder.Path());
        ImageDescription desc;
        const OwnedBlock block(handler.LoadTexture(desc, Wide(path), 0, 0, 0, kUnknown, false, 0, kTopLeft, nullptr));
        EXPECT_NE(block, nullptr) << path;
        return opens.Take();
    }

    Counts Describe(const std::filesystem::path& path) {
        const Opens opens(folder.Path());
        const Owned<ImageDesc> desc(handler.GetImageDesc(Wide(path)));
        EXPECT_NE(desc, nullptr) << path;
        return opens.Take();
    }

    /// The image library alone: it looks whether the file is for its reader, and reads it.
    int LibraryOpens(const std::filesystem::path& path, const char* reader) {
        const Opens opens(folder.Path());
        const auto input = OIIO::ImageInput::create(reader);
        OIIO::ImageSpec spec;
        EXPECT_TRUE(input && input->valid_file(path.string()) && input->open(path.string(), spec)) << path;
        return opens.Take()[path.filename().string()];
    }

    TemporaryFolder folder;
    OIIOImageHandler handler;
};

TEST_F(OpensOfALoad, ALegacyPictureIsOpenedOnce) {
    for (const char* sample : {"drawing.cal", "balloon.flc", "photo.pcx", "photo.pict", "engraving.rlc"}) {
        const auto path = Copy(sample);
        EXPECT_EQ(Load(path), (Counts{{sample, 1}}));
        EXPECT_EQ(Describe(path), (Counts{{sample, 1}}));
    }
}

TEST_F(OpensOfALoad, ASpotRasterAndTheFilesBesideItAreOpenedOnceEach) {
    for (const char* name : {"relief.bil", "relief.hdr"})
        folder.Write(name, name == std::string("relief.hdr") ? "NCOLS 2\nNROWS 2\n" : "abcd");
    EXPECT_EQ(Load(folder / "relief.bil"), (Counts{{"relief.bil", 1}, {"relief.hdr", 1}}));
    EXPECT_EQ(Describe(folder / "relief.bil"), (Counts{{"relief.bil", 1}, {"relief.hdr", 1}}));

    folder.Write("relief.clr", "1 2 3 4\n");
    EXPECT_EQ(Load(folder / "relief.bil"), (Counts{{"relief.bil", 1}, {"relief.clr", 1}, {"relief.hdr", 1}}));

    folder.Write("relief.doc", "any other file of that name");
    EXPECT_EQ(Load(folder / "relief.doc"),
              (Counts{{"relief.bil", 1}, {"relief.clr", 1}, {"relief.doc", 1}, {"relief.hdr", 1}}));
}

TEST_F(OpensOfALoad, APictureOfTheLibraryIsOpenedOnceBesideTheLibrarysOwnOpens) {
    for (const auto& [sample, reader] : {std::pair("photo.jpg", "jpeg"), std::pair("grey.png", "png"),
                                         std::pair("float.tif", "tiff"), std::pair("rgba.exr", "openexr")}) {
        const auto path = Copy(sample);
        const int own = LibraryOpens(path, reader);
        EXPECT_EQ(Load(path), (Counts{{sample, own + 1}}));
    }
}

TEST_F(OpensOfALoad, ADdsIsOpenedOnceMoreByTheHostsReader) {
    for (const char* sample : {"photo.dds", "cube.dds"}) {
        const auto path = Copy(sample);
        const int own = LibraryOpens(path, "dds");
        EXPECT_EQ(Load(path), (Counts{{sample, own + 2}}));
    }
}

}  // namespace
