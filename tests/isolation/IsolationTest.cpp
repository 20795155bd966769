// Files that a confined process decodes: the same answers, and nothing of what a decoder may be brought to do.

#include "isolation/PathOnlyFiles.h"
#include "isolation/PictureAnswers.h"
#include "support/Sanitized.h"
#include "support/Watching.h"

#include <kavra/devices/DecoderProcess.h>
#include <kavra/devices/IImageFormatHandler.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/objects/OS.h>

#include <OpenImageIO/imageio.h>

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace {

class Isolation : public testing::Test {
protected:
    explicit Isolation(const char* module = KAVRA_MODULE) { SetDecoder(nullptr, module); }
    ~Isolation() override { SetDecoder(nullptr, nullptr); }

    static LoadPreferences Isolated() {
        LoadPreferences preferences;
        preferences.isolated = true;
        return preferences;
    }

    void Compare(const std::filesystem::path& path, const LoadRequest& request = {}) {
        const Answers plain = AnswersOfFile(handler, path, request);
        const LoadPreferencesScope scope(Isolated());
        const Answers isolated = AnswersOfFile(handler, path, request);
        ExpectSame(isolated, plain, path);
        loaded += isolated.loaded.empty() ? 0 : 1;
    }

    OIIOImageHandler handler;
    int loaded = 0;
};

/// With a module that does what a hostile file may bring a decoder to do.
class HostileDecoder : public Isolation {
protected:
    HostileDecoder() : Isolation(KAVRA_FAULTY_MODULE) {}

    /// Loads a file whose name says what is to happen.
    Answers Provoke(const std::string& what, LoadPreferences preferences = Isolated()) {
        const std::filesystem::path path = folder / ("x." + what);
        std::ofstream(path) << "bytes";
        const LoadPreferencesScope scope(preferences);
        const MessageRecorder recorder;
        Answers answers;
        ClearLastFailure();
        ImageDescription desc;
        answers.Take(Owned<IMemoryWrapper<void>>(
                         handler.LoadTexture(desc, Wide(path), 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr)),
                     desc);
        answers.messages = recorder.Entries();
        return answers;
    }

    /// One failure, told in the words of every other, and a decoder that decodes the next file.
    void ExpectContained(const Answers& answers, EFailureKind kind) {
        EXPECT_TRUE(answers.block.empty());
        EXPECT_EQ(answers.failure, kind) << answers.reason;
        ASSERT_EQ(answers.messages.size(), 1U);
        EXPECT_EQ(answers.messages[0].text, L"format is not supported");
        Compare(Sample("grey.png"));
        EXPECT_GT(loaded, 0);
    }

    std::vector<std::int32_t> ErrorsOf(const std::string& what) {
        const Answers answers = Provoke(what);
        std::vector<std::int32_t> errors(answers.block.size() / sizeof(std::int32_t));
        if (!errors.empty()) std::memcpy(errors.data(), answers.block.data(), answers.block.size());
        return errors;
    }

    TemporaryFolder folder;
};

/// The parent of a process; 0 where there is no such process, or it is dead and not buried.
pid_t ParentOf(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    std::istringstream rest(line.substr(std::min(line.rfind(')') + 1, line.size())));
    char state = 'X';
    pid_t parent = 0;
    rest >> state >> parent;
    return state == 'X' || state == 'Z' ? 0 : parent;
}

/// The children of this process's children: of its decoder.
std::vector<pid_t> Grandchildren() {
    std::vector<pid_t> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const pid_t process = std::atoi(entry.path().filename().c_str());
        if (process > 0 && ParentOf(ParentOf(process)) == getpid()) found.push_back(process);
    }
    return found;
}

bool EndsSoon(pid_t process) {
    constexpr int kTries = 200;
    for (int i = 0; i < kTries && ParentOf(process) != 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return ParentOf(process) == 0;
}

/// Says no at the third question, and remembers who was decoding then.
class Stopper final : public IProgress {
public:
    bool Progress(EProgressStage, float) override {
        if (++calls < 3) return true;
        decoding = Grandchildren();
        return false;
    }
    int calls = 0;
    std::vector<pid_t> decoding;
};

/// Takes what it is offered first.
class Chooser final : public IImageFormatHandler {
public:
    void Delete() override {}
    EFormat ChooseFormat(EFormat fileFormat, int usage) override {
        offered = fileFormat;
        usageSaid = usage;
        return kB8G8R8A8;
    }
    EFormat offered = kUnknown;
    int usageSaid = -1;
};

}  // namespace

