/// An image handler that does nothing, for tests to derive from.
#pragma once

#include <kavra/devices/IImageHandler.h>

namespace Kavra::Tests {

class HandlerDouble : public Devices::IImageHandler {
public:
    using Block = Devices::IMemoryWrapper<void>;

    ~HandlerDouble() override = default;
    Objects::IClone* Clone() override { return this; }

    Block* LoadTexture(Devices::ImageDescription&, const Objects::KString&, int, int, int, Devices::EFormat, bool, int,
                       Devices::EDataOrientation, Devices::IImageFormatHandler*) override {
        return nullptr;
    }
    Block* LoadTexture(Devices::ImageDescription&, const Objects::KString&, int, int, int, Devices::EFormat, int,
                       Devices::EDataOrientation, Devices::IImageFormatHandler*) override {
        return nullptr;
    }
    Devices::ImageDesc* GetImageDesc(const Objects::KString&) override { return nullptr; }
    bool SaveTexture(const Objects::KString&, const Devices::ImageDescription&, const void*) override { return false; }
    bool SaveTexture(const Objects::KString&) override { return false; }
    bool SaveTarget(const Objects::KString&, Devices::ATarget*, bool) override { return false; }
    Block* Resize(Devices::EResizeMethod, const void*, std::size_t, int, const vec3<int>&, Devices::EFormat,
                  Devices::ETextureType, const vec3<int>&, int&, Devices::EImageFilterType) override {
        return nullptr;
    }
    using IImageHandler::GetAverageColor;
    vec4<float> GetAverageColor(const Devices::ImageDescription&, const void*, bool) override { return {}; }
    vec3<float> GetIBLIntensity(const Devices::ImageDescription&, const void*, bool, vec3<float>*) override {
        return {};
    }
    unsigned FindIBLLightDirections(const Devices::ImageDescription&, const void*, vec3<float>* const,
                                    vec3<float>* const, unsigned) override {
        return 0;
    }
    Devices::IImage* CreateImage(int, int, Devices::EFormat) override { return nullptr; }
    Devices::IImage* CreateImage(Devices::ATarget*) override { return nullptr; }
    Devices::IImage* CreateImage(Devices::ASimpleTexture*) override { return nullptr; }
    bool writeImageOneLineAtATime(const Objects::KString&, double, Devices::IWriteImageLineProvider*, int, int,
                                  int) const override {
        return false;
    }
};

}  // namespace Kavra::Tests
