// A picture is the same whether its rows are handed out all at once, one by one or a few at a time: of the samples, of
// the files that fuzzing found, of samples that were cut short or damaged, and of rasters of every layout.

#include "common/RowSink.h"
#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/RowsInParts.h"
#include "support/MessageRecorder.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <format>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace {

using namespace Kavra::Devices;
using namespace Kavra::Tests;

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

/// What a read gave.
struct Frame {
    bool read = false;
    Bytes bytes = {};
    std::vector<std::wstring> messages = {};
    bool operator==(const Frame&) const = default;
};

constexpr unsigned char kFillers[] = {0x00, 0xCD};
const std::vector<std::vector<std::size_t>> kParts = {{1}, {3, 1, 7}, {64}};

/// Bytes whose rows differ, however long these are.
Bytes Counting(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<unsigned char>(i * 7 + i / 253);
    return bytes;
}

class RowByRow : public testing::Test {
protected:
    /// Whether the file was one of this type, and so was read.
    bool Expect(int fileType, const fs::path& path, int frame, const std::string& what) {
        const MessageRecorder messages;
        const std::unique_ptr<ImageReaderInterface> reader(CreateImageReader(fileType));
        if (!reader->Open(Wide(path)) || reader->GetWidth() < 1 || reader->GetHeight() < 1) return false;
        const auto rows = static_cast<std::size_t>(reader->GetHeight());
        const auto rowBytes = static_cast<std::size_t>(reader->GetRowPitch());
        if (rows * rowBytes > std::size_t{8} << 20) return false;
        for (const unsigned char filler : kFillers) {
            const Frame whole = AtOnce(*reader, rows * rowBytes, frame, filler);
            ++mRead;
            for (const std::vector<std::size_t>& parts : kParts) {
                const Frame inParts = InParts(*reader, RowsInParts(rows, rowBytes, parts, filler), frame);
                EXPECT_TRUE(inParts == whole) << what << ", frame " << frame << ", parts of " << parts.front();
            }
        }
        return true;
    }

    /// The sample, and the sample cut and damaged in many places.
    void ExpectAlsoDamaged(int fileType, const std::string& sample) {
        const Bytes bytes = ReadAll(fs::path(KAVRA_SOURCE_DIR) / "examples" / sample);
        const std::string extension = fs::path(sample).extension().string();
        const auto expect = [&](const Bytes& file, const std::string& what) {
            return Expect(fileType, mFolder.Write("file" + extension, std::span(file)), 0, sample + what);
        };
        EXPECT_TRUE(expect(bytes, ""));
        for (std::size_t part = 1; part < 8; ++part)
            expect(Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() * part / 8)), " cut");
        unsigned random = 1;
        for (int round = 0; round < 8; ++round) {
            Bytes damaged = bytes;
            for (int i = 0; i < 16; ++i) {
                random = random * 1664525 + 1013904223;
                damaged[damaged.size() / 8 + (random >> 8) % (damaged.size() * 7 / 8)] =
                    static_cast<unsigned char>(random >> 24);
            }
            expect(damaged, std::format(" damaged {}", round));
        }
    }

    /// Every input that fuzzing kept.
    void ExpectCorpus(int fileType, const std::string& target) {
        for (const fs::directory_entry& file : fs::directory_iterator(KAVRA_SOURCE_DIR "/fuzz/corpus/" + target)) {
            for (const int frame : {0, 2})
                Expect(fileType, file.path(), frame, file.path().filename().string());
        }
    }

    TemporaryFolder mFolder;
    int mRead = 0;

private:
    static Frame AtOnce(ImageReaderInterface& reader, std::size_t bytes, int frame, unsigned char filler) {
        const MessageRecorder messages;
        Frame whole{.bytes = Bytes(bytes, filler)};
        whole.read = reader.ReadImage(whole.bytes.data(), frame);
        whole.messages = messages.Texts();
        return whole;
    }
    static Frame InParts(ImageReaderInterface& reader, RowsInParts rows, int frame) {
        const MessageRecorder messages;
        Frame whole{.read = reader.ReadFrame(rows, frame).has_value()};
        EXPECT_TRUE(!whole.read || rows.RowsNotAskedFor() == 0);
        whole.bytes = rows.Take();
        whole.messages = messages.Texts();
        return whole;
    }
};

