/// The time of loads with and without isolation:  isolation MODULE FILE...

#include <kavra/devices/IImageHandler.h>
#include <kavra/devices/LoadPreferences.h>
#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

using namespace Kavra;
using namespace Kavra::Devices;

namespace {

/// Milliseconds of one load whose pixels are read once, a page at a time; negative where it fails.
double Load(IImageHandler& handler, const KString& path, bool isolated) {
    LoadPreferences preferences;
    preferences.isolated = isolated;
    const LoadPreferencesScope scope(preferences);
    const auto begin = std::chrono::steady_clock::now();
    ImageDescription desc;
    auto* const block = handler.LoadTexture(desc, path, 0, 0, 1, kUnknown, false, 0, kTopLeft, nullptr);
    if (block == nullptr) return -1;
    constexpr std::uint64_t kPage = 4096;
    volatile unsigned sum = 0;
    for (std::uint64_t i = 0; i < desc.dataSize; i += kPage)
        sum = sum + static_cast<const unsigned char*>(block->mData)[i];
    const auto end = std::chrono::steady_clock::now();
    block->Delete();
    return std::chrono::duration<double, std::milli>(end - begin).count();
}

double Median(std::vector<double> times) {
    std::ranges::sort(times);
    return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv) {
    void* const module = argc > 2 ? dlopen(argv[1], RTLD_NOW) : nullptr;
    if (module == nullptr) return std::fputs("usage: isolation MODULE FILE...\n", stderr), 2;
    reinterpret_cast<bool (*)()>(dlsym(module, "KavraInitialize"))();
    auto* const handler =
        dynamic_cast<IImageHandler*>(Objects::ObjModel::Factory().CloneObject(Objects::Intern(L"ImageHandlerOIIO")));
    std::puts("   host ms  isolated    more  file");
    for (int i = 2; i < argc; ++i) {
        const KString path(OS::FromUtf8(argv[i]).c_str());
        if (Load(*handler, path, false) < 0 || Load(*handler, path, true) < 0) continue;
        constexpr int kRounds = 51;
        std::vector<double> plain, isolated;
        for (int round = 0; round < kRounds; ++round) {
            plain.push_back(Load(*handler, path, false));
            isolated.push_back(Load(*handler, path, true));
        }
        const double a = Median(plain), b = Median(isolated);
        std::printf("%10.3f %9.3f %7.3f  %s\n", a, b, b - a, argv[i]);
    }
    return 0;
}
