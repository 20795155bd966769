#include "Commands.h"
#include "Description.h"
#include "FormatNames.h"
#include "Inputs.h"
#include "InspectionText.h"
#include "LoadOptions.h"
#include "Printable.h"
#include "Source.h"
#include "StandardStreams.h"
#include "Usage.h"
#include "Workers.h"

#include <format>

namespace Kavra::App {
namespace {

using namespace Devices;

struct Options {
    std::vector<std::string> files;
    bool json = false;
    bool all = false;
    int jobs = 0;
    InputOptions inputs;
};

Json DescriptionJson(const std::string& file, const ImageDesc& desc) {
    return {{"file", file},
            {"width", desc.width},
            {"height", desc.height},
            {"depth", desc.depth},
            {"format", static_cast<int>(desc.format)},
            {"formatName", Enumerator(desc.format)},
            {"textureType", static_cast<int>(desc.textureType)},
            {"frameCount", desc.frameCount},
            {"orientation", static_cast<int>(desc.orientation)},
            {"gamma", desc.gamma}};
}

std::string DescriptionText(const std::string& file, const ImageDesc& desc) {
    const std::string depth = desc.depth > 1 ? std::format(" x {}", desc.depth) : std::string();
    return std::format("{}: {} x {}{}, {}, {}, frames {}, {}, gamma {:.4g}\n", file, desc.width, desc.height, depth,
                       Enumerator(desc.format), TextureTypeName(desc.textureType), desc.frameCount,
                       OrientationName(desc.orientation), desc.gamma);
}

/// A file that the handler describes at all; what more there is where it is asked for.
void Tell(IImageHandler& handler, Report& report, const ImageDesc& desc, const Options& options, Json& json) {
    const OwnedInspection file = options.all ? Inspect(handler, report.File()) : nullptr;
    if (options.json) {
        json = DescriptionJson(report.File(), desc);
        if (file != nullptr) AddInspection(json, *file);
        return;
    }
    report.out = DescriptionText(PrintableName(report.File()), desc);
    if (file != nullptr) report.out += InspectionText(*file);
}

int Run(const Session& session, const Options& options) {
    if (options.inputs.AreNone(options.files)) return WrongUsage("info", "FILE is required");
    const Host& host = session.LoadHost();
    const auto tell = [&](Report& report, Json& json) {
        const Owned<ImageDesc> desc = Describe(host.Handler(), report);
        desc == nullptr ? FailToRead(report, 0) : Tell(host.Handler(), report, *desc, options, json);
    };
    return TellOfEach(session, {options.files, options.inputs, options.json, options.jobs}, tell, FailureJson);
}

}  // namespace

void AddInfo(CLI::App& program, Session& session) {
    const auto options = std::make_shared<Options>();
    CLI::App* command = program.add_subcommand("info", "Describes files: size, format, frames, orientation, gamma");
    command->footer(
        "Examples: kavra info photo.jpg cube.dds --json\n"
        "          kavra info render.exr --all");
    command->add_option("FILE", options->files, "The files, - for standard input")->option_text("FILE... REQUIRED");
    options->inputs.AddTo(*command);
    command->add_flag("--json", options->json, "One JSON array with an object a file");
    command->add_flag("--all", options->all,
                      "Also parts, channels, alpha, light, levels, faces, tiles, resolution and metadata");
    AddJobs(*command, options->jobs);
    command->callback([options, &session] { session.run = [options, &session] { return Run(session, *options); }; });
}

}  // namespace Kavra::App