TEST_F(RowByRow, CalsDrawings) {
    ExpectAlsoDamaged(CALS, "drawing.cal");
    ExpectAlsoDamaged(CALS, "drawing-turned.cal");
    ExpectCorpus(CALS, "fuzz_cals");
    EXPECT_GT(mRead, 40);
}

TEST_F(RowByRow, Animations) {
    ExpectAlsoDamaged(FLIC, "balloon.flc");
    Expect(FLIC, fs::path(KAVRA_SOURCE_DIR) / "examples/balloon.flc", 5, "balloon.flc");
    ExpectCorpus(FLIC, "fuzz_flic");
    EXPECT_GT(mRead, 40);
}

TEST_F(RowByRow, PcxFilesOfEveryKind) {
    for (const char* sample : {"letter.pcx", "palette.pcx", "photo.pcx", "planes.pcx"})
        ExpectAlsoDamaged(PCX, sample);
    ExpectCorpus(PCX, "fuzz_pcx");
    EXPECT_GT(mRead, 100);
}

TEST_F(RowByRow, PicturesOfOneBitmapAndOfMany) {
    for (const char* sample : {"dots.pict", "palette.pict", "photo.pict"})
        ExpectAlsoDamaged(PICT, sample);
    ExpectCorpus(PICT, "fuzz_pict");
    for (const char* name : {"legacy-loaded-many-bitmaps.pict", "legacy-loaded-every-second-pixel.pict"})
        EXPECT_TRUE(Expect(PICT, fs::path(KAVRA_SOURCE_DIR) / "tests/hostile/files" / name, 0, name));
    EXPECT_GT(mRead, 20);
}

TEST_F(RowByRow, RlcScans) {
    ExpectAlsoDamaged(RLC, "engraving.rlc");
    ExpectAlsoDamaged(RLC, "engraving-directory.rlc");
    ExpectCorpus(RLC, "fuzz_rlc");
    EXPECT_GT(mRead, 40);
}

/// What a header may say of where rows and bands lie. Behind the gaps the last band begins in the file and ends behind
/// it: at 8, 16 and 32 bits.
constexpr const char* kPlaces[] = {"",
                                   "SKIPBYTES 7",
                                   "RECORDSKIPBYTES 9",
                                   "TOTALROWBYTES 0",
                                   "TOTALROWBYTES 5",
                                   "TOTALROWBYTES 999",
                                   "BANDROWBYTES 3\nTOTALROWBYTES 9",
                                   "BANDGAPBYTES 47000\nTOTALROWBYTES 1",
                                   "BANDGAPBYTES 44000\nTOTALROWBYTES 1",
                                   "BANDGAPBYTES 39000\nTOTALROWBYTES 1"};

TEST_F(RowByRow, RastersOfEveryLayoutWhetherTheirRowsAreThereOrNot) {
    const fs::path path = mFolder.Write("q.bil", std::span<const unsigned char>(Counting(100'000)));
    for (const char* layout : {"bil", "bip", "bsq"}) {
        for (const char* depth : {"NBITS 8", "NBITS 16", "NBITS 32\nPIXELTYPE F"}) {
            for (const int bands : {1, 3}) {
                for (const char* places : kPlaces) {
                    const std::string header =
                        std::format("NCOLS 31\nNROWS 83\nNBANDS {}\n{}\nLAYOUT {}\n{}\n", bands, depth, layout, places);
                    mFolder.Write("q.hdr", header);
                    Expect(Spot, path, bands - 1, header);
                }
            }
        }
    }
    EXPECT_GT(mRead, 200);
}

TEST_F(RowByRow, RastersOfMoreRowsThanAreReadAtATime) {
    const fs::path path =
        mFolder.Write("q.bil", std::span<const unsigned char>(Counting(std::size_t{3} * 1100 * 1000)));
    for (const char* layout :
         {"bil", "bip", "bsq", "bil\nTOTALROWBYTES 3299", "bsq\nTOTALROWBYTES 9\nBANDGAPBYTES 400000"}) {
        mFolder.Write("q.hdr", std::format("NCOLS 1100\nNROWS 1000\nNBANDS 3\nLAYOUT {}\n", layout));
        EXPECT_TRUE(Expect(Spot, path, 0, layout));
    }
    mFolder.Write("q.hdr", "NCOLS 1100\nNROWS 1000\nNBANDS 1\n");
    mFolder.Write("q.clr", "7 1 2 3\n");
    EXPECT_TRUE(Expect(Spot, path, 0, "through a palette"));
}

}  // namespace
