#include "load/ScaledJpeg.h"

#include <jerror.h>
#include <jpeglib.h>

#include <array>
#include <csetjmp>
#include <cstddef>
#include <cstdio>
#include <new>
#include <utility>

namespace Kavra::Devices {

namespace {

/// What the JPEG library reports to, in place of standard error and the end of the process.
struct Errors {
    jpeg_error_mgr base;  // first, so that a pointer to it is one to all
    std::jmp_buf wayBack;
};

/// Where the JPEG library gets its bytes.
struct Source {
    jpeg_source_mgr base;  // likewise
    Common::ByteSource* file;
    std::array<JOCTET, 1 << 14> bytes;
};

[[noreturn]] void GiveUp(j_common_ptr info) {
    std::longjmp(reinterpret_cast<Errors*>(info->err)->wayBack, 1);
}
void CountWarning(j_common_ptr info, int level) {
    if (level < 0) ++info->err->num_warnings;
}
void SayNothing(j_common_ptr /*info*/) {}
void DoNothing(j_decompress_ptr /*info*/) {}

boolean Fill(j_decompress_ptr info) {
    auto* const source = reinterpret_cast<Source*>(info->src);
    const std::size_t count = source->file->ReadSome(source->bytes);
    if (count == 0) GiveUp(reinterpret_cast<j_common_ptr>(info));
    source->base.next_input_byte = source->bytes.data();
    source->base.bytes_in_buffer = count;
    return TRUE;
}

void Skip(j_decompress_ptr info, long count) {
    if (count <= 0) return;
    auto* const source = reinterpret_cast<Source*>(info->src);
    const auto wanted = static_cast<std::size_t>(count);
    if (wanted <= source->base.bytes_in_buffer) {
        source->base.next_input_byte += wanted;
        source->base.bytes_in_buffer -= wanted;
        return;
    }
    const bool isThere = source->file->Skip(wanted - source->base.bytes_in_buffer).has_value();
    if (!isThere) GiveUp(reinterpret_cast<j_common_ptr>(info));
    source->base.bytes_in_buffer = 0;
}

/// The JPEG library leaves its functions by a jump. Each is called by a member that has nothing to destroy.
class ScaledJpeg final : public OIIO::ImageInput {
public:
    explicit ScaledJpeg(Common::ByteSource file) : mFile(std::move(file)) {
        mInfo.err = jpeg_std_error(&mErrors.base);
        mErrors.base.error_exit = GiveUp;
        mErrors.base.emit_message = CountWarning;
        mErrors.base.output_message = SayNothing;
        mSource.base.init_source = DoNothing;
        mSource.base.fill_input_buffer = Fill;
        mSource.base.skip_input_data = Skip;
        mSource.base.resync_to_restart = jpeg_resync_to_restart;
        mSource.base.term_source = DoNothing;
        mSource.file = &mFile;
    }
    ~ScaledJpeg() override { jpeg_destroy_decompress(&mInfo); }
    ScaledJpeg(const ScaledJpeg&) = delete;
    ScaledJpeg& operator=(const ScaledJpeg&) = delete;

    bool Start(const OIIO::ImageSpec& spec, int denominator) {
        if (!mFile.Seek(0) || !Begin(denominator)) return false;
        m_spec = spec;
        m_spec.width = m_spec.full_width = static_cast<int>(mInfo.output_width);
        m_spec.height = m_spec.full_height = static_cast<int>(mInfo.output_height);
        return spec.width == static_cast<int>(mInfo.image_width) &&
               spec.height == static_cast<int>(mInfo.image_height) && spec.nchannels == mInfo.output_components &&
               spec.format == OIIO::TypeUInt8 && m_spec.width == ScaledJpegSide(spec.width, denominator) &&
               m_spec.height == ScaledJpegSide(spec.height, denominator);
    }

    const char* format_name() const override { return "jpeg"; }
    bool open(const std::string& /*name*/, OIIO::ImageSpec& /*spec*/) override { return false; }
    bool close() override { return true; }
    bool read_native_scanline(int /*subimage*/, int /*level*/, int y, int /*z*/, void* data) override {
        return y == static_cast<int>(mInfo.output_scanline) && y < m_spec.height &&
               ReadRow(static_cast<JSAMPLE*>(data)) && mErrors.base.num_warnings == 0;
    }

private:
    bool HasPlainColours() const {
        if (mInfo.data_precision != 8) return false;
        if (mInfo.num_components == 1) return mInfo.jpeg_color_space == JCS_GRAYSCALE;
        const bool isColour = mInfo.jpeg_color_space == JCS_YCbCr || mInfo.jpeg_color_space == JCS_RGB;
        return mInfo.num_components == 3 && isColour;
    }

    bool Begin(int denominator) {
        if (setjmp(mErrors.wayBack) != 0) return Failed();
        jpeg_create_decompress(&mInfo);
        mInfo.src = &mSource.base;
        if (jpeg_read_header(&mInfo, TRUE) != JPEG_HEADER_OK || !HasPlainColours()) return false;
        mInfo.scale_num = 1;
        mInfo.scale_denom = static_cast<unsigned>(denominator);
        return jpeg_start_decompress(&mInfo) != FALSE && mErrors.base.num_warnings == 0;
    }

    bool ReadRow(JSAMPLE* row) {
        if (setjmp(mErrors.wayBack) != 0) return Failed();
        return jpeg_read_scanlines(&mInfo, &row, 1) == 1;
    }

    bool Failed() const {
        if (mErrors.base.msg_code == JERR_OUT_OF_MEMORY) throw std::bad_alloc();
        return false;
    }

    Common::ByteSource mFile;
    Errors mErrors{};
    Source mSource{};
    jpeg_decompress_struct mInfo{};
};

}  // namespace

std::unique_ptr<OIIO::ImageInput> OpenScaledJpeg(Common::ByteSource file, const OIIO::ImageSpec& spec,
                                                 int denominator) {
    auto input = std::make_unique<ScaledJpeg>(std::move(file));
    if (!input->Start(spec, denominator)) return nullptr;
    return input;
}

}  // namespace Kavra::Devices
