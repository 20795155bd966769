/// A small ICC profile, made by hand (ICC.1:2022, 7).
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace Kavra::Tests {

using Profile = std::vector<unsigned char>;

inline void SetNumber(Profile& profile, std::size_t at, std::uint32_t number) {
    for (int i = 0; i < 4; ++i)
        profile[at + static_cast<std::size_t>(i)] = static_cast<unsigned char>(number >> (24 - 8 * i));
}

inline void SetSignature(Profile& profile, std::size_t at, std::string_view four) {
    for (std::size_t i = 0; i < 4; ++i)
        profile[at + i] = static_cast<unsigned char>(four[i]);
}

/// A display's profile of version 4 between `space` ("RGB " or "GRAY") and XYZ, with one tag, a text of `textBytes`
/// bytes: 128 of header, 4 and 12 of the table, then the tag.
inline Profile MakeProfile(std::string_view space = "RGB ", std::size_t textBytes = 16) {
    Profile profile(144 + textBytes);
    SetNumber(profile, 0, static_cast<std::uint32_t>(profile.size()));
    SetNumber(profile, 8, 0x04400000);
    SetSignature(profile, 12, "mntr");
    SetSignature(profile, 16, space);
    SetSignature(profile, 20, "XYZ ");
    SetSignature(profile, 36, "acsp");
    SetNumber(profile, 68, 0xF6D6);  // D50, as everywhere
    SetNumber(profile, 72, 0x10000);
    SetNumber(profile, 76, 0xD32D);
    SetNumber(profile, 128, 1);
    SetSignature(profile, 132, "cprt");
    SetNumber(profile, 136, 144);
    SetNumber(profile, 140, static_cast<std::uint32_t>(textBytes));
    SetSignature(profile, 144, "text");
    // Readers of PNG give up a profile that becomes too short by compression.
    for (std::size_t i = 152; i < profile.size(); ++i)
        profile[i] = static_cast<unsigned char>('!' + i * i / 3 % 90);
    return profile;
}

}  // namespace Kavra::Tests
