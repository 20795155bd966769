/// A host's own handler, derived from the module's and linked against what the module exports and nothing else of it.
///   derived_handler IMAGE

#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/oiio/OIIOImageHandler.h>

#include <cstdio>

using namespace Kavra;

namespace {

int gFailures = 0;

void Check(bool holds, const char* rule) {
    if (holds) return;
    std::fprintf(stderr, "derived_handler: not so: %s\n", rule);
    ++gFailures;
}

/// Loads what the module's handler loads, and counts.
class CountingHandler final : public Devices::OIIOImageHandler {
public:
    using OIIOImageHandler::LoadTexture;
    Objects::IMemoryWrapper<void>* LoadTexture(Devices::ImageDescription& desc, const Objects::KString& path, int width,
                                               int height, int depth, Devices::EFormat format, bool highQualityResize,
                                               int level, Devices::EDataOrientation orientation,
                                               Devices::IImageFormatHandler* formatHandler) override {
        ++loads;
        return OIIOImageHandler::LoadTexture(desc, path, width, height, depth, format, highQualityResize, level,
                                             orientation, formatHandler);
    }

    Devices::IFileInspection* Inspect(const Objects::KString& path) override {
        ++inspections;
        return OIIOImageHandler::Inspect(path);
    }

    int loads = 0, inspections = 0;
};

void InspectsThrough(Devices::IImageInspector& inspector, const CountingHandler& counting,
                     const Objects::KString& path) {
    auto* const file = inspector.Inspect(path);
    Check(file != nullptr && file->PartCount() == 1, "the base class inspects the picture");
    if (file != nullptr) file->Delete();
    Check(counting.inspections == 1, "an inspection goes through the override");
}

/// Loads through both views of the interface as a host does, by slot.
void LoadThrough(Devices::IImageHandler& handler, const CountingHandler& counting, const Objects::KString& path) {
    Devices::ImageDescription desc;
    auto* const block = handler.LoadTexture(desc, path, 0, 0, 1, Devices::kR8G8B8A8, 0, Devices::kTopLeft, nullptr);
    Check(block != nullptr && desc.format == Devices::kR8G8B8A8, "the base class loads the picture");
    if (block != nullptr) block->Delete();
    Check(counting.loads == 1, "the load without the flag goes through the override");
    Check(handler.GetAverageColor(path, false).w == 1.0F, "an opaque picture has an average alpha of 1");
    Check(counting.loads == 2, "the average of a file goes through the override");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return std::fputs("usage: derived_handler IMAGE\n", stderr), 2;
    const Objects::KString path(OS::FromUtf8(argv[1]).c_str());

    Objects::ClassFactory& factory = Objects::ObjModel::Factory();
    Objects::UString* const key = Objects::Intern(L"CountingHandler");
    auto* const counting = new CountingHandler;
    Check(Devices::OIIOImageHandler::NetObjectCount() == 1, "a derived handler is counted");
    Check(factory.AddObject(key, counting), "the factory takes a derived handler");
    Objects::IClone* const clone = factory.CloneObject(key);
    auto* const handler = dynamic_cast<Devices::IImageHandler*>(clone);
    Check(handler == counting, "a derived handler is its own clone");
    InspectsThrough(*counting, *counting, path);
    if (handler != nullptr) LoadThrough(*handler, *counting, path);
    Check(factory.RemoveObject(key), "the factory disposes of a derived handler");
    Check(Devices::OIIOImageHandler::NetObjectCount() == 0, "no handler is left");
    return gFailures == 0 ? 0 : 1;
}
