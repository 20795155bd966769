// The interfaces' own members: compiled here, their tables stay when the module that derives from them goes.

#include <kavra/objects/IClone.h>
#include <kavra/objects/IDelete.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/IMessageSink.h>

namespace Kavra::Objects {

IClone::~IClone() = default;

IDelete::~IDelete() = default;

void IDelete::Delete() {
    delete this;
}

IMessageSink::~IMessageSink() = default;

template class IMemoryWrapper<void>;
template class MemoryArrayWrapper<void, unsigned char>;

}  // namespace Kavra::Objects
