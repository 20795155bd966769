#include "frame/module/SampleFiles.h"

#include <kavra/devices/DDSWriter.h>

#include <cstdint>
#include <stdexcept>

namespace Kavra::Tests {

template <class T>
std::filesystem::path WritePicture(const TemporaryFolder& folder, std::string_view name, const OIIO::ImageSpec& spec,
                                   const std::vector<T>& pixels) {
    const auto path = folder / name;
    const auto output = OIIO::ImageOutput::create(path.string());
    OIIO::ImageSpec stored = spec;
    stored.attribute("oiio:UnassociatedAlpha", 1);
    if (!output || pixels.size() != spec.image_pixels() * static_cast<std::size_t>(spec.nchannels) ||
        !output->open(path.string(), stored) || !output->write_image(OIIO::BaseTypeFromC<T>::value, pixels.data()) ||
        !output->close()) {
        throw std::runtime_error("cannot write " + path.string());
    }
    return path;
}

template std::filesystem::path WritePicture(const TemporaryFolder&, std::string_view, const OIIO::ImageSpec&,
                                            const std::vector<unsigned char>&);
template std::filesystem::path WritePicture(const TemporaryFolder&, std::string_view, const OIIO::ImageSpec&,
                                            const std::vector<float>&);
template std::filesystem::path WritePicture(const TemporaryFolder&, std::string_view, const OIIO::ImageSpec&,
                                            const std::vector<std::uint32_t>&);

template <class T>
std::filesystem::path WriteDds(const TemporaryFolder& folder, std::string_view name, const DdsPicture& picture,
                               const std::vector<T>& data) {
    const auto path = folder / name;
    Devices::DDSWriter writer;
    if (!writer.Construct(picture.type, picture.format, picture.width, picture.height, picture.depth, picture.levels,
                          static_cast<int>(data.size() * sizeof(T)), 0) ||
        !writer.Write(Wide(path), data.data())) {
        throw std::runtime_error("cannot write " + path.string());
    }
    return path;
}

template std::filesystem::path WriteDds(const TemporaryFolder&, std::string_view, const DdsPicture&,
                                        const std::vector<unsigned char>&);
template std::filesystem::path WriteDds(const TemporaryFolder&, std::string_view, const DdsPicture&,
                                        const std::vector<float>&);

}  // namespace Kavra::Tests
