#include "load/OpenInput.h"

#include "common/FileHandle.h"
#include "common/MemoryPicture.h"
#include "common/PathReasons.h"
#include "common/RegularFile.h"
#include "common/Utf8.h"
#include "load/CutFiles.h"
#include "load/FileSignatures.h"
#include "load/LibraryErrors.h"

#include <kavra/objects/OS.h>

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <map>
#include <new>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace Kavra::Devices {

namespace {

using Input = std::unique_ptr<OIIO::ImageInput>;
using Bytes = std::span<const unsigned char>;

constexpr std::size_t kStartBytes = 1024;
static_assert(kStartBytes >= kSignatureBytes);

// JPEG 2000 (ISO/IEC 15444-1, annexes A and I) with the high-throughput coder (15444-15).
constexpr std::array<unsigned char, 2> kHighThroughput = {0xFF, 0x50};
constexpr std::array<unsigned char, 2> kTileStart = {0xFF, 0x90};
constexpr std::array<unsigned char, 2> kCodestreamEnd = {0xFF, 0xD9};

bool IsHighThroughputJpeg2000(Bytes start) {
    if (!MayBeOfFormat("jpeg2000", start)) return false;
    const auto header = std::span(start.begin(), std::ranges::search(start, kTileStart).begin());
    return !std::ranges::search(header, kHighThroughput).empty();
}

/// Whether the file is one over which the library's decoder would end the process: it runs past the end of a
/// high-throughput JPEG 2000 file that was cut short.
bool WouldCrashTheLibrary(Common::ByteSource& file, Bytes start) {
    if (!IsHighThroughputJpeg2000(start)) return false;
    return file.BytesAt<kCodestreamEnd.size()>(file.Size() - kCodestreamEnd.size()) != kCodestreamEnd;
}

/// The names of the library's readers by extension and by name, in the order of these words: the order in which the
/// library tries them.
using Readers = std::map<std::string, std::string, std::less<>>;

/// The library's list is "name:extension,extension;name:extension".
Readers ListReaders() {
    Readers readers;
    const std::string list(OIIO::get_string_attribute("extension_list"));
    for (const auto& entry : OIIO::Strutil::splitsv(list, ";")) {
        const auto parts = OIIO::Strutil::splitsv(entry, ":");
        if (parts.empty()) continue;
        const std::string name(parts[0]);
        readers.emplace(name, name);
        for (const auto& word : OIIO::Strutil::splitsv(parts.size() > 1 ? parts[1] : "", ","))
            readers.emplace(OIIO::Strutil::lower(word), name);
    }
    return readers;
}

const Readers& AllReaders() {
    static const Readers readers = ListReaders();
    return readers;
}

/// What the library does not read of those files the host's reader does, and says so.
bool IsDds(Bytes start) {
    return !start.empty() && MayBeOfFormat("dds", start);
}

/// The bytes of a picture, which hears where they are not enough: not every reader says so.
class PictureReader final : public OIIO::Filesystem::IOMemReader {
public:
    explicit PictureReader(Common::MemoryPicture& picture)
        : IOMemReader(picture.Bytes().data(), picture.Bytes().size()), mPicture(picture) {}

    std::size_t read(void* out, std::size_t bytes) override { return Noted(bytes, IOMemReader::read(out, bytes)); }
    std::size_t pread(void* out, std::size_t bytes, std::int64_t offset) override {
        return Noted(bytes, IOMemReader::pread(out, bytes, offset));
    }

private:
    std::size_t Noted(std::size_t wanted, std::size_t got) {
        if (got < wanted) mPicture.NoteReadPastEnd();
        return got;
    }

    Common::MemoryPicture& mPicture;
};

/// One file, and the library's readers that may be asked about it.
class Candidate {
public:
    Candidate(const KString& path, Common::ByteSource& file, Bytes start)
        : mFile(file), mName(Common::ToUtf8(path.ToChars())), mStart(start) {
        mConfig.attribute("oiio:UnassociatedAlpha", 1);
    }

    Input Open() const {
        const auto own = AllReaders().find(OIIO::Strutil::lower(OIIO::Filesystem::extension(mName, false)));
        std::set<std::string_view> tried;
        if (own != AllReaders().end()) {
            tried.insert(own->second);
            if (Input input = Create(own->second)) {
                const bool isItsOwn = Accepts(*input);
                if (Opens(*input)) return input;
                if (isItsOwn) return Refuse(*input);  // damaged: nothing for the others to guess at
                if (HasMark(own->second)) (void)Refuse(*input);
                (void)TakeErrors(*input);
                (void)SayIfCut(mFile, own->second);
            }
        }
        if (OIIO::get_int_attribute("try_all_readers", 1) == 0) return nullptr;
        for (const auto& [word, reader] : AllReaders()) {
            if (!tried.insert(reader).second) continue;
            Input input = Create(reader);
            if (!input || !Accepts(*input)) continue;
            if (Opens(*input)) return input;
            (void)Refuse(*input);
        }
        return nullptr;
    }

private:
    /// Null where the file's first bytes rule the reader out.
    Input Create(const std::string& reader) const {
        return MayBeOfFormat(reader, mStart) ? OIIO::ImageInput::create(reader) : nullptr;
    }

