#include "Selection.h"

#include "PartNames.h"
#include "Printable.h"
#include "Source.h"
#include "Usage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

constexpr std::array<const char*, kCubeFaces> kFaceNames = {"+x", "-x", "+y", "-y", "+z", "-z"};

void AddFace(CLI::App& command, Selection& selection) {
    const auto parse = [&selection](const std::string& text) {
        const std::string word = CLI::detail::to_lower(text);
        selection.everyFace = word == "all";
        if (selection.everyFace) return;
        const auto* const found = std::ranges::find(kFaceNames, word);
        if (found == kFaceNames.end())
            throw CLI::ValidationError("--face", text + ": a cube map has +x -x +y -y +z -z");
        selection.face = static_cast<int>(found - kFaceNames.begin());
    };
    command
        .add_option_function<std::string>("--face", parse, "The face of a cube map that is taken, as a flat picture")
        ->type_name("+x|-x|+y|-y|+z|-z|all");
}

void AddSlice(CLI::App& command, Selection& selection) {
    const auto parse = [&selection](const std::string& text) {
        selection.everySlice = CLI::detail::to_lower(text) == "all";
        if (selection.everySlice) return;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), selection.slice);
        const bool isNumber = error == std::errc() && end == text.data() + text.size() && selection.slice >= 0;
        if (!isNumber)
            throw CLI::ValidationError("--slice", text + " is neither \"all\" nor a whole number, 0 or more");
    };
    command.add_option_function<std::string>("--slice", parse, "The slice of a volume that is taken, from 0")
        ->type_name("N|all");
}

/// One file, of which a part is chosen.
struct Choice {
    Report& report;
    const FilePart& part;

    bool Fail(const std::string& text) const {
        report.Fail(OwnReason(text, kFailureOutOfRange));
        return false;
    }
};

bool CheckFace(const Choice& choice, int face) {
    if (face < 0) return true;
    const std::string name = FaceName(face);
    if (choice.part.textureType != kTextureCube)
        return choice.Fail(std::format("face {}: the picture is no cube map, so it has no faces", name));
    if ((choice.part.faces >> face & 1) != 0) return true;
    return choice.Fail(std::format("face {}: the cube map has {}", name, FaceList(choice.part.faces)));
}

bool CheckSlice(const Choice& choice, int slice, int level) {
    if (slice < 0) return true;
    if (choice.part.textureType != kTextureVolume)
        return choice.Fail(std::format("slice {}: the picture is no volume, so it has no slices", slice));
    const auto index = std::min(static_cast<std::size_t>(std::max(level, 0)), choice.part.levelCount - 1);
    const int depth = choice.part.levels[index].depth;
    if (slice < depth) return true;
    return choice.Fail(std::format("slice {}: the volume has {}, from 0", slice, depth));
}

bool CheckLevel(const Choice& choice, int level) {
    if (static_cast<std::size_t>(level) < choice.part.levelCount) return true;
    return choice.Fail(std::format("level {}: the picture has {}, from 0", level, choice.part.levelCount));
}

bool CheckChannels(const Choice& choice, const std::string& channels) {
    const auto missing = MissingChannel(choice.part, channels);
    if (!missing) return true;
    const std::string there = choice.part.channelCount > 0 ? ChannelList(choice.part) : "none that are told apart";
    return choice.Fail(std::format("channel {}: the picture has {}", Printable(*missing), there));
}

/// Readers of our own call themselves in capitals.
bool IsOldRaster(const IFileInspection& file) {
    const char first = *file.FileType();
    return first >= 'A' && first <= 'Z';
}

/// "pages", "frames" ...
std::string_view NameOfParts(const IFileInspection& file) {
    const std::string_view type = file.FileType();
    if (type == "openexr") return "parts";
    if (type == "tiff") return "pages";
    return file.Part(0).seconds > 0 || type == "gif" || type == "webp" || type == "FLIC" ? "frames" : "pictures";
}

}  // namespace

std::string FaceName(int face) {
    return kFaceNames.at(static_cast<std::size_t>(face));
}

void Selection::AddOptions(CLI::App& command, Purpose wanted) {
    purpose = wanted;
    AddFace(command, *this);
    AddSlice(command, *this);
    command.add_option("--part", part, "The part, page or frame that is taken, by its number from 0 or its name")
        ->type_name("N|NAME");
    command.add_option("--layer", layer, "The layer whose colours are taken: diffuse of a file with diffuse.R ...")
        ->type_name("NAME");
    command.add_option("--channels", channels, "The channels that become grey, or red, green, blue and alpha")
        ->type_name("R,G,B,A");
    AddWholeNumber(command, "--level", level, 0, "The mip level that is taken, from 0");
    command.get_option("--layer")->excludes("--channels");
    if (CLI::Option* const frame = command.get_option_no_throw("--frame"))
        command.get_option("--part")->excludes(frame);
}

