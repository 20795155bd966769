#include "output/LibraryFile.h"

#include "common/Boundary.h"
#include "common/PathReasons.h"
#include "common/Utf8.h"
#include "output/LibraryWriters.h"

#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>

namespace Kavra::Devices {

namespace {

std::unique_ptr<OIIO::ImageOutput> FindWriter(const KString& path) {
    // Not by its wide name: the library ends the process when there is no memory to shorten that.
    auto writer = OIIO::ImageOutput::create(Common::ToUtf8(path));
    // The library keeps every thread's unread errors, and aborts when they pass 16 MB.
    if (!writer) (void)OIIO::geterror();
    return writer;
}

/// Rows that are packed together, or a part of them that can be handed on without harm.
int RowsTogether(const OIIO::ImageOutput& writer) {
    constexpr int kExrRows = 32, kTiffRows = 64;  // of all blocks but the highest; what the library takes for unsaid
    const std::string_view format = writer.format_name();
    if (format == "openexr") return kExrRows;
    return format == "tiff" ? writer.spec().get_int_attribute("tiff:RowsPerStrip", kTiffRows) : 1;
}

/// Whether a file may be written under this name: nothing is there yet, or a file. A pipe would be waited on for ever.
bool IsFileOrFree(const KString& path) {
    std::error_code error;
    const auto kind = std::filesystem::status(Common::ToUtf8(path), error).type();
    return kind == std::filesystem::file_type::not_found || kind == std::filesystem::file_type::regular;
}

}  // namespace

LibraryFile::LibraryFile(const KString& path) : mPath(path), mWriter(FindWriter(path)) {}

LibraryFile::~LibraryFile() {
    if (mIsOpen) Common::AtBoundary(false, [&] { return mWriter->close(); });
    if (mIsCancelled) Common::AtBoundary(false, [&] { return mPlace->Discard(), true; });
}

/// A unit beside the rows is left for the closing, in which some writers do most of their work.
void LibraryFile::Advance(int rows) {
    mIsCancelled = true;
    mMeter->Advance(static_cast<unsigned>(rows));
    mIsCancelled = false;
}

/// Whether the writer did it. One that has thrown is asked for nothing more than to close: what it left undone when
/// memory failed is not known.
template <class Action>
bool LibraryFile::Try(const Action& action) {
    if (mHasThrown) return false;
    mHasThrown = true;
    const bool done = Common::AtBoundary(false, [&] {
        const bool result = action();
        mHasThrown = false;
        return result;
    });
    if (!done && !mHasFailed) (void)Common::AtBoundary(false, [&] { return SayWhy(), true; });
    mHasFailed = mHasFailed || !done;
    return done;
}

bool LibraryFile::HasWriter() const {
    if (mWriter) return true;
    const std::string path = Common::ToUtf8(mPath.ToChars());
    const std::string extension = Common::OneLine(std::filesystem::path(path).extension().string());
    if (extension.empty()) {
        Common::Say(kFailureUnknownType, "the name has no extension that says what to write");
    } else {
        Common::Say(kFailureUnknownType, "no writer for files named .{}", extension);
    }
    return false;
}

/// What the system said of the file that is written, else the writer's words, else what is wrong with the path.
void LibraryFile::SayWhy() {
    const std::string words = mWriter->geterror();
    if (mWatched && mWatched->Error() != 0) return Common::SayOfPathToWrite(mPath.ToChars(), mWatched->Error());
    const std::string lower = OIIO::Strutil::lower(words);
    const auto speaksOf = [&](const char* word) { return lower.find(word) != std::string::npos; };
    const bool isFormat = speaksOf("support") || speaksOf("channels") || speaksOf("resolution");
    if (isFormat) Common::Say(kFailureFormat, std::string_view(Common::OneLine(words)));
    if (words.empty() || speaksOf("open") || speaksOf("create")) return Common::SayOfPathToWrite(mPath.ToChars(), 0);
    if (lower.starts_with("unknown error")) {
        const std::string extension = std::filesystem::path(Common::ToUtf8(mPath.ToChars())).extension().string();
        return Common::Say(kFailureCannotWrite,
                           "the writer of {} files gives no reason; its library may have no encoder",
                           Common::OneLine(extension));
    }
    if (!isFormat)
        Common::Say(kFailureCannotWrite, std::string_view(Common::OneLine(words, Common::ToUtf8(mPlace->Path()))));
}

bool LibraryFile::SetProxy() {
    if (!WritesThroughProxy(*mWriter, mPath)) return false;
    mWatched.emplace(mPlace->Path());
    if (!WantsStream(*mWriter)) return mWriter->set_ioproxy(&*mWatched);
    return mWriter->set_ioproxy(&mStream.emplace(*mWatched));
}

bool LibraryFile::WantsFloatsForHalves() const {
    return Devices::WantsFloatsForHalves(*mWriter);
}

bool LibraryFile::Open(std::span<const OIIO::ImageSpec> specs) {
    const auto isMishandled = [&](const OIIO::ImageSpec& spec) { return Mishandles(*mWriter, spec, mPath); };
    if (specs.empty()) return false;
    if (!IsFileOrFree(mPath)) return Common::SayOfPathToWrite(mPath.ToChars(), 0), false;
    if (std::ranges::any_of(specs, isMishandled)) {
        Common::Say(kFailureFormat, "files of this type do not take {} x {} pixels of {} channels", specs.front().width,
                    specs.front().height, specs.front().nchannels);
        return false;
    }
    std::uint64_t rows = 1;
    for (const OIIO::ImageSpec& spec : specs)
        rows += static_cast<unsigned>(spec.height);
    mMeter.emplace(kProgressSaving, rows);
    mMeter->Expect(0);  // whoever has stopped it by now gets no file
    mElement = specs.front().format;
    mBytes = specs.front().image_bytes();
    mPlace.emplace(mPath);
    mIsWatched = SetProxy();
    mIsOpen = Try([&] {
        const std::string path = Common::ToUtf8(mPlace->Path());
        if (specs.size() == 1) return mWriter->open(path, specs.front());
        return mWriter->open(path, static_cast<int>(specs.size()), specs.data());
    });
    // The WebP writer takes a proxy for a sign that it did open and frees what it never had.
    if (!mIsOpen) (void)mWriter->set_ioproxy(nullptr);
    return mIsOpen;
}

bool LibraryFile::OpenNext(const OIIO::ImageSpec& spec) {
    mElement = spec.format;
    return Try([&] { return mWriter->open(Common::ToUtf8(mPlace->Path()), spec, OIIO::ImageOutput::AppendSubimage); });
}

bool LibraryFile::WriteImage(const void* pixels, OIIO::stride_t pixelStride, OIIO::stride_t rowStride) {
    const auto* const bytes = static_cast<const unsigned char*>(pixels);
    if (mMeter->IsWatched() && mWriter->spec().depth <= 1) {
        return mWriter->spec().tile_width != 0 ? WriteTiles(bytes, pixelStride, rowStride)
                                               : WriteRows(bytes, pixelStride, rowStride);
    }
    return Try([&] { return mWriter->write_image(mElement, pixels, pixelStride, rowStride); });
}

/// A row of tiles at a time, as the library does it for whole pictures.
bool LibraryFile::WriteTiles(const unsigned char* pixels, OIIO::stride_t pixelStride, OIIO::stride_t rowStride) {
    const OIIO::ImageSpec spec = mWriter->spec();
    for (int y = 0, rows = 0; y < spec.height; y += rows) {
        rows = std::min(spec.tile_height, spec.height - y);
        const bool done = Try([&] {
            const int top = spec.y + y;
            return mWriter->write_tiles(spec.x, spec.x + spec.width, top, top + rows, spec.z, spec.z + 1, mElement,
                                        pixels + y * rowStride, pixelStride, rowStride);
        });
        if (!done) return false;
        Advance(rows);
    }
    return true;
}

/// The same of rows, some strips or blocks at a time: parts of one would be packed in another way.
bool LibraryFile::WriteRows(const unsigned char* pixels, OIIO::stride_t pixelStride, OIIO::stride_t rowStride) {
    const OIIO::ImageSpec spec = mWriter->spec();
    const int together = std::clamp(RowsTogether(*mWriter), 1, spec.height);
    const std::size_t threads = std::max(std::thread::hardware_concurrency(), 1U);
    Common::PartSize parts(threads, together > 1 ? threads : 1);
    for (int y = 0, rows = 0; y < spec.height; y += rows) {
        const int strips = (spec.height - y + together - 1) / together;
        const std::size_t count = parts.Next(static_cast<std::size_t>(strips));
        rows = static_cast<int>(std::min<std::int64_t>(static_cast<std::int64_t>(count) * together, spec.height - y));
        const bool done = Try([&] {
            const int top = spec.y + y;
            return mWriter->write_scanlines(top, top + rows, spec.z, mElement, pixels + y * rowStride, pixelStride,
                                            rowStride);
        });
        if (!done) return false;
        parts.Done();
        Advance(rows);
    }
    return true;
}

bool LibraryFile::WriteRow(int y, const unsigned char* row, OIIO::stride_t pixelStride) {
    const bool done = Try([&] { return mWriter->write_scanline(y, 0, OIIO::TypeDesc::UINT8, row, pixelStride); });
    if (done) Advance(1);
    return done;
}

bool LibraryFile::IsThere() {
    if (mStream) mStream->HandOn();
    return mIsWatched ? mWatched->Finish() : IsWhole(*mWriter, mBytes, mPlace->Path());
}

bool LibraryFile::Close() {
    mIsOpen = false;
    mHasThrown = false;
    (void)Try([&] { return mWriter->close() && IsThere(); });
    if (mHasFailed) return false;
    Advance(1);
    if (mPlace->Commit()) return true;
    Common::SayOfPathToWrite(mPath.ToChars(), errno);
    return false;
}

}  // namespace Kavra::Devices
