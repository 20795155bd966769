#include <kavra/objects/ClassFactory.h>

#include <condition_variable>
#include <mutex>
#include <unordered_map>

namespace Kavra::Objects {

struct ClassFactory::Registry {
    struct Entry {
        std::unique_ptr<IClone> prototype;
        int clonesUnderWay = 0;
    };

    /// Holds an entry for the time of one `Clone`. Made and destroyed without the lock's being held.
    class Use {
    public:
        Use(Registry& registry, UString* key) : mRegistry(registry) {
            const std::lock_guard lock(mRegistry.mutex);
            const auto found = mRegistry.entries.find(key);
            if (found == mRegistry.entries.end()) return;
            mEntry = &found->second;
            ++mEntry->clonesUnderWay;
        }
        ~Use() {
            if (mEntry == nullptr) return;
            const std::lock_guard lock(mRegistry.mutex);
            if (--mEntry->clonesUnderWay == 0) mRegistry.idle.notify_all();
        }
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        IClone* Prototype() const { return mEntry != nullptr ? mEntry->prototype.get() : nullptr; }

    private:
        Registry& mRegistry;
        Entry* mEntry = nullptr;
    };

    std::mutex mutex;
    std::condition_variable idle;
    std::unordered_map<UString*, Entry> entries;
};

ClassFactory::ClassFactory() : mRegistry(std::make_unique<Registry>()) {}

ClassFactory::~ClassFactory() = default;

bool ClassFactory::AddObject(UString* key, IClone* prototype) {
    if (key == nullptr || prototype == nullptr) return false;
    const std::lock_guard lock(mRegistry->mutex);
    const auto [entry, added] = mRegistry->entries.try_emplace(key);
    if (added) entry->second.prototype.reset(prototype);
    return added;
}

bool ClassFactory::RemoveObject(UString* key) {
    std::unique_lock lock(mRegistry->mutex);
    // The node keeps its address, so clones that are under way go on with it; new ones no longer find it. They are
    // waited for, since a module's code may go once its object is removed.
    const auto removed = mRegistry->entries.extract(key);
    if (removed.empty()) return false;
    mRegistry->idle.wait(lock, [&] { return removed.mapped().clonesUnderWay == 0; });
    lock.unlock();
    return true;  // the prototype is destroyed without the lock, so its destructor may use the factory
}

bool ClassFactory::Contains(UString* key) const {
    const std::lock_guard lock(mRegistry->mutex);
    return mRegistry->entries.contains(key);
}

IClone* ClassFactory::CloneObject(UString* key) const {
    const Registry::Use use(*mRegistry, key);
    return use.Prototype() != nullptr ? use.Prototype()->Clone() : nullptr;
}

}  // namespace Kavra::Objects