bool Selection::IsGiven() const {
    return face >= 0 || slice >= 0 || mipLevel > 0 || !channels.empty() || !part.empty() || !layer.empty() ||
           level >= 0;
}

/// Of OpenEXR files, which name their channels as they like, and of which the handler shows another part where it cannot
/// show this one; those of all others are colours.
void Selection::TakeWhatThereIs(Report& report, const FilePart& shown) {
    const auto has = [&](const char* name) { return HasChannel(shown, name); };
    const bool hasColours = has("R") && has("G") && has("B"), hasAlpha = has("A");
    const bool isNamed = hasColours || has("R") || has("G") || has("B") || has("Y") || hasAlpha;
    if (shown.channelCount == 0 || (isNamed && shown.channelCount <= (hasAlpha ? 4 : 3))) return;
    if (hasColours) {
        channels = hasAlpha ? "R,G,B,A" : "R,G,B";
        return;
    }
    const std::vector<std::string> layers = LayersOf(shown);
    if (!isNamed && !layers.empty()) {
        channels = ChannelsOfLayer(shown, layers.front()).value_or("");
        report.Say("note",
                   std::format("has no colours of its own; the layer {} is taken{}", Printable(layers.front(), 60),
                               layers.size() > 1 ? ", --layer takes another" : ""));
        return;
    }
    channels = has("Y") ? "Y" : has("Z") ? "Z" : shown.channels[0].name;
    report.Say("note", std::format("has no colours; the channel {} is taken as grey{}", Printable(channels, 60),
                                   shown.channelCount > 1 ? ", --channels takes others" : ""));
}

bool Selection::Resolve(IImageHandler& handler, Report& report, int& frame) {
    if (isResolved) return true;
    isResolved = true;
    const bool isForAnyFile = purpose == Purpose::kFiles || (purpose == Purpose::kPeople && frame > 0);
    if (!IsGiven() && !isForAnyFile) return true;
    const OwnedInspection file = Inspect(handler, report.File());
    if (file == nullptr || file->PartCount() == 0) return true;  // the load says what is wrong
    const bool isDds = std::string_view(file->FileType()) == "dds";
    if (!part.empty()) {
        const auto found = FindPart(*file, part);
        if (!found) {
            report.Fail(OwnReason(std::format("part {}: the file has {}", Printable(part), PartList(*file)),
                                  kFailureOutOfRange));
            return false;
        }
        if (!isDds) frame = *found;
    }
    const int index = isDds ? 0 : frame;
    if (index < 0 || static_cast<std::size_t>(index) >= file->PartCount()) return true;
    const Choice choice{report, file->Part(static_cast<std::size_t>(index))};
    if (level >= 0 && !CheckLevel(choice, level)) return false;
    if (level >= 0) (isDds ? frame : mipLevel) = level;
    if (!CheckFace(choice, face) || !CheckSlice(choice, slice, isDds ? frame : mipLevel)) return false;
    if (!layer.empty()) {
        const auto found = ChannelsOfLayer(choice.part, layer);
        if (!found) {
            const bool hasLayers = !LayersOf(choice.part).empty();
            return choice.Fail(std::format("layer {}: the picture has {}", Printable(layer),
                                           hasLayers ? LayerList(choice.part) : "no layers"));
        }
        channels = *found;
    }
    if (!channels.empty() && IsOldRaster(*file))
        return choice.Fail(std::format("channels of {} files cannot be chosen", file->FileType()));
    if (!channels.empty()) return CheckChannels(choice, channels);
    const bool isWanted = isForAnyFile || !part.empty();
    if (isWanted && std::string_view(file->FileType()) == "openexr") TakeWhatThereIs(report, choice.part);
    return true;
}

void Selection::AddTo(LoadPreferences& preferences) const {
    preferences.face = face;
    preferences.slice = slice;
    preferences.mipLevel = mipLevel;
    preferences.channels = channels.empty() ? nullptr : channels.c_str();
}

void NoteTheOthers(IImageHandler& handler, Report& report) {
    const OwnedInspection file = Inspect(handler, report.File());
    if (file == nullptr || file->PartCount() == 0) return;
    const std::string_view type = file->FileType();
    if (type == "dds" && file->Part(0).elements > 1) {
        report.Say("note", std::format("an array of {} textures; only the first is taken", file->Part(0).elements));
    }
    // The first picture of a PSD file is all of its layers.
    if (file->PartCount() < 2 || type == "psd") return;
    const std::string_view name = NameOfParts(*file);
    const bool hasNames = *file->Part(0).name != '\0';
    report.Say("note", hasNames ? std::format("holds {} {}: {}; the first is taken, --part takes another",
                                              file->PartCount(), name, PartList(*file))
                                : std::format("holds {} {}; the first is taken, --part takes another, kavra frames all",
                                              file->PartCount(), name));
}

}  // namespace Kavra::App
