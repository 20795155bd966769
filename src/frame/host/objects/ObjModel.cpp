#include "frame/host/objects/BuiltInAllocator.h"
#include "frame/host/objects/Immortal.h"
#include "frame/host/objects/LargeBlocks.h"
#include "frame/host/objects/MessageSink.h"

#include <kavra/objects/ObjModel.h>

#include <atomic>

namespace Kavra::Objects {
namespace {

constinit Immortal<StandardErrorSink> gStandardError;
constinit std::atomic<IMessageSink*> gSink{&gStandardError.value};

}  // namespace

ClassFactory& ObjModel::Factory() {
    static Immortal<ClassFactory> factory;
    return factory.value;
}

void ObjModel::Error(const wchar_t* message, const wchar_t* detail, const wchar_t*, const wchar_t*, int) {
    MessageSink()->Message(EMessageKind::kError, message != nullptr ? message : L"", detail);
}

std::size_t ObjModel::BlockCeiling() {
    return BlockAllocator().Ceiling();
}

void ObjModel::SetBlockCeiling(std::size_t bytes) {
    BlockAllocator().SetCeiling(bytes);
}

AllocationCounters ObjModel::BlockCounters() {
    return BlockAllocator().Counters();
}

AllocationCounters ObjModel::ObjectCounters() {
    return ObjectAllocator().Counters();
}

void ObjModel::ReleaseKeptBlock() {
    DropKeptBlock();
}

IMessageSink* ObjModel::SetMessageSink(IMessageSink* sink) {
    return gSink.exchange(sink != nullptr ? sink : &gStandardError.value);
}

IMessageSink* ObjModel::MessageSink() {
    return gSink;
}

}  // namespace Kavra::Objects
