// The object half of a host with the operations that every host has, each done in the plainest way, and no other.

#include "minimal_host/MinimalHost.h"

#include <kavra/objects/ARefCounted.h>
#include <kavra/objects/ClassFactory.h>
#include <kavra/objects/IMemoryWrapper.h>
#include <kavra/objects/KString.h>
#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>
#include <kavra/objects/Toolkit.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace {

std::atomic<int> gLiveBlocks{0};

void* Take(std::size_t bytes) {
    void* const block = std::malloc(std::max<std::size_t>(bytes, 1));
    if (block != nullptr) ++gLiveBlocks;
    return block;
}

void GiveBack(void* block) {
    if (block != nullptr) --gLiveBlocks;
    std::free(block);
}

std::string Bytes(const wchar_t* text) {
    std::string bytes(std::wcslen(text) * 4, '\0');
    const std::size_t length = std::wcstombs(bytes.data(), text, bytes.size());
    bytes.resize(length == static_cast<std::size_t>(-1) ? 0 : length);
    return bytes;
}

}  // namespace

extern "C" int MinimalHostLiveBlocks() {
    return gLiveBlocks;
}

namespace Kavra::Objects {

KString::KString() = default;
KString::KString(const wchar_t* text) : mText(text != nullptr ? text : L"") {}
KString& KString::operator=(const KString&) = default;
KString::~KString() = default;

wchar_t* KString::ToChars() const {
    return const_cast<wchar_t*>(mText.c_str());
}

KString::operator const wchar_t*() const {
    return mText.c_str();
}

std::size_t KString::GetLen() const {
    return mText.size();
}

int KString::CompareNoCase(const wchar_t* other) const {
    return wcscasecmp(mText.c_str(), other);
}

KString KString::Right(std::size_t count) const {
    return KString(mText.c_str() + (mText.size() - std::min(count, mText.size())));
}

bool KString::FindAndReplace(const wchar_t* find, const wchar_t* replace, std::size_t start) {
    bool found = false;
    for (std::size_t at = mText.find(find, start); at != std::wstring::npos; at = mText.find(find, start)) {
        mText.replace(at, std::wcslen(find), replace);
        start = at + std::wcslen(replace);
        found = true;
    }
    return found;
}

UString::UString(std::wstring text) : mText(std::move(text)) {}

UString* Intern(const wchar_t* text) {
    static std::map<std::wstring, UString*> names;
    UString*& name = names[text];
    if (name == nullptr) name = new UString(text);
    return name;
}

void* HeapOperators::operator new(std::size_t bytes) noexcept {
    return Take(bytes);
}

void HeapOperators::operator delete(void* block) noexcept {
    GiveBack(block);
}

void HeapOperators::operator delete[](void* block) noexcept {
    GiveBack(block);
}

void KavraDelete(void* block) noexcept {
    GiveBack(block);
}

IMemoryAllocator::~IMemoryAllocator() = default;

void* IMemoryAllocator::AllocateZeroed(std::size_t bytes) {
    return std::memset(Allocate(bytes), 0, bytes);
}

namespace {

class Allocator final : public IMemoryAllocator {
    void* Allocate(std::size_t bytes) override {
        void* const block = Take(bytes);
        if (block == nullptr) throw std::bad_alloc();
        return block;
    }
    void Free(void* block, std::size_t) noexcept override { GiveBack(block); }
};

Allocator gAllocator;

}  // namespace

IMemoryAllocator* ObjModel::mDefaultAllocator = &gAllocator;

IDelete::~IDelete() = default;

void IDelete::Delete() {
    delete this;
}

IClone::~IClone() = default;

template class IMemoryWrapper<void>;
template class MemoryArrayWrapper<void, unsigned char>;

ARefCounted::ARefCounted() = default;
ARefCounted::ARefCounted(const ARefCounted&) : HeapOperators() {}
ARefCounted& ARefCounted::operator=(const ARefCounted&) {
    return *this;
}
ARefCounted::~ARefCounted() = default;

void* ARefCounted::GetInterface(UString*) {
    return nullptr;
}

void ARefCounted::Delete() {
    delete this;
}

void ARefCounted::AddRef() {
    ++mRefCount;
}

void ARefCounted::ReleaseRef() {
    if (--mRefCount == 0) Delete();
}

void ARefCounted::RefCount(int count) {
    mRefCount = count;
}

int ARefCounted::RefCount() const {
    return mRefCount;
}

struct ClassFactory::Registry {
    std::map<UString*, IClone*> prototypes;
};

ClassFactory::ClassFactory() : mRegistry(std::make_unique<Registry>()) {}
ClassFactory::~ClassFactory() = default;

bool ClassFactory::AddObject(UString* key, IClone* prototype) {
    return prototype != nullptr && mRegistry->prototypes.emplace(key, prototype).second;
}

bool ClassFactory::RemoveObject(UString* key) {
    const auto found = mRegistry->prototypes.find(key);
    if (found == mRegistry->prototypes.end()) return false;
    delete found->second;
    mRegistry->prototypes.erase(found);
    return true;
}

bool ClassFactory::Contains(UString* key) const {
    return mRegistry->prototypes.contains(key);
}

IClone* ClassFactory::CloneObject(UString* key) const {
    const auto found = mRegistry->prototypes.find(key);
    return found == mRegistry->prototypes.end() ? nullptr : found->second->Clone();
}

ClassFactory& ObjModel::Factory() {
    static ClassFactory factory;
    return factory;
}

void ObjModel::Error(const wchar_t* message, const wchar_t*, const wchar_t*, const wchar_t*, int) {
    std::fprintf(stderr, "minimal_host: error: %ls\n", message);
}

DLLVersionCheck::DLLVersionCheck(int major, int minor, int patch, int build) : mVersion{major, minor, patch, build} {}

bool Toolkit::CheckCompatibleVersion(int major, int minor, int patch, int build) {
    return major == 17 && minor == 1 && patch == 2 && build == 0;
}

}  // namespace Kavra::Objects