TEST_F(Isolation, EverySampleIsAnsweredAsWithoutIt) {
    for (const auto& path : AllSamples()) {
        const bool namesAnotherFile = path.filename() == "engraving-directory.rlc";
        if (!namesAnotherFile) Compare(path);
    }
    for (const char* const folder : {"bands", "common", "textures"}) {
        for (const auto& entry : std::filesystem::directory_iterator(Sample(folder)))
            Compare(entry.path());
    }
    EXPECT_GT(loaded, 50);
}

TEST_F(Isolation, EveryHostileFileIsAnsweredAsWithoutIt) {
    for (const auto& path : HostileFiles())
        Compare(path);
}

TEST_F(Isolation, PathsWithoutAFileAreAnsweredAsWithoutIt) {
    const TemporaryFolder folder;
    for (const char* const name : {"missing.png", "missing.dds", "missing", "."})
        Compare(folder / name);
    EXPECT_EQ(loaded, 0);
}

TEST_F(Isolation, ReadersThatTakePathsAloneGetThisFileAndNoOther) {
    const TemporaryFolder folder;
    const std::vector<NamedFile> files = PathOnlyFiles();
    for (const auto& [name, bytes] : files)
        Compare(folder.Write(name, bytes));
    EXPECT_EQ(loaded, static_cast<int>(files.size()));
}

TEST_F(Isolation, DepthsOfAReaderThatTakesPathsAloneAreThere) {
    const TemporaryFolder folder;
    const std::string path = folder / "x.zfile";
    const std::vector<float> depths{1, 2, 3, 4};
    const auto writer = OIIO::ImageOutput::create(path);
    ASSERT_TRUE(writer && writer->open(path, OIIO::ImageSpec(2, 2, 1, OIIO::TypeFloat)));
    ASSERT_TRUE(writer->write_image(OIIO::TypeFloat, depths.data()) && writer->close());
    LoadPreferences preferences = Isolated();
    preferences.channels = "z";
    const LoadPreferencesScope scope(preferences);
    ImageDescription desc;
    const Owned<IMemoryWrapper<void>> block(
        handler.LoadTexture(desc, Wide(path), 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr));
    ASSERT_TRUE(block) << LastFailure().text;
    ASSERT_EQ(desc.format, kR32G32B32A32F);
    const auto* const pixels = static_cast<const float*>(block->mData);
    for (std::size_t i = 0; i < depths.size(); ++i)
        EXPECT_EQ(pixels[4 * i], depths[i]) << i;
}

TEST_F(Isolation, MoviesAreKnownByTheirExtension) {
    const TemporaryFolder folder;
    Compare(folder.Write("x.avi", Movie()));
    EXPECT_EQ(loaded, 1);
    Compare(folder.Write("x.extension-that-is-longer-than-any", Movie()));
    Compare(folder.Write("x", Movie()));
    EXPECT_EQ(loaded, 1);
}

TEST_F(Isolation, WhatIsInMemoryIsReadByAPathWhereAReaderTakesNothingElse) {
    const TemporaryFolder folder;
    const std::string bytes = Fits("\1\2\3\4");
    const std::filesystem::path path = folder.Write("x.fits", bytes);
    const Answers file = AnswersOfFile(handler, path, {});
    const LoadPreferencesScope scope(Isolated());
    ImageDescription desc;
    Answers memory;
    memory.Take(Owned<IMemoryWrapper<void>>(handler.LoadMemory(desc, {bytes.data(), bytes.size(), L"x.fits"}, 0, 0, 1,
                                                               kUnknown, false, 0, kTopLeft, nullptr)),
                desc);
    EXPECT_EQ(memory.block, file.block);
}

TEST_F(Isolation, SmallerAndTurnedPicturesAreTheSame) {
    for (const char* const name : {"photo.jpg", "cube-mips.dds", "rgba.exr", "photo.pict", "pages.tif"})
        Compare(Sample(name), {.width = 30, .height = 20, .format = kR8G8B8A8, .orientation = kRightTop});
    EXPECT_EQ(loaded, 5);
}

