#include "substituted/SubstituteDdsReader.h"

namespace Kavra::Tests {

DdsAnswers& Substitute() {
    static DdsAnswers answers;
    return answers;
}

}  // namespace Kavra::Tests

namespace Kavra::Devices {

using Tests::Substitute;

struct DDSReader::State {};
DDSReader::DDSReader() = default;
DDSReader::~DDSReader() = default;
bool DDSReader::Load(const KString&) {
    return Substitute().opens;
}
int DDSReader::Width() const {
    return Substitute().width;
}
int DDSReader::Height() const {
    return Substitute().height;
}
int DDSReader::Depth() const {
    return 1;
}
int DDSReader::Mipmaps() const {
    return 1;
}
EFormat DDSReader::Format() {
    return Substitute().format;
}
ETextureType DDSReader::TextureType() {
    return kTexture2D;
}
bool DDSReader::HasFace(int) const {
    return true;
}
bool DDSReader::SkipMipLevel(int) {
    return false;
}
IMemoryWrapper<void>* DDSReader::Load(ImageDescription& desc, int, int, int) {
    return Substitute().load ? Substitute().load(desc) : nullptr;
}

}  // namespace Kavra::Devices
