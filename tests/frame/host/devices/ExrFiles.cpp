#include "frame/host/devices/ExrFiles.h"

#include <Imath/half.h>
#include <ImfChannelList.h>
#include <ImfDeepFrameBuffer.h>
#include <ImfDeepScanLineOutputFile.h>
#include <ImfFrameBuffer.h>
#include <ImfHeader.h>
#include <ImfMultiPartOutputFile.h>
#include <ImfOutputFile.h>
#include <ImfOutputPart.h>
#include <ImfPartType.h>
#include <ImfTiledOutputFile.h>

#include <bit>
#include <cstdint>
#include <cstring>

namespace Kavra::Tests {

namespace {

Imf::Header HeaderOf(const ExrPart& part) {
    Imf::Header header(part.window, part.window);
    header.compression() = part.compression;
    header.lineOrder() = part.lineOrder;
    for (const ExrChannel& channel : part.channels)
        header.channels().insert(channel.name, Imf::Channel(channel.type, channel.sampling, channel.sampling));
    if (part.tiles) header.setTileDescription(*part.tiles);
    return header;
}

void Append(std::vector<char>& bytes, Imf::PixelType type, float sample) {
    const half asHalf(sample);
    const auto asUint = static_cast<std::uint32_t>(type == Imf::UINT ? sample : 0);
    const char* from = type == Imf::HALF   ? reinterpret_cast<const char*>(&asHalf)
                       : type == Imf::UINT ? reinterpret_cast<const char*>(&asUint)
                                           : reinterpret_cast<const char*>(&sample);
    bytes.insert(bytes.end(), from, from + (type == Imf::HALF ? 2 : 4));
}

/// The part's samples in the file's types, and a frame buffer over them.
class Samples {
public:
    explicit Samples(const ExrPart& part) {
        const int width = part.window.max.x - part.window.min.x + 1;
        for (const ExrChannel& channel : part.channels) {
            std::vector<char>& bytes = mBytes.emplace_back();
            for (const float sample : channel.samples)
                Append(bytes, channel.type, sample);
            const std::size_t size = channel.type == Imf::HALF ? 2 : 4;
            const int row = (width + channel.sampling - 1) / channel.sampling;
            mFrameBuffer.insert(channel.name, Imf::Slice::Make(channel.type, bytes.data(), part.window, size,
                                                               size * static_cast<std::size_t>(row), channel.sampling,
                                                               channel.sampling));
        }
    }
    const Imf::FrameBuffer& Buffer() const { return mFrameBuffer; }

private:
    std::vector<std::vector<char>> mBytes;
    Imf::FrameBuffer mFrameBuffer;
};

int Rows(const ExrPart& part) {
    return part.rowsWritten >= 0 ? part.rowsWritten : part.window.max.y - part.window.min.y + 1;
}

}  // namespace

void WriteExr(const std::filesystem::path& path, const ExrPart& part) {
    const Samples samples(part);
    Imf::OutputFile file(path.c_str(), HeaderOf(part), 0);
    file.setFrameBuffer(samples.Buffer());
    file.writePixels(Rows(part));
}

void WriteTiledExr(const std::filesystem::path& path, const ExrPart& part, float lowerLevelValue) {
    const Samples samples(part);
    Imf::TiledOutputFile file(path.c_str(), HeaderOf(part), 0);
    file.setFrameBuffer(samples.Buffer());
    const int tileRows = part.rowsWritten >= 0 ? part.rowsWritten : file.numYTiles(0);
    file.writeTiles(0, file.numXTiles(0) - 1, 0, tileRows - 1, 0, 0);
    for (int level = 1; level < (part.tiles->mode == Imf::MIPMAP_LEVELS ? file.numLevels() : 1); ++level) {
        ExrPart lower = part;
        for (ExrChannel& channel : lower.channels)
            channel.samples.assign(channel.samples.size(), lowerLevelValue);
        const Samples lowerSamples(lower);
        file.setFrameBuffer(lowerSamples.Buffer());
        file.writeTiles(0, file.numXTiles(level) - 1, 0, file.numYTiles(level) - 1, level, level);
    }
}

void WriteMultiPartExr(const std::filesystem::path& path, const std::vector<ExrPart>& parts) {
    std::vector<Imf::Header> headers;
    for (const ExrPart& part : parts) {
        Imf::Header& header = headers.emplace_back(HeaderOf(part));
        header.displayWindow() = parts.front().window;  // all parts must share one
        header.setName(std::to_string(headers.size()));
        header.setType(Imf::SCANLINEIMAGE);
    }
    Imf::MultiPartOutputFile file(path.c_str(), headers.data(), static_cast<int>(headers.size()));
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const Samples samples(parts[i]);
        Imf::OutputPart part(file, static_cast<int>(i));
        part.setFrameBuffer(samples.Buffer());
        part.writePixels(Rows(parts[i]));
    }
}

void WriteDeepExr(const std::filesystem::path& path, int width, int height) {
    Imf::Header header(Window(width, height), Window(width, height));
    header.compression() = Imf::ZIPS_COMPRESSION;
    header.channels().insert("R", Imf::Channel(Imf::FLOAT));
    header.setType(Imf::DEEPSCANLINE);

    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    std::vector<unsigned> counts(count, 1);
    std::vector<float> samples(count, 0.5F);
    std::vector<float*> pointers;
    for (float& sample : samples)
        pointers.push_back(&sample);
    const auto row = static_cast<std::size_t>(width);

    Imf::DeepFrameBuffer buffer;
    buffer.insertSampleCountSlice(
        Imf::Slice(Imf::UINT, reinterpret_cast<char*>(counts.data()), sizeof(unsigned), sizeof(unsigned) * row));
    buffer.insert("R", Imf::DeepSlice(Imf::FLOAT, reinterpret_cast<char*>(pointers.data()), sizeof(float*),
                                      sizeof(float*) * row, sizeof(float)));
    Imf::DeepScanLineOutputFile file(path.c_str(), header, 0);
    file.setFrameBuffer(buffer);
    file.writePixels(height);
}

}  // namespace Kavra::Tests
