/// What of a source goes into the file that is made of it, beside pixels.
#pragma once

#include "Source.h"
#include "TypeAbilities.h"

#include <kavra/devices/SavePreferences.h>

#include <string>
#include <string_view>
#include <vector>

namespace Kavra::App {

/// The metadata that files of a type can hold: the colour profile, the resolution where it is the same both ways, and
/// the texts of `Devices::kSavedTexts`. The rest of a source (thumbnails, positions, what makers add) is left behind in
/// silence.
class KeptMetadata {
public:
    /// `source` outlives this.
    KeptMetadata(const Source& source, std::string_view extension, int colourChannels);

    /// Makes it a part of what is preferred of a save; `preferences` points into this.
    void AddTo(Devices::SavePreferences& preferences) const;
    /// Says in one note what cannot be kept, and in another that a profile is damaged. A resolution that is given by an
    /// option is no loss.
    void NoteLosses(Report& report, bool hasOwnResolution) const;

private:
    void KeepProfile(int colourChannels);
    void KeepResolution();
    void KeepTexts();

    const Source& mSource;
    std::string_view mExtension;
    const TypeAbilities& mAbilities;
    double mResolution = 0;
    bool mHasProfile = false, mHasBadProfile = false, mLosesResolution = false;
    std::vector<Devices::FileText> mTexts;
    std::vector<std::string> mLosses;
};

}  // namespace Kavra::App
