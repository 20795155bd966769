#include "ColourOptions.h"
#include "Commands.h"
#include "Display.h"
#include "FormatNames.h"
#include "ImageObject.h"
#include "Picture.h"
#include "PixelConversion.h"
#include "SaveImage.h"
#include "Usage.h"
#include "Workers.h"
#include "WritePolicy.h"

#include <cmath>
#include <memory>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::string in;
    std::string out;
    bool stretch = false;
    bool display = false;
    ColourOptions colours;
    LoadOptions load;
};

/// Floats and 8-bit colours.
bool IsTargetFormat(EFormat format) {
    const FormatFacts facts = Facts(format);
    const bool isByteColour = facts.element == ElementType::kUInt8 && facts.channels == 4;
    return facts.isInLibrary && (isByteColour || facts.element == ElementType::kFloat);
}

/// The format of the file that a target of `format` becomes.
EFormat WrittenFormat(EFormat format) {
    return format == kR32F ? kR8 : kR8G8B8A8;
}

/// Whether the picture is brought to a screen before it becomes a target.
bool IsShown(const Options& options) {
    return options.display || options.colours.stops != 0 || options.colours.tone != ToneMap::kNone;
}

void Write(IImageHandler& handler, Report& report, const Options& options) {
    if (!IsToBeMade(report, options.out)) return;
    LoadedImage image = LoadFlat(handler, report, options.load);
    if (image.block == nullptr || !HasPixels(report, image, "made a target")) return;
    if (IsShown(options)) {
        const Source source = SourceOf(handler, options.in, options.load.frame);
        image = ToDisplay(image, source, options.colours.tone, static_cast<float>(std::exp2(options.colours.stops)));
    }
    if (!IsTargetFormat(image.desc.format)) image = *ToFormat(image, kR32G32B32A32F);
    const FileContent written{WrittenFormat(image.desc.format), image.desc.width, image.desc.height};
    const std::string obstacle = WriteObstacle(options.out, written);
    if (!obstacle.empty()) return FailToWrite(report, options.out, obstacle);
    WriteFile(report, options.out, written, [&](const KString& name) {
        BlockTarget target(image);
        return handler.SaveTarget(name, &target, options.stretch);
    });
}

int Run(const Session& session, const Options& options) {
    const Host& host = session.LoadHost();
    const bool good = ForOneReport(options.in, [&](Report& report) { Write(host.Handler(), report, options); });
    return good ? kAllDone : kSomeFailed;
}

}  // namespace

void AddTarget(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("target", "Writes a picture as a render target, with 8 bits a channel");
    command->footer("Example: kavra target depth.exr depth.png --stretch");
    AddInAndOut(*command, session.names, options->in, options->out);
    command->add_flag("--stretch", options->stretch,
                      "Map the range of each channel to 0..255; without it 0..1 is mapped, and more only where values "
                      "lie outside. 8-bit colours are written as they are");
    CLI::Option* const display =
        command->add_flag("--display", options->display,
                          "Show light as a screen does, with the curve of sRGB, before it becomes a target");
    options->colours.AddExposure(*command);
    for (CLI::Option* const option : {display, command->get_option("--exposure"), command->get_option("--tonemap")})
        option->excludes("--stretch");
    options->load.wish.AddTo(*command, "the picture");
    options->load.resampling.AddForPeople(*command);
    options->load.resampling.AddFast(*command);
    AddFrame(*command, options->load.frame);
    options->load.selection.AddOptions(*command, Purpose::kPeople);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
