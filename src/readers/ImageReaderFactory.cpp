#include "readers/FileTypeDetection.h"
#include "readers/ImageFileType.h"
#include "readers/ImageReaderInterface.h"
#include "readers/cals/CalsReader.h"
#include "readers/flic/FlicReader.h"
#include "readers/pcx/PcxReader.h"
#include "readers/pict/PictReader.h"
#include "readers/rlc/RlcReader.h"
#include "readers/spot/SpotReader.h"

#include <kavra/objects/IMemoryAllocator.h>
#include <kavra/objects/ObjModel.h>

#include <initializer_list>
#include <new>

namespace Kavra::Devices {

namespace {

/// A new reader, or null when there is no memory for it or for what it holds.
template <class Reader>
ImageReaderInterface* Make() {
    try {
        return new Reader;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

struct ReaderEntry {
    int fileType;
    ImageReaderInterface* (*make)();
};

/// One line a reader: `{PCX, Make<PCXReader>},`.
constexpr std::initializer_list<ReaderEntry> kReaders = {
    {CALS, Make<CALSReader>}, {FLIC, Make<FLICReader>}, {PCX, Make<PCXReader>},
    {PICT, Make<PictReader>}, {RLC, Make<RlcReader>},   {Spot, Make<SpotReader>},
};

}  // namespace

ImageReaderInterface* CreateImageReader(int fileType) {
    for (const ReaderEntry& entry : kReaders) {
        if (entry.fileType == fileType) return entry.make();
    }
    return nullptr;
}

void* ImageReaderInterface::operator new(std::size_t bytes) noexcept {
    try {
        return ::operator new(bytes, Objects::ObjModel::mDefaultAllocator);
    } catch (...) {
        return nullptr;
    }
}

void ImageReaderInterface::operator delete(void* block) noexcept {
    Objects::KavraDelete(block);
}

}  // namespace Kavra::Devices
