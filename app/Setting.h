/// Settings that options make for the whole process, and work for which some of them are others.
#pragma once

#include <kavra/devices/ImageLimits.h>

#include <vector>

namespace Kavra::App {

/// What all settings have in common, so that they can be kept and put back together.
class AnySetting {
public:
    AnySetting(const AnySetting&) = delete;
    AnySetting& operator=(const AnySetting&) = delete;

protected:
    AnySetting() { All().push_back(this); }
    ~AnySetting() { std::erase(All(), this); }

private:
    friend class SettingsScope;
    virtual void Keep() = 0;
    virtual void PutBack() = 0;

    static std::vector<AnySetting*>& All() {
        static std::vector<AnySetting*> all;
        return all;
    }
};

/// One setting; to be a variable with static lifetime.
template <class Value>
class Setting final : public AnySetting {
public:
    explicit Setting(Value start) : value(start), mKept(start) {}

    Value value;

private:
    void Keep() override { mKept = value; }
    void PutBack() override { value = mKept; }

    Value mKept;
};

/// While it lives, options may be read that hold for some of the work; behind it all settings, and the limits of the
/// handler, are as they were. There is one at a time, and no work runs as it begins and ends.
class SettingsScope {
public:
    SettingsScope() {
        for (AnySetting* const setting : AnySetting::All())
            setting->Keep();
    }
    ~SettingsScope() {
        for (AnySetting* const setting : AnySetting::All())
            setting->PutBack();
        Devices::SetImageLimits(mLimits);
    }
    SettingsScope(const SettingsScope&) = delete;
    SettingsScope& operator=(const SettingsScope&) = delete;

private:
    Devices::ImageLimits mLimits = Devices::GetImageLimits();
};

}  // namespace Kavra::App
