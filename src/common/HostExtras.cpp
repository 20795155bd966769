#include "common/HostExtras.h"

#include "common/Limits.h"

#include <kavra/devices/AFormatConvertor.h>
#include <kavra/devices/EXRHandler.h>
#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <algorithm>
#include <cstring>
#include <typeinfo>

namespace Kavra::Common {

/// The extras under the names of their symbols, since members cannot be declared a second time. Null where the host has
/// none.
namespace Extras {

[[gnu::weak]] void* NewZeroed(std::size_t bytes, Objects::IMemoryAllocator* allocator) __asm__(
    "_ZN5Kavra7Objects9NewZeroedEmPNS0_16IMemoryAllocatorE");
[[gnu::weak]] std::size_t BlockCeiling() __asm__("_ZN5Kavra7Objects8ObjModel12BlockCeilingEv");
[[gnu::weak]] std::size_t
FloatsToFormat(const float* colours, std::size_t count, Devices::EFormat format, char* out, std::size_t size) __asm__(
    "_ZN5Kavra9Utilities16AFormatConvertor14"
    "FloatsToFormatEPKfmNS_7Devices7EFormatEPcm");

[[gnu::weak]] extern const char plainWrapperType __asm__("_ZTIN5Kavra7Objects18MemoryArrayWrapperIvhEE");
[[gnu::weak]] void GetImageLimits(Devices::ImageLimits& limits) __asm__(
    "_ZN5Kavra7Devices14GetImageLimitsERNS0_11ImageLimitsE");
[[gnu::weak]] void GetLoadPreferences(Devices::LoadPreferences& preferences) __asm__(
    "_ZN5Kavra7Devices18GetLoadPreferencesERNS0_15LoadPreferencesE");
[[gnu::weak]] void GetSavePreferences(Devices::SavePreferences& preferences) __asm__(
    "_ZN5Kavra7Devices18GetSavePreferencesERNS0_15SavePreferencesE");
[[gnu::weak]] bool IsPreferedHandler(const unsigned char* start, std::size_t bytes) __asm__(
    "_ZN5Kavra7Devices10EXRHandler17IsPreferedHandlerEPKhm");

}  // namespace Extras

namespace {

using Utilities::AFormatConvertor;

std::size_t PackOneByOne(const float* colours, std::size_t count, Devices::EFormat format, char* out,
                         std::size_t size) {
    const int bytes = AFormatConvertor::BytesPerPixel(format);
    if (bytes <= 0) return 0;
    const auto pixelBytes = static_cast<unsigned>(bytes);
    const std::size_t fitting = std::min(count, size / pixelBytes);
    for (std::size_t i = 0; i < fitting; ++i) {
        vec4<float> colour;
        std::memcpy(&colour, reinterpret_cast<const char*>(colours) + i * sizeof(colour), sizeof(colour));
        if (!AFormatConvertor::FloatToFormat(colour, format, out + i * pixelBytes, pixelBytes)) return i;
    }
    return fitting;
}

}  // namespace

bool IsPlainWrapper(const Objects::IMemoryWrapper<void>& wrapper) {
    const void* const type = &typeid(wrapper);  // by address: a library that was built without it has none
    return type != nullptr && type == &Extras::plainWrapperType;
}

Devices::ImageLimits HostImageLimits() {
    Devices::ImageLimits limits;
    if (Extras::GetImageLimits != nullptr) Extras::GetImageLimits(limits);
    return limits;
}

Devices::LoadPreferences HostLoadPreferences() {
    Devices::LoadPreferences preferences;
    if (Extras::GetLoadPreferences != nullptr) Extras::GetLoadPreferences(preferences);
    const bool isKnown =
        preferences.filter >= Devices::kResampleNearest && preferences.filter <= Devices::kResampleLanczos3;
    if (!isKnown) preferences.choosesFilter = false;
    if (preferences.legacy != Devices::kLegacyCommon) preferences.legacy = Devices::kLegacyContract;
    return preferences;
}

Devices::SavePreferences HostSavePreferences() {
    Devices::SavePreferences preferences;
    if (Extras::GetSavePreferences != nullptr) Extras::GetSavePreferences(preferences);
    return preferences;
}

void* NewZeroed(std::size_t bytes) {
    if (Extras::NewZeroed != nullptr) return Extras::NewZeroed(bytes, Objects::ObjModel::mDefaultAllocator);
    void* const block = ::operator new(bytes, Objects::ObjModel::mDefaultAllocator);
    return std::memset(block, 0, bytes);
}

std::size_t HostBlockCeiling() {
    return Extras::BlockCeiling != nullptr ? Extras::BlockCeiling() : static_cast<std::size_t>(MemoryShare());
}

bool PrefersExrHandler(const Objects::KString& path, std::span<const unsigned char> start) {
    return Extras::IsPreferedHandler != nullptr ? Extras::IsPreferedHandler(start.data(), start.size())
                                                : Devices::EXRHandler::IsPreferedHandler(path);
}

std::size_t PackFloats(const float* colours, std::size_t count, Devices::EFormat format, char* out, std::size_t size) {
    const auto pack = Extras::FloatsToFormat != nullptr ? Extras::FloatsToFormat : PackOneByOne;
    return pack(colours, count, format, out, size);
}

}  // namespace Kavra::Common
