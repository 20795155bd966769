#include "common/VectorTargets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "formats/BlueFirst.cpp"
// clang-format off: before what includes highway.h
#include <hwy/foreach_target.h>  // compiles this file once per vector width
// clang-format on

#include "common/PixelScaling-inl.h"
#include "formats/BlueFirst.h"

HWY_BEFORE_NAMESPACE();
namespace Kavra::Formats::HWY_NAMESPACE {

using namespace Kavra::Common::HWY_NAMESPACE;
using Common::PixelRun;

struct WordKernel {
    static constexpr std::size_t kInBytes = 4, kOutBytes = 8, kMaxStep = kVectorBytes / 8;
    static std::size_t StepUnits() { return hn::Lanes(TagU16()) / 4; }
    template <class Store>
    void Step(const unsigned char* in, unsigned char* out, Store store) const {
        const auto v = hn::PromoteTo(TagU16(), LoadBytes(hn::Rebind<std::uint8_t, TagU16>(), in));
        const auto redFirst = hn::Per4LaneBlockShuffle<3, 0, 1, 2>(v);
        store(TagU16(), hn::Or(redFirst, hn::ShiftLeft<8>(redFirst)), out);
    }
};

constexpr auto kSwapped = ChannelOrder::kRedBlueSwapped;

void Halves(const PixelRun& run) {
    Convert(HalfKernel<std::uint8_t, kSwapped>{{1.0F / 255.0F}}, run);
}
void Words(const PixelRun& run) {
    Convert(WordKernel{}, run);
}
void Floats(const PixelRun& run) {
    Convert(FloatKernel<std::uint8_t, kSwapped>{{1.0F / 255.0F}}, run);
}
void Bytes(const PixelRun& run) {
    Convert(ByteFromWordKernel<kSwapped>{{1.0F / 257.0F}}, run);
}

}  // namespace Kavra::Formats::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Kavra::Formats {

HWY_EXPORT(Halves);
HWY_EXPORT(Words);
HWY_EXPORT(Floats);
HWY_EXPORT(Bytes);

void HalvesFromBlueFirst(const Common::PixelRun& run) {
    HWY_DYNAMIC_DISPATCH(Halves)(run);
}
void WordsFromBlueFirst(const Common::PixelRun& run) {
    HWY_DYNAMIC_DISPATCH(Words)(run);
}
void FloatsFromBlueFirst(const Common::PixelRun& run) {
    HWY_DYNAMIC_DISPATCH(Floats)(run);
}
void BlueFirstFromWords(const Common::PixelRun& run) {
    HWY_DYNAMIC_DISPATCH(Bytes)(run);
}

}  // namespace Kavra::Formats
#endif