extern "C" Kavra::Objects::IClone* MinimalHostObject(const wchar_t* key) {
    return Kavra::Objects::ObjModel::Factory().CloneObject(Kavra::Objects::Intern(key));
}

namespace Kavra::OS {

int fopen(std::FILE** file, const char* path, const char* mode) {
    *file = std::fopen(path, mode);
    return *file != nullptr ? 0 : errno;
}

int wfopen(std::FILE** file, const wchar_t* path, const wchar_t* mode) {
    return fopen(file, Bytes(path).c_str(), Bytes(mode).c_str());
}

void _wsplitpath(const wchar_t* path, wchar_t* drive, wchar_t* dir, wchar_t* name, wchar_t* ext) {
    const std::wstring whole = path;
    const std::size_t nameAt = whole.rfind(L'/') + 1;  // 0 without one
    const std::size_t dot = whole.rfind(L'.');
    const std::size_t extensionAt = dot == std::wstring::npos || dot < nameAt ? whole.size() : dot;
    if (drive != nullptr) *drive = L'\0';
    if (dir != nullptr) std::wcscpy(dir, whole.substr(0, nameAt).c_str());
    if (name != nullptr) std::wcscpy(name, whole.substr(nameAt, extensionAt - nameAt).c_str());
    if (ext != nullptr) std::wcscpy(ext, whole.substr(extensionAt).c_str());
}

int wsplitpath(const wchar_t* path, wchar_t* out, std::size_t size) {
    const wchar_t* const slash = std::wcsrchr(path, L'/');
    const std::size_t length = slash == nullptr ? 0 : static_cast<std::size_t>(slash + 1 - path);
    if (length >= size) return -1;
    std::wmemcpy(out, path, length);
    out[length] = L'\0';
    return 0;
}

int swprintf_s(wchar_t* buffer, std::size_t size, const wchar_t* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    const int written = std::vswprintf(buffer, size, format, arguments);
    va_end(arguments);
    return written;
}

int strncpy_s(char* dest, std::size_t size, const char* src, std::size_t count) {
    const std::size_t length = strnlen(src, count);
    if (length >= size) return ERANGE;
    std::memcpy(dest, src, length);
    dest[length] = '\0';
    return 0;
}

}  // namespace Kavra::OS

void* operator new(std::size_t bytes, Kavra::Objects::IMemoryAllocator* allocator) {
    return allocator->Allocate(bytes);
}
