// A picture in memory and the same in a file that stands alone: the same block, descriptions and messages.

#include "isolation/PathOnlyFiles.h"
#include "isolation/PictureAnswers.h"

#include <kavra/devices/IMemoryLoader.h>
#include <kavra/objects/OS.h>

using namespace Kavra::Devices;
using namespace Kavra::Tests;
using Kavra::OS::FromUtf8;

namespace {

Answers AnswersOfMemory(IMemoryLoader& loader, const std::vector<unsigned char>& bytes, const std::wstring& name,
                        const LoadRequest& request) {
    Answers answers;
    const MessageRecorder recorder;
    const MemoryFile file{bytes.data(), bytes.size(), name.c_str()};
    answers.Take(Owned<ImageDesc>(loader.GetMemoryDesc(file)), Owned<IFileInspection>(loader.InspectMemory(file)));
    ImageDescription desc;
    answers.Take(Owned<IMemoryWrapper<void>>(loader.LoadMemory(desc, file, request.width, request.height, 1,
                                                               request.format, request.highQuality, request.level,
                                                               request.orientation, nullptr)),
                 desc);
    answers.messages = recorder.Entries();
    return answers;
}

class MemoryPictures : public testing::Test {
protected:
    /// Compares both ways of a file that is copied to a folder where it stands alone.
    void Compare(const std::filesystem::path& original, const LoadRequest& request = {}) {
        const std::filesystem::path alone = folder / original.filename().string();
        std::filesystem::copy_file(original, alone, std::filesystem::copy_options::overwrite_existing);
        const Answers file = AnswersOfFile(handler, alone, request);
        const Answers memory = AnswersOfMemory(handler, ReadAll(original), FromUtf8(alone.filename().c_str()), request);
        ExpectSame(memory, file, original);
        loaded += file.loaded.empty() ? 0 : 1;
        std::filesystem::remove(alone);
    }

    TemporaryFolder folder;
    OIIOImageHandler handler;
    int loaded = 0;
};

}  // namespace

TEST_F(MemoryPictures, EverySampleIsTheSameAsItsFile) {
    for (const auto& path : AllSamples())
        Compare(path);
    EXPECT_GT(loaded, 30);
}

TEST_F(MemoryPictures, EverySampleIsTheSameAsItsFileSmallerTurnedAndFast) {
    LoadPreferences preferences;
    preferences.fast = true;
    const LoadPreferencesScope scope(preferences);
    for (const auto& path : AllSamples())
        Compare(path, {.width = 20, .height = 15, .format = kR8G8B8A8, .orientation = kBottomRight});
    EXPECT_GT(loaded, 20);
}

TEST_F(MemoryPictures, EveryHostileFileIsTheSameInMemory) {
    for (const auto& path : HostileFiles())
        Compare(path);
}

TEST_F(MemoryPictures, FilesWhoseNameSaysNothingAreKnownByTheirBytes) {
    const TemporaryFolder other;
    for (const char* const sample : {"photo.jpg", "photo.dds", "float.dds", "palette.pcx", "rgba.exr", "drawing.cal"}) {
        const std::filesystem::path nameless = other / "picture";
        std::filesystem::copy_file(Sample(sample), nameless, std::filesystem::copy_options::overwrite_existing);
        Compare(nameless);
    }
    EXPECT_EQ(loaded, 6);
}

TEST_F(MemoryPictures, OfAKindWhoseReaderTakesOnlyPathsAreReadAllTheSame) {
    const TemporaryFolder other;
    const std::vector<NamedFile> files = PathOnlyFiles();
    for (const auto& [name, bytes] : files)
        Compare(other.Write(name, bytes));
    EXPECT_EQ(loaded, static_cast<int>(files.size()));
}

TEST_F(MemoryPictures, AreReadByTheirPathWhereAReaderTakesNothingElse) {
    const std::filesystem::path path = folder.Write("other.fits", Fits("\5\6\7\10"));
    const std::string bytes = Fits("\1\2\3\4");
    MemoryFile file{bytes.data(), bytes.size(), L"x.fits"};
    file.systemPath = path.c_str();
    ImageDescription desc;
    Answers memory;
    memory.Take(
        Owned<IMemoryWrapper<void>>(handler.LoadMemory(desc, file, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr)),
        desc);
    EXPECT_FALSE(memory.block.empty());
    EXPECT_EQ(memory.block, AnswersOfFile(handler, path, {}).block);
}

TEST_F(MemoryPictures, HaveNoNeighboursOnTheDisk) {
    const std::filesystem::path raster = Sample("bands/photo.bil");  // its header stands beside it
    const Answers memory = AnswersOfMemory(handler, ReadAll(raster), FromUtf8(raster.c_str()), {});
    EXPECT_TRUE(AnswersOfFile(handler, raster, {}).desc != memory.desc);
    EXPECT_TRUE(memory.block.empty());
}

TEST_F(MemoryPictures, NeighboursInMemoryAreFoundByTheirNames) {
    const std::vector<unsigned char> header = ReadAll(Sample("bands/photo.hdr")),
                                     bands = ReadAll(Sample("bands/photo.bil"));
    const MemoryFile beside{header.data(), header.size(), L"x.hdr"};
    const MemoryFile file{bands.data(), bands.size(), L"x.bil", &beside, 1};
    const Answers onDisk = AnswersOfFile(handler, Sample("bands/photo.bil"), {});
    ImageDescription desc;
    Answers inMemory;
    inMemory.Take(
        Owned<IMemoryWrapper<void>>(handler.LoadMemory(desc, file, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr)),
        desc);
    EXPECT_FALSE(onDisk.block.empty());
    EXPECT_EQ(inMemory.block, onDisk.block);
    EXPECT_EQ(inMemory.loaded, onDisk.loaded);
}

TEST_F(MemoryPictures, NoBytesAreNoPictureAndAnswerAsAnEmptyFileDoes) {
    const TemporaryFolder other;
    for (const char* const name : {"empty.png", "empty.dds", "empty.exr", "empty"}) {
        Compare(other.Write(name, ""));
    }
    EXPECT_EQ(loaded, 0);
    ImageDescription desc;
    const MessageRecorder messages;
    EXPECT_EQ(handler.LoadMemory(desc, {}, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr), nullptr);
    EXPECT_EQ(handler.GetMemoryDesc({}), nullptr);
}

TEST_F(MemoryPictures, AfterAnOperationFilesAreFilesAgain) {
    const auto path = Sample("photo.jpg");
    (void)AnswersOfMemory(handler, ReadAll(path), L"x.png", {});
    EXPECT_TRUE(IsDescribed(handler, path));
}
