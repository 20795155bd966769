#include "Commands.h"
#include "FileNames.h"
#include "FramePattern.h"
#include "LoadOptions.h"
#include "Making.h"
#include "SaveImage.h"
#include "TextureView.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <algorithm>
#include <format>
#include <memory>
#include <utility>
#include <vector>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string file;
    std::string pattern;
    LoadOptions load;
    Making making;
};

int FrameCount(const Host& host, Report& report) {
    const Owned<ImageDesc> desc = Describe(host.Handler(), report);
    return desc == nullptr ? 0 : std::max(desc->frameCount, 1);
}

/// Whether the messages since `mark` say that there is no such frame.
bool EndOfFrames(const Report& report, std::size_t mark) {
    return report.WasSaidSince(mark, "Frame index out of range");
}

bool IsDds(const IFileInspection* file) {
    return file != nullptr && std::string_view(file->FileType()) == "dds";
}

/// A picture that gets a file of its own.
struct Item {
    int number;  ///< in the pattern
    int frame;   ///< or level of a texture file
    int face = -1, slice = -1;
    int element = 0;
};

/// What of each frame is written. Files of DDS hold cube maps and volumes as they are.
struct Division {
    bool byFace, bySlice;

    Division(const Options& options, bool isDds)
        : byFace(options.load.selection.everyFace || (!isDds && options.load.selection.face < 0)),
          bySlice(options.load.selection.everySlice || (!isDds && options.load.selection.slice < 0)) {}
};

/// The pictures of a frame: its faces, its slices or itself. Faces that are not there have their numbers all the same.
void AddItems(const FilePart& part, std::size_t level, int frame, const Division& division, std::vector<Item>& items,
              int& next) {
    if (part.textureType == kTextureCube && division.byFace) {
        for (int face = 0; face < kCubeFaces; ++face, ++next) {
            if ((part.faces >> face & 1) != 0) items.push_back({.number = next, .frame = frame, .face = face});
        }
    } else if (part.textureType == kTextureVolume && division.bySlice) {
        const int depth = part.levels[std::min(level, part.levelCount - 1)].depth;
        for (int slice = 0; slice < depth; ++slice, ++next)
            items.push_back({.number = next, .frame = frame, .slice = slice});
    } else {
        items.push_back({.number = next++, .frame = frame});
    }
}

/// Pictures in order, numbered from `next` on: frame after frame, or level after level of a texture file, and of each all
/// faces or slices.
std::vector<Item> ListItems(const IFileInspection* file, const Options& options, const Division& division, int first,
                            int count, int& next) {
    const bool isDds = IsDds(file);
    std::vector<Item> items;
    for (int frame = first; frame < first + count; ++frame) {
        const std::size_t index = isDds ? 0 : static_cast<std::size_t>(frame);
        if (file != nullptr && index < file->PartCount()) {
            const int level = isDds ? frame : std::max(options.load.selection.level, 0);
            AddItems(file->Part(index), static_cast<std::size_t>(level), frame, division, items, next);
        } else {
            items.push_back({.number = next++, .frame = frame});
        }
    }
    return items;
}

/// Writes every picture; one that fails does not keep the others from being written.
void WriteItems(IImageHandler& handler, Report& report, const Options& options, const FramePattern& pattern,
                const std::vector<Item>& items, int count) {
    Progress progress(items.size());
    for (std::size_t i = 0; i < items.size(); ++i) {
        const Item& item = items[i];
        if (!IsToBeMade(report, pattern.Name(item.number))) continue;
        const std::size_t mark = report.Mark();
        const ElementScope scope(item.element);
        const Source source = SourceOf(handler, report.File(), item.frame);
        LoadOptions load = options.making.colours.ForLoading(handler, options.load, report.File(), source);
        load.frame = item.frame;
        if (item.face >= 0) load.selection.face = item.face;
        if (item.slice >= 0) load.selection.slice = item.slice;
        LoadedImage image = Load(handler, report, load);
        if (image.block == nullptr && item.frame > 0 && EndOfFrames(report, mark)) {
            report.Say("note", std::format("reports {} frames and holds {}", count, item.frame));
            return;
        }
        if (image.block == nullptr) {
            FailToRead(report, mark);
        } else {
            options.making.Write(handler, report, std::move(image), source, pattern.Name(item.number),
                                 options.load.format);
        }
        progress.Show(i + 1);
    }
}

/// The same of every element of an array, one behind the other.
std::vector<Item> ListElements(IImageHandler& handler, const std::string& file, const Options& options,
                               const Division& division, int first, int count) {
    std::vector<Item> items;
    int next = 0;
    for (int element = 0; element < ElementCount(file); ++element) {
        const ElementScope scope(element);
        for (Item& item : ListItems(Inspect(handler, file).get(), options, division, first, count, next)) {
            item.element = element;
            items.push_back(item);
        }
    }
    return items;
}

/// One frame where a part or, of a DDS, a level was chosen, else all.
void WriteFrames(IImageHandler& handler, Report& report, Options options, const FramePattern& pattern, int count) {
    const OwnedInspection file = Inspect(handler, report.File());
    Selection& selection = options.load.selection;
    const bool isOne = IsDds(file.get()) ? selection.level >= 0 : !selection.part.empty();
    int first = 0;
    if (isOne && !selection.Resolve(handler, report, first)) return;
    selection.part.clear();
    const Division division(options, LowerExtension(options.pattern) == ".dds");
    const std::vector<Item> items = ListElements(handler, report.File(), options, division, first, isOne ? 1 : count);
    if (!items.empty() && !CanBeMade(report, pattern.Name(items.front().number))) return;
    WriteItems(handler, report, options, pattern, items, count);
}

int Run(const Session& session, const Options& options) {
    const auto pattern = FramePattern::Parse(options.pattern);
    if (!pattern) return WrongUsage("frames", "the pattern needs one number, as in out/%03d.png");
    const Host& host = session.LoadHost();
    const bool good = ForOneReport(options.file, [&](Report& report) {
        const int count = FrameCount(host, report);
        if (count == 0) {
            FailToRead(report, 0);
        } else {
            WriteFrames(host.Handler(), report, options, *pattern, count);
        }
    });
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddFrames(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command =
        program.add_subcommand("frames", "Writes every frame, mip level, face, slice or band to a file of its own");
    command->footer("Example: kavra frames animation.gif out/%03d.png");
    command->add_option("IN", options->file, "The file, or - for standard input")->required();
    session.names.in.push_back(&options->file);
    command->add_option("PATTERN", options->pattern, "The outputs' names: %03d stands for the frame, from 000")
        ->required();
    options->load.AddTo(*command, false);
    options->load.selection.AddOptions(*command, Purpose::kFiles);
    options->load.resampling.AddForPeople(*command, Resampling::kLoadsUnlessSaid);
    options->load.resampling.AddFast(*command);
    options->making.AddTo(*command);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