TEST_F(Isolation, TheHostIsAskedForTheFormat) {
    Chooser chooser;
    const LoadPreferencesScope scope(Isolated());
    ImageDescription desc;
    const Owned<IMemoryWrapper<void>> block(
        handler.LoadTexture(desc, Wide(Sample("photo.jpg")), 0, 0, 1, kUnknown, false, 0, kTopLeft, &chooser));
    ASSERT_TRUE(block);
    EXPECT_EQ(desc.format, kB8G8R8A8);
    EXPECT_EQ(chooser.offered, kR8G8B8A8);
    EXPECT_EQ(chooser.usageSaid, kUsageTexture2D);
}

TEST_F(Isolation, BlocksAreTheHostsToWriteAndToFreeAsAllOthers) {
    const LoadPreferencesScope scope(Isolated());
    ImageDescription desc;
    Owned<IMemoryWrapper<void>> block(
        handler.LoadTexture(desc, Wide(Sample("photo.jpg")), 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr));
    ASSERT_TRUE(block);
    std::memset(block->mData, 7, desc.dataSize);
    void* const data = std::exchange(block->mData, nullptr);  // kept beyond the wrapper
    block.reset();
    EXPECT_EQ(static_cast<const unsigned char*>(data)[desc.dataSize - 1], 7);
    Kavra::Objects::KavraDelete(data);
}

TEST_F(Isolation, PicturesInMemoryAreTheSame) {
    const std::vector<unsigned char> bytes = ReadAll(Sample("photo.jpg"));
    const MemoryFile file{bytes.data(), bytes.size(), L"x.jpg"};
    ImageDescription plain, isolated;
    const Owned<IMemoryWrapper<void>> one(
        handler.LoadMemory(plain, file, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr));
    const LoadPreferencesScope scope(Isolated());
    const Owned<IMemoryWrapper<void>> other(
        handler.LoadMemory(isolated, file, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr));
    ASSERT_TRUE(one && other);
    EXPECT_EQ(TextOf(plain), TextOf(isolated));
    EXPECT_EQ(std::memcmp(one->mData, other->mData, plain.dataSize), 0);
}

TEST_F(Isolation, ManyThreadsAtOnceGetTheirOwnPictures) {
    const Answers photo = AnswersOfFile(handler, Sample("photo.jpg"), {});
    const Answers cube = AnswersOfFile(handler, Sample("cube-mips.dds"), {});
    const auto load = [&](const char* name) {
        const LoadPreferencesScope scope(Isolated());
        ImageDescription desc;
        Answers answers;
        answers.Take(Owned<IMemoryWrapper<void>>(
                         handler.LoadTexture(desc, Wide(Sample(name)), 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr)),
                     desc);
        return answers.block;
    };
    int wrong = 0;
    std::vector<std::jthread> threads;
    threads.reserve(8);
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 5; ++round) {
                const bool isSame =
                    (i + round) % 2 == 0 ? load("photo.jpg") == photo.block : load("cube-mips.dds") == cube.block;
                if (!isSame) __atomic_add_fetch(&wrong, 1, __ATOMIC_RELAXED);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(wrong, 0);
}

TEST_F(Isolation, ADecoderThatCannotBeStartedIsSaidSoAndNothingIsDecodedInItsPlace) {
    SetDecoder("/nowhere/kavra-decoder", nullptr);
    const LoadPreferencesScope scope(Isolated());
    const Answers answers = AnswersOfFile(handler, Sample("photo.jpg"), {});
    EXPECT_TRUE(answers.block.empty() && answers.desc.empty() && answers.inspection.empty());
    EXPECT_EQ(answers.failure, kFailureOther);
    EXPECT_NE(answers.reason.find("/nowhere/kavra-decoder"), std::string::npos) << answers.reason;
}

TEST_F(HostileDecoder, ThatAbortsIsItsFilesFailure) {
    const Answers answers = Provoke("abort");
    EXPECT_NE(answers.reason.find("SIGABRT"), std::string::npos) << answers.reason;
    ExpectContained(answers, kFailureDecoderDied);
}

TEST_F(HostileDecoder, ThatWritesWhereThereIsNothingIsItsFilesFailure) {
    if (kIsSanitized) GTEST_SKIP() << "sanitizers have answers of their own to this";
    const Answers answers = Provoke("overrun");
    EXPECT_NE(answers.reason.find("SIGSEGV"), std::string::npos) << answers.reason;
    ExpectContained(answers, kFailureDecoderDied);
}

