/// The answer of an inspection, as it is put together.
#pragma once

#include <kavra/devices/Export.h>
#include <kavra/devices/IImageInspector.h>

#include <cstddef>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace Kavra::Devices {

/// What is known of one part. The numbers stand in `part`, whose pointers and counts are filled where it is added.
struct PartFacts {
    struct Channel {
        std::string name;
        const char* type;
    };
    struct Text {
        std::string name, value;
    };

    FilePart part{};
    std::string name, colourSpace, compression;
    std::vector<FileLevel> levels;
    std::vector<Channel> channels;
    std::vector<Text> texts;
    std::span<const unsigned char> profile;  ///< of whoever adds the part
};

/// Text of a file as UTF-8: up to its first NUL, bytes that are part of no UTF-8 replaced by U+FFFD, cut at `maxBytes`
/// before a character that would be cut. Throws `std::bad_alloc`.
std::string ToValidUtf8(std::string_view bytes, std::size_t maxBytes);

/// Holds the parts and all that they point to. Equal texts and profiles are kept once, and of all parts together no
/// more than some bounds, whatever a file claims.
class InspectedFile final : public IFileInspection {
public:
    static constexpr std::size_t kMaxParts = 4096;
    static constexpr std::size_t kMaxTexts = 1024;            ///< of a part
    static constexpr std::size_t kMaxTextBytes = 64UZ << 10;  ///< of one
    static constexpr std::size_t kMaxProfileBytes = 16UZ << 20;

    explicit InspectedFile(std::string_view fileType);

    void Delete() override { delete this; }
    const char* FileType() const override { return mFileType; }
    std::size_t PartCount() const override { return mParts.size(); }
    const FilePart& Part(std::size_t index) const override { return mParts[index].part; }

    /// Adds a part, with at least one level. Does nothing where there are `kMaxParts`. Throws `std::bad_alloc`.
    void Add(const PartFacts& facts);

private:
    struct StoredPart {
        FilePart part;
        std::vector<FileLevel> levels;
        std::vector<FileChannel> channels;
        std::vector<FileText> texts;
    };

    const char* Keep(std::string_view text);
    void KeepProfile(FilePart& part, std::span<const unsigned char> profile);
    void KeepTexts(StoredPart& stored, const std::vector<PartFacts::Text>& texts);

    std::unordered_set<std::string> mStrings;  // whose elements stay where they are
    std::deque<std::vector<unsigned char>> mProfiles;
    std::deque<StoredPart> mParts;
    const char* mFileType;
    std::size_t mTextBytesLeft = 64UZ << 20;  // of all parts
    std::size_t mProfileBytesLeft = 64UZ << 20;
    std::size_t mChannelsLeft = 1UZ << 20;
};

}  // namespace Kavra::Devices
