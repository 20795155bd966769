#include "load/InspectedFile.h"

#include "common/Utf8.h"

#include <algorithm>
#include <utility>

namespace Kavra::Devices {

namespace {

/// The first bytes of a text, but no part of a character.
std::string_view Cut(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) return text;
    while (maxBytes > 0 && (static_cast<unsigned char>(text[maxBytes]) & 0xC0) == 0x80)
        --maxBytes;
    return text.substr(0, maxBytes);
}

}  // namespace

std::string ToValidUtf8(std::string_view bytes, std::size_t maxBytes) {
    bytes = bytes.substr(0, bytes.find('\0'));
    std::wstring wide = Common::FromUtf8(std::string(Cut(bytes, maxBytes)).c_str());
    for (wchar_t& character : wide) {
        const bool isByte = character >= 0xDC80 && character <= 0xDCFF;  // as `FromUtf8` keeps it
        if (isByte) character = 0xFFFD;
    }
    const std::string text = Common::ToUtf8(wide.c_str());
    return std::string(Cut(text, maxBytes));
}

InspectedFile::InspectedFile(std::string_view fileType) : mFileType(Keep(fileType)) {}

const char* InspectedFile::Keep(std::string_view text) {
    return mStrings.insert(ToValidUtf8(text, kMaxTextBytes)).first->c_str();
}

/// Pages that share a profile share its bytes here, too.
void InspectedFile::KeepProfile(FilePart& part, std::span<const unsigned char> profile) {
    if (profile.empty() || profile.size() > kMaxProfileBytes) return;
    if (mProfiles.empty() || !std::ranges::equal(mProfiles.back(), profile)) {
        if (profile.size() > mProfileBytesLeft) return;
        mProfileBytesLeft -= profile.size();
        mProfiles.emplace_back(profile.begin(), profile.end());
    }
    part.iccProfile = mProfiles.back().data();
    part.iccBytes = mProfiles.back().size();
}

void InspectedFile::KeepTexts(StoredPart& stored, const std::vector<PartFacts::Text>& texts) {
    for (const PartFacts::Text& text : texts) {
        const std::size_t bytes =
            std::min(text.name.size(), kMaxTextBytes) + std::min(text.value.size(), kMaxTextBytes);
        if (stored.texts.size() == kMaxTexts || bytes > mTextBytesLeft) return;
        mTextBytesLeft -= bytes;
        stored.texts.push_back({Keep(text.name), Keep(text.value)});
    }
}

void InspectedFile::Add(const PartFacts& facts) {
    if (mParts.size() == kMaxParts) return;
    StoredPart stored{.part = facts.part, .levels = facts.levels, .channels = {}, .texts = {}};
    for (const PartFacts::Channel& channel : facts.channels) {
        if (mChannelsLeft == 0) break;
        --mChannelsLeft;
        stored.channels.push_back({Keep(channel.name), channel.type});
    }
    KeepTexts(stored, facts.texts);
    StoredPart& kept = mParts.emplace_back(std::move(stored));
    FilePart& part = kept.part;
    part.size = sizeof(FilePart);
    part.name = Keep(facts.name);
    part.colourSpace = Keep(facts.colourSpace);
    part.compression = Keep(facts.compression);
    part.levels = kept.levels.data();
    part.levelCount = kept.levels.size();
    part.channels = kept.channels.data();
    part.channelCount = kept.channels.size();
    part.texts = kept.texts.data();
    part.textCount = kept.texts.size();
    KeepProfile(part, facts.profile);
}

}  // namespace Kavra::Devices
