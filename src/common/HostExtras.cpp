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
[[gnu::weak]] void GetLastFailure(Devices::FailureReport& report) __asm__(
    "_ZN5Kavra7Devices14GetLastFailureERNS0_13FailureReportE");
[[gnu::weak]] void SetLastFailure(const Devices::FailureReport& report) noexcept
    __asm__("_ZN5Kavra7Devices14SetLastFailureERKNS0_13FailureReportE");
[[gnu::weak]] void ClearLastFailure() noexcept __asm__("_ZN5Kavra7Devices16ClearLastFailureEv");
[[gnu::weak]] void BeginOperation() noexcept __asm__("_ZN5Kavra7Devices14BeginOperationEv");
[[gnu::weak]] void EndOperation(bool hasAnswered) noexcept __asm__("_ZN5Kavra7Devices12EndOperationEb");
[[gnu::weak]] bool BeginStage(Devices::EProgressStage stage) noexcept
    __asm__("_ZN5Kavra7Devices10BeginStageENS0_14EProgressStageE");
[[gnu::weak]] bool AdvanceStage(float fraction, float part) noexcept __asm__("_ZN5Kavra7Devices12AdvanceStageEff");
[[gnu::weak]] void EndStage() noexcept __asm__("_ZN5Kavra7Devices8EndStageEv");
[[gnu::weak]] bool IsPreferedHandler(const unsigned char* start, std::size_t bytes) __asm__(
    "_ZN5Kavra7Devices10EXRHandler17IsPreferedHandlerEPKhm");

[[gnu::weak]] bool LoadDdsMemory(Devices::DDSReader* reader, const void* bytes,
                                 std::size_t size) __asm__("_ZN5Kavra7Devices9DDSReader10LoadMemoryEPKvm");
[[gnu::weak]] bool ReadExrMemory(Devices::EXRHandler* handler, const void* bytes,
                                 std::size_t size) __asm__("_ZN5Kavra7Devices10EXRHandler10ReadMemoryEPKvm");

[[gnu::weak]] Devices::EIsolatedEnd LoadIsolated(const Devices::IsolatedOperation& operation,
                                                 Devices::ImageDescription& desc,
                                                 Objects::IMemoryWrapper<void>*& block) noexcept
    __asm__(
        "_ZN5Kavra7Devices12LoadIsolatedERKNS0_"
        "17IsolatedOperationERNS0_16ImageDescriptionERPNS_"
        "7Objects14IMemoryWrapperIvEE");
[[gnu::weak]] Devices::EIsolatedEnd DescribeIsolated(const Devices::IsolatedOperation& operation,
                                                     Devices::ImageDesc*& desc) noexcept
    __asm__(
        "_ZN5Kavra7Devices16DescribeIsolatedERKNS0_"
        "17IsolatedOperationERPNS0_9ImageDescE");
[[gnu::weak]] Devices::EIsolatedEnd InspectIsolated(const Devices::IsolatedOperation& operation,
                                                    Devices::IFileInspection*& file) noexcept
    __asm__(
        "_ZN5Kavra7Devices15InspectIsolatedERKNS0_"
        "17IsolatedOperationERPNS0_15IFileInspectionE");

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

void SetFailure(const Devices::FailureReport& report) noexcept {
    if (Extras::SetLastFailure != nullptr) Extras::SetLastFailure(report);
}

bool HostTakesFailures() noexcept {
    return Extras::SetLastFailure != nullptr;
}

void ClearFailure() noexcept {
    if (Extras::ClearLastFailure != nullptr) Extras::ClearLastFailure();
}

Devices::FailureReport HostsFailure() {
    Devices::FailureReport report;
    if (Extras::GetLastFailure != nullptr) Extras::GetLastFailure(report);
    return report;
}

void BeginOperation() noexcept {
    if (Extras::BeginOperation != nullptr) Extras::BeginOperation();
}

void EndOperation(bool hasAnswered) noexcept {
    if (Extras::EndOperation != nullptr) Extras::EndOperation(hasAnswered);
}

bool BeginStage(Devices::EProgressStage stage) noexcept {
    const bool isOffered =
        Extras::BeginStage != nullptr && Extras::AdvanceStage != nullptr && Extras::EndStage != nullptr;
    return isOffered && Extras::BeginStage(stage);
}

bool AdvanceStage(float fraction, float part) noexcept {
    return Extras::AdvanceStage(fraction, part);
}

void EndStage() noexcept {
    Extras::EndStage();
}

void* NewZeroed(std::size_t bytes) {
    if (Extras::NewZeroed != nullptr) return Extras::NewZeroed(bytes, Objects::ObjModel::mDefaultAllocator);
    void* const block = ::operator new(bytes, Objects::ObjModel::mDefaultAllocator);
    return std::memset(block, 0, bytes);
}

std::size_t HostBlockCeiling() {
    return Extras::BlockCeiling != nullptr ? Extras::BlockCeiling() : static_cast<std::size_t>(MemoryShare());
}

std::optional<bool> PrefersExrHandler(std::span<const unsigned char> start) {
    if (Extras::IsPreferedHandler == nullptr) return std::nullopt;
    return Extras::IsPreferedHandler(start.data(), start.size());
}

bool PrefersExrHandler(const Objects::KString& path, std::span<const unsigned char> start) {
    return PrefersExrHandler(start).value_or(false) ||
           (Extras::IsPreferedHandler == nullptr && Devices::EXRHandler::IsPreferedHandler(path));
}

std::optional<bool> OpenDdsInMemory(Devices::DDSReader& reader, std::span<const unsigned char> bytes) {
    if (Extras::LoadDdsMemory == nullptr) return std::nullopt;
    return Extras::LoadDdsMemory(&reader, bytes.data(), bytes.size());
}

std::optional<bool> ReadExrInMemory(Devices::EXRHandler& handler, std::span<const unsigned char> bytes) {
    if (Extras::ReadExrMemory == nullptr) return std::nullopt;
    return Extras::ReadExrMemory(&handler, bytes.data(), bytes.size());
}

bool HostIsolates() {
    return Extras::LoadIsolated != nullptr && Extras::DescribeIsolated != nullptr && Extras::InspectIsolated != nullptr;
}

Devices::EIsolatedEnd LoadIsolated(const Devices::IsolatedOperation& operation, Devices::ImageDescription& desc,
                                   Objects::IMemoryWrapper<void>*& block) {
    return Extras::LoadIsolated(operation, desc, block);
}

Devices::EIsolatedEnd DescribeIsolated(const Devices::IsolatedOperation& operation, Devices::ImageDesc*& desc) {
    return Extras::DescribeIsolated(operation, desc);
}

Devices::EIsolatedEnd InspectIsolated(const Devices::IsolatedOperation& operation, Devices::IFileInspection*& file) {
    return Extras::InspectIsolated(operation, file);
}

std::size_t PackFloats(const float* colours, std::size_t count, Devices::EFormat format, char* out, std::size_t size) {
    const auto pack = Extras::FloatsToFormat != nullptr ? Extras::FloatsToFormat : PackOneByOne;
    return pack(colours, count, format, out, size);
}

}  // namespace Kavra::Common
