#include "load/OpenInput.h"

#include "common/FileHandle.h"
#include "common/RegularFile.h"
#include "common/Utf8.h"
#include "load/FileSignatures.h"

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

/// One file, and the library's readers that may be asked about it.
class Candidate {
public:
    Candidate(const KString& path, Bytes start) : mName(Common::ToUtf8(path.ToChars())), mStart(start) {
        mConfig.attribute("oiio:UnassociatedAlpha", 1);
    }

    Input Open() const {
        const auto own = AllReaders().find(OIIO::Strutil::lower(OIIO::Filesystem::extension(mName, false)));
        std::set<std::string_view> tried;
        if (own != AllReaders().end()) {
            tried.insert(own->second);
            if (Input input = Create(own->second)) {
                const bool isItsOwn = input->valid_file(mName);
                if (Opens(*input)) return input;
                if (isItsOwn) return nullptr;  // damaged: nothing for the others to guess at
            }
        }
        if (OIIO::get_int_attribute("try_all_readers", 1) == 0) return nullptr;
        for (const auto& [word, reader] : AllReaders()) {
            if (!tried.insert(reader).second) continue;
            Input input = Create(reader);
            if (input && input->valid_file(mName) && Opens(*input)) return input;
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
        if (input.open(mName, spec, mConfig)) return true;
        TakeErrors(input);
        return false;
    }

    std::string mName;  // its bytes: the library's own shortening of a wide name would lose those that are not UTF-8
    Bytes mStart;
    OIIO::ImageSpec mConfig;
};

}  // namespace

std::optional<Common::ByteSource> OpenFile(const KString& path) {
    std::FILE* opened = nullptr;
    if (!Common::IsRegularFile(path.ToChars())) return std::nullopt;
    if (OS::wfopen(&opened, path.ToChars(), L"rb") == ENOMEM) throw std::bad_alloc();
    Common::Result<Common::ByteSource> file = Common::ByteSource::Over(Common::FileHandle(opened));
    if (!file) return std::nullopt;
    return *std::move(file);
}

Input OpenInput(const KString& path) {
    std::optional<Common::ByteSource> file = OpenFile(path);
    return file ? OpenInput(path, *file) : nullptr;
}

Input OpenInput(const KString& path, Common::ByteSource& file) {
    if (!Common::IsRegularFile(path.ToChars()) || !file.Seek(0)) return nullptr;
    std::array<unsigned char, kStartBytes> bytes{};
    const Bytes start = std::span(bytes).first(file.ReadSome(bytes));
    if (WouldCrashTheLibrary(file, start)) return nullptr;
    Input input = Candidate(path, start).Open();
    // The library keeps every thread's unread errors, and aborts when they pass 16 MB.
    if (!input) (void)OIIO::geterror();
    return input;
}

void TakeErrors(const OIIO::ImageInput& input) {
    const std::string errors = OIIO::Strutil::lower(input.geterror());
    for (const std::string_view words : {"bad_alloc", "out of memory", "out_of_memory", "insufficient memory"}) {
        if (errors.find(words) != std::string::npos) throw std::bad_alloc();
    }
}

}  // namespace Kavra::Devices
