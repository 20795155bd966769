/// Everything that a handler answers of one file, to be compared with what it answers in another way.
#pragma once

#include "support/Loading.h"
#include "support/MessageRecorder.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <kavra/devices/IImageInspector.h>
#include <kavra/devices/LastFailure.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

using namespace Kavra::Devices;

struct Deleter {
    void operator()(auto* object) const { object->Delete(); }
};
template <class T>
using Owned = std::unique_ptr<T, Deleter>;

inline std::string TextOf(const ImageDesc& d) {
    std::ostringstream out;
    out << d.width << ' ' << d.height << ' ' << d.depth << ' ' << d.format << ' ' << d.textureType << ' '
        << d.frameCount << ' ' << d.orientation << ' ' << d.gamma;
    return out.str();
}

inline std::string TextOf(const ImageDescription& d) {
    std::ostringstream out;
    out << d.width << ' ' << d.height << ' ' << d.depth << ' ' << d.format << ' ' << d.rowPitch << ' ' << d.dataSize
        << ' ' << d.textureType << ' ' << d.hasTransparentPixels << d.hasTranslucentPixels << d.hasAlpha
        << d.defaultOrientation << ' ' << d.orientation << ' ' << d.gamma;
    return out.str();
}

inline std::string TextOf(const IFileInspection& file) {
    std::ostringstream out;
    out << file.FileType() << ' ' << file.PartCount();
    for (std::size_t i = 0; i < file.PartCount(); ++i) {
        const FilePart& part = file.Part(i);
        out << '\n'
            << part.levels[0].width << ' ' << part.levels[0].height << ' ' << part.levelCount << ' '
            << part.channelCount << ' ' << part.alpha << ' ' << part.compression << ' ' << part.iccBytes;
        for (std::size_t t = 0; t < part.textCount; ++t)
            out << ' ' << part.texts[t].name << '=' << part.texts[t].value;
    }
    return out.str();
}

/// All that operations say of a picture.
struct Answers {
    std::string desc, inspection, loaded;
    std::vector<unsigned char> block;
    std::vector<MessageRecorder::Entry> messages;
    EFailureKind failure = kFailureNone;
    std::string reason;

    void Take(Owned<ImageDesc> described, Owned<IFileInspection> inspected) {
        if (described) desc = TextOf(*described);
        if (inspected) inspection = TextOf(*inspected);
    }
    void Take(Owned<IMemoryWrapper<void>> pixels, const ImageDescription& description) {
        failure = LastFailure().kind;
        reason = LastFailure().text;
        if (!pixels) return;
        loaded = TextOf(description);
        const auto* const bytes = static_cast<const unsigned char*>(pixels->mData);
        const std::size_t faces = description.textureType == kTextureCube ? 6 : 1;
        block.assign(bytes, bytes + description.dataSize * faces);
    }
};

inline Answers AnswersOfFile(OIIOImageHandler& handler, const std::filesystem::path& path, const LoadRequest& request) {
    Answers answers;
    const MessageRecorder recorder;
    const KString name(Wide(path));
    answers.Take(Owned<ImageDesc>(handler.GetImageDesc(name)), Owned<IFileInspection>(handler.Inspect(name)));
    ImageDescription desc;
    answers.Take(Owned<IMemoryWrapper<void>>(handler.LoadTexture(desc, name, request.width, request.height, 1,
                                                                 request.format, request.highQuality, request.level,
                                                                 request.orientation, nullptr)),
                 desc);
    answers.messages = recorder.Entries();
    return answers;
}

inline std::vector<std::filesystem::path> HostileFiles() {
    std::vector<std::filesystem::path> files;
    const std::filesystem::path root = std::filesystem::path(KAVRA_SOURCE_DIR) / "tests/hostile/files";
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    return files;
}

/// Fails where two ways to one picture part.
inline void ExpectSame(const Answers& one, const Answers& other, const std::filesystem::path& path) {
    EXPECT_EQ(one.desc, other.desc) << path;
    EXPECT_EQ(one.inspection, other.inspection) << path;
    EXPECT_EQ(one.loaded, other.loaded) << path;
    EXPECT_TRUE(one.block == other.block) << path;
    EXPECT_TRUE(one.messages == other.messages) << path;
    // Of some damaged files in memory the image library says no more than that it cannot read them.
    EXPECT_EQ(one.failure == kFailureNone, other.failure == kFailureNone) << path << one.reason << other.reason;
}

}  // namespace Kavra::Tests
