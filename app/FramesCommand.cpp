#include "Commands.h"
#include "FramePattern.h"
#include "LoadOptions.h"
#include "Making.h"
#include "Usage.h"
#include "Workers.h"

#include <algorithm>
#include <format>
#include <memory>
#include <utility>

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

/// Writes every frame; one that fails does not keep the others from being written.
void WriteFrames(IImageHandler& handler, Report& report, const Options& options, const FramePattern& pattern,
                 int count) {
    Progress progress(static_cast<std::size_t>(count));
    for (int frame = 0; frame < count; ++frame) {
        const std::size_t mark = report.Mark();
        const Source source = SourceOf(handler, report.File(), frame);
        LoadOptions load = options.making.colours.ForLoading(handler, options.load, report.File(), source);
        load.frame = frame;
        LoadedImage image = Load(handler, report, load);
        if (image.block == nullptr && frame > 0 && EndOfFrames(report, mark)) {
            report.Say("note", std::format("reports {} frames and holds {}", count, frame));
            return;
        }
        if (image.block == nullptr) {
            FailToRead(report, mark);
        } else {
            options.making.Write(handler, report, std::move(image), source, pattern.Name(frame), options.load.format);
        }
        progress.Show(static_cast<std::size_t>(frame) + 1);
    }
}

int Run(const Session& session, const Options& options) {
    const auto pattern = FramePattern::Parse(options.pattern);
    if (!pattern) return WrongUsage("frames", "the pattern needs one number, as in out/%03d.png");
    const Host host = session.LoadHost();
    Report report(options.file);
    Attempt(report, [&] {
        const int count = FrameCount(host, report);
        if (count == 0) {
            FailToRead(report, 0);
        } else {
            WriteFrames(host.Handler(), report, options, *pattern, count);
        }
    });
    report.Print();
    return report.Failed() ? kSomeFailed : kAllDone;
}

}  // namespace

void AddFrames(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("frames", "Writes every frame, mip level or band to a file of its own");
    command->footer("Example: kavra frames animation.gif out/%03d.png");
    command->add_option("IN", options->file, "The file")->required();
    command->add_option("PATTERN", options->pattern, "The outputs' names: %03d stands for the frame, from 000")
        ->required();
    options->load.AddTo(*command, false);
    options->load.resampling.AddForPeople(*command, Resampling::kLoadsUnlessSaid);
    options->load.resampling.AddFast(*command);
    options->making.AddTo(*command);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