    bool Opens(OIIO::ImageInput& input) const {
        OIIO::ImageSpec spec;
        return mPicture != nullptr ? OpensPicture(input) : input.open(mName, spec, mConfig);
    }

    /// Whether all files of a reader begin in a way of their own, and this one does.
    bool HasMark(const std::string& reader) const {
        return MayBeOfFormat(reader, mStart) && !MayBeOfFormat(reader, {});
    }

    /// Says why the reader whose file it is does not open it.
    Input Refuse(const OIIO::ImageInput& input) const {
        const std::string errors = TakeErrors(input);
        if (IsDds(mStart) || SayIfCut(mFile, input.format_name())) return nullptr;
        if (SpeaksOfTheEnd(errors)) {
            Common::Say({Common::Failure::kTruncated, static_cast<std::int64_t>(mFile.Size())});
        } else {
            SayLibraryError(errors, mName, kFailureDamaged);
        }
        return nullptr;
    }

    static bool TakesMemory(const OIIO::ImageInput& input) { return input.supports("ioproxy") != 0; }

    OIIO::Filesystem::IOProxy* NewReader() const { return mPicture->Keep(std::make_unique<PictureReader>(*mPicture)); }

    bool Accepts(const OIIO::ImageInput& input) const {
        if (mPicture == nullptr) return input.valid_file(mName);
        return TakesMemory(input) ? input.valid_file(NewReader()) : input.valid_file(mPicture->SystemPath());
    }

    /// Some readers take what they are to read from as an attribute alone.
    bool OpensPicture(OIIO::ImageInput& input) const {
        OIIO::ImageSpec spec, config = mConfig;
        if (!TakesMemory(input)) return input.open(mPicture->SystemPath(), spec, config);
        void* reader = NewReader();
        config.attribute("oiio:ioproxy", OIIO::TypePointer, static_cast<const void*>(&reader));
        return input.open(mName, spec, config);
    }

    Common::ByteSource& mFile;
    std::string mName;  // its bytes: the library's own shortening of a wide name would lose those that are not UTF-8
    Bytes mStart;
    OIIO::ImageSpec mConfig;
    Common::MemoryPicture* mPicture = Common::MemoryPicture::Current();  // null: the file is one
};

/// Whether there is something to be read by this path.
bool IsReadableByName(const KString& path) {
    const Common::MemoryPicture* const picture = Common::MemoryPicture::Current();
    return picture != nullptr ? picture->IsNamed(path.ToChars()) : Common::IsRegularFile(path.ToChars());
}

}  // namespace

std::optional<Common::ByteSource> OpenFile(const KString& path) {
    std::FILE* opened = nullptr;
    const Common::MemoryPicture* const picture = Common::MemoryPicture::Current();
    const bool isThere = IsReadableByName(path);
    if (isThere && picture != nullptr) return Common::ByteSource(picture->Bytes());
    if (isThere && OS::wfopen(&opened, path.ToChars(), L"rb") == ENOMEM) throw std::bad_alloc();
    Common::Result<Common::ByteSource> file = Common::ByteSource::Over(Common::FileHandle(opened));
    if (file) return *std::move(file);
    Common::SayOfPathToRead(path.ToChars());
    return std::nullopt;
}

Input OpenInput(const KString& path) {
    std::optional<Common::ByteSource> file = OpenFile(path);
    return file ? OpenInput(path, *file) : nullptr;
}

Input OpenInput(const KString& path, Common::ByteSource& file) {
    const bool isThere = IsReadableByName(path);
    if (!isThere || file.Size() == 0) Common::SayOfPathToRead(path.ToChars());
    if (!isThere || !file.Seek(0)) return nullptr;
    std::array<unsigned char, kStartBytes> bytes{};
    const Bytes start = std::span(bytes).first(file.ReadSome(bytes));
    if (WouldCrashTheLibrary(file, start)) {
        Common::Say({Common::Failure::kTruncated, static_cast<std::int64_t>(file.Size())});
        return nullptr;
    }
    Input input = Candidate(path, file, start).Open();
    if (input) return input;
    // The library keeps every thread's unread errors, and aborts when they pass 16 MB.
    (void)OIIO::geterror();
    if (!IsDds(start)) SayOfUnknownFile(start);
    return nullptr;
}

}  // namespace Kavra::Devices
