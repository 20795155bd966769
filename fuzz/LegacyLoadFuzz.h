/// One fuzz input as a file of a legacy type, loaded as the handler loads it.
#pragma once

#include "FuzzFile.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageReaderInterface.h"
#include "readers/LegacyLoad.h"
#include "readers/RowsInParts.h"

#include <kavra/objects/IMessageSink.h>
#include <kavra/objects/ObjModel.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace Kavra::Fuzz {

/// Damaged files warn by the thousand: the messages are counted here, not printed.
class SilentSink final : public Objects::IMessageSink {
public:
    void Message(Objects::EMessageKind, const wchar_t*, const wchar_t*) override { ++mCount; }

    static void Install() {
        static SilentSink sink;
        Objects::ObjModel::SetMessageSink(&sink);
    }

private:
    std::uint64_t mCount = 0;
};

/// Has readers look for what the other reading would show, and tells nobody.
class SilentObserver final : public Devices::ILegacyObserver {
public:
    void ReadingsDiffer(const char* how) noexcept override {
        if (how == nullptr || *how == '\0') std::abort();
    }
};

struct LegacyLoaded {
    Common::PixelBlock block;
    Devices::ImageDescription desc;
};

/// Nothing for images whose size would spend the fuzzer's time on clearing memory: their limit has tests of its own.
inline LegacyLoaded LoadLegacy(const Objects::KString& path, int fileType, const Devices::LoadRequest& request) {
    constexpr std::int64_t kMaxBytes = 1 << 20;
    LegacyLoaded loaded;
    const std::unique_ptr<Devices::ImageReaderInterface> reader(
        Devices::CreateImageReader(fileType, request.preferences.legacy));
    if (!reader) std::abort();
    const bool isOpen = reader->Open(path) && reader->SelectFrame(request.level);
    if (isOpen && std::int64_t{reader->GetHeight()} * reader->GetRowPitch() > kMaxBytes) return loaded;
    loaded.block = Devices::LoadThroughReader(*reader, loaded.desc, path, request).value_or(nullptr);
    return loaded;
}

/// Loads twice and ends the process when the two differ: a byte that nobody wrote would.
inline LegacyLoaded LoadLegacyTwice(const Objects::KString& path, int fileType, const Devices::LoadRequest& request) {
    LegacyLoaded first = LoadLegacy(path, fileType, request);
    const LegacyLoaded second = LoadLegacy(path, fileType, request);
    if (static_cast<bool>(first.block) != static_cast<bool>(second.block)) std::abort();
    if (!first.block) return first;
    if (first.desc.dataSize != second.desc.dataSize) std::abort();
    if (std::memcmp(first.block.get(), second.block.get(), first.desc.dataSize) != 0) std::abort();
    return first;
}

/// Loads the frame as its reader gives it, and ends the process when it is another one where its rows are handed out
/// one by one, each in memory of its own. Whether it loads.
inline bool CheckRows(const Objects::KString& path, int fileType, int frame,
                      const Devices::LoadPreferences& preferences) {
    const std::unique_ptr<Devices::ImageReaderInterface> reader(
        Devices::CreateImageReader(fileType, preferences.legacy));
    if (!reader->Open(path) || !reader->SelectFrame(frame)) return false;
    const LegacyLoaded whole = LoadLegacyTwice(
        path, fileType, {.level = frame, .orientation = reader->GetOrientation(), .preferences = preferences});
    if (!whole.block) return false;
    Tests::RowsInParts rows(static_cast<std::size_t>(whole.desc.height), static_cast<std::size_t>(whole.desc.rowPitch),
                            {1});
    if (!reader->ReadFrame(rows, frame)) std::abort();
    const std::vector<unsigned char> bytes = rows.Take();
    if (bytes.size() != whole.desc.dataSize) std::abort();
    if (std::memcmp(bytes.data(), whole.block.get(), bytes.size()) != 0) std::abort();
    return true;
}

/// Loads the frame in both readings as it is, and smaller and rotated, sampled and filtered.
inline void CheckLegacyLoad(const Objects::KString& path, int fileType, int frame) {
    SilentSink::Install();
    SilentObserver observer;
    for (const auto reading : {Devices::kLegacyContract, Devices::kLegacyCommon}) {
        Devices::LoadPreferences preferences;
        preferences.legacy = reading;
        preferences.legacyObserver = &observer;
        if (!CheckRows(path, fileType, frame, preferences)) continue;
        (void)LoadLegacyTwice(
            path, fileType,
            {.width = 7, .height = 5, .level = frame, .orientation = Devices::kLeftTop, .preferences = preferences});
        (void)LoadLegacyTwice(path, fileType,
                              {.height = 3, .highQuality = true, .level = frame, .preferences = preferences});
    }
}

/// The input as a file with the extension (with its dot). The last byte also says which frame.
inline void CheckLegacyFile(const unsigned char* data, std::size_t size, std::string_view extension, int fileType) {
    const FuzzFile file({data, size}, extension);
    CheckLegacyLoad(file.Name(), fileType, size == 0 ? 0 : data[size - 1] % 8);
}

}  // namespace Kavra::Fuzz