TEST_F(HostileDecoder, ThatEndsWithoutAnAnswerIsItsFilesFailure) {
    ExpectContained(Provoke("exit"), kFailureDecoderDied);
}

TEST_F(HostileDecoder, ThatRunsForEverIsStoppedInTime) {
    LoadPreferences preferences = Isolated();
    preferences.timeoutSeconds = 1;
    for (const char* const what : {"loop", "sleep"}) {
        const Answers answers = Provoke(what, preferences);
        EXPECT_EQ(answers.reason, "decoding took longer than 1 s");
        ExpectContained(answers, kFailureTimedOut);
    }
}

TEST_F(HostileDecoder, ThatSwellsIsStoppedAtItsLimit) {
    if (kIsSanitized) GTEST_SKIP() << "sanitizers have answers of their own to this";
    LoadPreferences preferences = Isolated();
    preferences.maxDecoderBytes = std::uint64_t{256} << 20;
    const Answers answers = Provoke("swell", preferences);
    EXPECT_NE(answers.reason.find("268435456"), std::string::npos) << answers.reason;
    EXPECT_TRUE(answers.block.empty());
    EXPECT_EQ(answers.failure, kFailureTooLarge);
    Compare(Sample("grey.png"));
    EXPECT_EQ(loaded, 1);
}

TEST_F(HostileDecoder, ThatSaysMoreOfAFileThanAnyFileSaysIsNotBelieved) {
    const std::filesystem::path path = folder.Write("x.flood", "bytes");
    const LoadPreferencesScope scope(Isolated());
    EXPECT_EQ(handler.Inspect(Wide(path)), nullptr);
    EXPECT_EQ(LastFailure().kind, kFailureDecoderDied) << LastFailure().text;
}

TEST_F(HostileDecoder, ThatSpeaksNonsenseIsNotListenedTo) {
    ExpectContained(Provoke("nonsense"), kFailureDecoderDied);
}

TEST_F(HostileDecoder, ThatSaysMoreThanItHasIsNotBelieved) {
    ExpectContained(Provoke("lie"), kFailureDecoderDied);
}

TEST_F(HostileDecoder, HasNoFilesNoNetworkAndNoProcesses) {
    if (*DecoderGaps() != '\0') GTEST_SKIP() << DecoderGaps();
    for (const char* const from : {"calls", "thread"}) {
        const std::vector<std::int32_t> errors = ErrorsOf(from);
        ASSERT_EQ(errors.size(), 16U) << from;
        for (std::size_t i = 0; i < errors.size(); ++i)
            EXPECT_EQ(errors[i], EACCES) << from << ' ' << i;
    }
}

TEST_F(Isolation, ALoadIsWatchedFromItsBeginningToItsEnd) {
    const LoadPreferencesScope isolated(Isolated());
    Watcher watcher;
    {
        const ProgressScope scope(watcher);
        EXPECT_FALSE(AnswersOfFile(handler, Sample("photo.jpg"), {}).block.empty());
    }
    EXPECT_TRUE(watcher.Heard(kProgressReading));
    EXPECT_TRUE(watcher.Rises());
    EXPECT_TRUE(watcher.Ends());
}

TEST_F(HostileDecoder, IsStoppedWhereWhoeverWatchesSaysSoAndItsProcessIsEnded) {
    for (const char* const what : {"loop", "sleep"}) {
        Stopper stopper;
        {
            const ProgressScope scope(stopper);
            const Answers answers = Provoke(what);
            EXPECT_TRUE(answers.block.empty());
            EXPECT_EQ(LastFailure().kind, kFailureCancelled) << LastFailure().text;
            EXPECT_TRUE(answers.messages.empty());
        }
        EXPECT_EQ(stopper.calls, 3);
        const auto ended = std::ranges::count_if(stopper.decoding, EndsSoon);  // the other waits for the next file
        EXPECT_GE(ended, 1) << what;
        EXPECT_GE(ended + 1, std::ssize(stopper.decoding)) << what;
        Compare(Sample("grey.png"));  // by a decoder that goes on
    }
    EXPECT_EQ(loaded, 2);
}
